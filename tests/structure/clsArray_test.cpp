#include "structure/clsArray.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

TEST(ClsArray, AnswersForAnEmptyList) {
  clsArray list;
  EXPECT_TRUE(list.IsEmpty());
  EXPECT_EQ(list.Count(), 0);
  EXPECT_EQ(list.GetPos(Text("a")), -1);
  EXPECT_FALSE(list.Exists(Text("a")));
  EXPECT_FALSE(list.Items().has_value());
  EXPECT_EQ(list.Remove(Text("a")), 0);
  list.Clear();
  EXPECT_TRUE(list.IsEmpty());
}

TEST(ClsArray, AcceptsDuplicatesAndLooksUpWithoutLetterCase) {
  clsArray list = ListOf({"a", "A", "b", "Ж"});
  EXPECT_EQ(list.Count(), 4);
  EXPECT_EQ(list.GetPos(Text("A")), 0);
  EXPECT_TRUE(list.Exists(Text("ж")));
  EXPECT_EQ(list.GetPos(Text("b"), clsArray::Value(3)), 2);
}

TEST(ClsArray, ComparesAsTextAndNeverMatchesNull) {
  clsArray list;
  list.Add({std::int32_t{5}, 0.25, true, Null{}});
  EXPECT_EQ(list.GetPos(Text("5")), 0);
  EXPECT_EQ(list.GetPos(Text("0.25")), 1);
  EXPECT_EQ(list.GetPos(Text("TRUE")), 2);
  EXPECT_EQ(list.GetPos(Null{}), -1);
  EXPECT_EQ(list.Remove(Null{}), 0);
  EXPECT_EQ(list.Count(), 4);
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
  EXPECT_EQ(list.Remove(Text("y")), 1);
  EXPECT_EQ(list.Remove(Text("z")), 1);
  EXPECT_TRUE(list.IsEmpty());
}

TEST(ClsArray, HoldsWhatRemoveCouldAddAnew) {
  clsArray list = ListOf({"x", "y", "Y", "z"});
  list.SetCompareMode(1);
  EXPECT_EQ(ErrorOf([&] { list.Remove(Text("x")); }).Number(), 457);
  EXPECT_THAT(list.Texts(), ElementsAre("y"));
}

TEST(ClsArray, RaisesWhenNothingWasRemovedOnDemand) {
  clsArray empty;
  clsArray filled = ListOf({"a"});
  for (clsArray* list : {&empty, &filled}) {
    list->SetRaiseIfNotFound(true);
    const Error error = ErrorOf([&] { list->Remove(Text("b")); });
    EXPECT_EQ(error.Number(), 5);
    EXPECT_EQ(error.Source(), "clsArray");
    EXPECT_EQ(error.Description(), "Item not found");
  }
  EXPECT_EQ(filled.Remove(Text("A")), 1);
}

}  // namespace
}  // namespace korvex
