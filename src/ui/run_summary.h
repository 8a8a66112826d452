// What the window's message box says of a run or a check that has ended. Text only, no widgets.
#pragma once

#include <string>

#include "engine/run_record.h"

namespace korvex {

struct RunSummary {
  std::string text;  // lines apart by CR LF; empty when there is nothing to say
  int icon = 0;      // of the program's own message box
};

// A finished run is summed up when something was noticed, a check always, however it ended. A run
// that failed or was stopped has told the user why already. Of many problems and notes the first
// few stand in the text, long ones cut, so that the box stays within any screen.
RunSummary Summary(const RunRecord& record);

}  // namespace korvex
