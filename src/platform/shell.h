// What the program asks of the desktop shell and of its environment.
#pragma once

#include <string>

namespace korvex {

class Shell {
 public:
  virtual ~Shell() = default;

  // Opens a document with its associated program, without waiting. Nobody learns whether it worked.
  virtual void Open(const std::string& file) = 0;
  // Shows a text file in the platform's plain text editor, without waiting.
  virtual void OpenInTextEditor(const std::string& file) = 0;
  // Empty when the variable is not set.
  virtual std::string EnvironmentVariable(const std::string& name) const = 0;
};

}  // namespace korvex
