// The desktop's own choice of program for a document, through xdg-open.
#pragma once

#include "platform/shell.h"

namespace korvex {

class DesktopShell : public Shell {
 public:
  // Does nothing when the file does not exist or the machine has no xdg-open.
  void Open(const std::string& file) override;
  // A text file's associated program is the text editor.
  void OpenInTextEditor(const std::string& file) override { Open(file); }
  std::string EnvironmentVariable(const std::string& name) const override;
};

}  // namespace korvex
