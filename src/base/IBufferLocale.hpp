// Locale mode of the string buffers, for the library and its tests.
#pragma once

#include "qarq/export.hpp"

namespace qarq::base {

/// 1 when `value` is exactly two characters that read "ON" in any case.
QARQ_API int parseLocaleMode(const char* value);

/// Sets the locale mode as if NORBU_I18N had been read; -1 forgets it, so the
/// next use reads the environment again. For tests.
QARQ_API void setLocaleMode(int mode);

/// Compares n bytes that may hold NULs with strcoll, segment by segment.
/// Throws IInvalidRequest when strcoll sets errno.
QARQ_API int locale_ncmp(const char* a, const char* b, unsigned n);

}  // namespace qarq::base
