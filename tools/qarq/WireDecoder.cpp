#include "WireDecoder.hpp"

#include <cinttypes>

#include "TextEscape.hpp"
#include "qarq/vorn/VornJavaTypes.hpp"

namespace qarqtool {

namespace {

constexpr uint8_t kShort = 1;
constexpr uint8_t kChar = 2;

std::string hex16(unsigned v) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%04X", v);
    return text;
}

void line(FILE* out, size_t offset, int indent, const std::string& text) {
    std::fprintf(out, "%6zu  %*s%s\n", offset, indent * 2, "", text.c_str());
}

}  // namespace

WireDecoder::WireDecoder(const std::string& block)
    : data_(reinterpret_cast<const unsigned char*>(block.data())), size_(block.size()) {}

uint16_t WireDecoder::u16(size_t at) const {
    return uint16_t(data_[at] << 8 | data_[at + 1]);
}

uint32_t WireDecoder::u32(size_t at) const {
    return uint32_t(data_[at]) << 24 | uint32_t(data_[at + 1]) << 16 |
           uint32_t(data_[at + 2]) << 8 | data_[at + 3];
}

bool WireDecoder::need(size_t at, size_t count, const char* what, size_t start,
                       std::string* why) const {
    if (at <= size_ && size_ - at >= count)
        return true;
    if (why != nullptr) {
        *why = "offset " + std::to_string(start) + ": truncated " + what + " (needs " +
               std::to_string(at - start + count) + " bytes, " + std::to_string(size_ - start) +
               " left)";
    }
    return false;
}

bool WireDecoder::parseString(size_t at, size_t& end, std::string* why) const {
    if (!need(at, 6, "string", at, why))
        return false;
    int32_t length = int32_t(u32(at + 2));
    if (length <= 0) {
        end = at + 6;
        return true;
    }
    if (!need(at, 8, "string", at, why))
        return false;
    int16_t count = int16_t(u16(at + 6));
    if (count < 0) {
        if (why)
            *why = "offset " + std::to_string(at) + ": negative string length " +
                   std::to_string(count);
        return false;
    }
    if (!need(at, 8 + size_t(count), "string", at, why))
        return false;
    end = at + 8 + size_t(count);
    return true;
}

bool WireDecoder::parseItem(size_t at, bool expectClass, Item& item, std::string* why) const {
    if (!need(at, 2, "tag", at, why))
        return false;
    item.tag = u16(at);
    item.expectClass = false;
    std::string where = "offset " + std::to_string(at) + ": ";
    if (expectClass && item.tag != VORNJAVA_CLASS && item.tag != VORNJAVA_CLASS_HANDLE) {
        if (why)
            *why = where + "vector element is not an object (tag " + hex16(item.tag) + ")";
        return false;
    }
    auto fixed = [&](size_t bytes, const char* what) {
        if (!need(at, 2 + bytes, what, at, why))
            return false;
        item.end = at + 2 + bytes;
        return true;
    };
    switch (item.tag) {
        case VORNJAVA_BYTE:
            return fixed(1, "byte");
        case VORNJAVA_BOOLEAN:
            return fixed(1, "boolean");
        case VORNJAVA_CHAR_OR_SHORT:
            return fixed(1, "char");
        case VORNJAVA_INT:
            return fixed(4, "int");
        case VORNJAVA_LONG:
            return fixed(8, "long");
        case VORNJAVA_CLASS_HANDLE:
            return fixed(2, "class handle");
        case VORNJAVA_STRING:
            return parseString(at, item.end, why);
        case VORNJAVA_CLASS: {
            if (!need(at, 6, "class name", at, why))
                return false;
            int32_t length = int32_t(u32(at + 2));
            if (length <= 0) {
                item.end = at + 6;
                return true;
            }
            if (!need(at, 8 + size_t(length), "class name", at, why))
                return false;
            item.end = at + 8 + size_t(length);
            return true;
        }
        case VORNJAVA_BYTE_ARRAY: {
            if (!need(at, 6, "byte array", at, why))
                return false;
            int32_t length = int32_t(u32(at + 2));
            if (length < 0) {
                if (why)
                    *why = where + "negative byte array length " + std::to_string(length);
                return false;
            }
            if (!need(at, 6 + size_t(length), "byte array", at, why))
                return false;
            item.end = at + 6 + size_t(length);
            return true;
        }
        case VORNJAVA_STRING_ARRAY: {
            if (!need(at, 6, "string array", at, why))
                return false;
            int32_t count = int32_t(u32(at + 2));
            size_t next = at + 6;
            for (int32_t i = 0; i < count; ++i) {
                if (!need(next, 2, "string array element", next, why))
                    return false;
                if (u16(next) != VORNJAVA_STRING) {
                    if (why)
                        *why = "offset " + std::to_string(next) +
                               ": string array element is not a string (tag " + hex16(u16(next)) +
                               ")";
                    return false;
                }
                if (!parseString(next, next, why))
                    return false;
            }
            item.end = next;
            return true;
        }
        case VORNJAVA_VECTOR: {
            if (!need(at, 6, "vector", at, why))
                return false;
            item.expectClass = int32_t(u32(at + 2)) > 0;
            item.end = at + 6;
            return true;
        }
        default:
            if (why)
                *why = where + "bad tag " + hex16(item.tag);
            return false;
    }
}

// Depth-first search over the char/short readings, short first. What a
// value means never depends on what came before it (but for the object that
// must follow a vector header), so an offset from which no parse reaches the
// end stays hopeless: every offset walked since a choice is remembered as
// dead when the search backs out of that choice, and no offset is walked
// twice. The search is linear in the block.
bool WireDecoder::chooseReadings() {
    struct Choice {
        size_t at;
        uint8_t reading;
        size_t mark;  // walked.size() when the choice was made
    };
    std::vector<Choice> choices;
    std::vector<size_t> walked;
    std::vector<bool> dead(size_ + 1, false);
    size_t at = 0;
    bool expectClass = false;
    for (;;) {
        bool failed = false;
        Item item;
        if (at == size_) {
            if (!expectClass)
                break;
            failed = true;
        } else if (!expectClass && dead[at]) {
            failed = true;
        } else if (!parseItem(at, expectClass, item, nullptr)) {
            failed = true;
        } else {
            if (!expectClass)
                walked.push_back(at);
            if (item.tag == VORNJAVA_CHAR_OR_SHORT) {
                uint8_t reading = size_ - at >= 4 ? kShort : kChar;
                choices.push_back({at, reading, walked.size()});
                at += reading == kShort ? 4 : 3;
                expectClass = false;
            } else {
                at = item.end;
                expectClass = item.expectClass;
            }
        }
        if (!failed)
            continue;
        for (;;) {
            if (choices.empty())
                return false;
            Choice& c = choices.back();
            for (size_t i = c.mark; i < walked.size(); ++i)
                dead[walked[i]] = true;
            walked.resize(c.mark);
            if (c.reading == kShort) {
                c.reading = kChar;
                at = c.at + 3;
                expectClass = false;
                break;
            }
            choices.pop_back();
        }
    }
    reading_.assign(size_, 0);
    for (const Choice& c : choices)
        reading_[c.at] = c.reading;
    return true;
}

bool WireDecoder::greedyShort(size_t at) const {
    Item item;
    if (size_ - at < 4)
        return false;
    if (at + 4 == size_ || parseItem(at + 4, false, item, nullptr))
        return true;
    if (at + 3 == size_ || parseItem(at + 3, false, item, nullptr))
        return false;
    return true;
}

void WireDecoder::printString(FILE* out, size_t at, int indent, size_t& end) const {
    int32_t length = int32_t(u32(at + 2));
    std::string text;
    if (length > 0) {
        size_t count = u16(at + 6);
        std::string bytes(reinterpret_cast<const char*>(data_ + at + 8), count);
        text = "string " + quoteText(bytes);
        if (size_t(length) != count)
            text += " length=" + std::to_string(length);
        end = at + 8 + count;
    } else {
        text = "string \"\"";
        if (length != 0)
            text += " length=" + std::to_string(length);
        end = at + 6;
    }
    line(out, at, indent, text);
}

bool WireDecoder::decode(FILE* out) {
    whole_ = chooseReadings();
    struct Frame {
        int32_t remaining;
        int elementIndent;
    };
    std::vector<Frame> vectors;
    int objectIndent = 0;  // where a class line of the current container goes
    int indent = 0;        // where other values go
    size_t at = 0;
    bool expectClass = false;
    while (at < size_) {
        Item item;
        std::string why;
        if (!parseItem(at, expectClass, item, &why)) {
            error_ = why;
            return false;
        }
        char number[64];
        switch (item.tag) {
            case VORNJAVA_BYTE:
                line(out, at, indent, "byte " + std::to_string(int(int8_t(data_[at + 2]))));
                break;
            case VORNJAVA_BOOLEAN: {
                unsigned v = data_[at + 2];
                line(out, at, indent,
                     std::string("boolean ") + (v == 1   ? "true"
                                                : v == 0 ? "false"
                                                         : std::to_string(v)));
                break;
            }
            case VORNJAVA_CHAR_OR_SHORT: {
                bool isShort = whole_ ? reading_[at] == kShort : greedyShort(at);
                if (isShort) {
                    line(out, at, indent, "short " + std::to_string(int16_t(u16(at + 2))));
                    item.end = at + 4;
                } else {
                    unsigned char c = data_[at + 2];
                    if (c >= 0x20 && c < 0x7F && c != '\'' && c != '\\') {
                        line(out, at, indent, std::string("char '") + char(c) + "'");
                    } else {
                        std::snprintf(number, sizeof number, "char 0x%02X", c);
                        line(out, at, indent, number);
                    }
                }
                break;
            }
            case VORNJAVA_INT:
                line(out, at, indent, "int " + std::to_string(int32_t(u32(at + 2))));
                break;
            case VORNJAVA_LONG: {
                int64_t v = int64_t(uint64_t(u32(at + 2)) << 32 | u32(at + 6));
                std::snprintf(number, sizeof number, "long %" PRId64, v);
                line(out, at, indent, number);
                break;
            }
            case VORNJAVA_STRING:
                printString(out, at, indent, item.end);
                break;
            case VORNJAVA_STRING_ARRAY: {
                int32_t count = int32_t(u32(at + 2));
                line(out, at, indent, "strings " + std::to_string(count));
                size_t next = at + 6;
                for (int32_t i = 0; i < count; ++i)
                    printString(out, next, indent + 1, next);
                break;
            }
            case VORNJAVA_BYTE_ARRAY: {
                size_t count = u32(at + 2);
                std::string text = "bytes " + std::to_string(count);
                if (count > 0)
                    text += ' ';
                for (size_t i = 0; i < count; ++i) {
                    std::snprintf(number, sizeof number, "%02X", data_[at + 6 + i]);
                    text += number;
                }
                line(out, at, indent, text);
                break;
            }
            case VORNJAVA_VECTOR: {
                int32_t count = int32_t(u32(at + 2));
                line(out, at, indent, "vector " + std::to_string(count));
                if (count > 0) {
                    vectors.push_back({count, indent + 1});
                    objectIndent = indent + 1;
                }
                break;
            }
            case VORNJAVA_CLASS:
            case VORNJAVA_CLASS_HANDLE: {
                while (!vectors.empty() && vectors.back().remaining == 0) {
                    vectors.pop_back();
                    objectIndent = vectors.empty() ? 0 : vectors.back().elementIndent;
                }
                if (!vectors.empty())
                    --vectors.back().remaining;
                bool null = false;
                std::string text;
                if (item.tag == VORNJAVA_CLASS_HANDLE) {
                    text = "classhandle " + std::to_string(int16_t(u16(at + 2)));
                } else {
                    int32_t length = int32_t(u32(at + 2));
                    if (length > 0) {
                        std::string name(reinterpret_cast<const char*>(data_ + at + 8),
                                         size_t(length));
                        text = "class " + quoteText(name);
                        uint16_t count = u16(at + 6);
                        if (count != uint16_t(length))
                            text += " short=" + std::to_string(int16_t(count));
                    } else {
                        text = "class \"\"";
                        if (length != 0)
                            text += " length=" + std::to_string(length);
                        null = true;
                    }
                }
                line(out, at, objectIndent, text);
                indent = null ? objectIndent : objectIndent + 1;
                break;
            }
            default:
                break;
        }
        at = item.end;
        expectClass = item.expectClass;
    }
    return true;
}

}  // namespace qarqtool
