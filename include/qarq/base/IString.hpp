// The library's string: bytes with an explicit length behind one pointer.
//
// An IString holds one pointer, to the text of a reference-counted IBuffer;
// copying it adds a reference, and every operation that changes the text puts
// a new buffer in place (or writes in place when this string is the only
// sharer and there is room). Positions are 1-based; 0 is taken as 1, and a
// search result of 0 means not found. The text may hold NUL bytes and is
// always NUL-terminated.
//
// data() and operator char* give the buffer's own memory, not a private
// copy: writing through them reaches every string that shares the buffer.
// Only the non-const operator [] makes the buffer private first.
//
// Failures: overflowing lengths throw IInvalidRequest (id 51), a const index
// past the end or a negative index IInvalidRequest (id 52), an exhausted heap
// IOutOfMemory. After a failure the string holds its old or its new buffer,
// never none. Threads: copies that share a buffer may live on any threads;
// one IString object must not be changed by two threads.
#pragma once

#include <cstdint>
#include <cstring>

#include "qarq/base/IBuffer.hpp"
#include "qarq/export.hpp"

class IStringTest;

class QARQ_API IString {
public:
    IString();
    IString(const IString& other) : ivBuffer(other.ivBuffer) {
        IBuffer::fromContents(ivBuffer)->addRef();
    }
    IString(const char* text);                 // NOLINT: implicit on purpose
    IString(const unsigned char* text);        // NOLINT
    IString(const signed char* text);          // NOLINT
    IString(const void* data, unsigned length, char padChar = ' ');
    IString(const void* data1, unsigned length1, const void* data2, unsigned length2,
            char padChar = ' ');
    IString(const void* data1, unsigned length1, const void* data2, unsigned length2,
            const void* data3, unsigned length3, char padChar = ' ');
    IString(int value);             // NOLINT
    IString(long value);            // NOLINT
    IString(short value);           // NOLINT
    IString(unsigned value);        // NOLINT
    IString(unsigned long value);   // NOLINT
    IString(unsigned short value);  // NOLINT
    IString(double value);          // NOLINT
    IString(char value);            // NOLINT
    IString(unsigned char value);   // NOLINT
    IString(signed char value);     // NOLINT
    /// Takes over one reference the caller holds.
    explicit IString(IBuffer* buffer);
    ~IString() { IBuffer::fromContents(ivBuffer)->removeRef(); }

    IString& operator=(const IString& other) {
        IBuffer::fromContents(other.ivBuffer)->addRef();
        IBuffer::fromContents(ivBuffer)->removeRef();
        ivBuffer = other.ivBuffer;
        return *this;
    }

    unsigned length() const { return IBuffer::fromContents(ivBuffer)->length(); }
    char* data() const { return ivBuffer; }
    operator char*() const { return ivBuffer; }  // NOLINT: the library's idiom
    /// strtoul of the text in base 10.
    unsigned long asUnsigned() const;

    IString operator+(const IString& other) const;
    IString operator+(const char* text) const;
    IString& operator+=(const IString& other) {
        return appendInPlace(other.ivBuffer, other.length()) ? *this : append(other);
    }
    IString& operator+=(const char* text) {
        return text == nullptr || appendInPlace(text, std::strlen(text)) ? *this : append(text);
    }

    const char& operator[](unsigned pos) const;
    const char& operator[](unsigned long pos) const;
    const char& operator[](int pos) const;
    const char& operator[](long pos) const;
    char& operator[](unsigned pos);
    char& operator[](unsigned long pos);
    char& operator[](int pos);
    char& operator[](long pos);

    IString& remove(unsigned start);
    IString& remove(unsigned start, unsigned count);
    IString& change(const IString& pattern, const IString& replacement, unsigned start = 1,
                    unsigned maxChanges = 0xFFFFFFFFu);
    IString& change(const IString& pattern, const char* replacement, unsigned start = 1,
                    unsigned maxChanges = 0xFFFFFFFFu);
    IString& change(const char* pattern, const IString& replacement, unsigned start = 1,
                    unsigned maxChanges = 0xFFFFFFFFu);
    IString& change(const char* pattern, const char* replacement, unsigned start = 1,
                    unsigned maxChanges = 0xFFFFFFFFu);
    static IString remove(const IString& aString, unsigned start, unsigned count = 0xFFFFFFFFu);
    static IString change(const IString& aString, const IString& pattern,
                          const IString& replacement, unsigned start = 1,
                          unsigned maxChanges = 0xFFFFFFFFu);

    /// Strips white space at both ends.
    IString& strip();
    IString& strip(const IStringTest& test, int mode = IBuffer::both);
    IString& strip(const char* chars, unsigned count, int mode = IBuffer::both);
    IString& stripLeading(char c);

    IString subString(unsigned start) const;
    IString subString(unsigned start, unsigned length, char padChar = ' ') const;

    /// "IString(@", this object's address in decimal, ",pBuffer->", the
    /// buffer's debug text, ")".
    IString asDebugInfo() const;
    /// Each byte as two upper-case hexadecimal digits.
    IString asHexText() const;
    /// Decimal digits to the big-endian bytes of their value; empty for text
    /// that is not all digits.
    IString decimalToBytes() const;
    /// decimalToBytes, then asHexText.
    IString decimalToHexText() const;

protected:
    /// Makes a new buffer of the current buffer's class from the pieces and
    /// stores it. The old buffer is not released: that is the caller's duty.
    IString& initBuffer(const void* p1, unsigned n1, const void* p2 = nullptr, unsigned n2 = 0,
                        const void* p3 = nullptr, unsigned n3 = 0, char padChar = ' ');
    IBuffer* buffer() const { return IBuffer::fromContents(ivBuffer); }

private:
    // Puts `next` (one reference, already owned) in place and releases the
    // old buffer, also when the caller throws before it gets here.
    void replaceBuffer(IBuffer* next);
    IString& append(const char* text, unsigned count);
    IString& append(const IString& other);
    IString& append(const char* text);
    // Appends behind the text in the same buffer when nobody else sees it and
    // the room behind the text (which the length alone tells) holds the bytes
    // and a terminator. An empty text is never written: it may be the shared
    // default buffer.
    bool appendInPlace(const char* text, std::size_t count) {
        IBuffer* current = buffer();
        unsigned n = current->ivLength;
        if (count == 0)
            return true;
        if (n == 0 || count >= IBuffer::capacity(n) - n || current->useCount() >= 2)
            return false;
        std::memcpy(ivBuffer + n, text, count);
        ivBuffer[n + count] = '\0';
        current->ivLength = n + static_cast<unsigned>(count);
        return true;
    }
    const char& constAt(long long pos) const;
    char& mutableAt(long long pos);

    char* ivBuffer;
};

QARQ_API IString operator+(const char* text, const IString& string);
/// Texts of different lengths are never equal, so only equal lengths go to
/// the buffer's compare.
inline bool operator==(const IString& a, const IString& b) {
    return a.length() == b.length() &&
           IBuffer::fromContents(a.data())->compare(b.data(), b.length()) == 0;
}
QARQ_API bool operator==(const IString& a, const char* b);
QARQ_API bool operator>=(const IString& a, const IString& b);
// The other comparisons exist so that no comparison of two strings falls back
// to comparing their pointers through operator char*.
QARQ_API bool operator==(const char* a, const IString& b);
QARQ_API bool operator!=(const IString& a, const IString& b);
QARQ_API bool operator!=(const IString& a, const char* b);
QARQ_API bool operator!=(const char* a, const IString& b);
QARQ_API bool operator<(const IString& a, const IString& b);
QARQ_API bool operator>(const IString& a, const IString& b);
QARQ_API bool operator<=(const IString& a, const IString& b);
