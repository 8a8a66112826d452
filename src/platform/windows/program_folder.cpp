#include "platform/windows/program_folder.h"

#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"
#include "platform/windows/windows_error.h"
#include "platform/windows/windows_path.h"

namespace korvex {

std::string ProgramFolder() {
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length == 0) throw SystemError(GetLastError(), "find", "the program's own folder");
    if (length < path.size()) {
      path.resize(length);
      break;
    }
    path.resize(2 * path.size());
  }
  std::wstring folder = FolderOf(AbsoluteWide(FromWide(path)));
  if (folder.ends_with(L'\\')) folder.pop_back();
  return FromWide(folder);
}

}  // namespace korvex
