// The report of an error that a procedure has trapped.
#pragma once

#include <optional>
#include <string>

namespace korvex {

// Reports the pending error: into the application error log, to the user, by e-mail. `location` is
// the trapping procedure as unit, point, procedure; `message` takes the place of the standard text.
// Neither raises anything nor ends the program; a step that fails is passed over.
void ReportError(const std::string& location, const std::optional<std::string>& message,
                 bool show_message, bool write_log, bool reserved_flag, bool send_mail,
                 const std::optional<std::string>& reserved_value = std::nullopt);

// Reports the pending error as every trap does: logged, shown, and mailed when the settings ask for
// it. A setting for that which cannot be read does not ask; it is reported itself, but once until
// it can be read again.
void Report(const std::string& location, const std::optional<std::string>& message = std::nullopt);

// The folder of the application error log, "AppErr" beside the program's folder, with a separator
// at its end. Created when it is missing, one level only; the file system's errors reach the
// caller.
std::string AppErrFolder();

// Mails an error to the address in the settings. Never fails.
void SendErrorMail(int err_num, const std::string& err_desc);

}  // namespace korvex
