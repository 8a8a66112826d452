#include "workbook/sheet_rules.h"

#include <algorithm>
#include <cstddef>

#include "platform/error.h"
#include "text/text.h"
#include "text/utf8.h"

namespace korvex {
namespace {

constexpr std::size_t kLongestSheetName = 31;          // UTF-16 units
constexpr std::string_view kReservedName = "History";  // of the spreadsheet application
constexpr std::string_view kNotInSheetNames = "\\/?*[]:";

// Without DEL, which the spreadsheet application takes in a name.
bool IsC0Control(char c) {
  return static_cast<unsigned char>(c) < 0x20;
}

// More than CheckSheetName refuses: DEL and broken UTF-8 cannot be read in a name.
bool CannotStandInSheetName(char32_t code) {
  return code < 0x20 || code == 0x7F || code == kInvalidByte ||
         (code < 0x80 && kNotInSheetNames.find(static_cast<char>(code)) != std::string_view::npos);
}

}  // namespace

// Digits of base 26 without a zero: after "Z" comes "AA".
std::string ColumnLetters(int column) {
  std::string letters;
  for (int rest = column; rest > 0; rest = (rest - 1) / 26) {
    letters.insert(letters.begin(), static_cast<char>('A' + (rest - 1) % 26));
  }
  return letters;
}

std::string SheetNameRefusal(std::string_view name) {
  return "A worksheet cannot be named \"" + std::string(name) + "\": ";
}

void CheckSheetName(std::string_view name) {
  const auto refuse = [&](const std::string& reason) {
    throw Error(error_number::kAutomation, SheetNameRefusal(name) + reason);
  };
  if (name.empty()) refuse("the name must not be empty.");
  const std::size_t length = Utf16Length(name);
  if (length > kLongestSheetName) {
    refuse("it has " + std::to_string(length) + " characters, and the name of a sheet at most " +
           std::to_string(kLongestSheetName) + ".");
  }
  if (name.find_first_of(kNotInSheetNames) != std::string_view::npos) {
    refuse(R"(the name of a sheet cannot hold any of \ / ? * [ ] :)");
  }
  if (std::any_of(name.begin(), name.end(), IsC0Control)) {
    refuse("the name of a sheet cannot hold control characters.");
  }
  if (EqualText(name, kReservedName)) refuse("spreadsheet programs keep this name for themselves.");
  if (name.front() == '\'' || name.back() == '\'') {
    refuse("the name of a sheet cannot begin or end with an apostrophe.");
  }
}

std::string SheetNameFromFolder(std::string_view folder_name) {
  std::string name;
  std::size_t units = 0;
  while (!folder_name.empty()) {
    const Utf8Character character = FirstUtf8(folder_name);
    units += character.length == 4 ? 2 : 1;  // four bytes of UTF-8 are two units of UTF-16
    if (units > kLongestSheetName) break;
    if (CannotStandInSheetName(character.code)) {
      name += '_';
    } else {
      name += folder_name.substr(0, character.length);
    }
    folder_name.remove_prefix(character.length);
  }
  // After the cut, which can leave an apostrophe at the end.
  if (!name.empty() && name.front() == '\'') name.front() = '_';
  if (!name.empty() && name.back() == '\'') name.back() = '_';
  if (EqualText(name, kReservedName)) name += '_';
  return name;
}

}  // namespace korvex
