#include "spreadsheet/file_kind.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "spreadsheet/biff_records.h"
#include "spreadsheet/compound_file.h"
#include "spreadsheet/little_endian.h"

namespace korvex {
namespace {

constexpr std::size_t kTextHead = 8192;

std::string_view Characters(std::span<const std::byte> bytes, std::size_t limit) {
  return {reinterpret_cast<const char*>(bytes.data()), std::min(bytes.size(), limit)};
}

bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

// Whether there is a BOF record of this number, with a length of 4 to 16 bytes.
bool StartsWithBof(std::span<const std::byte> bytes, std::uint16_t number) {
  if (bytes.size() < 8 || LoadU16(bytes.data()) != number) return false;
  const std::uint16_t length = LoadU16(bytes.data() + 2);
  return length >= 4 && length <= 16;
}

bool IsOldBiff(std::span<const std::byte> bytes) {
  return StartsWithBof(bytes, biff::kBofBiff2) || StartsWithBof(bytes, biff::kBofBiff3) ||
         StartsWithBof(bytes, biff::kBofBiff4);
}

// The length of a user's name, then the name in a field of 54 bytes, then once more in UTF-16.
bool IsOwnerFile(std::span<const std::byte> bytes) {
  constexpr std::size_t kSize = 165;
  constexpr std::size_t kField = 54;
  if (bytes.size() != kSize) return false;
  const std::size_t length = LoadU8(bytes.data());
  if (length == 0 || length > kField) return false;
  const std::span<const std::byte> filler = bytes.subspan(1 + length, kField - length);
  return std::all_of(filler.begin(), filler.end(),
                     [](std::byte b) { return b == std::byte{' '} || b == std::byte{0}; });
}

enum class TextForm { kBytes, kUtf16, kUtf16Swapped };

// Of a text without a mark, UTF-16 is told by the zero halves of its ASCII characters.
TextForm FormWithoutMark(std::string_view text) {
  std::size_t zeros[2] = {0, 0};
  for (std::size_t i = 0; i < text.size(); ++i) zeros[i % 2] += text[i] == '\0';
  const std::size_t most = text.size() / 4;
  if (zeros[0] == 0 && zeros[1] > most) return TextForm::kUtf16;
  if (zeros[1] == 0 && zeros[0] > most) return TextForm::kUtf16Swapped;
  return TextForm::kBytes;
}

TextForm TakeMark(std::string_view& text) {
  const struct {
    std::string_view mark;
    TextForm form;
  } kMarks[] = {{"\xEF\xBB\xBF", TextForm::kBytes},
                {"\xFF\xFE", TextForm::kUtf16},
                {"\xFE\xFF", TextForm::kUtf16Swapped}};
  for (const auto& known : kMarks) {
    if (!text.starts_with(known.mark)) continue;
    text.remove_prefix(known.mark.size());
    return known.form;
  }
  return FormWithoutMark(text);
}

// The beginning of a text in lower case, without byte order mark and blanks in front. Of UTF-16
// only the ASCII characters are told apart.
std::string TextHead(std::span<const std::byte> bytes) {
  std::string_view raw = Characters(bytes, kTextHead);
  const TextForm form = TakeMark(raw);
  const std::size_t step = form == TextForm::kBytes ? 1 : 2;
  const std::size_t low = form == TextForm::kUtf16Swapped ? 1 : 0;
  std::string head;
  for (std::size_t at = 0; at + step <= raw.size(); at += step) {
    const bool is_ascii = step == 1 || raw[at + 1 - low] == '\0';
    const char letter = is_ascii ? raw[at + low] : '\x80';
    if (head.empty() && (letter == ' ' || letter == '\r' || letter == '\n')) continue;
    head += letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ('a' - 'A')) : letter;
  }
  return head;
}

bool IsPlainText(std::string_view head) {
  constexpr std::string_view kControls = "\t\r\n\v\f\x1A";  // the last one ends a text under DOS
  return std::none_of(head.begin(), head.end(), [=](char letter) {
    return static_cast<unsigned char>(letter) < 0x20 && !Contains(kControls, {&letter, 1});
  });
}

// The name of the first element, without its namespace; empty when `head` is no markup.
std::string_view RootName(std::string_view head) {
  std::size_t at = 0;
  for (;;) {
    at = head.find('<', at);
    if (at == std::string_view::npos) return {};
    const std::string_view rest = head.substr(at + 1);
    if (rest.starts_with("!doctype html")) return "html";
    if (!rest.starts_with('?') && !rest.starts_with('!')) break;
    at = rest.starts_with("!--") ? head.find("-->", at) : head.find('>', at);
  }
  const std::size_t end = head.find_first_of(" \t\r\n/>", at + 1);
  const std::string_view name = head.substr(at + 1, end - at - 1);
  return name.substr(name.find(':') + 1);
}

FileKind MarkupKind(std::string_view head) {
  const std::string_view root = RootName(head);
  if (root == "workbook" && Contains(head, "urn:schemas-microsoft-com:office:spreadsheet")) {
    return FileKind::kSpreadsheetMl;
  }
  if (root == "document" && Contains(head, "application/vnd.oasis.opendocument.spreadsheet")) {
    return FileKind::kFlatOpenDocument;
  }
  for (const char* name : {"html", "head", "body", "meta", "style", "table", "tr", "td", "div"}) {
    if (root == name) return FileKind::kHtml;
  }
  if (head.starts_with("<?xml")) return FileKind::kXml;
  if (Contains(head, "<html") || Contains(head, "<table")) return FileKind::kHtml;
  return !root.empty() && root[0] >= 'a' && root[0] <= 'z' ? FileKind::kXml : FileKind::kText;
}

// Semicolons delimit fields that hold a decimal comma each; the first line with either decides.
FileKind DelimitedKind(std::string_view head) {
  if (Contains(head, "\t")) return FileKind::kTabText;
  const std::size_t first = head.find_first_of(",;");
  if (first == std::string_view::npos) return FileKind::kText;
  const std::size_t begin = head.find_last_of("\r\n", first) + 1;
  const std::string_view line = head.substr(begin, head.find_first_of("\r\n", first) - begin);
  const auto commas = std::count(line.begin(), line.end(), ',');
  const auto semicolons = std::count(line.begin(), line.end(), ';');
  const bool is_semicolon_text = semicolons > 0 && commas <= semicolons + 1;
  return is_semicolon_text ? FileKind::kSemicolonText : FileKind::kCommaText;
}

}  // namespace

bool IsCompoundFile(std::span<const std::byte> bytes) {
  return bytes.size() >= sizeof compound::kSignature &&
         std::memcmp(bytes.data(), compound::kSignature, sizeof compound::kSignature) == 0;
}

FileKind RecognizeFile(std::span<const std::byte> bytes) {
  if (bytes.empty()) return FileKind::kEmpty;
  if (IsCompoundFile(bytes)) return FileKind::kCompoundFile;
  if (Characters(bytes, 4) == "PK\x03\x04" || Characters(bytes, 4) == "PK\x05\x06") {
    return FileKind::kZip;
  }
  if (StartsWithBof(bytes, biff::kBof)) return FileKind::kBareBiff;
  if (IsOldBiff(bytes)) return FileKind::kOldBiff;
  if (IsOwnerFile(bytes)) return FileKind::kOwnerFile;
  if (std::all_of(bytes.begin(), bytes.end(), [](std::byte b) { return b == std::byte{0}; })) {
    return FileKind::kZeros;
  }
  const std::string head = TextHead(bytes);
  if (head.starts_with("%pdf")) return FileKind::kPdf;
  if (!IsPlainText(head)) return FileKind::kUnknown;
  if (head.starts_with("<")) return MarkupKind(head);
  if (head.starts_with("id;")) return FileKind::kSylk;
  if (head.starts_with("mime-version:")) return FileKind::kWebArchive;
  if (head.starts_with("{\\rtf")) return FileKind::kRichText;
  return DelimitedKind(head);
}

std::string_view FileKindText(FileKind kind) {
  switch (kind) {
    case FileKind::kEmpty:
      return "empty";
    case FileKind::kCompoundFile:
      return "a compound file";
    case FileKind::kZip:
      return "a zip archive";
    case FileKind::kBareBiff:
      return "an .xls workbook";
    case FileKind::kOldBiff:
      return "a worksheet in the format before Excel 5";
    case FileKind::kSpreadsheetMl:
      return "an XML spreadsheet (SpreadsheetML)";
    case FileKind::kFlatOpenDocument:
      return "an OpenDocument spreadsheet";
    case FileKind::kXml:
      return "an XML file";
    case FileKind::kHtml:
      return "a web page (HTML)";
    case FileKind::kWebArchive:
      return "a web archive (MHTML)";
    case FileKind::kSylk:
      return "a SYLK file";
    case FileKind::kRichText:
      return "a rich text file (RTF)";
    case FileKind::kPdf:
      return "a PDF file";
    case FileKind::kTabText:
      return "tab-delimited text";
    case FileKind::kCommaText:
      return "comma-delimited text";
    case FileKind::kSemicolonText:
      return "semicolon-delimited text";
    case FileKind::kText:
      return "plain text";
    case FileKind::kOwnerFile:
      return "the mark of a workbook that somebody has open";
    case FileKind::kZeros:
      return "nothing but zero bytes";
    case FileKind::kUnknown:
      break;
  }
  return "a file of an unknown kind";
}

}  // namespace korvex
