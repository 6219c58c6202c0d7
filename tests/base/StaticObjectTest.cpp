#include <gtest/gtest.h>

#include <vector>

#include "base/IStaticObjectList.hpp"

namespace {

std::vector<int> gDeleted;

class Recorded : public IStaticObject {
  public:
    Recorded(IStaticObjectList& list, int id) : IStaticObject(list), id_(id) {}
    ~Recorded() override { gDeleted.push_back(id_); }

  private:
    int id_;
};

class RegistersAnother : public IStaticObject {
  public:
    explicit RegistersAnother(IStaticObjectList& list) : IStaticObject(list), list_(list) {}
    ~RegistersAnother() override {
        gDeleted.push_back(-1);
        new Recorded(list_, 99);  // made during teardown: still deleted
    }

  private:
    IStaticObjectList& list_;
};

TEST(StaticObjectList, DeletesInReverseOrderOfRegistrationAndGrowsByDoubling) {
    gDeleted.clear();
    IStaticObjectList list;
    new RegistersAnother(list);
    for (int i = 0; i < 40; ++i)
        new Recorded(list, i);
    EXPECT_EQ(list.capacity(), 64u);
    list.deleteAll();
    std::vector<int> expected;
    for (int i = 39; i >= 0; --i)
        expected.push_back(i);
    expected.insert(expected.end(), {-1, 99});
    EXPECT_EQ(gDeleted, expected);
    EXPECT_EQ(list.count(), 0u);
}

}  // namespace
