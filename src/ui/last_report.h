// The report of the last run or check that the window started: one page in the user's cache folder,
// for nobody else to read, replaced by every run.
#pragma once

#include <string>

#include "engine/run_record.h"

namespace korvex {

class LastReport {
 public:
  // Takes up the report that an earlier session has left. Platform services are installed by then.
  LastReport();

  // Whether there is a report of the last run, as far as is known: the disk is not asked.
  bool Exists() const { return exists_; }
  // Replaces the report by that of this run and says whether that is done. The user is told why it
  // is not, but once until one can be written again. Never fails.
  bool Keep(const RunRecord& record);
  // Opens it in the browser. Tells the user when somebody has deleted it.
  void Open();

 private:
  bool exists_ = false;
  bool failure_told_ = false;
};

}  // namespace korvex
