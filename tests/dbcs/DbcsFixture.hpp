// Puts the double-byte string functions into a known code page for one test
// and restores the process's own afterwards.
#pragma once

#include <gtest/gtest.h>

#include "vorn/VornDbcsInternal.hpp"

namespace qarq::test {

// Double-byte with every byte from 0x80 up leading a character.
class DoubleByte : public ::testing::Test {
  protected:
    void SetUp() override {
        VornDbcsInit();
        const unsigned char everyHighByte[] = {0x80, 0xFF, 0, 0};
        qarq::vorn::dbcs::setLeadRanges(everyHighByte);
        VornDbcsIsCodePageSingleByte = 0;
    }
    void TearDown() override { VornDbcsInit(); }
};

}  // namespace qarq::test
