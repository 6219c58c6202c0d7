#include "qarq/base/IBuffer.hpp"

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <vector>

#include "base/BaseThrow.hpp"
#include "base/IBufferLocale.hpp"
#include "base/IStaticRefCountRemover.hpp"
#include "qarq/base/IExceptionClasses.hpp"
#include "qarq/base/IString.hpp"
#include "qarq/base/IStringTest.hpp"
#include "qarq/base/Os.hpp"

static_assert(sizeof(IBuffer) == 16, "the text lies right behind the header");

namespace {

const char kFile[] = ".\\base\\ibuffer0";

std::atomic<IBuffer*> gDefaultBuffer{nullptr};

// -1 not read yet, else 0 or 1.
std::atomic<int> gLocaleMode{-1};
std::mutex gLocaleLock;

unsigned startOf(unsigned start) { return start == 0 ? 1 : start; }

bool inSet(const char* set, unsigned count, char c) {
    return count != 0 && std::memchr(set, c, count) != nullptr;
}

}  // namespace

namespace qarq::base {

int parseLocaleMode(const char* value) {
    if (value == nullptr || std::strlen(value) != 2)
        return 0;
    return std::toupper(static_cast<unsigned char>(value[0])) == 'O' &&
           std::toupper(static_cast<unsigned char>(value[1])) == 'N';
}

void setLocaleMode(int mode) { gLocaleMode.store(mode, std::memory_order_release); }

int locale_ncmp(const char* a, const char* b, unsigned n) {
    if (n == 0)
        return 0;
    char* copyA = nullptr;
    char* copyB = nullptr;
    // strcoll needs terminated segments; a side whose last byte is not NUL
    // is compared from a terminated copy.
    auto terminated = [n](const char* side, char*& copy) {
        if (side[n - 1] == '\0')
            return side;
        copy = static_cast<char*>(qarq::os::calls().malloc(std::size_t(n) + 1));
        if (copy == nullptr) {
            IOutOfMemory exception(static_cast<const char*>(nullptr), 0, IException::recoverable);
            throwBaseException(exception, ".\\base\\ibuffer2", "locale_ncmp", __LINE__);
        }
        std::memcpy(copy, side, n);
        copy[n] = '\0';
        return static_cast<const char*>(copy);
    };
    int result = 0;
    int error = 0;
    try {
        a = terminated(a, copyA);
        b = terminated(b, copyB);
    } catch (...) {
        qarq::os::calls().free(copyA);
        throw;
    }
    unsigned pos = 0;
    for (;;) {
        unsigned nulsA = 0;
        unsigned nulsB = 0;
        while (pos + nulsA < n && a[pos + nulsA] == '\0')
            ++nulsA;
        while (pos + nulsB < n && b[pos + nulsB] == '\0')
            ++nulsB;
        if (nulsA != nulsB) {
            result = nulsA > nulsB ? -1 : 1;
            break;
        }
        pos += nulsA;
        if (pos >= n)
            break;
        errno = 0;
        result = std::strcoll(a + pos, b + pos);
        error = errno;
        if (result != 0 || error != 0)
            break;
        pos += static_cast<unsigned>(std::strlen(a + pos)) + 1;
        if (pos >= n)
            break;
    }
    qarq::os::calls().free(copyA);
    qarq::os::calls().free(copyB);
    if (error != 0) {
        char text[64];
        std::snprintf(text, sizeof text, "strcoll errno = %d\n", error);
        IInvalidRequest exception(text, 0, IException::recoverable);
        exception.setErrorCodeGroup(IException::CLibrary);
        throwBaseException(exception, ".\\base\\ibuffer2", "locale_ncmp", __LINE__);
    }
    return result;
}

}  // namespace qarq::base

IBuffer::~IBuffer() = default;

void IBuffer::operator delete(void* block) { qarq::os::calls().free(block); }

void* IBuffer::allocateBlock(unsigned length) {
    // Computed in size_t: the capacity of a length near 2^32 does not fit
    // 32 bits.
    std::size_t room = length == 0 ? 1 : (std::size_t(length) | 31u) + 1;
    void* block = qarq::os::calls().malloc(kHeaderSize + room);
    if (block == nullptr) {
        IOutOfMemory exception(static_cast<const char*>(nullptr), 0, IException::recoverable);
        qarq::base::throwBaseException(exception, kFile, "IBuffer::allocate", __LINE__);
    }
    return block;
}

int IBuffer::charType(unsigned) const { return 0; }
const char* IBuffer::next(const char* p) const { return p + 1; }
char* IBuffer::next(char* p) const { return p + 1; }

namespace {

// Locale mode, empty sides and a null argument: the rare cases of compare,
// kept out of its common path.
__attribute__((noinline)) int compareRare(const IBuffer& self, const void* data,
                                          unsigned otherLength) {
    if (data == nullptr)
        return 1;
    unsigned length = self.length();
    const char* mine = self.contents();
    if (mine == data && length == otherLength)
        return 0;
    if (length == 0)
        return otherLength == 0 ? 0 : 2;
    if (otherLength == 0)
        return 1;
    unsigned common = length < otherLength ? length : otherLength;
    int result = IBuffer::localeMode()
                     ? qarq::base::locale_ncmp(mine, static_cast<const char*>(data), common)
                     : std::memcmp(mine, data, common);
    if (result == 0)
        return length == otherLength ? 0 : (length < otherLength ? 2 : 1);
    return result < 0 ? 2 : 1;
}

}  // namespace

int IBuffer::compare(const void* data, unsigned otherLength) const {
    unsigned length = ivLength;
    if (__builtin_expect(data == nullptr || length == 0 || otherLength == 0 ||
                             gLocaleMode.load(std::memory_order_relaxed) != 0,
                         0))
        return compareRare(*this, data, otherLength);
    // The common case: bytes in memcmp order, then the shorter text is less.
    int result = std::memcmp(contents(), data, length < otherLength ? length : otherLength);
    if (result != 0)
        return result < 0 ? 2 : 1;
    return length == otherLength ? 0 : (length < otherLength ? 2 : 1);
}

IBuffer* IBuffer::subString(unsigned start) const {
    unsigned s = startOf(start);
    if (s > ivLength) {
        IBuffer* empty = nullBuffer();
        empty->addRef();
        return empty;
    }
    return subString(s, ivLength - s + 1, ' ');
}

IBuffer* IBuffer::subString(unsigned start, unsigned count, char padChar) const {
    unsigned s = startOf(start);
    unsigned available = s <= ivLength ? ivLength - s + 1 : 0;
    unsigned taken = available < count ? available : count;
    if (s == 1 && taken == ivLength && count == ivLength) {
        const_cast<IBuffer*>(this)->addRef();
        return const_cast<IBuffer*>(this);
    }
    return newBuffer(contents() + (taken != 0 ? s - 1 : 0), taken, nullptr, count - taken,
                     nullptr, 0, padChar);
}

IString IBuffer::asDebugInfo() const {
    IString text;
    if (ivLength < 24)
        text = IString(contents(), ivLength);
    else
        text = IString(contents(), 10, "...", 3, contents() + ivLength - 10, 10);
    return IString(className()) + "(@" +
           IString(static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(this))) +
           ",refs=" + IString(useCount()) + ",len=" + IString(ivLength) + ",data=[" + text +
           "])";
}

unsigned IBuffer::indexOf(const char* data, unsigned count, unsigned start) const {
    unsigned s = startOf(start);
    if (data == nullptr || count == 0 || s > ivLength || count > ivLength - s + 1)
        return 0;
    const char* base = contents();
    const void* found = memmem(base + s - 1, ivLength - s + 1, data, count);
    return found == nullptr ? 0 : unsigned(static_cast<const char*>(found) - base) + 1;
}

unsigned IBuffer::indexOfAnyBut(const IStringTest& test, unsigned start) const {
    const char* text = contents();
    for (unsigned i = startOf(start); i <= ivLength; ++i)
        if (!test.test(static_cast<unsigned char>(text[i - 1])))
            return i;
    return 0;
}

unsigned IBuffer::indexOfAnyBut(const char* data, unsigned count, unsigned start) const {
    const char* text = contents();
    for (unsigned i = startOf(start); i <= ivLength; ++i)
        if (!inSet(data, count, text[i - 1]))
            return i;
    return 0;
}

unsigned IBuffer::lastIndexOfAnyBut(const IStringTest& test, unsigned start) const {
    const char* text = contents();
    unsigned s = start == 0 || start > ivLength ? ivLength : start;
    for (unsigned i = s; i >= 1; --i)
        if (!test.test(static_cast<unsigned char>(text[i - 1])))
            return i;
    return 0;
}

unsigned IBuffer::lastIndexOfAnyBut(const char* data, unsigned count, unsigned start) const {
    const char* text = contents();
    unsigned s = start == 0 || start > ivLength ? ivLength : start;
    for (unsigned i = s; i >= 1; --i)
        if (!inSet(data, count, text[i - 1]))
            return i;
    return 0;
}

IBuffer* IBuffer::change(const char* pattern, unsigned m, const char* replacement, unsigned r,
                         unsigned start, unsigned maxChanges) {
    std::vector<unsigned> positions;
    for (unsigned from = startOf(start); positions.size() < maxChanges;) {
        unsigned at = indexOf(pattern, m, from);
        if (at == 0)
            break;
        positions.push_back(at);
        if (at > ivLength - m)  // the next start would lie past the end
            break;
        from = at + m;
    }
    if (positions.empty()) {
        addRef();
        return this;
    }
    auto matches = static_cast<unsigned>(positions.size());
    positions.push_back(ivLength + 1);
    IBuffer* result;
    if (m == r) {
        result = useCount() == 1 ? (addRef(), this) : newBuffer(contents(), ivLength);
    } else {
        unsigned total = m < r ? checkedAdd(ivLength, checkedMultiply(r - m, matches))
                               : ivLength - (m - r) * matches;
        if (total == 0) {
            result = nullBuffer();
            result->addRef();
            return result;
        }
        result = allocate(total);
    }
    const char* from = contents();
    char* to = result->contents();
    unsigned head = positions[0] - 1;
    if (result != this)
        std::memmove(to, from, head);
    to += head;
    for (unsigned i = 0; i < matches; ++i) {
        if (r != 0)
            std::memcpy(to, replacement, r);
        to += r;
        unsigned afterMatch = positions[i] - 1 + m;
        unsigned carried = positions[i + 1] - 1 - afterMatch;
        if (result != this && carried != 0)
            std::memcpy(to, from + afterMatch, carried);
        to += carried;
    }
    return result;
}

IBuffer* IBuffer::remove(unsigned start, unsigned count) {
    unsigned s = startOf(start);
    if (count == 0 || s > ivLength) {
        addRef();
        return this;
    }
    unsigned available = ivLength - s + 1;
    if (count > available)
        count = available;
    return newBuffer(contents(), s - 1, contents() + s - 1 + count, ivLength - (s - 1) - count);
}

namespace {

template <typename First, typename Last>
IBuffer* stripBy(IBuffer* buffer, int mode, First firstKept, Last lastKept) {
    unsigned length = buffer->length();
    if (length == 0) {
        buffer->addRef();
        return buffer;
    }
    unsigned first = mode == IBuffer::trailing ? 1 : firstKept(1u);
    unsigned last = mode != IBuffer::leading && first != 0 ? lastKept(length) : length;
    if (first == 0 || last == 0 || last < first) {
        IBuffer* empty = buffer->nullBuffer();
        empty->addRef();
        return empty;
    }
    if (first == 1 && last == length) {
        buffer->addRef();
        return buffer;
    }
    return buffer->newBuffer(buffer->contents() + first - 1, last - first + 1);
}

}  // namespace

IBuffer* IBuffer::strip(const IStringTest& test, int mode) {
    return stripBy(
        this, mode, [&](unsigned from) { return indexOfAnyBut(test, from); },
        [&](unsigned from) { return lastIndexOfAnyBut(test, from); });
}

IBuffer* IBuffer::strip(const char* chars, unsigned count, int mode) {
    return stripBy(
        this, mode, [&](unsigned from) { return indexOfAnyBut(chars, count, from); },
        [&](unsigned from) { return lastIndexOfAnyBut(chars, count, from); });
}

IBuffer* IBuffer::allocate(unsigned length) const {
    // A locale-mode process with a multi-byte locale takes the double-byte
    // buffer here once that class stands; until then every buffer is plain.
    return create<IBuffer>(length);
}

const char* IBuffer::className() const { return "IBuffer"; }

IBuffer* IBuffer::newBuffer(const void* p1, unsigned n1, const void* p2, unsigned n2,
                            const void* p3, unsigned n3, char padChar) const {
    unsigned total = checkedAdd(checkedAdd(n1, n2), n3);
    if (total == 0) {
        IBuffer* empty = nullBuffer();
        empty->addRef();
        return empty;
    }
    IBuffer* result = allocate(total);
    char* to = result->contents();
    const void* pieces[3] = {p1, p2, p3};
    unsigned counts[3] = {n1, n2, n3};
    for (int i = 0; i < 3; ++i) {
        if (counts[i] == 0)
            continue;
        if (pieces[i] != nullptr)
            std::memcpy(to, pieces[i], counts[i]);
        else
            std::memset(to, padChar, counts[i]);
        to += counts[i];
    }
    return result;
}

IBuffer* IBuffer::nullBuffer() const {
    // The double-byte buffer brings an empty plain buffer of its own; until
    // then every buffer's empty form is the default buffer.
    return defaultBuffer();
}

IBuffer* IBuffer::defaultBuffer() {
    IBuffer* current = gDefaultBuffer.load(std::memory_order_acquire);
    if (current != nullptr)
        return current;
    // No lock: two threads may both make one, but only one is installed and
    // the other is released again, so every string shares the same buffer.
    IBuffer* made = create<IBuffer>(0);
    if (!gDefaultBuffer.compare_exchange_strong(current, made, std::memory_order_acq_rel)) {
        made->removeRef();
        return current;
    }
    // The process's own reference goes back at the library's end.
    try {
        new IStaticRefCountRemover(made);
    } catch (...) {
        // Without a remover the buffer simply lives to the process's end.
    }
    return made;
}

void IBuffer::overflow() {
    IInvalidRequest exception("Attempt to allocate an IString that is too big.", 51,
                              IException::recoverable);
    qarq::base::throwBaseException(exception, kFile, "IBuffer::overflow", __LINE__);
}

int IBuffer::localeMode() {
    int mode = gLocaleMode.load(std::memory_order_acquire);
    if (mode >= 0)
        return mode;
    std::lock_guard<std::mutex> hold(gLocaleLock);
    mode = gLocaleMode.load(std::memory_order_acquire);
    if (mode < 0) {
        mode = qarq::base::parseLocaleMode(qarq::os::calls().getenv("NORBU_I18N"));
        gLocaleMode.store(mode, std::memory_order_release);
    }
    return mode;
}
