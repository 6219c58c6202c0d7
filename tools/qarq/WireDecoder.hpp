// Lists the values of one block of the Java stream, one a line:
// "OFFSET  TYPE VALUE", in the form WireEncoder reads back.
//
// The stream holds no counts of its own and no body lengths, so the listing
// is driven by the tags alone. Two things need a rule:
//   * Char and short share one tag and differ only in length. The reading is
//     the one under which the whole block parses; where both do, "short"
//     (two bytes) wins at the earliest tag where they differ. When no reading
//     parses the whole block, each tag takes "short" if a value or the end
//     follows it that way, else "char" if one follows that way, else "short".
//     Either way the printed value re-encodes to the same bytes.
//   * Objects have no end mark: a class line starts an object, the values
//     behind it are indented under it until the next class line of the same
//     container; the elements of a vector are the next N class lines, and a
//     class line after the last one belongs to the vector's container again.
//     Indentation is only for the reader; the encoder ignores it.
// Values are read with bounds checks against the block: a bad tag, a
// truncated value or a negative length ends the listing with an error.
//
// Threads: one object per thread. Failures: decode() returns false and
// error() names the offset.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace qarqtool {

class WireDecoder {
  public:
    explicit WireDecoder(const std::string& block);

    /// Prints the listing to `out`; false when the block ends in an error.
    bool decode(FILE* out);

    /// "offset N: ..." of the error that ended the listing.
    const std::string& error() const { return error_; }

  private:
    struct Item {
        uint16_t tag = 0;
        size_t end = 0;            // offset behind the value
        bool expectClass = false;  // a vector with elements: an object must follow
    };

    bool parseItem(size_t at, bool expectClass, Item& item, std::string* why) const;
    bool parseString(size_t at, size_t& end, std::string* why) const;
    bool chooseReadings();
    bool greedyShort(size_t at) const;
    bool need(size_t at, size_t count, const char* what, size_t start, std::string* why) const;
    uint32_t u32(size_t at) const;
    uint16_t u16(size_t at) const;
    void printString(FILE* out, size_t at, int indent, size_t& end) const;

    const unsigned char* data_;
    size_t size_;
    std::vector<uint8_t> reading_;  // per offset of a 0x0002 tag: 1 short, 2 char
    bool whole_ = false;
    std::string error_;
};

}  // namespace qarqtool
