#pragma once
// A test program whose tests convert text registers this environment: before
// any test runs it loads the default code set (1252, locale "C") from a
// code-set tree of the build's tables, so that a test that refuses memory
// never lands in the first load. Including this header registers it, once
// per program however many files include it.

#include <gtest/gtest.h>

#include <memory>

#include "qarq/vorn/vornnls1.hpp"
#include "support/CodesetTree.hpp"
#include "support/TestSupport.hpp"

namespace qarq::test {

class CodesetEnvironment : public ::testing::Environment {
  public:
    void SetUp() override {
        lcAll_ = std::make_unique<support::ScopedEnv>("LC_ALL", nullptr);
        lcCtype_ = std::make_unique<support::ScopedEnv>("LC_CTYPE", nullptr);
        lang_ = std::make_unique<support::ScopedEnv>("LANG", "C");
        tree_ = std::make_unique<CodesetTree>();
        vornnls1_tis_init();
    }
    void TearDown() override {
        tree_.reset();
        lang_.reset();
        lcCtype_.reset();
        lcAll_.reset();
    }

  private:
    std::unique_ptr<support::ScopedEnv> lcAll_, lcCtype_, lang_;
    std::unique_ptr<CodesetTree> tree_;
};

[[maybe_unused]] inline ::testing::Environment* const gCodesetEnvironment =
    ::testing::AddGlobalTestEnvironment(new CodesetEnvironment);

}  // namespace qarq::test
