#include "spreadsheet/embedded_application.h"

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "platform/file_system.h"
#include "spreadsheet/output_workbook.h"
#include "workbook/output_rules.h"

namespace korvex {

EmbeddedApplication::EmbeddedApplication(FileSystem& files, int jobs,
                                         std::shared_ptr<HandedOn> handed_on)
    : files_(files),
      hands_on_(handed_on != nullptr),
      handed_on_(hands_on_ ? std::move(handed_on) : std::make_shared<HandedOn>(jobs)),
      read_ahead_(std::make_unique<ReadAhead>(files, handed_on_->buffers, jobs)) {}

EmbeddedApplication::~EmbeddedApplication() = default;

Workbook& EmbeddedApplication::AddWorkbook(const std::string& full_name) {
  CheckRunning();
  const OutputFormat& format = OutputFormatOf(full_name);
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
    workbook = Read(full_name);
  } catch (const Error& error) {
    // The object model knows one number for all that an application refuses.
    throw Error(error_number::kAutomation, error.Description());
  }
  workbook->OnClose([this](const Workbook& closing) { Drop(closing); });
  inputs_.push_back(full_name);
  workbooks_.push_back(std::move(workbook));
  return *workbooks_.back();
}

std::unique_ptr<InputWorkbook> EmbeddedApplication::Read(const std::string& full_name) {
  std::unique_ptr<InputWorkbook> sample = std::move(handed_on_->sample);
  if (sample != nullptr && sample->FullName() == full_name && sample->IsStill(files_)) {
    return sample;
  }
  std::unique_ptr<InputWorkbook> workbook = read_ahead_->Take(full_name);
  if (workbook != nullptr) return workbook;
  return std::make_unique<InputWorkbook>(files_, full_name, handed_on_->buffers);
}

void EmbeddedApplication::Expect(const std::vector<std::string>& full_names,
                                 const std::string& sheet) {
  CheckRunning();
  // The sample is there already.
  const InputWorkbook* const sample = handed_on_->sample.get();
  const bool has_first =
      sample != nullptr && !full_names.empty() && sample->FullName() == full_names.front();
  read_ahead_->Expect({full_names.begin() + (has_first ? 1 : 0), full_names.end()}, sheet);
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

// The only workbook that an application has dealt with may be a sample.
void EmbeddedApplication::Drop(const Workbook& closing) {
  if (hands_on_ && new_workbooks_ == 0 && inputs_.size() == 1 && workbooks_.size() == 1) {
    auto* const sample = dynamic_cast<InputWorkbook*>(workbooks_.front().get());
    if (sample != nullptr && sample->IsSmall()) {
      static_cast<void>(workbooks_.front().release());
      workbooks_.clear();
      handed_on_->sample.reset(sample);
      return;
    }
  }
  std::erase_if(workbooks_, [&closing](const auto& open) { return open.get() == &closing; });
}

std::unique_ptr<Application> EmbeddedSpreadsheet::CreateApplication() {
  return std::make_unique<EmbeddedApplication>(files_, jobs_, handed_on_);
}

// The format is chosen by the ending of the name; other endings are refused.
void EmbeddedSpreadsheet::CheckOutputName(const std::string& full_name) const {
  OutputFormatOf(full_name);
}

}  // namespace korvex
