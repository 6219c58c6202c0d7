#include "vorn/VornNlsState.hpp"

#include "qarq/base/Os.hpp"
#include "qarq/vorn/vornnls6.hpp"

namespace qarq::vorn::nls {
namespace {

bool gTisInitialised = false;
char* gLang = nullptr;

// Until a table is attached both defaults pass text through unchanged.
VornNlsCodeSet gDefCs = {nullptr, 6, 0, 0, 0, {}, 0, 0, 0};
VornNlsCodeSet gDef2Cs = {nullptr, 6, 0, 0, 0, {}, 0, 0, 0};

}  // namespace

bool& tisInitialised() { return gTisInitialised; }
const char* lang() { return gLang; }

void setLang(char* value) {
    char* old = gLang;
    gLang = value;
    if (old != nullptr) os::calls().free(old);
}

VornNlsCodeSet& defaultRecord(int which) { return which == 2 ? gDef2Cs : gDefCs; }

}  // namespace qarq::vorn::nls

// Constant-initialised, so that they are valid before any static constructor.
extern "C" {
VornNlsCodeSet* const def_cs = &qarq::vorn::nls::gDefCs;
VornNlsCodeSet* const def_2_cs = &qarq::vorn::nls::gDef2Cs;
}
