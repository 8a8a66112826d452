#include "spreadsheet/xls/biff_text.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "spreadsheet/bytes/unicode.h"

namespace korvex {
namespace {

constexpr std::uint8_t kWide = 0x01;
constexpr std::uint8_t kPhonetic = 0x04;
constexpr std::uint8_t kRich = 0x08;

// Takes the characters piece by piece. The decoder goes with them, because a surrogate pair may be
// cut by a record's end; 8-bit characters end a pair that waits.
bool AppendCharacters(ContinuedData& data, std::size_t count, bool is_wide, TextArena& out) {
  Utf16Decoder decoder;
  for (;;) {
    const std::size_t here = std::min(count, is_wide ? data.Left() / 2 : data.Left());
    char* at = out.Reserve((here + 1) * kUtf8PerUnit);
    if (is_wide) {
      at = decoder.Append(data.At(), here, at);
      data.Advance(2 * here);
    } else {
      at = Latin1ToUtf8(data.At(), here, decoder.Finish(at));
      data.Advance(here);
    }
    count -= here;
    const bool is_at_end = count == 0 || !data.NextPiece();
    if (is_at_end) at = decoder.Finish(at);
    out.CommitUpTo(at);
    if (is_at_end) return count == 0;
    is_wide = (LoadU8(data.At()) & kWide) != 0;
    data.Advance(1);
  }
}

}  // namespace

bool AppendUnicodeText(ContinuedData& data, std::uint16_t count, TextArena& out) {
  std::uint8_t flags = 0;
  std::uint16_t runs = 0;
  std::uint32_t phonetic_size = 0;
  // Some writers leave out the flags byte of an empty text at the end of a record.
  if (count == 0 && data.Left() == 0) return true;
  if (!data.ReadU8(flags)) return false;
  if ((flags & kRich) != 0 && !data.ReadU16(runs)) return false;
  if ((flags & kPhonetic) != 0 && !data.ReadU32(phonetic_size)) return false;
  if (!AppendCharacters(data, count, (flags & kWide) != 0, out)) return false;
  if (runs != 0 || phonetic_size != 0) data.Skip(std::uint64_t{runs} * 4 + phonetic_size);
  return true;
}

bool AppendShortText(ContinuedData& data, TextArena& out) {
  constexpr std::size_t kHead = 3;  // count and flags
  constexpr std::size_t kStep = 8;
  constexpr std::uint64_t kHighBits = 0x8080'8080'8080'8080;
  if (data.Left() < kHead + 2 * kStep) return false;
  const std::byte* const head = data.At();
  const std::size_t count = LoadU16(head);
  if (count > 2 * kStep || LoadU8(head + 2) != 0) return false;
  // Two steps are copied whatever the count is, and what lies beyond it is not looked at.
  const auto bits = [&](std::size_t from) {
    const std::size_t used = std::min(count - std::min(count, from), kStep);
    const std::uint64_t letters = LoadU64(head + kHead + from);
    return used == 0 ? 0 : letters << 8 * (kStep - used);
  };
  if (((bits(0) | bits(kStep)) & kHighBits) != 0) return false;
  char* const at = out.Reserve(2 * kStep);
  std::memcpy(at, head + kHead, 2 * kStep);
  out.CommitUpTo(at + count);
  data.Advance(kHead + count);
  return true;
}

// Characters of two bytes may lie on both sides of a CONTINUE: the pieces are one text.
bool AppendByteText(ContinuedData& data, std::size_t count, const CodePage& code_page,
                    TextArena& out) {
  if (data.Left() >= count) {
    code_page.AppendText({data.At(), count}, out);
    data.Advance(count);
    return true;
  }
  std::vector<std::byte> bytes;
  do {
    const std::size_t here = std::min(count - bytes.size(), data.Left());
    bytes.insert(bytes.end(), data.At(), data.At() + here);
    data.Advance(here);
  } while (bytes.size() < count && data.NextPiece());
  code_page.AppendText(bytes, out);
  return bytes.size() == count;
}

}  // namespace korvex
