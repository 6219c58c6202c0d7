// The virtual root of the library's value classes.
//
// Every value class overrides asString (what the object is) and asDebugInfo
// (where it is and what it holds), so that any object can describe itself in
// a log or trace record without knowing its dynamic class.
// Threads: as the derived class; IVBase holds no state.
#pragma once

#include "qarq/base/IBase.hpp"
#include "qarq/base/IString.hpp"
#include "qarq/export.hpp"

class QARQ_API IVBase : public IBase {
public:
    virtual ~IVBase();
    /// "IVBase object" here.
    virtual IString asString() const;
    /// "IVBase(@", the object's address in upper-case hexadecimal, ")".
    virtual IString asDebugInfo() const;
};
