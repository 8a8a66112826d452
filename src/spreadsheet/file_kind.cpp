#include "spreadsheet/file_kind.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "spreadsheet/bytes/little_endian.h"
#include "spreadsheet/xls/biff_globals.h"
#include "spreadsheet/xls/biff_records.h"
#include "spreadsheet/xls/compound_file.h"
#include "spreadsheet/xls/compound_file_reader.h"

namespace korvex {
namespace {

constexpr std::size_t kTextHead = 8192;
// Comments and the namespaces of other programs can stand before what tells markup apart.
constexpr std::size_t kMarkupHead = kTellingStart - 1;

std::string_view Characters(std::span<const std::byte> bytes, std::size_t limit) {
  return {reinterpret_cast<const char*>(bytes.data()), std::min(bytes.size(), limit)};
}

std::string_view SkipBlanks(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
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

// What spreadsheet and text programs leave beside an open document: the length of the user's name,
// then the name in a field of at least 52 bytes, then once more in UTF-16.
bool IsOwnerFile(std::span<const std::byte> bytes) {
  constexpr std::size_t kField = 52;
  if (bytes.size() != 165 && bytes.size() != 162) return false;
  const std::size_t length = LoadU8(bytes.data());
  if (length > kField) return false;
  const std::span<const std::byte> filler = bytes.subspan(1 + length, kField - length);
  return std::all_of(filler.begin(), filler.end(),
                     [](std::byte b) { return b == std::byte{' '} || b == std::byte{0}; });
}

// The same of other office programs: ",user,machine,date and time,file:///…;"
bool IsLockLine(std::string_view head) {
  const std::size_t end = head.find(';');
  return head.starts_with(',') && Contains(head, ",file:///") && end != std::string_view::npos &&
         SkipBlanks(head.substr(end + 1)).empty();
}

// What is left of a file whose copy broke off at once.
bool IsBeginningOfSignature(std::span<const std::byte> bytes) {
  const auto* const signature = reinterpret_cast<const char*>(compound::kSignature);
  for (const std::string_view whole : {std::string_view(signature, sizeof compound::kSignature),
                                       std::string_view("PK\x03\x04"), std::string_view("<?xml")}) {
    if (bytes.size() >= 2 && bytes.size() < whole.size() &&
        whole.starts_with(Characters(bytes, whole.size()))) {
      return true;
    }
  }
  return false;
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
  return FormWithoutMark(text.substr(0, kTextHead));
}

// The beginning of a text in lower case, without byte order mark and blanks in front. Of UTF-16
// only the ASCII characters are told apart.
std::string TextHead(std::span<const std::byte> bytes, std::size_t limit) {
  std::string_view raw = Characters(bytes, limit);
  const TextForm form = TakeMark(raw);
  const std::size_t step = form == TextForm::kBytes ? 1 : 2;
  const std::size_t low = form == TextForm::kUtf16Swapped ? 1 : 0;
  std::string head;
  head.reserve(raw.size() / step);
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

// The tag of the first element, as far as it is there; empty when there is none.
std::string_view RootTag(std::string_view head) {
  std::size_t at = 0;
  for (;;) {
    at = head.find('<', at);
    if (at == std::string_view::npos) return {};
    const std::string_view rest = head.substr(at + 1);
    if (rest.starts_with("!doctype html")) return "<html>";
    if (!rest.starts_with('?') && !rest.starts_with('!')) break;
    at = rest.starts_with("!--") ? head.find("-->", at) : head.find('>', at);
  }
  return head.substr(at, std::min(head.find('>', at), head.size() - 1) + 1 - at);
}

// The name in a tag, without its namespace.
std::string_view NameIn(std::string_view tag) {
  if (tag.empty()) return {};
  const std::string_view name = tag.substr(1, tag.find_first_of(" \t\r\n/>", 1) - 1);
  return name.substr(name.find(':') + 1);
}

// kText when `head` is no markup after all. `is_whole` when nothing comes after it.
FileKind MarkupKind(std::string_view head, bool is_whole) {
  const std::string_view tag = RootTag(head);
  const std::string_view root = NameIn(tag);
  if (root == "workbook" && Contains(tag, "urn:schemas-microsoft-com:office:spreadsheet")) {
    return FileKind::kSpreadsheetMl;
  }
  if (root == "document" && Contains(tag, "application/vnd.oasis.opendocument.spreadsheet")) {
    return FileKind::kFlatOpenDocument;
  }
  for (const char* name : {"html",  "head", "title", "body", "meta", "link", "style",  "script",
                           "table", "tr",   "td",    "div",  "span", "p",    "center", "form",
                           "font",  "b",    "br",    "h1",   "h2",   "h3",   "pre"}) {
    if (root == name) return FileKind::kHtml;
  }
  if (head.starts_with("<?xml")) {
    return is_whole && !tag.ends_with('>') ? FileKind::kCutXml : FileKind::kXml;
  }
  return !root.empty() && root[0] >= 'a' && root[0] <= 'z' && tag.ends_with('>') ? FileKind::kXml
                                                                                 : FileKind::kText;
}

// A program's name behind "ID;P", and then a record; else a table whose first column is called ID.
bool IsSylk(std::string_view head) {
  if (!head.starts_with("id;p")) return false;
  const std::string_view next =
      SkipBlanks(head.substr(std::min(head.find_first_of("\r\n"), head.size())));
  for (const char* record : {"b;", "c;", "e", "f;", "nn;", "o;", "p;", "w;"}) {
    if (next.starts_with(record)) return true;
  }
  return next.empty();
}

bool IsJson(std::string_view head) {
  if (!head.starts_with('{') && !head.starts_with('[')) return false;
  const std::string_view next = SkipBlanks(head.substr(1)).substr(0, 1);
  return !next.empty() && Contains(head[0] == '{' ? "\"}" : "\"{[", next);
}

// Semicolons delimit fields that hold a decimal comma each. A preamble can have either; most of the
// lines decide.
FileKind DelimitedKind(std::string_view head) {
  if (Contains(head, "\t")) return FileKind::kTabText;
  if (!Contains(head, ",") && !Contains(head, ";")) return FileKind::kText;
  int semicolon_lines = 0;
  int comma_lines = 0;
  while (!head.empty()) {
    const std::string_view line = head.substr(0, head.find_first_of("\r\n"));
    head.remove_prefix(std::min(line.size() + 1, head.size()));
    const auto commas = std::count(line.begin(), line.end(), ',');
    const auto semicolons = std::count(line.begin(), line.end(), ';');
    const bool is_semicolon_line = semicolons > 0 && commas <= semicolons + 1;
    semicolon_lines += is_semicolon_line;
    comma_lines += commas > 0 && !is_semicolon_line;
  }
  return semicolon_lines > comma_lines ? FileKind::kSemicolonText : FileKind::kCommaText;
}

FileKind TextKind(std::span<const std::byte> bytes) {
  const std::string head = TextHead(bytes, kTextHead);
  if (!IsPlainText(head)) return FileKind::kUnknown;
  if (SkipBlanks(head).starts_with('<')) {
    const std::string markup = TextHead(bytes, kMarkupHead);
    const FileKind kind = MarkupKind(SkipBlanks(markup), bytes.size() <= kMarkupHead);
    if (kind != FileKind::kText) return kind;
  }
  if (Contains(head, "<html") || Contains(head, "<table")) return FileKind::kHtml;
  if (IsSylk(head)) return FileKind::kSylk;
  if (head.starts_with("mime-version:") || Contains(head, "\nmime-version:")) {
    return FileKind::kWebArchive;
  }
  if (head.starts_with("{\\rtf")) return FileKind::kRichText;
  if (IsJson(head)) return FileKind::kJson;
  if (IsLockLine(head)) return FileKind::kOwnerFile;
  return DelimitedKind(head);
}

}  // namespace

FileKind RecognizeFile(std::span<const std::byte> bytes) {
  if (bytes.empty()) return FileKind::kEmpty;
  if (IsCompoundFile(bytes)) return FileKind::kCompoundFile;
  if (Characters(bytes, 4) == "PK\x03\x04" || Characters(bytes, 4) == "PK\x05\x06") {
    return FileKind::kZip;
  }
  if (StartsWithBof(bytes, biff::kBof)) return FileKind::kBareBiff;
  if (IsOldBiff(bytes)) return FileKind::kOldBiff;
  if (std::all_of(bytes.begin(), bytes.begin() + std::min(bytes.size(), kTellingStart),
                  [](std::byte b) { return b == std::byte{0}; })) {
    return bytes.size() < kTellingStart ? FileKind::kZeros : FileKind::kZeroStart;
  }
  if (IsOwnerFile(bytes)) return FileKind::kOwnerFile;
  if (IsBeginningOfSignature(bytes)) return FileKind::kCutHeader;
  static constexpr struct {
    std::string_view signature;
    FileKind kind;
  } kOthers[] = {{"%PDF", FileKind::kPdf},
                 {"\x89PNG", FileKind::kPicture},
                 {"\xFF\xD8\xFF", FileKind::kPicture},
                 {"GIF8", FileKind::kPicture},
                 {"\x1F\x8B", FileKind::kArchive},
                 {"7z\xBC\xAF", FileKind::kArchive},
                 {"Rar!", FileKind::kArchive}};
  for (const auto& other : kOthers) {
    if (Characters(bytes, other.signature.size()) == other.signature) return other.kind;
  }
  return TextKind(bytes);
}

bool MayBeWorkbook(FileKind kind) {
  switch (kind) {
    case FileKind::kCompoundFile:
    case FileKind::kBareBiff:
    case FileKind::kZip:
    case FileKind::kFlatOpenDocument:
    case FileKind::kSpreadsheetMl:
      return true;
    default:
      return false;
  }
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
      return kOldFormat;
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
    case FileKind::kJson:
      return "a JSON file";
    case FileKind::kPicture:
      return "a picture";
    case FileKind::kArchive:
      return "a packed file (gzip, 7z or RAR)";
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
    case FileKind::kZeroStart:
      return "a file that begins with nothing but zero bytes";
    case FileKind::kCutHeader:
    case FileKind::kCutXml:
      return "the beginning of a file";
    case FileKind::kUnknown:
      break;
  }
  return "a file of an unknown kind";
}

}  // namespace korvex
