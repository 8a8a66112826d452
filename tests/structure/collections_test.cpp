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

TEST(ClsArray, ComparesAsTextWithoutLetterCaseAndNeverMatchesNull) {
  clsArray list;
  EXPECT_FALSE(list.Items().has_value());
  EXPECT_EQ(list.Remove(Text("a")), 0);
  list.Add({std::int32_t{5}, 0.25, true, Null{}, Text("ж"), Text("Ж")});
  for (const auto& [text, position] :
       {std::pair{"5", 0}, {"0.25", 1}, {"TRUE", 2}, {"Ж", 4}, {"a", -1}}) {
    EXPECT_EQ(list.GetPos(Text(text)), position);
  }
  EXPECT_EQ(list.GetPos(Null{}), -1);
  EXPECT_EQ(list.Remove(Text("Ж")), 2);
  EXPECT_EQ(list.Count(), 4);
  list.SetRaiseIfNotFound(true);
  const Error error = ErrorOf([&] { list.Remove(Text("b")); });
  EXPECT_EQ(error.Number(), 5);
  EXPECT_EQ(error.Source() + ": " + error.Description(), "clsArray: Item not found");
}

TEST(ClsArray, RefusesDuplicatesInEveryOtherModeAndNamesTheProcedure) {
  clsArray list;
  list.SetCompareMode(clsArray::kBinaryCompare);
  list.Add({Text("a"), Text("A")});
  EXPECT_EQ(ErrorOf([&] { list.Add({Text("b"), Text("a"), Text("c")}); }).Number(), 457);
  list.SetCompareMode(1);
  const Error wrapped = ErrorOf([&] { list.AddArray({Text("c"), Text("B")}); });
  EXPECT_EQ(wrapped.Number(), 457);
  EXPECT_EQ(wrapped.Description(),
            "Error in proc ADDARRAY of class: clsArray\r\n"
            "This key is already associated with an element of this collection");
  EXPECT_THAT(list.Texts(), ElementsAre("a", "A", "b", "c"));
  clsArray objects;
  objects.Add({std::make_shared<const int>(1)});
  EXPECT_EQ(ErrorOf([&] { objects.Exists(Text("a")); }).Number(), 438);
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
  EXPECT_FALSE(collection.Exists("a"));
  EXPECT_EQ(collection.Item("a"), 0);  // a name that was looked up stays behind
  EXPECT_TRUE(collection.Exists("A"));
  collection.RemoveAll();
  EXPECT_FALSE(collection.Exists("a"));
}

}  // namespace
}  // namespace korvex
