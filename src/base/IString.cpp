#include "qarq/base/IString.hpp"

#include <cctype>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "base/BaseThrow.hpp"
#include "qarq/base/IExceptionClasses.hpp"
#include "qarq/base/IStringTest.hpp"

namespace {

const char kFile[] = ".\\base\\istring5";

unsigned textLength(const void* text) {
    if (text == nullptr)
        return 0;
    std::size_t n = std::strlen(static_cast<const char*>(text));
    if (n > 0xFFFFFFFEu)
        IBuffer::overflow();
    return static_cast<unsigned>(n);
}

char* made(const void* p1, unsigned n1, const void* p2 = nullptr, unsigned n2 = 0,
           const void* p3 = nullptr, unsigned n3 = 0, char padChar = ' ') {
    return IBuffer::defaultBuffer()->newBuffer(p1, n1, p2, n2, p3, n3, padChar)->contents();
}

char* printed(const char* format, ...) __attribute__((format(printf, 1, 2)));
char* printed(const char* format, ...) {
    char text[64];
    va_list arguments;
    va_start(arguments, format);
    int n = std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return made(text, n > 0 ? static_cast<unsigned>(n) : 0);
}

[[noreturn]] void indexError() {
    IInvalidRequest exception("An attempt was made to index beyond the end of a const IString.",
                              52, IException::recoverable);
    qarq::base::throwBaseException(exception, kFile, "IString::operator []", __LINE__);
}

}  // namespace

IString::IString() {
    IBuffer* empty = IBuffer::defaultBuffer();
    empty->addRef();
    ivBuffer = empty->contents();
}

IString::IString(const char* text) : ivBuffer(made(text, textLength(text))) {}
IString::IString(const unsigned char* text) : ivBuffer(made(text, textLength(text))) {}
IString::IString(const signed char* text) : ivBuffer(made(text, textLength(text))) {}
IString::IString(const void* data, unsigned length, char padChar)
    : ivBuffer(made(data, length, nullptr, 0, nullptr, 0, padChar)) {}
IString::IString(const void* data1, unsigned length1, const void* data2, unsigned length2,
                 char padChar)
    : ivBuffer(made(data1, length1, data2, length2, nullptr, 0, padChar)) {}
IString::IString(const void* data1, unsigned length1, const void* data2, unsigned length2,
                 const void* data3, unsigned length3, char padChar)
    : ivBuffer(made(data1, length1, data2, length2, data3, length3, padChar)) {}
IString::IString(int value) : ivBuffer(printed("%ld", static_cast<long>(value))) {}
IString::IString(long value) : ivBuffer(printed("%ld", value)) {}
IString::IString(short value) : ivBuffer(printed("%ld", static_cast<long>(value))) {}
IString::IString(unsigned value) : ivBuffer(printed("%lu", static_cast<unsigned long>(value))) {}
IString::IString(unsigned long value) : ivBuffer(printed("%lu", value)) {}
IString::IString(unsigned short value)
    : ivBuffer(printed("%lu", static_cast<unsigned long>(value))) {}
IString::IString(double value) : ivBuffer(printed("%.*g", 15, value)) {}
IString::IString(char value) : ivBuffer(made(&value, 1)) {}
IString::IString(unsigned char value) : ivBuffer(made(&value, 1)) {}
IString::IString(signed char value) : ivBuffer(made(&value, 1)) {}
IString::IString(IBuffer* buffer) : ivBuffer(buffer->contents()) {}

unsigned long IString::asUnsigned() const { return std::strtoul(ivBuffer, nullptr, 10); }

void IString::replaceBuffer(IBuffer* next) {
    IBuffer* old = buffer();
    ivBuffer = next->contents();
    old->removeRef();
}

IString& IString::initBuffer(const void* p1, unsigned n1, const void* p2, unsigned n2,
                             const void* p3, unsigned n3, char padChar) {
    ivBuffer = buffer()->newBuffer(p1, n1, p2, n2, p3, n3, padChar)->contents();
    return *this;
}

IString IString::operator+(const IString& other) const {
    return IString(buffer()->newBuffer(ivBuffer, length(), other.ivBuffer, other.length()));
}

IString IString::operator+(const char* text) const {
    return IString(buffer()->newBuffer(ivBuffer, length(), text, textLength(text)));
}

IString operator+(const char* text, const IString& string) {
    return IString(IBuffer::fromContents(string.data())
                       ->newBuffer(text, textLength(text), string.data(), string.length()));
}

IString& IString::append(const char* text, unsigned count) {
    if (appendInPlace(text, count))
        return *this;
    IBuffer* current = buffer();
    replaceBuffer(current->newBuffer(ivBuffer, current->length(), text, count));
    return *this;
}

IString& IString::append(const IString& other) { return append(other.ivBuffer, other.length()); }

IString& IString::append(const char* text) { return append(text, textLength(text)); }

bool operator==(const IString& a, const char* b) {
    return IBuffer::fromContents(a.data())->compare(b, textLength(b)) == 0;
}
bool operator>=(const IString& a, const IString& b) {
    return IBuffer::fromContents(a.data())->compare(b.data(), b.length()) != 2;
}
bool operator==(const char* a, const IString& b) { return b == a; }
bool operator!=(const IString& a, const IString& b) { return !(a == b); }
bool operator!=(const IString& a, const char* b) { return !(a == b); }
bool operator!=(const char* a, const IString& b) { return !(b == a); }
bool operator<(const IString& a, const IString& b) { return !(a >= b); }
bool operator>(const IString& a, const IString& b) {
    return IBuffer::fromContents(a.data())->compare(b.data(), b.length()) == 1;
}
bool operator<=(const IString& a, const IString& b) { return !(a > b); }

const char& IString::constAt(long long pos) const {
    if (pos < 0)
        indexError();
    unsigned long long i = pos == 0 ? 0 : pos - 1;
    if (i >= length())
        indexError();
    return ivBuffer[i];
}

char& IString::mutableAt(long long pos) {
    if (pos < 0)
        indexError();
    unsigned long long i = pos == 0 ? 0 : pos - 1;
    IBuffer* current = buffer();
    unsigned n = current->length();
    if (i < n) {
        if (current->useCount() != 1)
            replaceBuffer(current->newBuffer(ivBuffer, n));
        return ivBuffer[i];
    }
    // Assigning past the end extends the text with blanks.
    if (i >= 0xFFFFFFFFu)
        IBuffer::overflow();
    replaceBuffer(current->newBuffer(ivBuffer, n, nullptr, static_cast<unsigned>(i) + 1 - n));
    return ivBuffer[i];
}

const char& IString::operator[](unsigned pos) const { return constAt(pos); }
const char& IString::operator[](unsigned long pos) const {
    return pos > 0xFFFFFFFFul ? constAt(0x100000000ll) : constAt(static_cast<long long>(pos));
}
const char& IString::operator[](int pos) const { return constAt(pos); }
const char& IString::operator[](long pos) const { return constAt(pos); }
char& IString::operator[](unsigned pos) { return mutableAt(pos); }
char& IString::operator[](unsigned long pos) {
    return pos > 0xFFFFFFFFul ? mutableAt(0x100000000ll) : mutableAt(static_cast<long long>(pos));
}
char& IString::operator[](int pos) { return mutableAt(pos); }
char& IString::operator[](long pos) { return mutableAt(pos); }

IString& IString::remove(unsigned start) { return remove(start, 0xFFFFFFFFu); }

IString& IString::remove(unsigned start, unsigned count) {
    unsigned n = length();
    if (count == 0 || n == 0 || (start == 0 ? 1 : start) > n)
        return *this;
    IBuffer* current = buffer();
    current->addRef();
    IString extra(current);  // the buffer's sharing test sees at least 2
    replaceBuffer(current->remove(start, count));
    return *this;
}

IString& IString::change(const IString& pattern, const IString& replacement, unsigned start,
                         unsigned maxChanges) {
    if (maxChanges == 0)
        return *this;
    IBuffer* current = buffer();
    current->addRef();
    IString extra(current);
    replaceBuffer(current->change(pattern.ivBuffer, pattern.length(), replacement.ivBuffer,
                                  replacement.length(), start, maxChanges));
    return *this;
}

IString& IString::change(const IString& pattern, const char* replacement, unsigned start,
                         unsigned maxChanges) {
    return change(pattern, IString(replacement), start, maxChanges);
}

IString& IString::change(const char* pattern, const IString& replacement, unsigned start,
                         unsigned maxChanges) {
    return change(IString(pattern), replacement, start, maxChanges);
}

IString& IString::change(const char* pattern, const char* replacement, unsigned start,
                         unsigned maxChanges) {
    return change(IString(pattern), IString(replacement), start, maxChanges);
}

IString IString::remove(const IString& aString, unsigned start, unsigned count) {
    IString copy(aString);
    return copy.remove(start, count);
}

IString IString::change(const IString& aString, const IString& pattern,
                        const IString& replacement, unsigned start, unsigned maxChanges) {
    IString copy(aString);
    return copy.change(pattern, replacement, start, maxChanges);
}

IString& IString::strip() {
    static const IStringTest space(std::isspace);
    return strip(space, IBuffer::both);
}

IString& IString::strip(const IStringTest& test, int mode) {
    replaceBuffer(buffer()->strip(test, mode));
    return *this;
}

IString& IString::strip(const char* chars, unsigned count, int mode) {
    replaceBuffer(buffer()->strip(chars, count, mode));
    return *this;
}

IString& IString::stripLeading(char c) { return strip(&c, 1, IBuffer::leading); }

IString IString::subString(unsigned start) const {
    if (IBuffer::localeMode())
        return IString(buffer()->subString(start));
    unsigned s = start == 0 ? 1 : start;
    unsigned n = length();
    if (s > n) {
        IBuffer* empty = buffer()->nullBuffer();
        empty->addRef();
        return IString(empty);
    }
    return subString(s, n - s + 1, ' ');
}

IString IString::subString(unsigned start, unsigned count, char padChar) const {
    return IString(buffer()->subString(start, count, padChar));
}

IString IString::asDebugInfo() const {
    return IString("IString(@") +
           IString(static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(this))) +
           ",pBuffer->" + buffer()->asDebugInfo() + ")";
}

IString IString::asHexText() const {
    static const char digits[] = "0123456789ABCDEF";
    unsigned n = length();
    if (n == 0)
        return *this;
    IString result(buffer()->newBuffer(nullptr, IBuffer::checkedMultiply(n, 2)));
    char* to = result.ivBuffer;
    for (unsigned i = 0; i < n; ++i) {
        auto byte = static_cast<unsigned char>(ivBuffer[i]);
        *to++ = digits[byte >> 4];
        *to++ = digits[byte & 15];
    }
    return result;
}

IString IString::decimalToBytes() const {
    unsigned n = length();
    if (n == 0)
        return *this;
    for (unsigned i = 0; i < n; ++i)
        if (ivBuffer[i] < '0' || ivBuffer[i] > '9')
            return IString(buffer()->newBuffer(nullptr, 0));
    // The value is read exactly, whatever the number of digits: 32-bit limbs,
    // least significant first, nine digits at a time.
    std::vector<uint32_t> limbs;
    limbs.reserve(n / 9 + 1);
    for (unsigned i = 0; i < n;) {
        unsigned take = n - i < 9 ? n - i : 9;
        uint32_t chunk = 0;
        uint32_t scale = 1;
        for (unsigned k = 0; k < take; ++k, ++i) {
            chunk = chunk * 10 + uint32_t(ivBuffer[i] - '0');
            scale *= 10;
        }
        uint64_t carry = chunk;
        for (uint32_t& limb : limbs) {
            uint64_t product = uint64_t(limb) * scale + carry;
            limb = static_cast<uint32_t>(product);
            carry = product >> 32;
        }
        if (carry != 0)
            limbs.push_back(static_cast<uint32_t>(carry));
    }
    std::vector<char> bytes;
    bytes.reserve(limbs.size() * 4);
    for (auto limb = limbs.rbegin(); limb != limbs.rend(); ++limb)
        for (int shift = 24; shift >= 0; shift -= 8) {
            char byte = static_cast<char>((*limb >> shift) & 0xFF);
            if (!bytes.empty() || byte != 0)
                bytes.push_back(byte);
        }
    if (bytes.empty())
        bytes.push_back('\0');
    return IString(
        buffer()->newBuffer(bytes.data(), static_cast<unsigned>(bytes.size())));
}

IString IString::decimalToHexText() const { return decimalToBytes().asHexText(); }
