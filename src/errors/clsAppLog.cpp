#include "errors/clsAppLog.h"

#include <ctime>

#include "errors/basFuncs.h"
#include "files/folder_listing.h"
#include "platform/desktop.h"
#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/services.h"
#include "text/text.h"

namespace korvex {
namespace {

constexpr std::string_view kBanner =
    "<<<<<<<<<<<<<<<<<<<<<<<<<<<<<<ERROR>>>>>>>>>>>>>>>>>>>>>>>>>>>>>>>";

constexpr char kLogName[] = "KORVEX.LOG";

}  // namespace

void clsAppLog::Error(const std::optional<std::string>& func_name, int err_num,
                      const std::optional<std::string>& err_desc,
                      const std::optional<std::string>& err_source, std::string_view more_info,
                      const std::optional<std::string>& caught_in, bool insert_time,
                      bool err_indicator, bool raise_err) {
  const korvex::Error pending = PendingError();
  const korvex::Error recorded(err_num != 0 ? err_num : pending.Number(),
                               err_desc.value_or(pending.Description()),
                               err_source.value_or(pending.Source()));
  // The record is written in one call, so that two runs that share the log do not mix their lines.
  std::string record;
  const auto add_line = [&record](std::string_view label, std::string_view value) {
    record.append(label).append(value).append(kLineBreak);
  };

  add_line("", "");
  if (err_indicator) add_line(kBanner, "");
  add_line("Error Number   : ", std::to_string(recorded.Number()));
  add_line("Error Desc     : ", recorded.Description());
  add_line("Error Source   : ", recorded.Source());
  if (insert_time) add_line("Date           : ", FormatNow(false));
  if (func_name) add_line("Function Name  : ", *func_name);
  if (caught_in) add_line("Caught by      : ", *caught_in);
  if (!more_info.empty()) add_line("Additional Data: ", more_info);
  if (err_indicator) add_line(std::string(kBanner.size(), '='), "");
  add_line("", "");
  Write(record);

  if (raise_err) throw recorded;
}

void clsAppLog::AddText(std::string_view text, std::string_view more_info, bool insert_time,
                        int end_crlf, bool indent) {
  const std::string tab = indent ? "\t" : "";
  std::string body = tab;
  body.append(text);
  if (insert_time) body.append(kLineBreak).append(tab).append("Time: ").append(FormatNow(false));
  if (!more_info.empty())
    body.append(kLineBreak).append(tab).append("Additional Data: ").append(more_info);
  for (int i = 0; i < end_crlf; ++i) body.append(kLineBreak);
  Write(body);
}

void clsAppLog::CloseFile() {
  stream_.reset();
}

void clsAppLog::NotePad() const {
  Platform().shell->OpenInTextEditor(filename_);
}

void clsAppLog::Filename(const std::string& new_name) {
  // The name holds even when the file cannot be opened: messages say where the log should be.
  filename_ = new_name;
  stream_.reset();
  stream_ = Platform().files->OpenForAppending(filename_);
}

std::string clsAppLog::FormatNow(bool for_file_name) const {
  const std::tm now = Platform().clock->Now();
  char text[64];
  const char* format = for_file_name ? "%d-%m-%Y %H-%M-%S" : "%d/%m/%Y %H:%M:%S";
  return std::string(text, std::strftime(text, sizeof text, format, &now));
}

bool clsAppLog::DeleteLog() {
  CloseFile();
  return Attempt([this] { Platform().files->DeleteFile(filename_); });
}

void clsAppLog::Write(std::string_view text) {
  if (!stream_)
    throw korvex::Error(error_number::kObjectNotSet, "The application error log is not open.");
  // What earlier releases wrote into the same file is in this code page.
  stream_->Write(Platform().files->PlainText(text));
}

clsAppLog& AppLog() {
  static clsAppLog log;
  return log;
}

void OpenAppLog() {
  try {
    AppLog().Filename(AppErrFolder() + kLogName);
    return;
  } catch (const Error&) {
    // An installed program lies where users may not write.
    if (Platform().user_folder.empty()) throw;
  }
  const std::string folder = JoinPath(Platform().user_folder, "AppErr");
  CreateFolders(*Platform().files, folder, FolderUse::kShared);
  AppLog().Filename(JoinPath(folder, kLogName));
}

}  // namespace korvex
