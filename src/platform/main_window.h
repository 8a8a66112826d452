// What the core asks of the place a run is started from: the main window, or the command line.
#pragma once

#include <string>

namespace korvex {

class MainWindow {
 public:
  virtual ~MainWindow() = default;

  // The folder that the user has chosen at this moment, without a trailing separator.
  virtual std::string ProcessingFolder() const = 0;
};

}  // namespace korvex
