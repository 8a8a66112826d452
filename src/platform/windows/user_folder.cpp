#include "platform/windows/user_folder.h"

#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"

// After the header above, which they need.
#include <knownfolders.h>
#include <shlobj.h>

namespace korvex {
namespace {

// Of the environment first: who starts the program may have chosen another one.
std::string LocalData() {
  std::wstring value(32768, L'\0');  // as long as any variable
  const DWORD length =
      GetEnvironmentVariableW(L"LOCALAPPDATA", value.data(), static_cast<DWORD>(value.size()));
  if (length > 0 && length < value.size()) return FromWide(value.substr(0, length));
  PWSTR folder = nullptr;
  std::string found;
  if (SUCCEEDED(
          SHGetKnownFolderPath(FOLDERID_LocalAppData, KF_FLAG_DONT_VERIFY, nullptr, &folder))) {
    found = FromWide(folder);
  }
  CoTaskMemFree(folder);
  return found;
}

}  // namespace

std::string UserFolder() {
  const std::string data = LocalData();
  return data.empty() ? "" : data + "\\KORVEX";
}

}  // namespace korvex
