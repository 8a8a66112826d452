#include "engine/MainRun.h"

#include <algorithm>
#include <chrono>
#include <iterator>

#include "engine/long_form.h"
#include "engine/refusal_recorder.h"
#include "errors/basFuncs.h"
#include "errors/trap.h"
#include "files/basFuncs_paths.h"
#include "files/basGeneral.h"
#include "files/folder_listing.h"
#include "platform/dialogs.h"
#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/services.h"
#include "settings/basSettings.h"
#include "text/text.h"
#include "workbook/spreadsheet.h"

namespace korvex {
namespace {

constexpr int kSuccessIcon = 13;

[[noreturn]] void RefuseRun(const std::string& text, const std::string& cause = {}) {
  PlainMessage message;
  message.text = text;
  message.cause = cause;
  Platform().dialogs->ShowPlain(message);
  throw Error(error_number::kCannotPerform);
}

// Whether the output can be saved under that name when the work is done, and if not, why. A run may
// take an hour: everything that can refuse the file is asked first, without leaving a trace.
bool IsUsableOutput(const std::string& full_name, OutputKind kind, std::string& cause) {
  // The name of a folder, where no name of a file is set.
  if (full_name.empty() || full_name.ends_with(Platform().files->Separator())) {
    cause =
        "There is no file name. Set one under File > Options..., General Options, or by --output.";
    return false;
  }
  try {
    if (kind == OutputKind::kWorkbook) Platform().spreadsheet->CheckOutputName(full_name);
  } catch (const Error& error) {
    cause = error.Description();
    return false;
  }
  if (!FileIsWritable(full_name, &cause)) return false;
  try {
    // A folder can forbid to replace a file that could be written to.
    Platform().files->Replace(full_name).reset();
    return true;
  } catch (const Error& error) {
    cause = error.Description();
    return false;
  }
}

// Handles what the user does now and then while many folders are counted.
class Interlude {
 public:
  explicit Interlude(clsKorvex& engine) : engine_(engine) {}

  void operator()() {
    const auto now = std::chrono::steady_clock::now();
    if (now - last_ < kInterval) return;
    // The loop first: it may bring the click that asks for the stop.
    Platform().message_loop->Yield();
    engine_.AskWhetherToStop();
    last_ = std::chrono::steady_clock::now();
  }

 private:
  static constexpr std::chrono::milliseconds kInterval{50};

  clsKorvex& engine_;
  std::chrono::steady_clock::time_point last_;  // long ago
};

}  // namespace

void CheckSelection(const RunSelection& selection, ListedFolders& folders) {
  if (basSettings::ProcessingFiles()) {
    if (selection.files.empty()) RefuseRun("Please select at least one file to process.");
  } else if (folders.SubFolders(selection.folder).empty()) {
    RefuseRun("The folder you chose to process has no sub folders.");
  }
}

ExistingOutput CheckOutputFile() {
  return CheckOutputFile(basSettings::OutputFullName(), OutputKind::kWorkbook);
}

ExistingOutput CheckOutputFile(const std::string& full_name, OutputKind kind) {
  std::string cause;
  if (!IsUsableOutput(full_name, kind, cause)) {
    RefuseRun(std::string("Please specify a valid filename for the output file. ") + kLineBreak +
                  "(File could be in use).",
              cause);
  }
  if (!Platform().files->FileExists(full_name)) {
    return basSettings::AutoReplaceOutputFiles() ? ExistingOutput::kReplace : ExistingOutput::kKeep;
  }
  if (basSettings::AutoReplaceOutputFiles()) return ExistingOutput::kReplace;
  PlainMessage question;
  question.text = "The file \"" + GetDisplayPath(full_name) + "\" exists. " +
                  "Would you like to replace it with a new output file?";
  question.buttons = BoxButtons::kOkCancel;
  question.icon = BoxIcon::kExclamation;
  if (Platform().dialogs->ShowPlain(question) != BoxAnswer::kOk) {
    throw Error(error_number::kCannotPerform);
  }
  return ExistingOutput::kReplace;
}

RunOutcome MainRun::Start(const RunSelection& selection, const RunOptions& options) {
  RunOutcome outcome = RunOutcome::kFinished;
  // The engine of a run that finished is kept until the next one: it is still asked where its
  // output lies.
  moKorvex_.reset(new clsKorvex(view_, options));
  // The engine reports its own failures and ends with error 17: only what goes wrong around it is
  // reported here.
  Trap(
      "Form1.MainRun",
      [&] {
        Run(selection);
        const RunRecord& record = moKorvex_->Record();
        const bool is_clean = record.findings.IsEmpty() && record.problems.empty();
        if (options.check && !is_clean) outcome = RunOutcome::kFailed;
      },
      [&](const TrappedError& error) {
        if (!error.IsTold()) {
          // A check shows and mails nothing by itself: its view tells everything at the end.
          if (options.check) {
            ReportError("Form1.MainRun", std::nullopt, false, true, true, false);
          } else {
            error.Report();
          }
          moKorvex_->Record().AddProblem({PendingError().Description(), {}, {}});
        }
        // A stop comes as error 17 from the engine, and as error 18 while files are counted.
        const bool stopped = moKorvex_->Stopped() || error.Number() == error_number::kUserInterrupt;
        outcome = stopped ? RunOutcome::kStopped : RunOutcome::kFailed;
        EndRun(stopped ? RunRecord::Outcome::kStopped : RunRecord::Outcome::kFailed);
        view_.LeaveRunning();
        view_.SetMessage("Ready");
        view_.SetProgress(0, progress_maximum_);
        moKorvex_.reset();
      });
  return outcome;
}

void MainRun::EndRun(RunRecord::Outcome outcome) {
  moKorvex_->Record().outcome = outcome;
  view_.RunEnded(moKorvex_->Record());
}

void MainRun::Run(const RunSelection& selection) {
  const bool check = moKorvex_->Record().options.check;
  Convert(selection);
  view_.SetProgress(progress_maximum_, progress_maximum_);
  if (!check) ShowMessageBox("Process finished!", {"OK"}, kProgramTitle, kSuccessIcon);
  EndRun(check ? RunRecord::Outcome::kChecked : RunRecord::Outcome::kFinished);
  view_.LeaveRunning();
  view_.SetMessage("Ready");
  if (!check && basSettings::LaunchOutputFile()) ShellOpen(OutputFullName());
}

void MainRun::CheckOutputs(const RunOptions& options) {
  if (options.wide && CheckOutputFile() == ExistingOutput::kKeep)
    moKorvex_->Outputs().KeepExistingOutput();
  if (options.long_form.empty()) return;
  LongForm::CheckName(options.long_form);
  if (CheckOutputFile(options.long_form, OutputKind::kWorkbook) == ExistingOutput::kKeep) {
    moKorvex_->Outputs().KeepExistingLongForm();
  }
}

// A campaign is often converted a second time, and then the output of the first time may lie among
// the workbooks. Only files of the same name are looked at, which costs nothing: a link to an input
// under another name is refused when the output is saved.
void MainRun::CheckOutputsAmongInputs(const RunSelection& selection) {
  const FileSystem& files = *Platform().files;
  const std::vector<std::string> inputs = Inputs(selection);
  const auto is_input = [&](const std::string& full_name) {
    const std::string title = SharedFileSys().GetFileTitle(full_name, false);
    std::vector<std::string> namesakes;
    std::ranges::copy_if(inputs, std::back_inserter(namesakes), [&](const std::string& input) {
      return EqualText(SharedFileSys().GetFileTitle(input, false), title);
    });
    return files.IsOneOf(full_name, namesakes);
  };
  const auto refuse = [](const std::string& what, const std::string& full_name) {
    RefuseRun("The " + what + " \"" + GetDisplayPath(full_name) +
              "\" is itself one of the files to process. Choose another name or folder for it, or "
              "move the file away.");
  };
  RunOptions& options = moKorvex_->Record().options;
  // A refused run writes its reports, too: never over an input.
  const std::vector<std::string> reports = options.reports;
  std::erase_if(options.reports, is_input);
  if (options.wide && is_input(basSettings::OutputFullName())) {
    refuse("output file", basSettings::OutputFullName());
  }
  if (!options.long_form.empty() && is_input(options.long_form)) {
    refuse("long form", options.long_form);
  }
  const auto refused = std::ranges::find_if(reports, is_input);
  if (refused != reports.end()) refuse("report", *refused);
}

std::vector<std::string> MainRun::Inputs(const RunSelection& selection) {
  if (!basSettings::ProcessingSubFolders()) return selection.files;
  std::vector<std::string> inputs;
  ListedFolders& folders = moKorvex_->Folders();
  for (const std::string& sub_folder : folders.SubFolders(selection.folder)) {
    const std::string folder = JoinPath(selection.folder, sub_folder);
    for (const std::string& name : folders.Workbooks(folder)) {
      inputs.push_back(JoinPath(folder, name));
    }
  }
  return inputs;
}

// Runs with the refusals recorded.
void MainRun::Convert(const RunSelection& selection) {
  RunRecord& record = moKorvex_->Record();
  RefusalRecorder recorder(Platform(), record, moKorvex_->Place());
  // Only while the run converts: its last message says that it has finished, which is no problem.
  const InstalledServices recorded(recorder.Recording());
  CheckSelection(selection, moKorvex_->Folders());
  if (!record.options.check) basSettings::SetLastPath(selection.folder);
  view_.EnterRunning();
  view_.SetMessage("Initializing...");
  // As many steps as are known before the files are counted, which takes long on a slow share.
  const std::size_t inputs = basSettings::ProcessingSubFolders()
                                 ? moKorvex_->Folders().SubFolders(selection.folder).size()
                                 : selection.files.size();
  view_.SetProgress(1, static_cast<std::int32_t>(inputs) + 2);
  progress_maximum_ = ProgressMaximum(selection);
  view_.SetProgress(1, progress_maximum_);
  if (record.options.check) {
    // Taken down; the check goes on.
    Attempt([&] { CheckOutputsAmongInputs(selection); });
  } else {
    CheckOutputsAmongInputs(selection);
    CheckOutputs(record.options);
  }
  std::string folder = selection.folder;
  moKorvex_->ProcessFolders(folder, selection.files);
}

// One step before the first file and one after the last, so that the bar moves at once. Files in
// folders below the sub-folders count too, although no run reads them.
std::int32_t MainRun::ProgressMaximum(const RunSelection& selection) {
  auto files = static_cast<std::int32_t>(selection.files.size());
  if (basSettings::ProcessingSubFolders()) {
    files = 0;
    Interlude interlude(*moKorvex_);
    ListedFolders& folders = moKorvex_->Folders();
    for (const std::string& name : folders.SubFolders(selection.folder)) {
      const std::string sub_folder = JoinPath(selection.folder, name);
      interlude();
      // Outside the try: a sub-folder itself that cannot be listed ends the run, since its files
      // would be missing.
      const std::vector<FolderEntry>& entries = folders.Entries(sub_folder);
      try {
        files += CountFiles(sub_folder, entries, [&] { interlude(); });
      } catch (const Error& error) {
        if (error.Number() == error_number::kUserInterrupt) throw;
        // The user may not list one of those folders: that keeps nobody from running.
        files += static_cast<std::int32_t>(folders.Workbooks(sub_folder).size());
      }
    }
  }
  return files + 2;
}

void MainRun::Stop() {
  if (moKorvex_) moKorvex_->StopProcess();
}

}  // namespace korvex
