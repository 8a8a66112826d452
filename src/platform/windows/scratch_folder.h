// A folder for files of the moment, below the user's folder for temporary files. What a killed
// program has left, the next one removes.
#pragma once

#include <string>

#include "platform/file_system.h"
#include "platform/windows/leftovers.h"

namespace korvex {

// Goes by its short name where the long one is not plain ASCII: the C library knows file names in
// the code page of the system only, and a user's name may have letters that it lacks.
class WindowsScratchFolder : public ScratchFolder {
 public:
  WindowsScratchFolder();
  ~WindowsScratchFolder() override;
  WindowsScratchFolder(const WindowsScratchFolder&) = delete;
  WindowsScratchFolder& operator=(const WindowsScratchFolder&) = delete;

  const std::string& Path() const override { return path_; }

 private:
  void Remove();

  TemporaryName owned_name_;
  std::wstring folder_;
  std::string path_;
};

}  // namespace korvex
