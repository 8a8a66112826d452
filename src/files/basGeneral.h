// Helpers that ask the desktop or the user for something.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "files/clsFileSys.h"

namespace korvex {

// The folder for temporary files: of the environment (TEMP, else TMP), else the platform's own,
// which is created when it is missing. `with_slash` appends a separator, even behind one.
std::string GetTempFolder(bool with_slash);

// Asks the user for a folder of the file system. Ends in a separator, or is empty after Cancel.
// `owner` is the native handle of the window in front of which the browser stands.
std::string BrowseForFolder(void* owner);

// Opens a document with its associated program.
void ShellOpen(const std::string& file);

const clsFileSys& SharedFileSys();

// Shows the program's own message box and returns the caption of the pressed button. Without a
// title it is titled "Message". `icon` is 1 to 27, or 0 for none; `sound` 1 beeps, 2 to 9 are
// system sounds, 0 is silent. `default_button` counts from one, 0 means the first button as well;
// from one upwards it is reduced by one in the caller's variable.
std::string ShowMessageBox(const std::string& prompt, const std::vector<std::string>& buttons,
                           const std::optional<std::string>& title, int icon, int& default_button,
                           int sound = 1);
// With the first button as the default, and a beep.
std::string ShowMessageBox(const std::string& prompt, const std::vector<std::string>& buttons,
                           const std::optional<std::string>& title = std::nullopt, int icon = 0);

// Shows the message under the program's title with the one button "OK", and raises error 17: the
// user has been told, and nobody reports it again.
// The cause, if any, stands below the message.
[[noreturn]] void TellAndFail(const std::string& message, const std::string& cause = {});

}  // namespace korvex
