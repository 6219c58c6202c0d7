// Root of everything that travels on the stream as an object.
//
// An object on the wire is its peer's Java class name followed by the body
// that its write() puts down; read() must take the same fields in the same
// order. A null object is the empty class name and no body. The name read is
// not checked against eucClassName(): the caller already holds an object of
// the class it expects, and the name only tells whether an object follows.
//
// Failures: stream faults pass through (VornJavaExcReadBadType,
// VornBufferExcOverrun, all thrown as VornExcBase). readObject into a null
// pointer when the stream brings an object raises VornJavaExcNullObject.
// Threads: an object belongs to one thread at a time.
#pragma once

#include "qarq/base/IVBase.hpp"
#include "qarq/export.hpp"

class VornJavaRead;
class VornJavaWrite;

class QARQ_API VornObject : public IVBase {
public:
    VornObject(const VornObject& other);
    VornObject& operator=(const VornObject& other);
    ~VornObject() override;

    /// "VornObject".
    IString asString() const override;
    /// "VornObject[this=0x<address>]".
    IString asDebugInfo() const override;
    /// A hook for concrete classes; does nothing here.
    virtual void process();
    /// Reads the body; nothing here.
    virtual void read(VornJavaRead& in);
    /// Writes the body; nothing here.
    virtual void write(VornJavaWrite& out);
    /// The full Java class name of the peer class, the object's name on the wire.
    virtual IString eucClassName() const = 0;

    /// Puts `object` on the stream: its class name, then its body.
    void writeObject(VornJavaWrite& out, VornObject& object);
    /// As above; a null pointer writes the empty class name and no body.
    void writeObject(VornJavaWrite& out, VornObject* object);
    /// Reads a class name (or class handle) and, unless it is empty, the body
    /// into `object`. The empty name leaves `object` as it was.
    void readObject(VornJavaRead& in, VornObject& object);
    /// As above. A non-empty name with a null pointer raises
    /// VornJavaExcNullObject after the name was read.
    void readObject(VornJavaRead& in, VornObject* object);

protected:
    VornObject();
};
