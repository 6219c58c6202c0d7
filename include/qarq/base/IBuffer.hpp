// The reference-counted text block behind IString.
//
// Header and text live in one heap block taken through the OS seam
// (qarq::os::calls().malloc), the text right behind the header, so an IString
// reaches its bytes with no indirection and its buffer by stepping back over
// the header. The text is `length()` bytes (NULs allowed) plus a terminating
// NUL. The capacity is never stored: for length n it is 0 when n is 0, else
// (n | 31) + 1, so the terminator always fits and the length alone tells how
// much room there is.
//
// Every operation that gives an IBuffer* gives one that carries one reference
// for the caller: a new buffer, or this one after addRef. Derived buffers (the
// double-byte buffer) add no fields and override the virtual operations with
// character-aware rules; new operations are added behind the existing ones.
//
// Failures: a length sum or product that would not fit 32 bits throws
// IInvalidRequest (id 51) through overflow(); an exhausted heap throws
// IOutOfMemory. Threads: the count is atomic; the text is not guarded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

#include "qarq/base/IMRefCounted.hpp"
#include "qarq/export.hpp"

class IString;
class IStringTest;

class QARQ_API IBuffer : public IMRefCounted {
public:
    /// Strip modes.
    static constexpr int leading = 0;
    static constexpr int trailing = 1;
    static constexpr int both = 2;

    ~IBuffer() override;

    /// The kind of character at a 1-based position; 0 for a single-byte buffer.
    virtual int charType(unsigned pos) const;
    /// The pointer one character on.
    virtual const char* next(const char* p) const;
    virtual char* next(char* p) const;
    /// 0 equal, 1 this text greater, 2 this text less.
    virtual int compare(const void* data, unsigned length) const;
    /// From `start` (0 counts as 1) to the end.
    virtual IBuffer* subString(unsigned start) const;
    /// Exactly `length` bytes: the text from `start`, then `padChar`.
    virtual IBuffer* subString(unsigned start, unsigned length, char padChar) const;
    virtual IString asDebugInfo() const;
    /// Searches; results are 1-based positions, 0 when not found.
    virtual unsigned indexOf(const char* data, unsigned length, unsigned start) const;
    virtual unsigned indexOfAnyBut(const IStringTest& test, unsigned start) const;
    virtual unsigned indexOfAnyBut(const char* data, unsigned length, unsigned start) const;
    virtual unsigned lastIndexOfAnyBut(const IStringTest& test, unsigned start) const;
    virtual unsigned lastIndexOfAnyBut(const char* data, unsigned length, unsigned start) const;
    /// Replaces up to `maxChanges` non-overlapping matches from `start`.
    virtual IBuffer* change(const char* pattern, unsigned patternLength, const char* replacement,
                            unsigned replacementLength, unsigned start, unsigned maxChanges);
    /// Takes out `count` bytes from `start`; a count past the end is cut.
    virtual IBuffer* remove(unsigned start, unsigned count);
    /// Strips characters that pass `test` (or lie in `chars`) by mode.
    virtual IBuffer* strip(const IStringTest& test, int mode);
    virtual IBuffer* strip(const char* chars, unsigned count, int mode);
    /// A new buffer of `length` uncleared bytes, refs 1, terminated.
    virtual IBuffer* allocate(unsigned length) const;
    /// "IBuffer" for the plain buffer.
    virtual const char* className() const;

    unsigned length() const { return ivLength; }
    char* contents() { return reinterpret_cast<char*>(this) + kHeaderSize; }
    const char* contents() const { return reinterpret_cast<const char*>(this) + kHeaderSize; }
    static IBuffer* fromContents(const char* contents) {
        return reinterpret_cast<IBuffer*>(const_cast<char*>(contents) - kHeaderSize);
    }

    /// A new buffer of this buffer's class holding the three pieces in
    /// order; a null piece means `n` copies of `padChar`. An empty total
    /// gives nullBuffer() with a reference added.
    IBuffer* newBuffer(const void* p1, unsigned n1, const void* p2 = nullptr, unsigned n2 = 0,
                       const void* p3 = nullptr, unsigned n3 = 0, char padChar = ' ') const;
    /// The empty buffer of this buffer's kind (no reference added).
    IBuffer* nullBuffer() const;
    /// The process-wide empty buffer, created on first use (no reference added).
    static IBuffer* defaultBuffer();

    /// Room for text and terminator that a buffer of length n has.
    static unsigned capacity(unsigned n) { return n == 0 ? 0 : (n | 31u) + 1; }
    /// a + b and a * b, or overflow().
    static unsigned checkedAdd(unsigned a, unsigned b) {
        if (!(a < ~b))
            overflow();
        return a + b;
    }
    static unsigned checkedMultiply(unsigned a, unsigned b) {
        if (b != 0 && !(a < 0xFFFFFFFFu / b))
            overflow();
        return a * b;
    }
    /// Throws IInvalidRequest, id 51.
    [[noreturn]] static void overflow();
    /// Non-zero when NORBU_I18N says "ON" (read once).
    static int localeMode();

    static void operator delete(void* block);

protected:
    explicit IBuffer(unsigned length) : ivLength(length) {}
    /// Places a buffer of class T with room for `length` bytes on a fresh
    /// block; T must add no fields.
    template <typename T>
    static IBuffer* create(unsigned length);

private:
    friend class IString;
    static constexpr std::size_t kHeaderSize = 16;
    static void* allocateBlock(unsigned length);

    uint32_t ivLength;
};

template <typename T>
IBuffer* IBuffer::create(unsigned length) {
    static_assert(sizeof(T) == kHeaderSize, "a buffer class adds no fields");
    void* block = allocateBlock(length);
    IBuffer* buffer = ::new (block) T(length);
    buffer->contents()[length] = '\0';
    buffer->addRef();
    return buffer;
}
