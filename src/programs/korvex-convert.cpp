// The conversion without a window. Chooses the implementations of the platform services, lays the
// arguments over the settings, and runs.

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "console/console_dialogs.h"
#include "console/console_line.h"
#include "console/console_run_view.h"
#include "engine/MainRun.h"
#include "engine/long_form.h"
#include "errors/basFuncs.h"
#include "errors/clsAppLog.h"
#include "files/basGeneral.h"
#include "files/folder_listing.h"
#include "platform/dialogs.h"
#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/native_platform.h"
#include "platform/services.h"
#include "platform/shown_text.h"
#include "platform/standard_streams.h"
#include "programs/convert_options.h"
#include "programs/spreadsheet_choice.h"
#include "report/report.h"
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

// Takes the pending error down. Where a run reports its errors itself, this is for what goes wrong
// before and after it; the caller tells the user.
void LogError(const std::string& location) {
  ReportError(location, std::nullopt, false, true, true, false);
}

// A run on the terminal, whose report is written when it ends, however it ends.
class ReportingRunView : public ConsoleRunView {
 public:
  ReportingRunView(Terminal& terminal, ConsoleLine& line, const ConvertOptions& options)
      : ConsoleRunView(terminal, line, options.quiet), line_(line), options_(options) {}

  void RunEnded(const RunRecord& record) override {
    ConsoleRunView::RunEnded(record);
    // As the run left them: it takes out what would be written over an input.
    for (const std::string& report : record.options.reports) WriteReport(report, record);
  }
  // The same for a run that was refused before it began.
  void RefusedAhead(const std::string& cause) {
    RunRecord record;
    record.AddProblem({cause, {}, {}});
    for (const std::string& report : options_.reports) WriteReport(report, record);
  }
  // Whether every report that was asked for has been written.
  bool ReportsWritten() const { return reports_written_ == options_.reports.size(); }

 private:
  void WriteReport(const std::string& name, const RunRecord& record) {
    FileSystem& files = *Platform().files;
    try {
      const ReportOptions options{Controls(options_.low, record), Controls(options_.high, record)};
      const bool is_json = EqualText(name.substr(name.rfind('.')), ".json");
      const std::string text = is_json ? JsonReport(record, options) : HtmlReport(record, options);
      const auto file = files.Replace(files.AbsolutePath(name));
      file->Write(std::as_bytes(std::span(text)));
      file->Commit();
      ++reports_written_;
    } catch (const Error& error) {
      LogError("korvex-convert.WriteReport");
      line_.WriteLine("The report cannot be written: " + error.Description());
    }
  }
  // "COLUMN=TEXT" names a column only where the run has one of that name.
  static std::vector<ControlChoice> Controls(const std::vector<std::string>& texts,
                                             const RunRecord& record) {
    std::vector<ControlChoice> controls;
    for (const std::string& text : texts) {
      const std::string name = text.substr(0, text.find('='));
      const auto is_it = [&](const std::string& column) { return EqualText(column, name); };
      const bool has_column =
          name.size() < text.size() && (std::ranges::any_of(record.key_columns, is_it) ||
                                        std::ranges::any_of(record.output_columns, is_it));
      controls.push_back(has_column ? ControlChoice{name, text.substr(name.size() + 1)}
                                    : ControlChoice{{}, text});
    }
    return controls;
  }

  ConsoleLine& line_;
  const ConvertOptions& options_;
  std::size_t reports_written_ = 0;
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
  std::vector<std::string> written = options.reports;
  if (options.output) written.push_back(*options.output);
  if (options.long_form) written.push_back(*options.long_form);
  for (std::string& name : written) name = files.AbsolutePath(name);
  std::ranges::sort(written);
  const auto same = std::ranges::adjacent_find(written);
  return same == written.end() ? std::string() : "Two files are to be written as " + *same + ".";
}

// The columns of plates and wells are columns of the run; empty when they are.
std::string ComplaintAboutColumns(const ConvertOptions& options) {
  for (const std::optional<std::string>* name : {&options.plate, &options.well}) {
    const auto is_it = [&](const std::string& column) { return EqualText(column, **name); };
    if (!*name || std::ranges::any_of(basSettings::KeysColumns(), is_it) ||
        std::ranges::any_of(basSettings::OutputColumns(), is_it)) {
      continue;
    }
    return "There is no key or output column \"" + **name + "\" that could say plate or well.";
  }
  return {};
}

RunOptions RunOptionsOf(const ConvertOptions& options, const FileSystem& files) {
  RunOptions run;
  run.wide = options.output || !options.long_form;
  if (options.long_form) run.long_form = files.AbsolutePath(*options.long_form);
  run.check = options.check;
  run.strict = options.strict;
  run.decimal_comma = options.decimal_comma;
  run.keep_readings = !options.reports.empty();
  for (const std::string& report : options.reports) {
    run.reports.push_back(files.AbsolutePath(report));
  }
  run.plate_column = options.plate.value_or("");
  run.well_column = options.well.value_or("");
  return run;
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

// What would otherwise fail when the work is done. A check writes no output.
void CheckAhead(const ConvertOptions& options, const RunOptions& run, const FileSystem& files) {
  if (run.wide && !run.check) {
    Platform().spreadsheet->CheckOutputName(basSettings::OutputFullName());
  }
  if (!run.long_form.empty()) LongForm::CheckName(run.long_form);
  for (const std::string& report : options.reports) {
    CheckOutputFile(files.AbsolutePath(report), OutputKind::kReport);
  }
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
  ReportingRunView view(*terminal, line, options);
  MainRun run(view);

  const NativePlatform native(options.settings_file);
  Services services = native.Provided();
  const FileSystem& files = *services.files;
  OverlaySettingsStore settings(*services.settings);
  SpreadsheetChoice spreadsheets(*services.files, options.jobs,
                                 [&] { return terminal->IsInterrupted(); });
  ConsoleDialogs dialogs(*terminal, line);
  ConsoleMessageLoop message_loop(*terminal, [&] { run.Stop(); });
  CommandLine command_line;
  services.spreadsheet = &spreadsheets.Choose(options.spreadsheet);
  services.settings = &settings;
  services.dialogs = &dialogs;
  services.message_loop = &message_loop;
  services.main_window = &command_line;
  const InstalledServices installed(services);
  std::string log_complaint;
  const bool logging = OpenErrorLog(log_complaint);
  try {
    const RunSelection& selection = command_line.selection = SelectionOf(options, files);
    std::string complaint = ComplaintAbout(options, selection, files);
    if (complaint.empty()) {
      LayOverSettings(options, selection, files);
      complaint = ComplaintAboutColumns(options);
    }
    if (!complaint.empty()) {
      line.WriteLine(complaint);
      return kBadArguments;
    }
    const RunOptions run_options = RunOptionsOf(options, files);
    if (!options.list_columns) CheckAhead(options, run_options, files);
    ListedFolders folders;  // until the run, which lists them for itself
    if (options.save_settings) {
      CheckSelection(selection, folders);
      // Before the run, since the choices stay right when a run fails.
      settings.Keep();
    }
    // After Keep, since this is no choice of the user.
    OpenOnlyWhenChosen();

    int status = kFinished;
    if (options.list_columns) {
      status = ListColumns(selection, folders);
    } else {
      status = ExitStatus(run.Start(selection, run_options));
      if (status == kFinished && !options.check) WriteOutput(run.OutputFullName() + "\n");
      if (status == kFinished && !view.ReportsWritten()) status = kFailed;
    }
    FlushOutput();
    if (status != kFinished && !logging) {
      line.WriteLine("There is no error log: " + log_complaint);
    }
    AppLog().CloseFile();
    return status;
  } catch (...) {
    const Error error = PendingError();
    if (error.Number() != error_number::kCannotPerform) {
      LogError("korvex-convert.Main");
      line.WriteLine(error.Description());
      view.RefusedAhead(error.Description());
    }
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
