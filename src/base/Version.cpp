#include "qarq/base/Version.hpp"

#include "qarq/version.hpp"

extern "C" const char* qarqVersion(void) { return QARQ_VERSION_STRING; }
