// A wire object that can copy itself without its caller knowing its class.
//
// clone() gives a new heap copy that the caller owns; an owner of an object
// through a base pointer (a response owning its exception) copies it this way.
// Threads and failures: as VornObject.
#pragma once

#include "qarq/export.hpp"
#include "qarq/vorn/VornObject.hpp"

class QARQ_API VornCloneableObject : public VornObject {
public:
    VornCloneableObject(const VornCloneableObject& other);
    VornCloneableObject& operator=(const VornCloneableObject& other);
    ~VornCloneableObject() override;

    /// "VornCloneableObject".
    IString asString() const override;
    /// "VornCloneableObject[this=0x<address>]".
    IString asDebugInfo() const override;
    /// Reads nothing.
    void read(VornJavaRead& in) override;
    /// Writes nothing.
    void write(VornJavaWrite& out) override;
    /// A new heap copy of this object, owned by the caller.
    virtual VornCloneableObject* clone() const = 0;

protected:
    VornCloneableObject();
};
