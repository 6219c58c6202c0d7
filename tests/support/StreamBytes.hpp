// Helpers of the tests of the wire stream: bytes written as hex, and readers
// and writers over test bytes that free their blocks as a caller would.
#pragma once

#include <cstring>
#include <string>

#include "qarq/vorn/VornJavaRead.hpp"
#include "qarq/vorn/VornJavaWrite.hpp"

namespace qarq::support {

/// "00 80 0A" -> the three bytes.
inline std::string bytes(const std::string& hex) {
    std::string out;
    for (size_t i = 0; i < hex.size();) {
        if (hex[i] == ' ') {
            ++i;
            continue;
        }
        out.push_back(static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
        i += 2;
    }
    return out;
}

/// The bytes as "00 80 0A".
inline std::string hex(const std::string& data) {
    static const char digits[] = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : data) {
        if (!out.empty()) out.push_back(' ');
        out.push_back(digits[c >> 4]);
        out.push_back(digits[c & 15]);
    }
    return out;
}

/// A writer that owns the block it grows into.
struct Writer {
    VornJavaWrite out;
    ~Writer() { delete[] out.getBuffer(); }
    std::string bytes() const { return std::string(out.getBuffer(), out.calculateUsedLength()); }
    std::string hex() const { return support::hex(bytes()); }
};

/// A reader over a copy of `data` in a block of the array allocator.
struct Reader {
    explicit Reader(const std::string& data)
        : in(copy(data), static_cast<unsigned>(data.size())) {}
    ~Reader() { delete[] in.getBuffer(); }
    unsigned used() const { return in.calculateUsedLength(); }
    VornJavaRead in;

private:
    static char* copy(const std::string& data) {
        char* block = new char[data.size() + 1];
        std::memcpy(block, data.data(), data.size());
        return block;
    }
};

}  // namespace qarq::support
