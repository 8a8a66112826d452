#include "spreadsheet/bytes/xml_input.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "spreadsheet/bytes/code_page.h"
#include "spreadsheet/bytes/unicode.h"
#include "text/text.h"
#include "text/utf8.h"

namespace korvex {
namespace {

constexpr std::size_t kChunk = 64 * 1024;
constexpr char kNoCharacter = '\xFF';  // no UTF-8

void AppendCharacter(char32_t code, std::string& out) {
  char character[kLongestUtf8];
  out.append(character, EncodeUtf8(code, character));
}

// Whether a code page may give the byte another meaning than ASCII does. The letters and signs of
// markup stay what they are.
bool MayDiffer(int byte) {
  return byte >= 0x80 || byte < 0x20 || std::strchr("$@\\^`{}~\x7F", byte) != nullptr;
}

}  // namespace

// A document without a byte order mark is UTF-16 if one of its first two bytes is zero: the other
// is "<" or a blank then.
const char* XmlInput::Begin() {
  if (source_ == nullptr) {
    begin_ = whole_.data();
    end_ = begin_ + whole_.size();
    size_ = whole_.size();
    is_last_ = true;
  } else {
    begin_ = end_ = buffer_.data();
    while (!is_last_ && end_ - begin_ < 3) More(begin_);
  }
  const std::string_view start(begin_, static_cast<std::size_t>(end_ - begin_));
  if (start.size() < 2) return begin_;
  if (start.starts_with("\xEF\xBB\xBF")) return begin_ + 3;
  if (start.starts_with("\xFE\xFF")) return Restart(begin_ + 2, Form::kUtf16Big);
  if (start.starts_with("\xFF\xFE")) return Restart(begin_ + 2, Form::kUtf16Little);
  if (start[0] == '\0') return Restart(begin_, Form::kUtf16Big);
  if (start[1] == '\0') return Restart(begin_, Form::kUtf16Little);
  return begin_;
}

const char* XmlInput::Restart(const char* rest, Form form) {
  CountLines(rest);
  unread_.assign(rest, end_);
  unread_at_ = 0;
  form_ = form;
  is_last_ = false;
  begin_ = end_ = buffer_.data();
  return More(begin_);
}

const char* XmlInput::More(const char* kept) {
  if (is_last_) return kept;
  CountLines(kept);
  const auto size = static_cast<std::size_t>(end_ - kept);
  if (size > 0) std::memmove(buffer_.data(), kept, size);
  Fill(size);
  return begin_;
}

// Puts the next bytes behind the `kept` ones at the front of the buffer.
void XmlInput::Fill(std::size_t kept) {
  const std::size_t wanted = std::max(kChunk, kept);
  if (form_ == Form::kUtf8) {
    // The buffer never shrinks while it is filled: its end would have to be cleared anew.
    if (buffer_.size() < kept + wanted + 1) buffer_.resize(kept + wanted + 1);
    const std::size_t count = Fetch({buffer_.data() + kept, buffer_.size() - kept - 1});
    is_last_ = count == 0;
    end_ = buffer_.data() + kept + count;
    buffer_[kept + count] = '\0';
  } else {
    buffer_.resize(kept);
    while (!is_last_ && buffer_.size() == kept) {
      const std::size_t before = packed_.size();
      packed_.resize(before + wanted);
      const std::size_t count = Fetch({packed_.data() + before, wanted});
      packed_.resize(before + count);
      is_last_ = count == 0;
      Convert(is_last_);
    }
    end_ = buffer_.data() + buffer_.size();
  }
  begin_ = buffer_.data();
}

std::size_t XmlInput::Fetch(std::span<char> room) {
  if (unread_at_ < unread_.size()) {
    const std::size_t count = unread_.copy(room.data(), room.size(), unread_at_);
    unread_at_ += count;
    return count;
  }
  if (source_ == nullptr) return 0;
  const std::size_t count = (*source_)(room);
  size_ += count;
  return count;
}

// Appends to the buffer what stands in packed_; leaves there a character that is cut.
void XmlInput::Convert(bool is_end) {
  if (form_ == Form::kTable) {
    for (const char byte : packed_) buffer_ += table_[static_cast<unsigned char>(byte)];
    packed_.clear();
  } else {
    packed_.erase(0, ConvertUtf16(is_end));
  }
}

std::size_t XmlInput::ConvertUtf16(bool is_end) {
  const auto unit_at = [this](std::size_t at) {
    const auto first = static_cast<unsigned char>(packed_[at]);
    const auto second = static_cast<unsigned char>(packed_[at + 1]);
    return form_ == Form::kUtf16Big ? first << 8u | second : second << 8u | first;
  };
  std::size_t at = 0;
  for (; packed_.size() - at >= 2; at += 2) {
    const auto unit = static_cast<std::uint32_t>(unit_at(at));
    if (!IsHighSurrogate(unit)) {
      if (IsLowSurrogate(unit)) {
        buffer_ += kNoCharacter;
      } else {
        AppendCharacter(unit, buffer_);
      }
      continue;
    }
    if (packed_.size() - at < 4) break;
    const auto low = static_cast<std::uint32_t>(unit_at(at + 2));
    if (IsLowSurrogate(low)) {
      AppendCharacter(JoinSurrogates(unit, low), buffer_);
      at += 2;
    } else {
      buffer_ += kNoCharacter;
    }
  }
  if (!is_end || at == packed_.size()) return at;
  buffer_ += kNoCharacter;
  return packed_.size();
}

// The name is a pseudo-attribute of the declaration: ASCII. A document in an unknown code page is
// refused, since its texts would lose what is not ASCII.
XmlInput::Encoding XmlInput::Declare(std::string_view name, const char*& rest) {
  const bool is_wide = form_ != Form::kUtf8;
  if (EqualText(name, "UTF-8")) return is_wide ? Encoding::kContradicts : Encoding::kFits;
  for (const auto& [known, form] :
       {std::pair("UTF-16LE", Form::kUtf16Little), std::pair("UTF-16BE", Form::kUtf16Big),
        std::pair("UTF-16", is_wide ? form_ : Form::kUtf16Little)}) {
    if (EqualText(name, known)) return form == form_ ? Encoding::kFits : Encoding::kContradicts;
  }
  if (!MakeTable(name)) return Encoding::kUnknown;
  if (is_wide) return Encoding::kContradicts;
  rest = Restart(rest, Form::kTable);
  return Encoding::kFits;
}

// "ISO-8859-1", "US-ASCII", "windows-1252", "cp1252".
bool XmlInput::MakeTable(std::string_view name) {
  table_.assign(256, {});
  const bool is_ascii = EqualText(name, "US-ASCII");
  if (is_ascii || EqualText(name, "ISO-8859-1")) {
    for (char32_t byte = 0; byte < 256; ++byte) {
      std::string& character = table_[byte];
      if (is_ascii && byte >= 0x80) {
        character = kNoCharacter;
      } else {
        AppendCharacter(byte, character);
      }
    }
    return true;
  }
  for (const std::string_view prefix : {"windows-", "cp"}) {
    if (EqualText(name.substr(0, prefix.size()), prefix)) name.remove_prefix(prefix.size());
  }
  std::uint16_t number = 0;
  const char* const end = name.data() + name.size();
  const auto [rest, error] = std::from_chars(name.data(), end, number);
  if (rest != end || error != std::errc()) return false;
  const CodePage page(number);
  if (!page.IsSingleByte()) return false;
  TextArena character;
  for (int code = 0; code < 256; ++code) {
    const std::byte byte{static_cast<std::uint8_t>(code)};
    character.Clear();
    page.AppendText({&byte, 1}, character);
    const char32_t meaning = FirstUtf8(character.Text(character.RangeSince(0))).code;
    if (!MayDiffer(code) && meaning != static_cast<char32_t>(code)) return false;
    AppendCharacter(meaning, table_[static_cast<std::size_t>(code)]);
  }
  return true;
}

// A line ends with LF, CR or both.
void XmlInput::CountLines(const char* end) {
  if (begin_ == end) return;
  if (is_after_return_ && *begin_ == '\n') ++begin_;
  is_after_return_ = begin_ < end && end[-1] == '\r';
  const auto find = [end](char wanted, const char* at) {
    return static_cast<const char*>(std::memchr(at, wanted, static_cast<std::size_t>(end - at)));
  };
  for (const char* at = begin_; (at = find('\n', at)) != nullptr; ++at) ++lines_;
  for (const char* at = begin_; (at = find('\r', at)) != nullptr; ++at) {
    if (at + 1 == end || at[1] != '\n') ++lines_;
  }
  begin_ = end;
}

std::uint64_t XmlInput::Line(const char* place) {
  CountLines(place);
  return lines_ + 1;
}

}  // namespace korvex
