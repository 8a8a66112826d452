#include "spreadsheet/embedded_application.h"

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "platform/file_system.h"
#include "spreadsheet/output_workbook.h"
#include "spreadsheet/xlsx/xlsx_writer.h"
#include "workbook/output_rules.h"

namespace korvex {

EmbeddedApplication::EmbeddedApplication(FileSystem& files, int jobs)
    : files_(files),
      buffers_(static_cast<std::size_t>(std::max(jobs, 1))),
      read_ahead_(std::make_unique<ReadAhead>(files, buffers_, jobs)) {}

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
  std::unique_ptr<InputWorkbook> workbook;
  try {
    workbook = read_ahead_->Take(full_name);
    if (workbook == nullptr) {
      workbook = std::make_unique<InputWorkbook>(files_, full_name, buffers_);
    }
  } catch (const Error& error) {
    // The object model knows one number for all that an application refuses.
    throw Error(error_number::kAutomation, error.Description());
  }
  workbook->OnClose([this](const Workbook& closing) { Drop(closing); });
  inputs_.push_back(full_name);
  workbooks_.push_back(std::move(workbook));
  return *workbooks_.back();
}

void EmbeddedApplication::Expect(const std::vector<std::string>& full_names,
                                 const std::string& sheet) {
  CheckRunning();
  read_ahead_->Expect(full_names, sheet);
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
  read_ahead_.reset();
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
  return std::make_unique<EmbeddedApplication>(files_, jobs_);
}

// The format is chosen by the ending of the name; other endings are refused.
void EmbeddedSpreadsheet::CheckOutputName(const std::string& full_name) const {
  OutputFormatOf(full_name);
}

}  // namespace korvex
