// A run as the user starts it: the checks before it, its progress, and its end. The main window and
// the command line share it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/clsKorvex.h"

namespace korvex {

struct RunSelection {
  std::string folder;              // the processing folder
  std::vector<std::string> files;  // full paths; used when single files are processed
};

// Shows a run to the user. Gets the engine's events as they happen; each file that was processed is
// one step of progress.
class RunView : public KorvexEvents {
 public:
  virtual void EnterRunning() = 0;
  // Also called when a run ends before it entered the running state.
  virtual void LeaveRunning() = 0;
  virtual void SetMessage(const std::string& text) = 0;
  // Comes for the first time right after the running state was entered, before anything that may
  // take long: the user is to see then that the run has begun. The maximum can change once the
  // files are counted.
  virtual void SetProgress(std::int32_t value, std::int32_t maximum) = 0;
  // The run has ended, and in a finished one the user has been told so; the running state is still
  // on. Shows what was found, and makes the reports.
  virtual void RunEnded(const RunRecord& record) = 0;
};

// Refuses a selection with nothing to process: tells the user and raises error 17. `folders` keeps
// what is listed for it.
void CheckSelection(const RunSelection& selection, ListedFolders& folders);
// Whether a file in the output's place may be replaced at the end of the run.
enum class ExistingOutput { kReplace, kKeep };
// Refuses the output file of the settings when it cannot be written, or when the user does not want
// it replaced: error 17, and the user knows why.
ExistingOutput CheckOutputFile();
// The same for another file that a run writes: as a workbook or a text of its cells, or as a
// report.
enum class OutputKind { kWorkbook, kReport };
ExistingOutput CheckOutputFile(const std::string& full_name, OutputKind kind);

enum class RunOutcome { kFinished, kFailed, kStopped };

class MainRun {
 public:
  // `view` must outlive the run.
  explicit MainRun(RunView& view) : view_(view) {}

  // Runs to the end and says how it went; the user has been told of everything. A check that found
  // anything has failed.
  RunOutcome Start(const RunSelection& selection, const RunOptions& options = {});
  // Asks for a stop of the run that is on the stack, if there is one.
  void Stop();
  bool Running() const { return moKorvex_ && moKorvex_->Running(); }
  // Where the run that finished last saved its output: the output workbook, or the long form when
  // there is no other.
  const std::string& OutputFullName() const { return moKorvex_->OutputFullName(); }

 private:
  void Run(const RunSelection& selection);
  void Convert(const RunSelection& selection);
  void CheckOutputs(const RunOptions& options);
  // Tells the user, and raises error 17, when a file that the run is to write is one that it reads.
  void CheckOutputsAmongInputs(const RunSelection& selection);
  std::vector<std::string> Inputs(const RunSelection& selection);
  void EndRun(RunRecord::Outcome outcome);
  std::int32_t ProgressMaximum(const RunSelection& selection);

  RunView& view_;
  std::unique_ptr<clsKorvex> moKorvex_;
  std::int32_t progress_maximum_ = 0;
};

}  // namespace korvex
