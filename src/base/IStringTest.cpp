#include "qarq/base/IStringTest.hpp"

IStringTest::~IStringTest() = default;

bool IStringTest::test(int c) const { return kind == 1 && fn(c) != 0; }
