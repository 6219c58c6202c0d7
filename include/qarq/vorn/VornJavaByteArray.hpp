// A byte array of the wire model.
//
// Ownership: the array owns its block and releases it when it gets a new
// length or is destroyed; getBytes() lends it. Copying is deep.
// Failures: an allocation that fails is logged and leaves the array empty
// (null block, length 0); nothing throws. Threads: one owner at a time.
#pragma once

#include "qarq/base/IVBase.hpp"
#include "qarq/export.hpp"

class QARQ_API VornJavaByteArray : public IVBase {
public:
    /// Starts empty, then setLength(length).
    explicit VornJavaByteArray(unsigned length = 0);
    VornJavaByteArray(const VornJavaByteArray& other);
    VornJavaByteArray& operator=(const VornJavaByteArray& other);
    ~VornJavaByteArray() override;

    /// "VornJavaByteArray".
    IString asString() const override;
    /// "VornJavaByteArray[this=0x<address>, bytes_=0x<block>, length_=<n>]".
    IString asDebugInfo() const override;

    /// Drops the old bytes and takes an uninitialised block of `length` bytes
    /// (none for 0).
    VornJavaByteArray& setLength(unsigned length);
    /// setLength(length), then copies `length` bytes from `bytes` when there is
    /// a block.
    VornJavaByteArray& copyBytes(const char* bytes, unsigned length);
    /// Adds `length` bytes from `bytes` behind the present ones; a null
    /// pointer or a length of 0 changes nothing.
    VornJavaByteArray& appendBytes(const char* bytes, unsigned length);
    /// Sets every byte to `value`.
    VornJavaByteArray& fill(char value);

    /// The block, still owned by the array; null when the length is 0.
    char* getBytes() const { return bytes_; }
    unsigned getLength() const { return length_; }

private:
    char* bytes_;
    unsigned length_;
};
