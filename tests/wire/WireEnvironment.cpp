// Every wire test runs with the default code set 1252 (the process locale is
// "C"), loaded from a code-set tree of the build's tables before any test runs,
// so that a test that refuses memory never lands in the first load.
#include <memory>

#include <gtest/gtest.h>

#include "qarq/vorn/vornnls1.hpp"
#include "support/CodesetTree.hpp"
#include "support/TestSupport.hpp"

namespace {

class WireEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        lcAll_ = std::make_unique<qarq::support::ScopedEnv>("LC_ALL", nullptr);
        lcCtype_ = std::make_unique<qarq::support::ScopedEnv>("LC_CTYPE", nullptr);
        lang_ = std::make_unique<qarq::support::ScopedEnv>("LANG", "C");
        tree_ = std::make_unique<qarq::test::CodesetTree>();
        vornnls1_tis_init();
    }
    void TearDown() override {
        tree_.reset();
        lang_.reset();
        lcCtype_.reset();
        lcAll_.reset();
    }

private:
    std::unique_ptr<qarq::support::ScopedEnv> lcAll_, lcCtype_, lang_;
    std::unique_ptr<qarq::test::CodesetTree> tree_;
};

[[maybe_unused]] ::testing::Environment* const gWireEnvironment =
    ::testing::AddGlobalTestEnvironment(new WireEnvironment);

}  // namespace
