#include "ui/last_report.h"

#include <cstddef>
#include <memory>
#include <span>
#include <utility>

#include "files/basGeneral.h"
#include "files/folder_listing.h"
#include "platform/dialogs.h"
#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/services.h"
#include "report/report.h"

namespace korvex {
namespace {

std::string FullName() {
  return JoinPath(Platform().cache_folder, "last-run.html");
}

void Write(const std::string& page) {
  FileSystem& files = *Platform().files;
  if (Platform().cache_folder.empty()) {
    throw Error(error_number::kPathNotFound, "This user has no folder for it.");
  }
  CreateFolders(files, Platform().cache_folder, FolderUse::kPrivate);
  const std::unique_ptr<ReplacementFile> file = files.ReplacePrivately(FullName());
  file->Write(std::as_bytes(std::span(page)));
  file->Commit();
}

}  // namespace

LastReport::LastReport() {
  Attempt([&] {
    exists_ = !Platform().cache_folder.empty() && Platform().files->FileExists(FullName());
  });
}

bool LastReport::Keep(const RunRecord& record) {
  try {
    Write(HtmlReport(record, {}));
    failure_told_ = false;
    return exists_ = true;
  } catch (...) {
    const Error error = PendingError();
    exists_ = false;
    // What is there is not the last run's.
    Attempt([] { Platform().files->DeleteFile(FullName()); });
    if (std::exchange(failure_told_, true)) return false;
    Attempt([&] {
      Platform().dialogs->ShowPlain({.text = "The report of this run could not be written.",
                                     .icon = BoxIcon::kExclamation,
                                     .cause = error.Description()});
    });
    return false;
  }
}

void LastReport::Open() {
  exists_ = Platform().files->FileExists(FullName());
  if (exists_) {
    ShellOpen(FullName());
    return;
  }
  Platform().dialogs->ShowPlain(
      {.text = "The report of the last run is not there any more. Run or check again.",
       .icon = BoxIcon::kExclamation});
}

}  // namespace korvex
