// Version of the library a program runs against (which may differ from the
// headers it was compiled with: QARQ_VERSION_STRING).
#pragma once

#include "qarq/export.hpp"

extern "C" {
/// "major.minor.patch" of the loaded libqarq; static storage.
QARQ_API const char* qarqVersion(void);
}
