#include "errors/basFuncs.h"

#include <utility>

#include "errors/clsAppLog.h"
#include "platform/desktop.h"
#include "platform/dialogs.h"
#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/services.h"
#include "settings/basSettings.h"
#include "text/text.h"

namespace korvex {
namespace {

// The user knows that the setting for mails cannot be read, and it could not be since.
bool unreadable_setting_told = false;

// A value that somebody has typed into the settings by hand. A store that cannot be read at all is
// often the very error that is being reported, and is told with that.
bool IsUnreadableValue(const Error& error) {
  return error.Number() == error_number::kTypeMismatch || error.Number() == error_number::kOverflow;
}

}  // namespace

void ReportError(const std::string& location, const std::optional<std::string>& message,
                 bool show_message, bool write_log, bool /*reserved_flag*/, bool send_mail,
                 const std::optional<std::string>& /*reserved_value*/) {
  // Taken first: every step below catches errors of its own.
  const Error pending = PendingError();
  // Each step stands alone. The log may lie on a full disk, and the user must be told all the same.
  if (write_log) {
    Attempt([&] {
      AppLog().Error(std::nullopt, pending.Number(), pending.Description(), pending.Source(), "",
                     location, true, true, false);
    });
  }
  if (show_message) {
    Attempt([&] {
      const std::string standard_text = "An error occurred in procedure \"" + location + "\"." +
                                        kLineBreak + kLineBreak +
                                        "The Error has been written to a log file.";
      Platform().dialogs->ShowPlain({.text = message.value_or(standard_text),
                                     .icon = BoxIcon::kExclamation,
                                     .cause = pending.Description()});
    });
  }
  if (send_mail) SendErrorMail(pending.Number(), pending.Description());
}

void Report(const std::string& location, const std::optional<std::string>& message) {
  const Error pending = PendingError();
  bool send_mail = false;
  bool tell_unreadable = false;
  try {
    send_mail = basSettings::SendEmailOnError();
    unreadable_setting_told = false;
  } catch (...) {
    tell_unreadable = IsUnreadableValue(PendingError()) &&
                      !std::exchange(unreadable_setting_told, true) &&
                      PendingError().Description() != pending.Description();
  }
  ReportError(location, message, true, true, true, send_mail);
  if (!tell_unreadable) return;
  try {
    basSettings::SendEmailOnError();
  } catch (...) {
    ReportError(location, "This error was not mailed.", true, true, true, false);
  }
}

std::string AppErrFolder() {
  FileSystem& files = *Platform().files;
  const std::string separator(1, files.Separator());
  const std::string folder =
      Platform().program_folder + separator + ".." + separator + "AppErr" + separator;
  // Asked first: where the folder exists, a user who may not create it can still use it.
  if (!files.FolderExists(folder)) files.CreateFolder(folder);
  return folder;
}

namespace {

// Once for each cause: a run whose every file fails would fill the log with it.
void LogObstacle(const std::string& obstacle) {
  static std::string logged;
  if (std::exchange(logged, obstacle) == obstacle) return;
  Attempt([&] { AppLog().AddText(obstacle, "", true, 2, false); });
}

}  // namespace

void SendErrorMail(int err_num, const std::string& err_desc) {
  std::string obstacle;
  Attempt([&] { obstacle = Platform().mail->Obstacle(); });
  if (!obstacle.empty()) {
    LogObstacle(obstacle);
    return;
  }
  // All steps in order, whatever fails: a mail program may need the last ones, such as signing off,
  // to free what the first ones took.
  Attempt([] { Platform().mail->SignOn(); });
  Attempt([] { Platform().mail->Compose(); });
  Attempt([] { Platform().mail->SetSubject(std::string("Error in ") + kProgramTitle); });
  Attempt([&] {
    Platform().mail->SetNoteText("Err Number   = " + std::to_string(err_num) + kLineBreak +
                                 "Err Desc.    = " + err_desc + kLineBreak);
  });
  Attempt([] { Platform().mail->SetPrimaryRecipient(basSettings::ErrorEmailAddress()); });
  Attempt([] { Platform().mail->ResolveName(); });
  Attempt([] { Platform().mail->Send(); });
  Attempt([] { Platform().mail->SignOff(); });
}

}  // namespace korvex
