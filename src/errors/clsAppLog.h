// The application error log, a text file that grows for the life of the installation. Written in
// the system's code page with CR LF line ends; texts come in as UTF-8.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/file_system.h"

namespace korvex {

// Closed until a file name is given. Writing to a closed log is error 91; the errors of the file
// system reach the caller.
class clsAppLog {
 public:
  // Appends one record:
  //
  //   (empty line)
  //   <<<<<<ERROR>>>>>>            if err_indicator; 66 characters
  //   Error Number   : 53          err_num, or the pending error's for 0
  //   Error Desc     : text        err_desc, or the pending error's
  //   Error Source   : text        err_source, or the pending error's
  //   Date           : 31/12/2004 23:59:59     if insert_time
  //   Function Name  : text        if func_name
  //   Caught by      : text        if caught_in
  //   Additional Data: text        if more_info is not empty
  //   ==================           if err_indicator; 66 characters
  //   (empty line)
  //
  // and raises the recorded error afterwards if raise_err.
  void Error(const std::optional<std::string>& func_name, int err_num,
             const std::optional<std::string>& err_desc,
             const std::optional<std::string>& err_source, std::string_view more_info,
             const std::optional<std::string>& caught_in, bool insert_time, bool err_indicator,
             bool raise_err);

  // Appends free text, followed by the time and more_info on lines of their own. `indent` starts
  // each of these lines with a tab. Ends in `end_crlf` line ends, which may be none.
  void AddText(std::string_view text, std::string_view more_info, bool insert_time, int end_crlf,
               bool indent);

  const std::string& Filename() const { return filename_; }

  void CloseFile();

  // Shows the log file in the platform's text editor.
  void NotePad() const;

  // Opens the file for appending in place of the one that was open. When it cannot be opened, the
  // log has the new name and is closed.
  void Filename(const std::string& new_name);

 private:
  std::string FormatNow(bool for_file_name) const;
  bool DeleteLog();
  void Write(std::string_view text);

  std::string filename_;
  std::unique_ptr<AppendFile> stream_;  // none while closed
};

// The one log of the program.
clsAppLog& AppLog();

// Opens the application error log "KORVEX.LOG" for appending: in `AppErrFolder`, or, where a user
// may not write beside the program, in a folder "AppErr" of the user's own, which is created with
// all folders above it. Raises the file system's error of the last attempt when neither can be
// opened.
void OpenAppLog();

}  // namespace korvex
