#include "spreadsheet/xls/shared_string_table.h"

#include <string>

#include "spreadsheet/bytes/little_endian.h"
#include "spreadsheet/bytes/refusal.h"
#include "spreadsheet/cells/shared_strings.h"
#include "spreadsheet/xls/biff_globals.h"
#include "spreadsheet/xls/biff_text.h"
#include "spreadsheet/xls/record_reader.h"
#include "text/text.h"

namespace korvex {
namespace {

// Reads texts to the end of the data, whatever the number in front of them says. False when the
// data ends within a text.
bool Decode(ContinuedData data, SharedStrings& strings) {
  strings.Clear();
  if (!data.Skip(8)) return true;
  std::uint16_t length;
  while (data.ReadU16(length)) {
    if (!AppendUnicodeText(data, length, strings.Texts())) return false;
    strings.EndText();
  }
  return true;
}

// Whether EXTSST is an index of that many texts: it has an entry for each group, and the last is
// filled.
bool IsIndexOf(std::span<const std::byte> index, std::size_t texts) {
  constexpr std::size_t kEntrySize = 8;
  if (index.size() < 2 + kEntrySize) return false;
  const std::size_t group = LoadU16(index.data());
  const std::size_t entries = (index.size() - 2) / kEntrySize;
  return group > 0 && entries == (texts + group - 1) / group &&
         LoadU32(index.data() + 2 + (entries - 1) * kEntrySize) > 0;
}

}  // namespace

void ReadSharedStrings(const BiffGlobals& globals, SharedStrings& strings) {
  strings.Clear();
  if (globals.strings.empty()) return;
  const bool is_whole = Decode(ContinuedData(globals.strings, globals.strings_length), strings);
  if (globals.strings_length < 8) return;
  const std::size_t stated = LoadU32(globals.strings.data() + 4);
  const std::size_t count = strings.Count();
  const std::string numbers = "is damaged: its table of shared texts should hold " +
                              GroupedDigits(stated) + " texts, and holds " + GroupedDigits(count);
  // More texts than stated: zeros behind the last text read as empty texts and are harmless. But
  // zeros may also have replaced texts; then the last of the stated ones is empty.
  const auto is_empty = [&](std::size_t index) { return strings.Range(index).length == 0; };
  if (stated > 0 && count > stated) {
    bool is_padding = is_whole && !is_empty(stated - 1);
    for (std::size_t i = stated; i < count; ++i) is_padding &= is_empty(i);
    if (!is_padding) Refuse(numbers);
  }
  // Fewer texts than stated: some writers count wrong. It is damage if the data ends within a text,
  // or if the index agrees with the number.
  if (count < stated && (!is_whole || IsIndexOf(globals.string_index, stated))) Refuse(numbers);
}

}  // namespace korvex
