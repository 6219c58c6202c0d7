#include "qarq/vorn/vornnls3.hpp"

#include <cstdint>
#include <cstring>

#include "qarq/ras/HeskTrace.hpp"
#include "qarq/vorn/vornnls1.hpp"
#include "qarq/vorn/vornnls6.hpp"
#include "vorn/VornNlsState.hpp"
#include "vorn/VornNlsTable.hpp"
#include "vorn/VornTrace.hpp"
#include "vorn/vornnls4.hpp"
#include "vorn/vornnls5.hpp"

using qarq::ras::pair;
namespace nls = qarq::vorn::nls;

namespace {

using Engine = VornNlsEngine*;

char* passThrough(const VornNlsCodeSet*, const unsigned char* s, const unsigned char* se,
                  char* out, char* end) {
    size_t n = size_t(se - s) < size_t(end - out) ? size_t(se - s) : size_t(end - out);
    if (n != 0) std::memcpy(out, s, n);
    return out + n;
}

// The engine for a record; a record with no loader-built table (none, or
// freed) or of a kind no engine knows passes bytes through.
Engine choose(const VornNlsCodeSet* cs, bool toUtf8) {
    const nls::Derived* d = nls::derivedOf(cs);
    if (d == nullptr || d->kind != cs->kind) return passThrough;
    const bool ebcdic = d->scheme == nls::kSchemeEbcdic;
    switch (cs->kind) {
    case 1:
        if (ebcdic) return toUtf8 ? vornnls5_ebcdic_sbcs_to_utf8 : vornnls5_ebcdic_sbcs_from_utf8;
        return toUtf8 ? vornnls4_ascii_sbcs_to_utf8 : vornnls4_ascii_sbcs_from_utf8;
    case 2: return toUtf8 ? vornnls4_ascii_dbcs_to_utf8 : vornnls4_ascii_dbcs_from_utf8;
    case 3: return toUtf8 ? vornnls4_ascii_mbcs_to_utf8 : vornnls4_ascii_mbcs_from_utf8;
    case 4: return toUtf8 ? vornnls5_ebcdic_dbcs_to_utf8 : vornnls5_ebcdic_dbcs_from_utf8;
    default: return passThrough;
    }
}

unsigned convert(const char* fn, const VornNlsCodeSet* cs, const char* source, int sourceLength,
                 char* target, unsigned targetLength, bool toUtf8) {
    int32_t length32 = sourceLength;
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, fn,
                     pair(&cs, uint32_t(sizeof cs)), pair(length32), pair(targetLength));
    if (cs == nullptr) {
        if (!nls::tisInitialised()) vornnls1_tis_init();
        cs = def_cs;
    }
    if (source == nullptr) source = "";
    if (target == nullptr) targetLength = 0;
    size_t length = sourceLength < 0 ? std::strlen(source) : size_t(sourceLength);
    const auto* s = reinterpret_cast<const unsigned char*>(source);
    // A target that would reach past the end of the address space ends there.
    uintptr_t last = reinterpret_cast<uintptr_t>(target);
    char* end = (UINTPTR_MAX - last < targetLength) ? reinterpret_cast<char*>(UINTPTR_MAX)
                                                    : target + targetLength;
    char* out = choose(cs, toUtf8)(cs, s, s + length, target, end);
    if (sourceLength < 0) {
        if (out < end)
            *out++ = '\0';
        else if (out > target)
            out[-1] = '\0';
    }
    auto count = unsigned(out - target);
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, fn, pair(count));
    return count;
}

}  // namespace

extern "C" {

unsigned vornnls3_tis_to_utf8(const VornNlsCodeSet* cs, const char* source, int sourceLength,
                              char* target, unsigned targetLength) {
    return convert("vornnls3_tis_to_utf8", cs, source, sourceLength, target, targetLength, true);
}

unsigned vornnls3_tis_from_utf8(const VornNlsCodeSet* cs, const char* source, int sourceLength,
                                char* target, unsigned targetLength) {
    return convert("vornnls3_tis_from_utf8", cs, source, sourceLength, target, targetLength,
                   false);
}

}  // extern "C"
