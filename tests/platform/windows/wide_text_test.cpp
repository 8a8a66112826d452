#include "platform/windows/wide_text.h"

#include <gtest/gtest.h>

#include <utility>

namespace korvex {
namespace {

TEST(WideText, CrossesTheBorderUnchanged) {
  const std::pair<std::string, std::wstring> texts[] = {
      {"", L""},
      {"Gr\xC3\xB6\xC3\x9F"
       "e \xE6\xBC\xA2 \xF0\x9F\x94\xAC",
       L"Gr\u00F6\u00DFe \u6F22 \U0001F52C"},
      {std::string("a\0b", 3), std::wstring(L"a\0b", 3)},
      {"\xED\xA0\xBDx", L"\xD83Dx"},
      {"\xED\xB4\xAC\xED\xA0\xBD", L"\xDD2C\xD83D"},
  };
  for (const auto& [utf8, wide] : texts) {
    EXPECT_EQ(ToWide(utf8), wide) << utf8;
    EXPECT_EQ(FromWide(wide), utf8);
  }
  EXPECT_EQ(ToWide("a\xFF\xC3"), L"a\uFFFD\uFFFD");
}

}  // namespace
}  // namespace korvex
