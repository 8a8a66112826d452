// What a file is, by its content: files called .xls are often something else.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace korvex {

// The forms of file that a workbook can be in.
enum class WorkbookForm {
  kNone,              // no workbook
  kXls,               // a compound file, or BIFF5 to BIFF8 records without one
  kZip,               // .xlsx and .ods among others
  kFlatOpenDocument,  // .fods
  kSpreadsheetMl,
};

// One row of the table of kinds. Of a file that is no workbook it has one of the two texts.
struct FileKind {
  WorkbookForm form = WorkbookForm::kNone;
  std::string_view name;     // "tab-delimited text": comes after "is not a workbook: it is"
  std::string_view refusal;  // a predicate of its own (refusal.h); "#" is the size of the file
};

// This many bytes from the beginning of a file are enough to recognise it.
inline constexpr std::size_t kTellingStart = (1u << 18) + 1;

// Takes a file, or its first kTellingStart bytes. The result is static.
const FileKind& RecognizeFile(std::span<const std::byte> bytes);

// Refuses a file that is no workbook by what it is instead. `size` counts its bytes.
[[noreturn]] void RefuseFile(const FileKind& kind, std::size_t size);

}  // namespace korvex
