#include "spreadsheet/shared_strings.h"

#include "spreadsheet/biff_text.h"

namespace korvex {

void SharedStrings::Clear() {
  arena_.Clear();
  starts_.clear();
}

bool SharedStrings::Decode(ContinuedData data) {
  Clear();
  starts_.push_back(0);
  if (!data.Skip(8)) return true;
  std::uint16_t length;
  while (data.ReadU16(length)) {
    if (!AppendUnicodeText(data, length, arena_)) return false;
    starts_.push_back(arena_.Size());
  }
  return true;
}

}  // namespace korvex
