#include "spreadsheet/file_kind.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>

#include "spreadsheet/bytes/little_endian.h"
#include "spreadsheet/bytes/refusal.h"
#include "spreadsheet/xls/biff_globals.h"
#include "spreadsheet/xls/biff_records.h"
#include "spreadsheet/xls/compound_file.h"
#include "text/text.h"

namespace korvex {
namespace {

// How much of a text is looked at. Of markup more: comments and the namespaces of other programs
// can come before the root's own.
constexpr std::size_t kTextHead = 8192;
constexpr std::size_t kMarkupHead = kTellingStart - 1;

constexpr std::string_view kZipSignature = "PK\x03\x04";

std::string_view Characters(std::span<const std::byte> bytes, std::size_t limit) {
  return {reinterpret_cast<const char*>(bytes.data()), std::min(bytes.size(), limit)};
}

std::string_view SkipBlanks(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
}

bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

enum class TextForm { kBytes, kUtf16, kUtf16Swapped };

// UTF-16 without a byte order mark shows in the upper halves of its ASCII characters: only every
// second byte is zero, and many are.
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

// The beginning of a text in lower case, without byte order mark and leading blanks. Of UTF-16 only
// ASCII characters are kept; the others become a byte that no test looks for.
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

// The tag of the first element, after comments and declarations; cut where the text ends, and
// empty when there is none.
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

// The beginning of a file, in the forms that the tests below look at. Texts are decoded when the
// first test asks for them: most files have a signature.
class FileStart {
 public:
  explicit FileStart(std::span<const std::byte> bytes) : bytes_(bytes) {}

  std::span<const std::byte> Bytes() const { return bytes_; }
  bool StartsWith(std::string_view signature) const {
    return Characters(bytes_, signature.size()) == signature;
  }
  bool AreZeros() const {
    const auto start = bytes_.first(std::min(bytes_.size(), kTellingStart));
    return std::all_of(start.begin(), start.end(), [](std::byte b) { return b == std::byte{0}; });
  }

  // In lower case, without byte order mark and leading blanks.
  std::string_view Text() const {
    if (!text_) text_ = TextHead(bytes_, kTextHead);
    return *text_;
  }
  // The same, longer, when it begins with a tag; else empty.
  std::string_view Markup() const {
    if (!SkipBlanks(Text()).starts_with('<')) return {};
    if (!markup_) markup_ = TextHead(bytes_, kMarkupHead);
    return SkipBlanks(*markup_);
  }
  // The tag of the root element, and its name.
  std::string_view Tag() const {
    if (!tag_) tag_ = RootTag(Markup());
    return *tag_;
  }
  std::string_view Root() const { return NameIn(Tag()); }
  // Whether the markup that was looked at is all of the file.
  bool IsWholeMarkup() const { return bytes_.size() <= kMarkupHead; }

 private:
  std::span<const std::byte> bytes_;
  mutable std::optional<std::string> text_;
  mutable std::optional<std::string> markup_;
  mutable std::optional<std::string_view> tag_;  // in markup_
};

bool IsEmpty(const FileStart& file) {
  return file.Bytes().empty();
}

// Whether there is a BOF record of this number, with a length of 4 to 16 bytes.
bool StartsWithBof(const FileStart& file, std::uint16_t number) {
  const std::span<const std::byte> bytes = file.Bytes();
  if (bytes.size() < 8 || LoadU16(bytes.data()) != number) return false;
  const std::uint16_t length = LoadU16(bytes.data() + 2);
  return length >= 4 && length <= 16;
}

bool IsBareBiff(const FileStart& file) {
  return StartsWithBof(file, biff::kBof);
}

bool IsOldBiff(const FileStart& file) {
  return StartsWithBof(file, biff::kBofBiff2) || StartsWithBof(file, biff::kBofBiff3) ||
         StartsWithBof(file, biff::kBofBiff4);
}

bool IsZeros(const FileStart& file) {
  return file.Bytes().size() < kTellingStart && file.AreZeros();
}

bool StartsWithZeros(const FileStart& file) {
  return file.AreZeros();
}

// What spreadsheet and text programs leave beside an open document ("~$plate.xls"):
//   0  uint8 length of the user's name
//   1  52 bytes: the name, filled up with blanks or zeros
//   53 the name once more in UTF-16
bool IsOwnerFile(const FileStart& file) {
  constexpr std::size_t kField = 52;
  const std::span<const std::byte> bytes = file.Bytes();
  if (bytes.size() != 165 && bytes.size() != 162) return false;
  const std::size_t length = LoadU8(bytes.data());
  if (length > kField) return false;
  const std::span<const std::byte> filler = bytes.subspan(1 + length, kField - length);
  return std::all_of(filler.begin(), filler.end(),
                     [](std::byte b) { return b == std::byte{' '} || b == std::byte{0}; });
}

// The same of other office programs (".~lock.plate.ods#"): ",user,machine,date and time,file:///…;"
bool IsLockLine(const FileStart& file) {
  const std::string_view text = file.Text();
  const std::size_t end = text.find(';');
  return text.starts_with(',') && Contains(text, ",file:///") && end != std::string_view::npos &&
         SkipBlanks(text.substr(end + 1)).empty();
}

// What is left of a file whose copy broke off at once.
bool IsBeginningOfSignature(const FileStart& file) {
  const std::size_t size = file.Bytes().size();
  for (const std::string_view whole :
       {compound::kSignature, kZipSignature, std::string_view("<?xml")}) {
    if (size >= 2 && size < whole.size() && file.StartsWith(whole.substr(0, size))) return true;
  }
  return false;
}

bool IsNoText(const FileStart& file) {
  constexpr std::string_view kControls = "\t\r\n\v\f\x1A";  // the last one ends a text under DOS
  const std::string_view text = file.Text();
  return std::any_of(text.begin(), text.end(), [=](char letter) {
    return static_cast<unsigned char>(letter) < 0x20 && !Contains(kControls, {&letter, 1});
  });
}

bool IsSpreadsheetMl(const FileStart& file) {
  return file.Root() == "workbook" &&
         Contains(file.Tag(), "urn:schemas-microsoft-com:office:spreadsheet");
}

bool IsFlatOpenDocument(const FileStart& file) {
  return file.Root() == "document" &&
         Contains(file.Tag(), "application/vnd.oasis.opendocument.spreadsheet");
}

// Pages that programs save as .xls may be pieces of a page, or have a text in front.
bool IsWebPage(const FileStart& file) {
  static constexpr std::string_view kElements[] = {
      "html",  "head", "title", "body", "meta", "link", "style",  "script",
      "table", "tr",   "td",    "div",  "span", "p",    "center", "form",
      "font",  "b",    "br",    "h1",   "h2",   "h3",   "pre"};
  return std::find(std::begin(kElements), std::end(kElements), file.Root()) != std::end(kElements);
}

bool HoldsWebPage(const FileStart& file) {
  return Contains(file.Text(), "<html") || Contains(file.Text(), "<table");
}

bool IsCutXml(const FileStart& file) {
  return file.Markup().starts_with("<?xml") && file.IsWholeMarkup() && !file.Tag().ends_with('>');
}

bool IsXml(const FileStart& file) {
  if (file.Markup().starts_with("<?xml")) return true;
  const std::string_view root = file.Root();
  return !root.empty() && root[0] >= 'a' && root[0] <= 'z' && file.Tag().ends_with('>');
}

// A program's name after "ID;P", and then a record; else a table whose first column is called ID.
bool IsSylk(const FileStart& file) {
  const std::string_view text = file.Text();
  if (!text.starts_with("id;p")) return false;
  const std::string_view next =
      SkipBlanks(text.substr(std::min(text.find_first_of("\r\n"), text.size())));
  for (const char* record : {"b;", "c;", "e", "f;", "nn;", "o;", "p;", "w;"}) {
    if (next.starts_with(record)) return true;
  }
  return next.empty();
}

bool IsWebArchive(const FileStart& file) {
  return file.Text().starts_with("mime-version:") || Contains(file.Text(), "\nmime-version:");
}

bool IsRichText(const FileStart& file) {
  return file.Text().starts_with("{\\rtf");
}

bool IsJson(const FileStart& file) {
  const std::string_view text = file.Text();
  if (!text.starts_with('{') && !text.starts_with('[')) return false;
  const std::string_view next = SkipBlanks(text.substr(1)).substr(0, 1);
  return !next.empty() && Contains(text[0] == '{' ? "\"}" : "\"{[", next);
}

bool IsTabText(const FileStart& file) {
  return Contains(file.Text(), "\t");
}

// Where semicolons delimit fields, each field can hold one decimal comma. A preamble can have
// either; most of the lines decide.
bool IsSemicolonText(const FileStart& file) {
  std::string_view text = file.Text();
  int semicolon_lines = 0;
  int comma_lines = 0;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    const auto commas = std::count(line.begin(), line.end(), ',');
    const auto semicolons = std::count(line.begin(), line.end(), ';');
    const bool is_semicolon_line = semicolons > 0 && commas <= semicolons + 1;
    semicolon_lines += is_semicolon_line;
    comma_lines += commas > 0 && !is_semicolon_line;
  }
  return semicolon_lines > comma_lines;
}

bool IsCommaText(const FileStart& file) {
  return Contains(file.Text(), ",") || Contains(file.Text(), ";");
}

bool IsAnything(const FileStart&) {
  return true;
}

// The first row that fits a file says what it is: it has the row's signature, or passes its test.
// Tests of texts come after the one that finds what is no text, of markup after exact ones.
struct Row {
  std::string_view signature;
  bool (*test)(const FileStart&);
  FileKind kind;
};
using enum WorkbookForm;
constexpr std::string_view kOwnerMark = "the mark of a workbook that somebody has open";
constexpr std::string_view kPicture = "a picture";
constexpr std::string_view kPacked = "a packed file (gzip, 7z or RAR)";
constexpr std::string_view kHtml = "a web page (HTML)";
constexpr Row kRows[] = {
    {"", IsEmpty, {kNone, "", "is empty (0 bytes)"}},
    {compound::kSignature, nullptr, {kXls, "", ""}},
    {kZipSignature, nullptr, {kZip, "", ""}},
    {"PK\x05\x06", nullptr, {kZip, "", ""}},  // without parts
    {"", IsBareBiff, {kXls, "", ""}},
    {"", IsOldBiff, {kNone, kOldFormat, ""}},
    {"", IsZeros, {kNone, "nothing but zero bytes", ""}},
    {"", StartsWithZeros, {kNone, "a file that begins with nothing but zero bytes", ""}},
    {"", IsOwnerFile, {kNone, kOwnerMark, ""}},
    {"", IsBeginningOfSignature, {kNone, "", "ends after # bytes, within its header"}},
    {"%PDF", nullptr, {kNone, "a PDF file", ""}},
    {"\x89PNG", nullptr, {kNone, kPicture, ""}},
    {"\xFF\xD8\xFF", nullptr, {kNone, kPicture, ""}},
    {"GIF8", nullptr, {kNone, kPicture, ""}},
    {"\x1F\x8B", nullptr, {kNone, kPacked, ""}},
    {"7z\xBC\xAF", nullptr, {kNone, kPacked, ""}},
    {"Rar!", nullptr, {kNone, kPacked, ""}},
    {"", IsNoText, {kNone, "a file of an unknown kind", ""}},
    {"", IsSpreadsheetMl, {kSpreadsheetMl, "", ""}},
    {"", IsFlatOpenDocument, {kFlatOpenDocument, "", ""}},
    {"", IsWebPage, {kNone, kHtml, ""}},
    {"", IsCutXml, {kNone, "", "ends after # bytes, in the middle of its XML"}},
    {"", IsXml, {kNone, "an XML file", ""}},
    {"", HoldsWebPage, {kNone, kHtml, ""}},
    {"", IsSylk, {kNone, "a SYLK file", ""}},
    {"", IsWebArchive, {kNone, "a web archive (MHTML)", ""}},
    {"", IsRichText, {kNone, "a rich text file (RTF)", ""}},
    {"", IsJson, {kNone, "a JSON file", ""}},
    {"", IsLockLine, {kNone, kOwnerMark, ""}},
    {"", IsTabText, {kNone, "tab-delimited text", ""}},
    {"", IsSemicolonText, {kNone, "semicolon-delimited text", ""}},
    {"", IsCommaText, {kNone, "comma-delimited text", ""}},
    {"", IsAnything, {kNone, "plain text", ""}},
};

}  // namespace

const FileKind& RecognizeFile(std::span<const std::byte> bytes) {
  const FileStart file(bytes);
  for (const Row& row : kRows) {
    if (row.test != nullptr ? row.test(file) : file.StartsWith(row.signature)) return row.kind;
  }
  return std::rbegin(kRows)->kind;
}

void RefuseFile(const FileKind& kind, std::size_t size) {
  if (!kind.name.empty()) RefuseAs(kind.name);
  std::string refusal(kind.refusal);
  if (const std::size_t at = refusal.find('#'); at != std::string::npos) {
    refusal.replace(at, 1, GroupedDigits(size));
  }
  Refuse(refusal);
}

}  // namespace korvex
