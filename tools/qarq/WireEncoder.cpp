#include "WireEncoder.hpp"

#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cstdlib>

#include "TextEscape.hpp"
#include "qarq/vorn/VornJavaTypes.hpp"
#include "qarq/vorn/VornJavaWrite.hpp"

namespace qarqtool {

struct WireEncoder::Writer {
    VornJavaWrite out;
};

namespace {

void skipSpace(const std::string& s, size_t& at) {
    while (at < s.size() && std::isspace(static_cast<unsigned char>(s[at])))
        ++at;
}

std::string word(const std::string& s, size_t& at) {
    skipSpace(s, at);
    size_t start = at;
    while (at < s.size() && !std::isspace(static_cast<unsigned char>(s[at])))
        ++at;
    return s.substr(start, at - start);
}

// A decimal or 0x number within [low, high].
bool number(const std::string& text, long long low, long long high, long long& value,
            std::string& error) {
    if (text.empty()) {
        error = "missing number";
        return false;
    }
    const char* begin = text.c_str();
    char* end = nullptr;
    errno = 0;
    bool negative = text[0] == '-';
    const char* digits = begin + (negative || text[0] == '+');
    // Decimal, or hex after 0x; a leading zero does not mean octal here.
    int base = digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X') ? 16 : 10;
    unsigned long long magnitude = std::strtoull(digits, &end, base);
    if (*end != '\0' || errno != 0 ||
        !std::isxdigit(static_cast<unsigned char>(text[negative || text[0] == '+']))) {
        error = "bad number '" + text + "'";
        return false;
    }
    if (negative) {
        if (magnitude > 0x8000000000000000ull) {
            error = "number out of range: " + text;
            return false;
        }
        value = magnitude == 0x8000000000000000ull ? INT64_MIN : -(long long)(magnitude);
    } else {
        if (magnitude > uint64_t(INT64_MAX) && high != INT64_MAX) {
            error = "number out of range: " + text;
            return false;
        }
        value = (long long)(magnitude);  // bits of an unsigned 64-bit long kept
        if (magnitude > uint64_t(INT64_MAX))
            return true;
    }
    if (value < low || value > high) {
        error = "number out of range: " + text;
        return false;
    }
    return true;
}

}  // namespace

WireEncoder::WireEncoder() : writer_(new Writer) {}

WireEncoder::~WireEncoder() {
    delete[] writer_->out.getBuffer();
    delete writer_;
}

bool WireEncoder::flush(FILE* out) {
    VornJavaWrite& w = writer_->out;
    unsigned used = w.calculateUsedLength();
    bool ok = used == 0 || std::fwrite(w.getBuffer(), 1, used, out) == used;
    w.resetBuffer();
    return ok;
}

bool WireEncoder::encodeLine(const std::string& text) {
    size_t at = 0;
    skipSpace(text, at);
    if (at == text.size() || text[at] == '#')
        return true;
    std::string type = word(text, at);
    if (!type.empty() && std::isdigit(static_cast<unsigned char>(type[0]))) {
        type = word(text, at);  // the offset of a listing
    }
    VornJavaWrite& w = writer_->out;
    long long v = 0;
    auto rest = [&]() {
        skipSpace(text, at);
        if (at != text.size()) {
            error_ = "unexpected '" + text.substr(at) + "' after the value";
            return false;
        }
        return true;
    };
    auto value = [&](long long low, long long high) {
        return number(word(text, at), low, high, v, error_);
    };
    if (type == "byte") {
        if (!value(-128, 255) || !rest())
            return false;
        w.writeByte(char(v));
    } else if (type == "char") {
        skipSpace(text, at);
        if (at + 2 < text.size() && text[at] == '\'' && text[at + 2] == '\'') {
            v = static_cast<unsigned char>(text[at + 1]);
            at += 3;
        } else if (!value(-128, 255)) {
            return false;
        }
        if (!rest())
            return false;
        w.writeChar(char(v));
    } else if (type == "short") {
        if (!value(-32768, 65535) || !rest())
            return false;
        w.writeShort(short(uint16_t(v)));
    } else if (type == "int") {
        if (!value(INT32_MIN, UINT32_MAX) || !rest())
            return false;
        w.writeInt(int(uint32_t(v)));
    } else if (type == "long") {
        if (!value(INT64_MIN, INT64_MAX) || !rest())
            return false;
        w.writeLong(int64_t(v));
    } else if (type == "boolean") {
        std::string b = word(text, at);
        if (b == "true") {
            v = 1;
        } else if (b == "false") {
            v = 0;
        } else if (!number(b, 0, 255, v, error_)) {
            return false;
        }
        if (!rest())
            return false;
        w.writeType(VORNJAVA_BOOLEAN);
        w.putByte(char(v));
    } else if (type == "classhandle") {
        if (!value(-32768, 65535) || !rest())
            return false;
        w.writeType(VORNJAVA_CLASS_HANDLE);
        w.writeShortLength(short(uint16_t(v)));
    } else if (type == "strings" || type == "vector") {
        if (!value(INT32_MIN, INT32_MAX) || !rest())
            return false;
        w.writeType(type == "strings" ? VORNJAVA_STRING_ARRAY : VORNJAVA_VECTOR);
        w.writeLength(int(v));
    } else if (type == "string" || type == "class") {
        skipSpace(text, at);
        std::string bytes;
        if (!unquoteText(text, at, bytes, error_))
            return false;
        if (bytes.size() > (type == "string" ? 32767u : size_t(INT32_MAX))) {
            error_ = type + " of " + std::to_string(bytes.size()) + " bytes is too long";
            return false;
        }
        long long length = (long long)(bytes.size());
        long long count = (long long)(uint16_t(bytes.size()));
        for (std::string option = word(text, at); !option.empty(); option = word(text, at)) {
            if (option.compare(0, 7, "length=") == 0) {
                if (!number(option.substr(7), INT32_MIN, INT32_MAX, length, error_))
                    return false;
            } else if (type == "class" && option.compare(0, 6, "short=") == 0) {
                if (!number(option.substr(6), -32768, 65535, count, error_))
                    return false;
            } else {
                error_ = "unexpected '" + option + "' after the value";
                return false;
            }
        }
        if (length <= 0 && !bytes.empty()) {
            error_ = "length=" + std::to_string(length) + " leaves no room for the text";
            return false;
        }
        if (type == "class" && length > 0 && size_t(length) != bytes.size()) {
            error_ = "a class name's length is its byte count";
            return false;
        }
        w.writeType(type == "string" ? VORNJAVA_STRING : VORNJAVA_CLASS);
        w.writeLength(int(length));
        if (length > 0) {
            w.writeShortLength(short(uint16_t(count)));
            w.putBytes(bytes.data(), unsigned(bytes.size()));
        }
    } else if (type == "bytes") {
        if (!value(0, INT32_MAX))
            return false;
        std::string hex = word(text, at);
        if (!rest())
            return false;
        if (hex.size() != size_t(v) * 2) {
            error_ = "bytes " + std::to_string(v) + " needs " + std::to_string(v * 2) +
                     " hex digits, not " + std::to_string(hex.size());
            return false;
        }
        std::string bytes;
        for (size_t i = 0; i < hex.size(); i += 2) {
            int hi = hexDigit(hex[i]);
            int lo = hexDigit(hex[i + 1]);
            if (hi < 0 || lo < 0) {
                error_ = "bad hex digit in '" + hex.substr(i, 2) + "'";
                return false;
            }
            bytes += char(hi << 4 | lo);
        }
        w.writeType(VORNJAVA_BYTE_ARRAY);
        w.writeLength(int(v));
        if (!bytes.empty())
            w.putBytes(bytes.data(), unsigned(bytes.size()));
    } else {
        error_ = type.empty() ? "missing type" : "unknown type '" + type + "'";
        return false;
    }
    return true;
}

}  // namespace qarqtool
