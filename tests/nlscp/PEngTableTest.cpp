#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "qarq/vorn/VornNlsPEng.hpp"
#include "support/StreamBytes.hpp"

namespace {

// The two tables as the host documentation lists them, two rows a line.
const char kE2ARows[] =
    "00010203FF09FF7FFFFFFF0B0C0D0E0F10111213FFFF08FF1819FFFFFF1DFF1F"   // 00-10
    "FFFF1CFFFF0A171BFFFFFFFFFF050607FFFF16FFFF1EFF04FFFFFFFF1415FF1A"   // 20-30
    "20FFFFFFFFFFFFFFFFFFFF2E3C282B7C26FFFFFFFFFFFFFFFFFF21242A293BAC"   // 40-50
    "2D2FFFFFFFFFFFFFFFFFFF2C255F3E3FFFFFFFFFFFFFFFFFFF603A2340273D22"   // 60-70
    "FF616263646566676869FFFFFFFFFFFFFF6A6B6C6D6E6F707172FFFFFFFFFFFF"   // 80-90
    "FF7E737475767778797AFFFFFFDDFFFF5EFFFFFFFFFFFFFFFFFF5B5DFFA8FFFF"   // A0-B0
    "7B414243444546474849FFFFFFFFFFFF7D4A4B4C4D4E4F505152FFFFFFFFFFFF"   // C0-D0
    "5CFF535455565758595AFFFFFFFFFFFF30313233343536373839FFFFFFFFFFFF";  // E0-F0

const char kA2ERows[] =
    "00010203372D2E2F1605250B0C0D0E0F101112133C3D322618193F27221D351F"   // 00-10
    "405A7F7B5B6C507D4D5D5C4E6B604B61F0F1F2F3F4F5F6F7F8F97A5E4C7E6E6F"   // 20-30
    "7CC1C2C3C4C5C6C7C8C9D1D2D3D4D5D6D7D8D9E2E3E4E5E6E7E8E9BAE0BBB06D"   // 40-50
    "79818283848586878889919293949596979899A2A3A4A5A6A7A8A9C04FD0A107"   // 60-70
    "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"   // 80-90
    "FFFFFFFFFFFFFFFFBDFFFFFF5FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"   // A0-B0
    "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFADFFFF"   // C0-D0
    "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF";  // E0-F0

std::vector<unsigned char> everyByte() {
    std::vector<unsigned char> bytes(256);
    for (int i = 0; i < 256; ++i) bytes[i] = static_cast<unsigned char>(i);
    return bytes;
}

std::vector<unsigned char> table(const char* rows) {
    const std::string bytes = qarq::support::bytes(rows);
    return std::vector<unsigned char>(bytes.begin(), bytes.end());
}

// Together the two checks pin every entry; that the tables undo each other
// follows from them.
TEST(NlsPEng, TranslatesEveryByteByTheTablesAndNoMore) {
    std::vector<unsigned char> bytes = everyByte();
    VornNlsPEngE2A(bytes.data(), 256);
    EXPECT_EQ(bytes, table(kE2ARows));
    bytes = everyByte();
    VornNlsPEngA2E(bytes.data(), 256);
    EXPECT_EQ(bytes, table(kA2ERows));

    unsigned char two[] = {0x80, 0x41};
    VornNlsPEngA2E(two, 1);
    EXPECT_EQ(two[0], 0xFF);
    EXPECT_EQ(two[1], 0x41);  // behind the length: untouched
    VornNlsPEngA2E(nullptr, 5);
    VornNlsPEngE2A(nullptr, 5);
}

}  // namespace
