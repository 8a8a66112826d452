// The conversion without a window. Chooses the implementations of the platform services, lays the
// arguments over the settings, and runs.

#include <cstdio>
#include <memory>
#include <string>

#include "console/console_dialogs.h"
#include "console/console_line.h"
#include "console/console_run_view.h"
#include "engine/MainRun.h"
#include "errors/clsAppLog.h"
#include "files/basGeneral.h"
#include "files/folder_listing.h"
#include "platform/dialogs.h"
#include "platform/error.h"
#include "platform/native_platform.h"
#include "platform/services.h"
#include "platform/shown_text.h"
#include "platform/standard_streams.h"
#include "programs/convert_options.h"
#include "programs/spreadsheet_choice.h"
#include "settings/basSettings.h"
#include "settings/overlay_settings_store.h"
#include "structure/clsStructure.h"
#include "text/text.h"
#include "workbook/spreadsheet.h"

namespace korvex {
namespace {

constexpr int kFinished = 0;
constexpr int kFailed = 1;
constexpr int kStopped = 130;

// The command line stands in for the main window: its folder is the processing folder.
struct CommandLine : MainWindow {
  std::string ProcessingFolder() const override { return selection.folder; }

  RunSelection selection;
};

// The stored folder is processed when the call names nothing.
RunSelection SelectionOf(const ConvertOptions& options, const FileSystem& files) {
  RunSelection selection;
  for (const std::string& file : options.files) selection.files.push_back(files.AbsolutePath(file));
  if (!selection.files.empty()) {
    selection.folder = SharedFileSys().GetFilePath(selection.files.front(), false);
  } else if (options.folder) {
    selection.folder = files.AbsolutePath(*options.folder);
  } else {
    selection.folder = basSettings::LastPath();
  }
  return selection;
}

// What is wrong with the folder, the files or the output that the call names; empty when nothing
// is.
std::string ComplaintAbout(const ConvertOptions& options, const RunSelection& selection,
                           const FileSystem& files) {
  if (selection.folder.empty() && selection.files.empty()) {
    return "Give the folder to process, or --files.";
  }
  if (options.folder && files.FileExists(selection.folder)) {
    return *options.folder + " is a file. Give the folder to process, or --files.";
  }
  if (options.output &&
      (options.output->ends_with('/') || options.output->ends_with(files.Separator()))) {
    return *options.output + " is a folder. Give the output workbook a name in it.";
  }
  return {};
}

// Lays the choices of this call over the settings.
void LayOverSettings(const ConvertOptions& options, const RunSelection& selection,
                     const FileSystem& files) {
  basSettings::SetLastPath(selection.folder);
  if (!options.files.empty()) {
    basSettings::SetEverySheetRepresents(basSettings::kProcessSelectedFiles);
  }
  if (options.folder) {
    basSettings::SetEverySheetRepresents(basSettings::kProcessSubFolders);
  }
  if (!options.keys.empty()) basSettings::SetKeysColumns(options.keys);
  if (!options.columns.empty()) basSettings::SetOutputColumns(options.columns);
  if (options.data) basSettings::SetDataColumn(*options.data);
  if (options.output) {
    basSettings::SetOutputFileMethod(basSettings::kByConstantName);
    basSettings::WriteOutputFullName(files.AbsolutePath(*options.output));
  }
  if (options.no_replace) basSettings::SetAutoReplaceOutputFiles(false);
  if (options.open) basSettings::SetLaunchOutputFile(true);
}

// A document opens by itself only where somebody chose that, here or in the options dialog.
void OpenOnlyWhenChosen() {
  if (!basSettings::LaunchOutputFileIsStored()) basSettings::SetLaunchOutputFile(false);
}

// What would otherwise fail when the work is done.
void CheckAhead() {
  Platform().spreadsheet->CheckOutputName(basSettings::OutputFullName());
  basSettings::LaunchOutputFile();
}

bool OpenErrorLog(std::string& complaint) {
  try {
    OpenAppLog();
    return true;
  } catch (const Error& error) {
    complaint = error.Description();
    return false;
  }
}

int ListColumns(const RunSelection& selection, ListedFolders& folders) {
  CheckSelection(selection, folders);
  clsStructure structure;
  structure.Constructor(selection.folder, selection.files, nullptr, &folders);
  if (!structure.SampleUsable()) return kFailed;
  for (const std::string& column : structure.AvailableColsArray())
    WriteOutput(Shown(column) + "\n");
  return kFinished;
}

int ExitStatus(RunOutcome outcome) {
  switch (outcome) {
    case RunOutcome::kFinished:
      return kFinished;
    case RunOutcome::kStopped:
      return kStopped;
    case RunOutcome::kFailed:
      break;
  }
  return kFailed;
}

int Main(const ConvertOptions& options) {
  const std::unique_ptr<Terminal> terminal = OpenTerminal();
  ConsoleLine line(*terminal);
  ConsoleRunView view(*terminal, line, options.quiet);
  MainRun run(view);

  const NativePlatform native(options.settings_file);
  Services services = native.Provided();
  const FileSystem& files = *services.files;
  OverlaySettingsStore settings(*services.settings);
  SpreadsheetChoice spreadsheets(*services.files);
  ConsoleDialogs dialogs(*terminal, line);
  ConsoleMessageLoop message_loop(*terminal, [&] { run.Stop(); });
  CommandLine command_line;
  services.spreadsheet = &spreadsheets.Choose(options.spreadsheet);
  services.settings = &settings;
  services.dialogs = &dialogs;
  services.message_loop = &message_loop;
  services.main_window = &command_line;
  const InstalledServices installed(services);
  try {
    const RunSelection& selection = command_line.selection = SelectionOf(options, files);
    const std::string complaint = ComplaintAbout(options, selection, files);
    if (!complaint.empty()) {
      line.WriteLine(complaint);
      return kBadArguments;
    }
    LayOverSettings(options, selection, files);
    if (!options.list_columns) CheckAhead();
    ListedFolders folders;  // until the run, which lists them for itself
    if (options.save_settings) {
      CheckSelection(selection, folders);
      // Before the run, since the choices stay right when a run fails.
      settings.Keep();
    }
    // After Keep, since this is no choice of the user.
    OpenOnlyWhenChosen();

    std::string log_complaint;
    const bool logging = OpenErrorLog(log_complaint);
    int status = kFinished;
    if (options.list_columns) {
      status = ListColumns(selection, folders);
    } else {
      status = ExitStatus(run.Start(selection));
      if (status == kFinished) WriteOutput(run.OutputFullName() + "\n");
    }
    FlushOutput();
    if (status != kFinished && !logging) {
      line.WriteLine("There is no error log: " + log_complaint);
    }
    AppLog().CloseFile();
    return status;
  } catch (...) {
    const Error error = PendingError();
    if (error.Number() != error_number::kCannotPerform) line.WriteLine(error.Description());
    return kFailed;
  }
}

}  // namespace
}  // namespace korvex

int main(int argc, char** argv) {
  korvex::OccupyStandardStreams();
  try {
    korvex::ConvertOptions options;
    const auto status = korvex::ReadArguments(korvex::ProgramArguments(argc, argv), options);
    if (!status) return korvex::Main(options);
    korvex::FlushOutput();
    return *status;
  } catch (...) {
    std::fprintf(stderr, "%s\n", korvex::PendingError().Description().c_str());
    return korvex::kFailed;
  }
}
