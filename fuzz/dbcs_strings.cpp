// Drives the double-byte string functions with arbitrary bytes.
//
// Input: two control bytes (code-page flag and lead range, width), then up to
// three NUL-separated pieces: text, set and pattern. Each piece is copied to a
// heap block of exactly its length plus the terminator, so that any read
// behind a terminator is caught by the address sanitizer.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "qarq/vorn/VornDbcs.hpp"
#include "qarq/vorn/VornDbcsCompare.hpp"
#include "vorn/VornDbcsDice.hpp"
#include "vorn/VornDbcsInternal.hpp"

namespace {

// A NUL-terminated copy in a block of exactly the needed size (plus `room`).
struct Block {
    explicit Block(const std::string& text, size_t room = 0)
        : size(text.size() + 1 + room), data(static_cast<char*>(std::malloc(size))) {
        std::memcpy(data, text.c_str(), text.size() + 1);
    }
    ~Block() { std::free(data); }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    size_t size;
    char* data;
};

void checkInside(const char* pointer, const Block& block) {
    if (pointer != nullptr && (pointer < block.data || pointer >= block.data + block.size)) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) {
        return 0;
    }
    static const bool initialised = (VornDbcsInit(), true);
    (void)initialised;
    const uint8_t control = data[0];
    const uint8_t width = data[1];
    std::vector<std::string> pieces(3);
    size_t piece = 0;
    for (size_t i = 2; i < size && piece < pieces.size(); ++i) {
        if (data[i] == 0) {
            ++piece;
        } else {
            pieces[piece] += static_cast<char>(data[i]);
        }
    }

    VornDbcsIsCodePageSingleByte = (control & 1) != 0 ? 1 : 0;
    const unsigned char ranges[][6] = {{0x80, 0xFF, 0, 0, 0, 0},
                                       {0x81, 0x9F, 0xE0, 0xFC, 0, 0},
                                       {0, 0, 0, 0, 0, 0},
                                       {0x01, 0xFF, 0, 0, 0, 0}};
    const unsigned char* chosen = ranges[(control >> 1) & 3];
    qarq::vorn::dbcs::setLeadRanges(chosen);

    Block text(pieces[0]);
    Block set(pieces[1]);
    Block pattern(pieces[2]);
    const size_t length = pieces[0].size();

    for (size_t i = 0; i <= length; ++i) {
        VornDbcsByteType(text.data, static_cast<int>(i));
        VornDbcsCharVal(text.data, static_cast<unsigned>(i), set.data);
    }
    if (VornDbcs_strspn(text.data, set.data) > length ||
        VornDbcs_strcspn(text.data, set.data) > length ||
        VornDbcs_strlastchr(text.data, set.data) > length) {
        std::abort();
    }
    checkInside(VornDbcs_strvalidate(text.data, set.data), text);
    checkInside(VornDbcs_strpbrk(text.data, set.data), text);
    checkInside(VornDbcs_strip_leading(text.data, set.data), text);
    checkInside(VornDbcs_strstr(text.data, pattern.data), text);
    checkInside(VornDbcs_strstr(text.data, set.data), text);

    {
        Block copy(pieces[0]);
        VornDbcs_strip_trailing(copy.data, set.data);
    }
    {
        Block copy(pieces[0]);
        char* end = copy.data + length;
        for (char* at = copy.data; at < end;) {
            char* token = VornDbcs_strtok(at, set.data);
            if (token == nullptr) {
                break;
            }
            checkInside(token, copy);
            at = token + std::strlen(token);
            while (at < end && *at == '\0') {
                ++at;
            }
        }
    }
    {
        char drive[3];
        char directory[256];
        char name[256];
        char extension[256];
        VornDbcs_splitpath(text.data, drive, directory, name, extension);
        VornDbcs_splitpath(text.data, nullptr, nullptr, name, nullptr);
    }
    {
        Block copy(pieces[0], width % 64);
        VornDbcs_dice_msg_text(copy.data, width % 40, static_cast<unsigned>(copy.size), set.data,
                               pattern.data);
        if (std::strlen(copy.data) >= copy.size) {
            std::abort();
        }
    }
    if (length + 65 < 65535) {  // the capacity is 16-bit
        Block copy(pieces[0], width % 64);
        unsigned short count = 0;
        VornDbcs_dice_str_text(copy.data, static_cast<unsigned short>(width % 40),
                               static_cast<unsigned short>(copy.size), set.data, &count);
    }

    VornStringCompare(pattern.data, text.data, (control & 8) != 0 ? chosen : nullptr);
    VornStringCompare(set.data, text.data, chosen);
    return 0;
}
