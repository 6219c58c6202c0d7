#include "qarq/vorn/VornDbcs.hpp"

#include <cstdlib>
#include <cstring>

#include "qarq/vorn/vornnls1.hpp"
#include "vorn/VornDbcsInternal.hpp"
#include "vorn/VornNlsTranslateCpInternal.hpp"
#include "vorn/VornTrace.hpp"

std::atomic<int32_t> VornDbcsIsCodePageSingleByte{1};

namespace qarq::vorn::dbcs {

std::atomic<int32_t> dbcsInitialised{0};

namespace {

// The lead-byte table as a 256-bit set: a test per byte is one load, and the
// words can be replaced while other threads read them.
std::atomic<uint64_t> gLeadBits[4];

const unsigned char kShiftJis[] = {0x81, 0x9F, 0xE0, 0xFC, 0, 0};
const unsigned char kWide[] = {0x81, 0xFE, 0, 0};

}  // namespace

bool isLeadByte(unsigned char byte) {
    return ((gLeadBits[byte >> 6].load(std::memory_order_relaxed) >> (byte & 63u)) & 1u) != 0;
}

void setLeadRanges(const unsigned char* pairs) {
    uint64_t bits[4] = {0, 0, 0, 0};
    for (int n = 0; pairs != nullptr && n < kMaxLeadRanges && (pairs[0] != 0 || pairs[1] != 0);
         ++n, pairs += 2) {
        for (unsigned b = pairs[0]; b <= pairs[1]; ++b) {
            if (b != 0) {  // the terminator never leads a character
                bits[b >> 6] |= uint64_t{1} << (b & 63u);
            }
        }
    }
    for (int i = 0; i < 4; ++i) {
        gLeadBits[i].store(bits[i], std::memory_order_relaxed);
    }
}

int localeLeadRanges(unsigned char* pairs) {
    // The same code page number that chooses the default code set, so that
    // the lead bytes fit the page the text is in.
    char page[16];
    vornnls1_get_cs_name(page, sizeof page);
    const int number = std::atoi(page);
    const unsigned char* ranges = number == 932                                     ? kShiftJis
                                  : number == 936 || number == 949 || number == 950 ? kWide
                                                                                    : nullptr;
    int count = 0;
    for (; ranges != nullptr && (ranges[0] != 0 || ranges[1] != 0); ranges += 2, ++count) {
        pairs[2 * count] = ranges[0];
        pairs[2 * count + 1] = ranges[1];
    }
    pairs[2 * count] = pairs[2 * count + 1] = 0;
    return count;
}

}  // namespace qarq::vorn::dbcs

namespace {

using qarq::vorn::traceControl;
using qarq::vorn::dbcs::isLeadByte;

void ensureInit() {
    if (qarq::vorn::dbcs::dbcsInitialised.load(std::memory_order_acquire) == 0) {
        VornDbcsInit();
    }
}

// What byteType gives for an index at or behind the terminator.
constexpr int kBehindEnd = -1;

// The byte type without the lazy start and without trace points, for the
// walks inside this module. The walk stops at the terminator, so an index
// behind it is never read.
int byteType(const char* text, size_t index) {
    if (VornDbcsIsCodePageSingleByte.load(std::memory_order_relaxed) != 0) {
        return ::strnlen(text, index + 1) > index ? VORN_DBCS_SINGLE : kBehindEnd;
    }
    int type = VORN_DBCS_SINGLE;
    for (size_t j = 0; j <= index; ++j) {
        const unsigned char byte = static_cast<unsigned char>(text[j]);
        if (byte == 0) {
            return kBehindEnd;
        }
        type = type == VORN_DBCS_LEAD ? VORN_DBCS_TRAIL
               : isLeadByte(byte)     ? VORN_DBCS_LEAD
                                      : VORN_DBCS_SINGLE;
    }
    if (type == VORN_DBCS_LEAD && text[index + 1] == '\0') {
        return VORN_DBCS_INVALID;
    }
    return type;
}

// Length in bytes of the character that starts at `text`: 1 or 2, and 0 for
// an invalid character or the terminator, which ends every walk.
size_t charLength(const char* text) {
    const int type = byteType(text, 0);
    return type == VORN_DBCS_SINGLE ? 1 : type == VORN_DBCS_LEAD ? 2 : 0;
}

// True when the character of `length` bytes at `text` is one of the
// characters of `set`.
bool inSet(const char* text, size_t length, const char* set) {
    if (set == nullptr || length == 0) {
        return false;
    }
    for (size_t j = 0;;) {
        const size_t setLength = charLength(set + j);
        if (setLength == 0) {
            return false;
        }
        if (setLength == length && std::memcmp(set + j, text, length) == 0) {
            return true;
        }
        j += setLength;
    }
}

size_t spanIn(const char* text, const char* set) {
    size_t count = 0;
    for (;;) {
        const size_t length = charLength(text + count);
        if (length == 0 || !inSet(text + count, length, set)) {
            return count;
        }
        count += length;
    }
}

// Byte index of the first character in `set`, or -1 when the walk ends first.
ptrdiff_t firstIn(const char* text, const char* set) {
    for (size_t i = 0;;) {
        const size_t length = charLength(text + i);
        if (length == 0) {
            return -1;
        }
        if (inSet(text + i, length, set)) {
            return static_cast<ptrdiff_t>(i);
        }
        i += length;
    }
}

ptrdiff_t lastIn(const char* text, const char* set) {
    ptrdiff_t last = -1;
    for (size_t i = 0;;) {
        const size_t length = charLength(text + i);
        if (length == 0) {
            return last;
        }
        if (inSet(text + i, length, set)) {
            last = static_cast<ptrdiff_t>(i);
        }
        i += length;
    }
}

char* validate(const char* text, const char* set) {
    const size_t count = spanIn(text, set);
    return text[count] == '\0' ? nullptr : const_cast<char*>(text + count);
}

char* firstPointer(const char* text, const char* set) {
    const ptrdiff_t at = firstIn(text, set);
    return at < 0 ? nullptr : const_cast<char*>(text + at);
}

// Copies up to 255 bytes and the terminator (the output buffers hold 256).
void copyPart(char* to, const char* from, size_t length) {
    if (to != nullptr) {
        std::memcpy(to, from, length);
        to[length] = '\0';
    }
}

uint32_t traced(size_t value) {
    return static_cast<uint32_t>(value);
}

}  // namespace

extern "C" {

int VornDbcsInit(void) {
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, "VornDbcsInit");
    // Mark the start first: the code-set lookup below may call back into the
    // string functions, which must then not start again.
    qarq::vorn::dbcs::dbcsInitialised.store(1, std::memory_order_release);
    unsigned char pairs[2 * (qarq::vorn::dbcs::kMaxLeadRanges + 1)];
    qarq::vorn::dbcs::localeLeadRanges(pairs);
    qarq::vorn::dbcs::setLeadRanges(pairs);
    const int32_t single = VornNlsIsServerSBCS() != 0 ? 0 : 1;
    VornDbcsIsCodePageSingleByte.store(single, std::memory_order_relaxed);
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, "VornDbcsInit", qarq::ras::pair(single));
    return 0;
}

int VornDbcsByteType(const char* text, int index) {
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, "VornDbcsByteType", qarq::ras::pair(text),
                     qarq::ras::pair(index));
    ensureInit();
    // The public answer for an index outside the text is a plain single byte:
    // the test callers make is "lead or trail", which such a byte is not.
    int type = index < 0 ? VORN_DBCS_SINGLE : byteType(text, static_cast<size_t>(index));
    if (type == kBehindEnd) {
        type = VORN_DBCS_SINGLE;
    }
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, "VornDbcsByteType", qarq::ras::pair(type));
    return type;
}

unsigned VornDbcsCharVal(const char* text, unsigned index, const char* set) {
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, "VornDbcsCharVal", qarq::ras::pair(text),
                     qarq::ras::pair(index), qarq::ras::pair(set));
    ensureInit();
    const int type = byteType(text, index);
    unsigned length = type == VORN_DBCS_SINGLE ? 1u : type == VORN_DBCS_LEAD ? 2u : 0u;
    if (length != 0 && !inSet(text + index, length, set)) {
        length = 0;
    }
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, "VornDbcsCharVal", qarq::ras::pair(length));
    return length;
}

size_t VornDbcs_strspn(const char* text, const char* set) {
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, "VornDbcs_strspn", qarq::ras::pair(text),
                     qarq::ras::pair(set));
    ensureInit();
    const size_t count = spanIn(text, set);
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, "VornDbcs_strspn",
                     qarq::ras::pair(traced(count)));
    return count;
}

size_t VornDbcs_strcspn(const char* text, const char* set) {
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, "VornDbcs_strcspn", qarq::ras::pair(text),
                     qarq::ras::pair(set));
    ensureInit();
    const ptrdiff_t at = firstIn(text, set);
    const size_t index = at < 0 ? std::strlen(text) : static_cast<size_t>(at);
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, "VornDbcs_strcspn",
                     qarq::ras::pair(traced(index)));
    return index;
}

char* VornDbcs_strvalidate(const char* text, const char* set) {
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, "VornDbcs_strvalidate",
                     qarq::ras::pair(text), qarq::ras::pair(set));
    ensureInit();
    char* result = validate(text, set);
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, "VornDbcs_strvalidate",
                     qarq::ras::pair(result));
    return result;
}

char* VornDbcs_strpbrk(const char* text, const char* set) {
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, "VornDbcs_strpbrk", qarq::ras::pair(text),
                     qarq::ras::pair(set));
    ensureInit();
    char* result = firstPointer(text, set);
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, "VornDbcs_strpbrk", qarq::ras::pair(result));
    return result;
}

size_t VornDbcs_strlastchr(const char* text, const char* set) {
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, "VornDbcs_strlastchr", qarq::ras::pair(text),
                     qarq::ras::pair(set));
    ensureInit();
    const ptrdiff_t at = lastIn(text, set);
    const size_t index = at < 0 ? std::strlen(text) : static_cast<size_t>(at);
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, "VornDbcs_strlastchr",
                     qarq::ras::pair(traced(index)));
    return index;
}

char* VornDbcs_strip_leading(const char* text, const char* set) {
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, "VornDbcs_strip_leading",
                     qarq::ras::pair(text), qarq::ras::pair(set));
    ensureInit();
    char* result = const_cast<char*>(text + spanIn(text, set));
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, "VornDbcs_strip_leading",
                     qarq::ras::pair(result));
    return result;
}

char* VornDbcs_strip_trailing(char* text, const char* set) {
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, "VornDbcs_strip_trailing",
                     qarq::ras::pair(text), qarq::ras::pair(set));
    ensureInit();
    char* runStart = nullptr;
    size_t i = 0;
    for (;;) {
        const size_t length = charLength(text + i);
        if (length == 0) {
            break;
        }
        if (!inSet(text + i, length, set)) {
            runStart = nullptr;
        } else if (runStart == nullptr) {
            runStart = text + i;
        }
        i += length;
    }
    // A walk cut short by an invalid character did not end inside a run: the
    // invalid character itself is not in the set.
    if (runStart != nullptr && text[i] == '\0') {
        *runStart = '\0';
    }
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, "VornDbcs_strip_trailing",
                     qarq::ras::pair(text));
    return text;
}

char* VornDbcs_strtok(char* text, const char* delimiters) {
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, "VornDbcs_strtok", qarq::ras::pair(text),
                     qarq::ras::pair(delimiters));
    ensureInit();
    char* token = validate(text, delimiters);
    if (token != nullptr) {
        char* delimiter = firstPointer(token, delimiters);
        if (delimiter != nullptr) {
            std::memset(delimiter, 0, charLength(delimiter));
        }
    }
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, "VornDbcs_strtok", qarq::ras::pair(token));
    return token;
}

char* VornDbcs_strstr(const char* text, const char* pattern) {
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, "VornDbcs_strstr", qarq::ras::pair(text),
                     qarq::ras::pair(pattern));
    ensureInit();
    char* result = nullptr;
    if (pattern[0] == '\0') {
        result = const_cast<char*>(text);
    } else if (const size_t first = charLength(pattern); first != 0) {
        char head[3] = {pattern[0], first == 2 ? pattern[1] : '\0', '\0'};
        const size_t patternLength = std::strlen(pattern);
        for (const char* at = firstPointer(text, head); at != nullptr;
             at = firstPointer(at + first, head)) {
            // strncmp stops at the text's terminator, so a short tail is safe.
            if (std::strncmp(at, pattern, patternLength) == 0) {
                result = const_cast<char*>(at);
                break;
            }
        }
    }
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, "VornDbcs_strstr", qarq::ras::pair(result));
    return result;
}

void VornDbcs_splitpath(const char* path, char* drive, char* directory, char* name,
                        char* extension) {
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, "VornDbcs_splitpath", qarq::ras::pair(path));
    ensureInit();
    for (char* part : {drive, directory, name, extension}) {
        if (part != nullptr) {
            part[0] = '\0';
        }
    }
    const char* rest = path;

    ptrdiff_t at = lastIn(rest, ":");
    if (at >= 0 && at < 2) {
        copyPart(drive, rest, static_cast<size_t>(at) + 1);
        rest += at + 1;
    }

    at = lastIn(rest, "\\/");
    if (at >= 0 && at < 255) {
        copyPart(directory, rest, static_cast<size_t>(at) + 1);
        rest += at + 1;
    }

    at = lastIn(rest, ".");
    if (at >= 0) {
        if (at < 256) {
            copyPart(name, rest, static_cast<size_t>(at));
            rest += at;
        }
        const size_t restLength = std::strlen(rest);
        if (restLength < 256 && extension != nullptr) {
            copyPart(extension, rest, restLength);
        } else if (name != nullptr && std::strlen(name) + restLength < 256) {
            std::strcat(name, rest);
        }
    } else {
        const size_t restLength = std::strlen(rest);
        if (restLength < 256) {
            copyPart(name, rest, restLength);
        }
    }
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, "VornDbcs_splitpath", qarq::ras::pair(drive),
                     qarq::ras::pair(directory), qarq::ras::pair(name), qarq::ras::pair(extension));
}

}  // extern "C"
