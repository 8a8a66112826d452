#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

#include "structure/clsArray.h"
#include "structure/keyed_collection.h"
#include "tests/support/errors.h"
#include "text/text.h"

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

// Over all the sizes at which tables and arrays grow: by then a name has stood in several places.
TEST(NameIndex, KeepsEveryNameWhileItGrows) {
  constexpr std::size_t kNames = 20000;
  const auto name_of = [](std::size_t number) {
    return "plate=" + std::to_string(number % 977) + ";well=" + std::to_string(number) + ";";
  };
  NameIndex names;
  for (std::size_t i = 0; i < kNames; ++i) {
    EXPECT_EQ(names.FindOrAdd(name_of(i)), std::pair(i, true));
  }
  for (std::size_t i = kNames; i-- > 0;) {
    EXPECT_EQ(names.FindOrAdd(name_of(i)), std::pair(i, false));
    EXPECT_EQ(names.Find(UpperCase(name_of(i))), i);
    EXPECT_EQ(names.Name(i), name_of(i));
  }
  EXPECT_EQ(names.Find(name_of(kNames)), NameIndex::kNone);
}

TEST(GrowingArray, TakesItsOwnElementsWhileItGrows) {
  GrowingArray<int> numbers;
  numbers.push_back(7);
  while (numbers.size() < 1000) numbers.push_back(numbers.back());
  numbers.resize(1003, numbers[1]);
  numbers.append(std::array{1, 2}.data(), 2);
  GrowingArray<int> moved = std::move(numbers);
  EXPECT_EQ(std::count(moved.begin(), moved.end(), 7), 1003);
  EXPECT_EQ(moved.back(), 2);
  moved.CutAt(moved.data() + 1);
  EXPECT_THAT(std::vector(moved.begin(), moved.end()), ElementsAre(7));
}

}  // namespace
}  // namespace korvex
