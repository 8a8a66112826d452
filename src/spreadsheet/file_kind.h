// What a file is, by its content: many a file is called .xls and is something else.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace korvex {

enum class FileKind {
  kEmpty,
  kCompoundFile,  // .xls workbooks among them
  kZip,           // .xlsx and .ods workbooks among them
  kBareBiff,      // an .xls workbook without a compound file around it
  kOldBiff,       // BIFF2 to BIFF4
  kSpreadsheetMl,
  kFlatOpenDocument,  // .fods
  kXml,
  kHtml,
  kWebArchive,
  kSylk,
  kRichText,
  kJson,
  kPicture,
  kArchive,  // of another kind than zip
  kPdf,
  kTabText,
  kCommaText,
  kSemicolonText,
  kText,
  kOwnerFile,  // "~$…" or ".~lock.…#", which mark a document as open
  kZeros,
  kZeroStart,  // of a longer file
  kCutHeader,  // less of the file than tells a format apart
  kCutXml,     // the same of an XML document
  kUnknown,
};

// As many bytes from the beginning of a file tell what it is as all of it do.
inline constexpr std::size_t kTellingStart = (1u << 18) + 1;

// Takes a file, or its first kTellingStart bytes.
FileKind RecognizeFile(std::span<const std::byte> bytes);
// Whether a file of that kind may hold a workbook that can be read.
bool MayBeWorkbook(FileKind kind);

// "tab-delimited text": what can stand behind "it is".
std::string_view FileKindText(FileKind kind);

}  // namespace korvex
