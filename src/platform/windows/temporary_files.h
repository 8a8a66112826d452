// Temporary files of the program, and the removal of those that a killed program has
// left.
//
// Their names are a prefix, a mark of this machine, "-", random digits and an ending. A program
// first makes a mutex of that name, which the system deletes when the process ends, even when it is
// killed: a file without a mutex has no owner any more. The mark keeps machines that share a folder
// apart.
#pragma once

#include <string>
#include <string_view>

#include "platform/windows/windows_handle.h"

namespace korvex {

// A name for one file, different in every object and owned for as long as it lives.
class TemporaryName {
 public:
  explicit TemporaryName(std::wstring_view prefix, std::wstring_view ending = {});

  const std::wstring& Text() const { return text_; }

 private:
  std::wstring text_;
  // Says that the name has an owner.
  Handle mutex_;
};

// Removes what killed programs have left in the folder, a system path with a separator at its end,
// under names of that prefix. Never fails: what cannot be removed stays.
void RemoveLeftovers(const std::wstring& folder, std::wstring_view prefix);

}  // namespace korvex
