#include "programs/spreadsheet_choice.h"

#ifdef _WIN32
#include "automation/installed_spreadsheet.h"
#endif
#include "platform/error.h"
#include "spreadsheet/embedded_application.h"

namespace korvex {

SpreadsheetChoice::SpreadsheetChoice(FileSystem& files)
    : embedded_(std::make_unique<EmbeddedSpreadsheet>(files)) {
#ifdef _WIN32
  if (InstalledSpreadsheet::IsInstalled()) {
    installed_ = std::make_unique<InstalledSpreadsheet>(files);
  }
#endif
}

SpreadsheetChoice::~SpreadsheetChoice() = default;

SpreadsheetProgram& SpreadsheetChoice::Choose(const std::optional<std::string>& name) {
  if (name == kInstalled && !installed_) {
    throw Error(error_number::kNoSuchApplication,
                "There is no installed spreadsheet application that KORVEX could drive.");
  }
  return name == kEmbedded || !installed_ ? *embedded_ : *installed_;
}

}  // namespace korvex
