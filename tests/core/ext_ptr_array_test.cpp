#include "core/ext_ptr_array.h"

#include <gtest/gtest.h>

#include <vector>

#include "core/storage.h"

namespace zantrel {
namespace {

struct Counted final : ZantrelObject {
  explicit Counted(int number) : n(number) { ++alive; }
  ~Counted() override { --alive; }
  int n;
  static inline int alive = 0;
};

std::vector<int> numbers(const ExtPtrArray& list) {
  std::vector<int> result;
  for (std::int32_t i = 0; i < list.getSize(); ++i) {
    result.push_back(static_cast<Counted*>(list.elementAt(i))->n);
  }
  return result;
}

TEST(ExtPtrArrayTest, GrowsByItsCapacityUpToAHundredThousand) {
  ExtPtrArray list;
  std::vector<int> capacities{list.capacity()};
  for (int i = 0; i < 450'000; ++i) {
    ASSERT_TRUE(list.appendPtr(nullptr));
    if (list.capacity() != capacities.back()) capacities.push_back(list.capacity());
  }
  EXPECT_EQ(capacities, (std::vector<int>{5, 10, 20, 40, 80, 160, 320, 640, 1280, 2560, 5120, 10240,
                                          20480, 40960, 81920, 163840, 263840, 363840, 463840}));
}

TEST(ExtPtrArrayTest, TakesElementsOutAndKeepsTheOrderOfTheOthers) {
  ExtPtrArray list;
  for (int i = 0; i < 6; ++i) list.appendPtr(new Counted(i));
  list.insertAt(0, new Counted(9));
  delete list.removeAt(2);
  delete list.pop();
  EXPECT_EQ(numbers(list), (std::vector<int>{9, 0, 2, 3, 4}));
  EXPECT_EQ(list.removeAt(5), nullptr);
  EXPECT_EQ(list.removeAt(-1), nullptr);
  EXPECT_EQ(list.elementAt(list.getSize()), nullptr);
  list.sort([](const ZantrelObject* a, const ZantrelObject* b) {
    return static_cast<const Counted*>(a)->n - static_cast<const Counted*>(b)->n;
  });
  EXPECT_EQ(numbers(list), (std::vector<int>{0, 2, 3, 4, 9}));
  EXPECT_EQ(Counted::alive, 5);
  list.deleteAll();
  EXPECT_EQ(Counted::alive, 0);
  EXPECT_EQ(list.getSize(), 0);
}

TEST(ExtPtrArrayTest, OwnsNothingUnlessToldToDelete) {
  Counted one(1);
  {
    ExtPtrArray list;
    list.appendPtr(&one);
    ExtPtrArray other;
    other.appendPtr(&one);
    other.removeAll();
    EXPECT_EQ(other.pop(), nullptr);
    EXPECT_EQ(other.lastElement(), nullptr);
  }
  EXPECT_EQ(Counted::alive, 1);
}

TEST(ExtPtrArrayTest, StaysAsItWasWhenStorageCannotBeHad) {
  ExtPtrArray list;
  Counted one(1);
  for (int i = 0; i < 5; ++i) list.appendPtr(&one);
  const storage::ScopedAllocationFault fault(0);
  EXPECT_FALSE(list.appendPtr(&one));
  EXPECT_EQ(list.getSize(), 5);
  EXPECT_EQ(list.capacity(), 5);
  EXPECT_FALSE(ExtPtrArray().appendPtr(&one));
}

}  // namespace
}  // namespace zantrel
