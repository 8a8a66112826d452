#include "programs/spreadsheet_choice.h"

#include <algorithm>
#include <thread>

#ifdef _WIN32
#include "automation/installed_spreadsheet.h"
#include "platform/windows/windows_desktop.h"
#endif
#include "platform/error.h"
#include "platform/shown_text.h"
#include "spreadsheet/embedded_application.h"

namespace korvex {
namespace {

// More threads than that do not make one conversion quicker: the engine is one thread.
constexpr unsigned kMostCores = 8;

}  // namespace

SpreadsheetChoice::SpreadsheetChoice(FileSystem& files, std::optional<int> jobs,
                                     [[maybe_unused]] const std::function<bool()>& stop_is_asked) {
  // 0 where nobody knows how many cores there are.
  const auto cores =
      static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, kMostCores));
  embedded_ = std::make_unique<EmbeddedSpreadsheet>(files, jobs.value_or(cores));
#ifdef _WIN32
  if (InstalledSpreadsheet::IsInstalled()) {
    installed_ = std::make_unique<InstalledSpreadsheet>(files, stop_is_asked);
    prefers_installed_ = HasDesktop();
  }
#endif
}

SpreadsheetChoice::~SpreadsheetChoice() = default;

SpreadsheetProgram& SpreadsheetChoice::Choose(const std::optional<std::string>& name) {
  if (name && name != kEmbedded && name != kInstalled) {
    throw Error(error_number::kNoSuchApplication, "There is no spreadsheet application \"" +
                                                      Shown(*name) + "\". Give " + kEmbedded +
                                                      " or " + kInstalled + ".");
  }
  if (name == kInstalled && !installed_) {
    throw Error(error_number::kNoSuchApplication,
                "There is no installed spreadsheet application that KORVEX could drive. To convert "
                "without one, use the option --spreadsheet embedded.");
  }
  const bool wants_installed = name ? name == kInstalled : prefers_installed_;
  return wants_installed ? *installed_ : *embedded_;
}

}  // namespace korvex
