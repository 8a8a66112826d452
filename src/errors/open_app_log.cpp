#include "errors/open_app_log.h"

#include <string>

#include "errors/basFuncs.h"
#include "errors/clsAppLog.h"
#include "files/basGeneral.h"
#include "files/folder_listing.h"
#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/services.h"

namespace korvex {
namespace {

constexpr char kLogName[] = "KORVEX.LOG";

void CreateFolders(const std::string& folder) {
  FileSystem& files = *Platform().files;
  if (folder.empty() || files.FolderExists(folder)) return;
  CreateFolders(SharedFileSys().GetFilePath(folder, false));
  files.CreateFolder(folder);
}

}  // namespace

void OpenAppLog() {
  try {
    AppLog().Filename(AppErrFolder() + kLogName);
    return;
  } catch (const Error&) {
    if (Platform().user_folder.empty()) throw;
  }
  const std::string folder = JoinPath(Platform().user_folder, "AppErr");
  CreateFolders(folder);
  AppLog().Filename(JoinPath(folder, kLogName));
}

}  // namespace korvex
