#include "util/basAPI.h"

#include "platform/dialogs.h"
#include "platform/services.h"
#include "util/folder_listing.h"

namespace korvex {

std::string BrowseForFolder(void* owner) {
  const std::string folder =
      Platform().dialogs->BrowseForFolder(owner, "Choose a directory from the list.");
  return folder.empty() ? folder : WithSeparator(folder);
}

}  // namespace korvex
