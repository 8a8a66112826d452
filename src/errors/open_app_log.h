#pragma once

namespace korvex {

// Opens the application error log "KORVEX.LOG" for appending: in `AppErrFolder`, or, where a user
// may not write beside the program, in a folder "AppErr" of the user's own, which is created with
// all folders above it. Raises the file system's error of the last attempt when neither can be
// opened.
void OpenAppLog();

}  // namespace korvex
