// A growing block of bytes with one running position: the common part of the
// stream reader and writer.
//
// Ownership: the buffer does not free its block at destruction, but when a
// put needs more room it releases the block it holds (delete[]) and takes a
// larger one (new[]) of exactly the needed size plus 4096. A block handed in
// must therefore come from new[] (or be null); after any put the caller must
// read the block's address again with getBuffer, and delete[] what getBuffer
// gives at the end. Copies share the block: a copy only reads the state of
// the moment.
//
// Failures: a get that would pass the end of the block raises
// VornBufferExcOverrun (caught as VornExcBase) and leaves the buffer as it
// was, so a short or hostile stream never makes a reader allocate or read
// beyond what it was given. An exhausted allocator's std::bad_alloc reaches
// the caller with the buffer unchanged. Threads: one owner at a time.
#pragma once

#include <cstdint>

#include "qarq/base/IVBase.hpp"
#include "qarq/export.hpp"

class QARQ_API VornBuffer : public IVBase {
public:
    VornBuffer(const VornBuffer& other);
    VornBuffer& operator=(const VornBuffer& other);
    ~VornBuffer() override;

    char* getBuffer() const { return buffer_; }
    unsigned getLength() const { return length_; }
    /// Bytes before the position: after writing, the count to send.
    unsigned calculateUsedLength() const { return static_cast<unsigned>(next_ - buffer_); }
    /// Position back to the start; block and length stay.
    VornBuffer& resetBuffer();
    /// Takes another block with the position at its start; the old block is
    /// not released.
    VornBuffer& setBuffer(char* buffer, unsigned length);

    VornBuffer& putByte(char byte);
    VornBuffer& putBytes(const char* bytes, unsigned count);
    char getByte();
    VornBuffer& getBytes(char* bytes, unsigned count);

    IString asString() const override;
    IString asDebugInfo() const override;

protected:
    explicit VornBuffer(char* buffer = nullptr, unsigned length = 0);

    /// Makes room for `count` more bytes from the position (puts).
    void checkNextAccess(unsigned count);
    /// Raises VornBufferExcOverrun unless `count` bytes lie behind the
    /// position (gets); `function` names the caller in the record.
    void checkNextRead(unsigned count, const char* function);
    VornBuffer& advance(unsigned count) {
        next_ += count;
        return *this;
    }
    char* getNext() const { return next_; }
    VornBuffer& setNext(char* next) {
        next_ = next;
        return *this;
    }
    int getBufferGrowth() { return 4096; }
    /// Bytes of the block behind the position.
    unsigned remaining() const { return length_ - calculateUsedLength(); }
    /// The text of this part alone, whatever the dynamic class.
    IString bufferDebugInfo() const;

private:
    char* buffer_;
    char* next_;
    uint32_t length_;
};
