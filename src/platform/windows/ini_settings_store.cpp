#include "platform/windows/ini_settings_store.h"

#include <chrono>
#include <thread>

#include "platform/windows/wide_text.h"
#include "platform/windows/windows_error.h"
#include "platform/windows/windows_handle.h"
#include "platform/windows/windows_path.h"

namespace korvex {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::seconds kLockPatience{5};
constexpr std::chrono::milliseconds kLockInterval{5};
// A lock that is just being taken away refuses access.
constexpr std::chrono::milliseconds kVanishing{200};

Handle Lock(const std::string& path) {
  const std::wstring name = SystemPath(path + ".lock");
  const auto start = steady_clock::now();
  for (;;) {
    Handle lock(CreateFileW(name.c_str(), GENERIC_WRITE | DELETE, 0, nullptr, OPEN_ALWAYS,
                            FILE_ATTRIBUTE_HIDDEN | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    if (lock.IsOpen()) return lock;
    const DWORD code = GetLastError();
    const auto waited = steady_clock::now() - start;
    if (code == ERROR_SHARING_VIOLATION && waited > kLockPatience) {
      throw Error(error_number::kPermissionDenied,
                  "Cannot write to " + path + ": Another program keeps the file locked.");
    }
    const bool passes =
        code == ERROR_SHARING_VIOLATION || (code == ERROR_ACCESS_DENIED && waited < kVanishing);
    if (!passes) throw SystemError(code, "write to", path);
    std::this_thread::sleep_for(kLockInterval);
  }
}

Error NoSuchSetting(std::string_view key, const std::string& path) {
  return Error(error_number::kInvalidCall,
               "There is no setting \"" + std::string(key) + "\" in " + path + ".");
}

}  // namespace

std::optional<std::string> IniSettingsStore::Get(std::string_view section, std::string_view key) {
  return Read().Get(section, key);
}

void IniSettingsStore::Save(std::string_view section, std::string_view key,
                            std::string_view value) {
  if (Get(section, key) == value) return;
  CreateFolders(FromWide(FolderOf(ToWide(path_))));
  const Handle lock = Lock(path_);
  IniDocument document = Read();
  document.Set(section, key, value);
  Write(document);
}

void IniSettingsStore::Delete(std::string_view section, std::string_view key) {
  if (!Get(section, key)) throw NoSuchSetting(key, path_);
  const Handle lock = Lock(path_);
  IniDocument document = Read();
  if (!document.Remove(section, key)) throw NoSuchSetting(key, path_);
  Write(document);
}

IniDocument IniSettingsStore::Read() const {
  std::vector<std::byte> content;
  try {
    files_.ReadFile(path_, content);
  } catch (const Error& error) {
    if (error.Number() != error_number::kFileNotFound &&
        error.Number() != error_number::kPathNotFound) {
      throw;
    }
  }
  return IniDocument({reinterpret_cast<const char*>(content.data()), content.size()});
}

void IniSettingsStore::Write(const IniDocument& document) {
  const std::string text = document.Text();
  const std::unique_ptr<ReplacementFile> file = files_.Replace(path_);
  file->Write(std::as_bytes(std::span(text)));
  file->Commit();
}

void IniSettingsStore::CreateFolders(const std::string& folder) {
  if (files_.FolderExists(folder)) return;
  const std::string above = FromWide(FolderOf(ToWide(folder)));
  if (above != folder) CreateFolders(above);
  files_.CreateFolder(folder);
}

}  // namespace korvex
