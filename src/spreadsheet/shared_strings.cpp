#include "spreadsheet/shared_strings.h"

#include "spreadsheet/biff_text.h"

namespace korvex {

void SharedStrings::Clear() {
  arena_.Clear();
  starts_.clear();
}

void SharedStrings::Decode(ContinuedData data) {
  Clear();
  starts_.push_back(0);
  if (!data.Skip(8)) return;
  std::uint16_t length;
  while (data.ReadU16(length) && AppendUnicodeText(data, length, arena_)) {
    starts_.push_back(arena_.Size());
  }
}

}  // namespace korvex
