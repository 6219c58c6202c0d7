#include "TextEscape.hpp"

#include <cstdio>

namespace qarqtool {

namespace {

// Length of the well-formed UTF-8 sequence at s[i], or 0.
size_t utf8Length(const std::string& s, size_t i) {
    unsigned char b = static_cast<unsigned char>(s[i]);
    size_t need;
    unsigned min;
    if (b >= 0xC2 && b <= 0xDF) {
        need = 2;
        min = 0x80;
    } else if (b >= 0xE0 && b <= 0xEF) {
        need = 3;
        min = 0x800;
    } else if (b >= 0xF0 && b <= 0xF4) {
        need = 4;
        min = 0x10000;
    } else {
        return 0;
    }
    if (s.size() - i < need)
        return 0;
    unsigned v = b & (0xFF >> (need + 1));
    for (size_t k = 1; k < need; ++k) {
        unsigned char c = static_cast<unsigned char>(s[i + k]);
        if ((c & 0xC0) != 0x80)
            return 0;
        v = v << 6 | (c & 0x3F);
    }
    if (v < min || v > 0x10FFFF || (v >= 0xD800 && v <= 0xDFFF))
        return 0;
    return need;
}

}  // namespace

int hexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

std::string quoteText(const std::string& bytes) {
    std::string out = "\"";
    for (size_t i = 0; i < bytes.size();) {
        unsigned char b = static_cast<unsigned char>(bytes[i]);
        if (b >= 0x80) {
            size_t n = utf8Length(bytes, i);
            if (n > 0) {
                out.append(bytes, i, n);
                i += n;
                continue;
            }
        }
        switch (b) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                if (b < 0x20 || b >= 0x7F) {
                    char hex[8];
                    std::snprintf(hex, sizeof hex, "\\x%02X", b);
                    out += hex;
                } else {
                    out += char(b);
                }
        }
        ++i;
    }
    out += '"';
    return out;
}

bool unquoteText(const std::string& text, size_t& at, std::string& bytes, std::string& error) {
    bytes.clear();
    if (at >= text.size() || text[at] != '"') {
        error = "expected a quoted text";
        return false;
    }
    for (size_t i = at + 1; i < text.size(); ++i) {
        char c = text[i];
        if (c == '"') {
            at = i + 1;
            return true;
        }
        if (c != '\\') {
            bytes += c;
            continue;
        }
        if (++i >= text.size())
            break;
        switch (text[i]) {
            case '"':
                bytes += '"';
                break;
            case '\\':
                bytes += '\\';
                break;
            case 'n':
                bytes += '\n';
                break;
            case 'r':
                bytes += '\r';
                break;
            case 't':
                bytes += '\t';
                break;
            case 'x': {
                int hi = i + 1 < text.size() ? hexDigit(text[i + 1]) : -1;
                int lo = i + 2 < text.size() ? hexDigit(text[i + 2]) : -1;
                if (hi < 0 || lo < 0) {
                    error = "\\x needs two hex digits";
                    return false;
                }
                bytes += char(hi << 4 | lo);
                i += 2;
                break;
            }
            default:
                error = std::string("unknown escape \\") + text[i];
                return false;
        }
    }
    error = "missing closing quote";
    return false;
}

}  // namespace qarqtool
