#include "structure/keyed_collection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/errors.h"

namespace korvex {
namespace {

using testing::ElementsAre;

TEST(KeyedCollection, FindsNamesWithoutLetterCaseInInsertionOrder) {
  KeyedCollection<int> collection;
  collection.Add("Well", 2);
  collection.Add("Größe", 3);
  collection.Add("", 4);
  EXPECT_EQ(collection.Item("WELL"), 2);
  EXPECT_EQ(collection.Item("GRÖßE"), 3);
  EXPECT_EQ(collection.Item(""), 4);
  EXPECT_THAT(collection.Keys(), ElementsAre("Well", "Größe", ""));
  EXPECT_EQ(ErrorOf([&] { collection.Add("wELL", 5); }).Number(), 457);
  EXPECT_EQ(collection.Item("Well"), 2);
}

TEST(KeyedCollection, LeavesALookedUpNameBehind) {
  KeyedCollection<int> collection;
  EXPECT_FALSE(collection.Exists("a"));
  EXPECT_EQ(collection.Item("a"), 0);
  EXPECT_TRUE(collection.Exists("A"));
  EXPECT_EQ(ErrorOf([&] { collection.Add("A", 1); }).Number(), 457);
  collection.RemoveAll();
  EXPECT_FALSE(collection.Exists("a"));
  EXPECT_EQ(collection.Count(), 0U);
}

TEST(KeyedCollection, KeepsThousandsOfNamesApart) {
  KeyedCollection<int> collection;
  for (int i = 0; i < 20000; ++i) collection.Add("plate=" + std::to_string(i) + ";well=A01;", i);
  for (int i = 0; i < 20000; ++i) {
    ASSERT_EQ(collection.Item("PLATE=" + std::to_string(i) + ";WELL=a01;"), i);
  }
  EXPECT_FALSE(collection.Exists("plate=20000;well=A01;"));
  EXPECT_EQ(collection.Count(), 20000U);
}

}  // namespace
}  // namespace korvex
