#include "ui/option_choices.h"

#include <gtest/gtest.h>

#include "tests/support/fakes.h"

namespace korvex {
namespace {

using Names = std::vector<std::string>;
using Position = std::optional<std::size_t>;

TEST(ColumnList, AddsACopyBeforeWhatIsSelectedElseAtTheEnd) {
  const struct {
    Position source, destination;
    Names names;
    Position added, selected;
  } cases[] = {
      {std::nullopt, 0, {"plate", "Well"}, std::nullopt, 0},
      {0, std::nullopt, {"plate", "Well", "ID"}, 2, std::nullopt},
      {0, 0, {"ID", "plate", "Well"}, 0, 1},
      {0, 1, {"plate", "ID", "Well"}, 1, 2},
      {1, std::nullopt, {"plate", "Well"}, std::nullopt, std::nullopt},
      {2, 1, {"plate", "well", "Well"}, 1, 2},
  };
  for (const auto& expected : cases) {
    const ColumnList source{{"ID", "Well", "well"}, expected.source};
    ColumnList list{{"plate", "Well"}, expected.destination};
    EXPECT_EQ(AddToList(source, list), expected.added);
    EXPECT_EQ(list.names, expected.names);
    EXPECT_EQ(list.selected, expected.selected);
  }
}

TEST(ColumnList, SelectsTheNextNameOnceOneIsRemoved) {
  ColumnList list{{"a", "b", "c"}, 1};
  EXPECT_EQ(RemoveFromList(list), Position(1));
  EXPECT_EQ(list.names, (Names{"a", "c"}));
  EXPECT_EQ(list.selected, Position(1));
  RemoveFromList(list);
  EXPECT_EQ(list.selected, Position(0)) << "the last one when nothing moves up";
  RemoveFromList(list);
  EXPECT_TRUE(list.names.empty());
  EXPECT_EQ(list.selected, std::nullopt);
  EXPECT_EQ(RemoveFromList(list), std::nullopt);
}

TEST(OutputFilters, GiveTheEndingThatTheUserMeans) {
  const TestPlatform platform(PathStyle::kLinux);
  const struct {
    const char* name;
    int offered, chosen;
    const char* meant;
  } kCases[] = {
      {"/runs/a.xls", 0, 0, "/runs/a.xls"},     {"/runs/a.XLS", 0, 1, "/runs/a.xlsx"},
      {"/runs/a.csv", 2, 0, "/runs/a.xls"},     {"/runs/a.xlsx", 0, 2, "/runs/a.xlsx"},
      {"/runs/1.2/a", 0, 2, "/runs/1.2/a.csv"}, {"/runs/a.b", 1, 0, "/runs/a.b"},
  };
  for (const auto& [name, offered, chosen, meant] : kCases) {
    EXPECT_EQ(OutputFileChosen(name, offered, chosen), meant) << name;
  }
}

}  // namespace
}  // namespace korvex
