// A character predicate for the searching and stripping operations of IString.
//
// It wraps a C classification function (isspace, isdigit, ...). Characters are
// passed as unsigned byte values, so the C functions never see a negative
// argument. Threads: immutable after construction.
#pragma once

#include <cstdint>

#include "qarq/export.hpp"

class QARQ_API IStringTest {
public:
    using CFunction = int (*)(int);

    explicit IStringTest(CFunction fn) : kind(fn != nullptr ? 1 : 0), fn(fn) {}
    virtual ~IStringTest();

    /// fn(c) != 0 for a C function; false for any other kind.
    virtual bool test(int c) const;

private:
    int32_t kind;
    CFunction fn;
};
