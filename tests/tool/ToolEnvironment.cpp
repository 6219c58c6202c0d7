// The tests write their fixtures with the library's writer, which converts
// through the default code set: load it (1252, locale "C") from a code-set
// tree of the build's tables before any test runs. The tool itself runs with
// BINDIR cleared and finds the tables beside it.
#include <memory>

#include <gtest/gtest.h>

#include "qarq/vorn/vornnls1.hpp"
#include "support/CodesetTree.hpp"
#include "support/TestSupport.hpp"

namespace {

class ToolEnvironment : public ::testing::Environment {
  public:
    void SetUp() override {
        lcAll_ = std::make_unique<qarq::support::ScopedEnv>("LC_ALL", nullptr);
        lang_ = std::make_unique<qarq::support::ScopedEnv>("LANG", "C");
        tree_ = std::make_unique<qarq::test::CodesetTree>();
        vornnls1_tis_init();
    }
    void TearDown() override {
        tree_.reset();
        lang_.reset();
        lcAll_.reset();
    }

  private:
    std::unique_ptr<qarq::support::ScopedEnv> lcAll_, lang_;
    std::unique_ptr<qarq::test::CodesetTree> tree_;
};

[[maybe_unused]] ::testing::Environment* const gToolEnvironment =
    ::testing::AddGlobalTestEnvironment(new ToolEnvironment);

}  // namespace
