#include "spreadsheet/file_kind.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "spreadsheet/compound_file.h"
#include "spreadsheet/little_endian.h"

namespace korvex {
namespace {

constexpr std::size_t kTextHead = 8192;
constexpr std::size_t kZipHead = 65536;
constexpr std::size_t kOwnerFileSize = 165;

std::string_view Characters(std::span<const std::byte> bytes, std::size_t limit) {
  return {reinterpret_cast<const char*>(bytes.data()), std::min(bytes.size(), limit)};
}

bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

bool IsCompoundFile(std::span<const std::byte> bytes) {
  return bytes.size() >= sizeof compound::kSignature &&
         std::memcmp(bytes.data(), compound::kSignature, sizeof compound::kSignature) == 0;
}

// A BOF record: 0x0009, 0x0209, 0x0409 or 0x0809, then a length of 4 to 16 bytes.
bool IsBareBiff(std::span<const std::byte> bytes) {
  if (bytes.size() < 8) return false;
  const std::uint16_t number = LoadU16(bytes.data());
  const std::uint16_t length = LoadU16(bytes.data() + 2);
  return (number == 0x0009 || number == 0x0209 || number == 0x0409 || number == 0x0809) &&
         length >= 4 && length <= 16;
}

FileKind ZipKind(std::span<const std::byte> bytes) {
  const std::string_view head = Characters(bytes, kZipHead);
  if (Contains(head, "opendocument.spreadsheet")) return FileKind::kOpenDocument;
  if (Contains(head, "xl/workbook.bin")) return FileKind::kXlsb;
  if (Contains(head, "xl/") || Contains(head, "[Content_Types].xml")) return FileKind::kXlsx;
  return FileKind::kZip;
}

// The beginning of a text in lower case, byte order mark and blanks taken off. Of UTF-16 the ASCII
// characters are kept.
std::string TextHead(std::span<const std::byte> bytes) {
  std::string_view raw = Characters(bytes, kTextHead);
  std::string head;
  const bool is_utf16 = raw.starts_with("\xFF\xFE") || raw.starts_with("\xFE\xFF");
  if (raw.starts_with("\xEF\xBB\xBF")) raw.remove_prefix(3);
  if (is_utf16) raw.remove_prefix(2);
  for (const char letter : raw) {
    if (is_utf16 && letter == '\0') continue;
    if (head.empty() && (letter == ' ' || letter == '\r' || letter == '\n')) continue;
    head += letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ('a' - 'A')) : letter;
  }
  return head;
}

bool IsPlainText(std::string_view head) {
  return std::none_of(head.begin(), head.end(), [](char letter) {
    const auto code = static_cast<unsigned char>(letter);
    return code < 0x20 && code != '\t' && code != '\r' && code != '\n' && code != '\f';
  });
}

FileKind MarkupKind(std::string_view head) {
  if (Contains(head, "urn:schemas-microsoft-com:office:spreadsheet")) {
    return FileKind::kSpreadsheetMl;
  }
  for (const char* tag : {"<html", "<!doctype html", "<table", "<head", "<body", "<meta", "<tr"}) {
    if (Contains(head, tag)) return FileKind::kHtml;
  }
  return head.starts_with("<?xml") ? FileKind::kXml : FileKind::kText;
}

FileKind DelimitedKind(std::string_view head) {
  const auto tabs = std::count(head.begin(), head.end(), '\t');
  const auto commas = std::count(head.begin(), head.end(), ',');
  const auto semicolons = std::count(head.begin(), head.end(), ';');
  if (tabs > 0) return FileKind::kTabText;
  if (semicolons > 0 && semicolons >= commas) return FileKind::kSemicolonText;
  return commas > 0 ? FileKind::kCommaText : FileKind::kText;
}

}  // namespace

FileKind RecognizeFile(std::span<const std::byte> bytes) {
  if (bytes.empty()) return FileKind::kEmpty;
  if (IsCompoundFile(bytes)) return FileKind::kCompoundFile;
  if (Characters(bytes, 4) == "PK\x03\x04") return ZipKind(bytes);
  if (IsBareBiff(bytes)) return FileKind::kBareBiff;
  if (bytes.size() == kOwnerFileSize && LoadU8(bytes.data()) < 55) return FileKind::kOwnerFile;
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
    case FileKind::kXlsx:
      return "an .xlsx workbook";
    case FileKind::kXlsb:
      return "an .xlsb workbook";
    case FileKind::kOpenDocument:
      return "an OpenDocument spreadsheet (.ods)";
    case FileKind::kZip:
      return "a zip archive";
    case FileKind::kBareBiff:
      return "a worksheet in the format before Excel 5";
    case FileKind::kSpreadsheetMl:
      return "an XML spreadsheet (SpreadsheetML)";
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
