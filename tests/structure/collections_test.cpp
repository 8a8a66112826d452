#include <gmock/gmock.h>

#include "structure/clsArray.h"
#include "structure/keyed_collection.h"
#include "tests/support/errors.h"

namespace korvex {
namespace {

using testing::ElementsAre;
using Null = clsArray::Null;

clsArray::Value Text(const char* text) {
  return std::string(text);
}

clsArray ListOf(const std::vector<std::string>& texts) {
  clsArray list;
  list.AddTexts(texts);
  return list;
}

TEST(ClsArray, ComparesAsTextAndNeverMatchesNull) {
  clsArray list;
  EXPECT_EQ(list.GetPos(Text("a")), -1);
  EXPECT_FALSE(list.Items().has_value());
  EXPECT_EQ(list.Remove(Text("a")), 0);
  list.Add({std::int32_t{5}, 0.25, true, Null{}, Text("ж"), Text("Ж")});
  EXPECT_EQ(list.GetPos(Text("5")), 0);
  EXPECT_EQ(list.GetPos(Text("0.25")), 1);
  EXPECT_EQ(list.GetPos(Text("TRUE")), 2);
  EXPECT_EQ(list.GetPos(Null{}), -1);
  EXPECT_EQ(list.GetPos(Text("Ж")), 4);
  EXPECT_EQ(list.GetPos(Text("0.25"), clsArray::Value(3)), 1);
  EXPECT_EQ(list.Remove(Null{}), 0);
  EXPECT_EQ(list.Count(), 6);
}

TEST(ClsArray, RefusesDuplicatesInEveryOtherMode) {
  clsArray list;
  list.SetCompareMode(clsArray::kBinaryCompare);
  list.Add({Text("a"), Text("A")});
  EXPECT_FALSE(list.Exists(Text("b")));
  const Error direct = ErrorOf([&] { list.Add({Text("b"), Text("a"), Text("c")}); });
  EXPECT_EQ(direct.Number(), 457);
  EXPECT_EQ(direct.Description(),
            "This key is already associated with an element of this collection");
  EXPECT_THAT(list.Texts(), ElementsAre("a", "A", "b"));

  list.SetCompareMode(1);
  const Error wrapped = ErrorOf([&] { list.AddArray({Text("c"), Text("B")}); });
  EXPECT_EQ(wrapped.Number(), 457);
  EXPECT_EQ(wrapped.Description(),
            "Error in proc ADDARRAY of class: clsArray\r\n"
            "This key is already associated with an element of this collection");
  EXPECT_THAT(list.Texts(), ElementsAre("a", "A", "b", "c"));
}

TEST(ClsArray, NamesTheProcedureThatFailed) {
  clsArray list;
  list.Add({std::make_shared<const int>(1)});
  const Error exists = ErrorOf([&] { list.Exists(Text("a")); });
  EXPECT_EQ(exists.Number(), 438);
  EXPECT_EQ(exists.Description().substr(0, 43), "Error in proc EXISTS of class: clsArray\r\nOb");
  EXPECT_EQ(ErrorOf([&] { list.GetPos(Text("a")); }).Description().substr(0, 20),
            "Error in proc GETPOS");
  // Remove hands the error on as it is.
  EXPECT_EQ(ErrorOf([&] { list.Remove(Text("a")); }).Description().substr(0, 6), "Object");
}

TEST(ClsArray, RemovesEveryMatchAndKeepsTheOrderOfTheRest) {
  clsArray list = ListOf({"x", "y", "X", "z"});
  EXPECT_EQ(list.Remove(Text("X")), 2);
  EXPECT_THAT(list.Texts(), ElementsAre("y", "z"));
  list.SetRaiseIfNotFound(true);
  const Error error = ErrorOf([&] { list.Remove(Text("b")); });
  EXPECT_EQ(error.Number(), 5);
  EXPECT_EQ(error.Source(), "clsArray");
  EXPECT_EQ(error.Description(), "Item not found");
  for (const char* text : {"y", "z"}) EXPECT_EQ(list.Remove(Text(text)), 1);
  EXPECT_EQ(ErrorOf([&] { list.Remove(Text("z")); }).Number(), 5) << "empty";
}

TEST(ClsArray, HoldsWhatRemoveCouldAddAnew) {
  clsArray list = ListOf({"x", "y", "Y", "z"});
  list.SetCompareMode(1);
  EXPECT_EQ(ErrorOf([&] { list.Remove(Text("x")); }).Number(), 457);
  EXPECT_THAT(list.Texts(), ElementsAre("y"));
}

TEST(KeyedCollection, FindsNamesWithoutLetterCaseInInsertionOrder) {
  KeyedCollection<int> collection;
  for (int i = 0; i < 20000; ++i) collection.Add("plate=" + std::to_string(i) + ";well=ä1;", i);
  for (int i = 0; i < 20000; ++i) {
    ASSERT_EQ(collection.Item("PLATE=" + std::to_string(i) + ";WELL=Ä1;"), i);
  }
  EXPECT_EQ(collection.Keys().at(2), "plate=2;well=ä1;");
  EXPECT_EQ(ErrorOf([&] { collection.Add("Plate=2;well=Ä1;", 5); }).Number(), 457);
  EXPECT_EQ(collection.Item("plate=2;well=ä1;"), 2);
  EXPECT_EQ(collection.Count(), 20000U);
}

TEST(KeyedCollection, LeavesALookedUpNameBehind) {
  KeyedCollection<int> collection;
  EXPECT_FALSE(collection.Exists("a"));
  EXPECT_EQ(collection.Item("a"), 0);
  EXPECT_TRUE(collection.Exists("A"));
  EXPECT_EQ(ErrorOf([&] { collection.Add("A", 1); }).Number(), 457);
  collection.RemoveAll();
  EXPECT_FALSE(collection.Exists("a"));
}

}  // namespace
}  // namespace korvex
