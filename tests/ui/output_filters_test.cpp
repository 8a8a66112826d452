#include "ui/output_filters.h"

#include <gtest/gtest.h>

#include "tests/support/fakes.h"

namespace korvex {
namespace {

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
