#include "settings/ini_settings_store.h"

#include <chrono>
#include <memory>
#include <span>
#include <vector>

#include "platform/error.h"

namespace korvex {
namespace {

// The coarsest time stamps (memory cards) count in steps of two seconds. Within such a step a file
// can change while its time stays the same.
constexpr std::chrono::seconds kTimeStampStep{2};

std::int64_t Now() {
  const auto since_1970 = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::nanoseconds>(since_1970).count();
}

}  // namespace

std::optional<std::string> IniSettingsStore::Get(std::string_view section, std::string_view key) {
  Refresh();
  return document_.Get(section, key);
}

void IniSettingsStore::Save(std::string_view section, std::string_view key,
                            std::string_view value) {
  // Saving what is there already would need the lock and write access for nothing.
  if (Get(section, key) == value) return;
  CreateFolders(files_, ParentFolder(files_, path_), FolderUse::kPrivate);
  const std::unique_ptr<FileLock> lock = files_.Lock(path_);
  Refresh();  // another program may have saved before the lock was ours
  document_.Set(section, key, value);
  Write();
}

void IniSettingsStore::Delete(std::string_view section, std::string_view key) {
  const auto require = [&](bool found) {
    if (found) return;
    throw Error(error_number::kInvalidCall,
                "There is no setting \"" + std::string(key) + "\" in " + path_ + ".");
  };
  // Asked before locking as well, since locking may create the file.
  require(Get(section, key).has_value());
  const std::unique_ptr<FileLock> lock = files_.Lock(path_);
  Refresh();
  require(document_.Remove(section, key));
  Write();
}

void IniSettingsStore::Refresh() {
  const std::optional<FileVersion> version = files_.VersionOf(path_);
  if (version && version == version_ && !may_change_unseen_) return;

  version_.reset();  // whatever fails from here on, the next call reads again
  std::vector<std::byte> content;
  // Taken before reading: a change after this moment is at least as new as `now`.
  const std::int64_t now = Now();
  if (version) files_.ReadFile(path_, content);
  document_ = IniDocument({reinterpret_cast<const char*>(content.data()), content.size()});
  version_ = version;
  may_change_unseen_ =
      !version ||
      // Changed so lately that another change could bear the same time: read it again next time,
      // too.
      version->content_changed + std::chrono::nanoseconds(kTimeStampStep).count() >= now;
}

// A failure leaves the document with a value that was not stored: the next call reads again.
void IniSettingsStore::Write() {
  version_.reset();
  const std::string text = document_.Text();
  // As a whole, so that no program ever reads half a file.
  const std::unique_ptr<ReplacementFile> file = files_.ReplacePrivately(path_);
  file->Write(std::as_bytes(std::span(text)));
  file->Commit();
}

}  // namespace korvex
