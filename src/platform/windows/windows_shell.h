// The Windows shell, and Notepad for plain texts.
#pragma once

#include "platform/shell.h"

namespace korvex {

class WindowsShell : public Shell {
 public:
  void Open(const std::string& file) override;
  // Does not take the focus from the program's own window.
  void OpenInTextEditor(const std::string& file) override;
  std::string EnvironmentVariable(const std::string& name) const override;
};

}  // namespace korvex
