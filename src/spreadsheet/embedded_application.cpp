#include "spreadsheet/embedded_application.h"

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "platform/file_system.h"
#include "spreadsheet/output_workbook.h"
#include "spreadsheet/xlsx/xlsx_writer.h"
#include "workbook/output_rules.h"

namespace korvex {

EmbeddedApplication::EmbeddedApplication(FileSystem& files) : files_(files) {}

EmbeddedApplication::~EmbeddedApplication() = default;

Workbook& EmbeddedApplication::AddWorkbook(const std::string& full_name) {
  CheckRunning();
  const OutputFormat& format = OutputFormatOf(full_name);
  // A run should fail here, before it reads its first workbook, and not when it saves.
  if (&format == &kXlsxFormat) CheckXlsxFolder(files_);
  ++new_workbooks_;
  workbooks_.push_back(std::make_unique<OutputWorkbook>(
      files_, "Book" + std::to_string(new_workbooks_), format, inputs_,
      [this](const Workbook& closing) { Drop(closing); }));
  return *workbooks_.back();
}

Workbook& EmbeddedApplication::OpenWorkbook(const std::string& full_name, const OpenOptions&) {
  CheckRunning();
  try {
    workbooks_.push_back(std::make_unique<InputWorkbook>(
        files_, full_name, buffers_, [this](const Workbook& closing) { Drop(closing); }));
  } catch (const Error& error) {
    // The object model knows one number for all that an application refuses.
    throw Error(error_number::kAutomation, error.Description());
  }
  inputs_.push_back(full_name);
  return *workbooks_.back();
}

int EmbeddedApplication::WorkbookCount() const {
  CheckRunning();
  return static_cast<int>(workbooks_.size());
}

Workbook& EmbeddedApplication::Workbooks(int index) {
  CheckRunning();
  if (index < 1 || index > WorkbookCount()) {
    throw Error(error_number::kSubscript,
                "The spreadsheet application has " + std::to_string(workbooks_.size()) +
                    " open workbooks, but no number " + std::to_string(index) + ".");
  }
  return *workbooks_[static_cast<std::size_t>(index - 1)];
}

// Workbooks that were not saved are dropped without a question.
void EmbeddedApplication::Quit() {
  workbooks_.clear();
  has_quit_ = true;
}

void EmbeddedApplication::CheckRunning() const {
  if (!has_quit_) return;
  throw Error(error_number::kAutomation, "The spreadsheet application has quit already.");
}

void EmbeddedApplication::Drop(const Workbook& closing) {
  std::erase_if(workbooks_, [&closing](const auto& open) { return open.get() == &closing; });
}

std::unique_ptr<Application> EmbeddedSpreadsheet::CreateApplication() {
  return std::make_unique<EmbeddedApplication>(files_);
}

// The format is chosen by the ending of the name; other endings are refused.
void EmbeddedSpreadsheet::CheckOutputName(const std::string& full_name) const {
  OutputFormatOf(full_name);
}

}  // namespace korvex
