// The dialogs of a program that has windows: the platform's standard message box and folder
// browser, and the program's own message box.
#pragma once

#include "platform/dialogs.h"

namespace korvex {

// Dialogs stand in front of the window that is active.
class WindowDialogs : public Dialogs {
 public:
  BoxAnswer ShowPlain(const PlainMessage& message) override;
  std::string ShowButtons(const ButtonMessage& message) override;
  std::string BrowseForFolder(void* owner, const std::string& prompt) override;
  std::string BrowseNetwork(void* owner, const std::string& title) override;
};

}  // namespace korvex
