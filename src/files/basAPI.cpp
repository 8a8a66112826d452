#include "files/basAPI.h"

#include "files/folder_listing.h"
#include "platform/dialogs.h"
#include "platform/services.h"

namespace korvex {

std::string BrowseForFolder(void* owner) {
  const std::string folder =
      Platform().dialogs->BrowseForFolder(owner, "Choose a directory from the list.");
  return folder.empty() ? folder : WithSeparator(folder);
}

}  // namespace korvex
