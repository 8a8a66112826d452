#include "files/basGeneral.h"

#include "files/folder_listing.h"
#include "platform/desktop.h"
#include "platform/dialogs.h"
#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/services.h"
#include "text/text.h"

namespace korvex {
namespace {

// The existing folder as its parent spells it, since people see the path: asked for "C:\TEMP", the
// disk may hold "C:\Temp".
std::string AsListed(const std::string& folder) {
  const std::string parent = SharedFileSys().GetFilePath(folder, true);
  const std::string name = SharedFileSys().GetFileTitle(folder, false);
  std::string listed = name;
  for (const FolderEntry& entry : Platform().files->List(parent)) {
    if (!entry.is_folder || !EqualText(entry.name, name)) continue;
    if (entry.name == name) return folder;
    listed = entry.name;
  }
  return parent + listed;
}

std::string PlatformTempFolder() {
  FileSystem& files = *Platform().files;
  const std::string folder = files.DefaultTempFolder();
  if (files.FolderExists(folder)) return AsListed(folder);
  files.CreateFolder(folder);
  return folder;
}

}  // namespace

std::string GetTempFolder(bool with_slash) {
  std::string folder = Platform().shell->EnvironmentVariable("TEMP");
  if (folder.empty()) folder = Platform().shell->EnvironmentVariable("TMP");
  if (folder.empty()) folder = PlatformTempFolder();
  if (with_slash) folder.push_back(Platform().files->Separator());
  return folder;
}

std::string BrowseForFolder(void* owner) {
  const std::string folder =
      Platform().dialogs->BrowseForFolder(owner, "Choose a directory from the list.");
  return folder.empty() ? folder : WithSeparator(folder);
}

void ShellOpen(const std::string& file) {
  Platform().shell->Open(file);
}

const clsFileSys& SharedFileSys() {
  static const clsFileSys shared;
  return shared;
}

std::string ShowMessageBox(const std::string& prompt, const std::vector<std::string>& buttons,
                           const std::optional<std::string>& title, int icon, int& default_button,
                           int sound) {
  if (default_button >= 1) --default_button;  // the box counts its buttons from zero
  return Platform().dialogs->ShowButtons(
      {prompt, buttons, title.value_or("Message"), icon, default_button, sound});
}

std::string ShowMessageBox(const std::string& prompt, const std::vector<std::string>& buttons,
                           const std::optional<std::string>& title, int icon) {
  int default_button = 0;
  return ShowMessageBox(prompt, buttons, title, icon, default_button);
}

// The number tells every trap on the way up that there is nothing left to say.
void TellAndFail(const std::string& message, const std::string& cause) {
  Platform().dialogs->ShowButtons(
      {.prompt = message, .buttons = {"OK"}, .title = kProgramTitle, .cause = cause});
  throw Error(error_number::kCannotPerform);
}

}  // namespace korvex
