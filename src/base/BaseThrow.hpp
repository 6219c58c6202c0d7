// How the base classes throw: add the place, report through the current
// trace function, then throw a copy of the exception as its own class.
#pragma once

#include "qarq/base/IException.hpp"

namespace qarq::base {

template <typename Exception>
[[noreturn]] void throwBaseException(Exception& exception, const char* file,
                                     const char* function, unsigned line) {
    exception.addLocation(IExceptionLocation(file, function, line));
    exception.logExceptionData();
    throw Exception(exception);
}

}  // namespace qarq::base
