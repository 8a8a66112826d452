#include "workbook/sheet_name.h"

#include <cstddef>

#include "text/utf8.h"

namespace korvex {
namespace {

constexpr std::size_t kLongestSheetName = 31;

bool CannotStandInSheetName(char32_t code) {
  return code < 0x20 || code == 0x7F || code == kInvalidByte ||
         std::u32string_view(U"\\/?*[]:").find(code) != std::u32string_view::npos;
}

}  // namespace

std::string SheetNameFromFolder(std::string_view folder_name) {
  std::string name;
  std::size_t units = 0;
  while (!folder_name.empty()) {
    const Utf8Character character = FirstUtf8(folder_name);
    units += character.length == 4 ? 2 : 1;
    if (units > kLongestSheetName) break;
    if (CannotStandInSheetName(character.code)) {
      name += '_';
    } else {
      name += folder_name.substr(0, character.length);
    }
    folder_name.remove_prefix(character.length);
  }
  if (!name.empty() && name.front() == '\'') name.front() = '_';
  if (!name.empty() && name.back() == '\'') name.back() = '_';
  return name;
}

}  // namespace korvex
