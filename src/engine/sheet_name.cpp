#include "engine/sheet_name.h"

#include <cstddef>

namespace korvex {
namespace {

constexpr std::size_t kLongestSheetName = 31;

bool CannotStandInSheetName(unsigned char c) {
  return c < 0x20 || c == 0x7F ||
         std::string_view("\\/?*[]:").find(static_cast<char>(c)) != std::string_view::npos;
}

// The bytes of the UTF-8 character that starts with `lead`.
std::size_t CharacterBytes(unsigned char lead) {
  if (lead >= 0xF0) return 4;
  if (lead >= 0xE0) return 3;
  return lead >= 0xC0 ? 2 : 1;
}

}  // namespace

std::string SheetNameFromFolder(std::string_view folder_name) {
  std::string name;
  std::size_t units = 0;
  for (std::size_t at = 0; at < folder_name.size();) {
    const auto lead = static_cast<unsigned char>(folder_name[at]);
    const std::size_t bytes = CharacterBytes(lead);
    units += bytes == 4 ? 2 : 1;
    if (units > kLongestSheetName) break;
    if (CannotStandInSheetName(lead)) {
      name += '_';
    } else {
      name += folder_name.substr(at, bytes);
    }
    at += bytes;
  }
  if (!name.empty() && name.front() == '\'') name.front() = '_';
  if (!name.empty() && name.back() == '\'') name.back() = '_';
  return name;
}

}  // namespace korvex
