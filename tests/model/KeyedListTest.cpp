// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "model/KeyedList.h"

namespace korval::model {
namespace {

class KeyedListTest : public testing::Test {
 protected:
  void Add(int number, const std::string& key = {}) { list_.Append(std::make_shared<int>(number), key); }

  KeyedList<int> list_;
};

TEST_F(KeyedListTest, KeepsTheOrderOfInsertion) {
  Add(3, "c");
  Add(1);
  Add(2, "b");
  std::string order;
  for (const auto& element : list_) order += std::to_string(*element);
  EXPECT_EQ(order, "312");
  EXPECT_EQ(list_.Count(), 3);
}

TEST_F(KeyedListTest, FindsByPositionFromOneAndByKey) {
  Add(3, "c");
  Add(1);
  EXPECT_EQ(*list_.Item(1), 3);
  EXPECT_EQ(*list_.Item(2), 1);
  EXPECT_EQ(*list_.Item("c"), 3);
}

TEST_F(KeyedListTest, UnknownPositionOrKeyRaises) {
  Add(3, "c");
  EXPECT_THROW(list_.Item(0), base::Failure);
  EXPECT_THROW(list_.Item(2), base::Failure);
  EXPECT_THROW(list_.Item("C"), base::Failure);
  EXPECT_THROW(list_.Remove(2), base::Failure);
  EXPECT_THROW(list_.Remove("x"), base::Failure);
}

TEST_F(KeyedListTest, PresentKeyRaisesAndAddsNothing) {
  Add(3, "c");
  EXPECT_THROW(Add(4, "c"), base::Failure);
  EXPECT_EQ(list_.Count(), 1);
}

TEST_F(KeyedListTest, ElementsWithoutKeyMayRepeat) {
  Add(1);
  Add(1);
  EXPECT_EQ(list_.Count(), 2);
}

TEST_F(KeyedListTest, KeysFollowTheirElementsAfterARemoval) {
  Add(1, "a");
  Add(2, "b");
  Add(3, "c");
  list_.Remove("a");
  EXPECT_EQ(*list_.Item("c"), 3);
  EXPECT_EQ(*list_.Item(1), 2);
  list_.Remove(1);
  EXPECT_FALSE(list_.Contains("b"));
  EXPECT_EQ(*list_.Item("c"), 3);
  Add(4, "a");
  EXPECT_EQ(*list_.Item("a"), 4);
}

TEST_F(KeyedListTest, ClearedListTakesTheSameKeys) {
  Add(1, "a");
  list_.Clear();
  EXPECT_EQ(list_.Count(), 0);
  Add(2, "a");
  EXPECT_EQ(*list_.Item("a"), 2);
}

}  // namespace
}  // namespace korval::model
