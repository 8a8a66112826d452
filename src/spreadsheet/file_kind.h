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
  kOldBiff,       // one worksheet in the format before Excel 5
  kSpreadsheetMl,
  kFlatOpenDocument,  // .fods
  kXml,
  kHtml,
  kWebArchive,
  kSylk,
  kRichText,
  kPdf,
  kTabText,
  kCommaText,
  kSemicolonText,
  kText,
  kOwnerFile,  // "~$…", which marks a document as open
  kZeros,
  kUnknown,
};

bool IsCompoundFile(std::span<const std::byte> bytes);
FileKind RecognizeFile(std::span<const std::byte> bytes);

// "tab-delimited text": what can stand behind "it is".
std::string_view FileKindText(FileKind kind);

}  // namespace korvex
