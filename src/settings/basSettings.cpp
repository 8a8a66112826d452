#include "settings/basSettings.h"

#include <cstddef>
#include <optional>
#include <string_view>

#include "files/basGeneral.h"
#include "files/folder_listing.h"
#include "platform/dialogs.h"
#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/services.h"
#include "platform/settings_store.h"
#include "text/text.h"
#include "workbook/cell_text.h"

namespace korvex::basSettings {
namespace {

struct Setting {
  std::string_view section;
  std::string_view key;
  std::string_view default_text = {};
};

constexpr std::string_view kMain = "Main Section";
constexpr std::string_view kStructure = "File Structure";

enum Id : std::size_t {
  kLastPath,
  kOutputFile,
  kOutputPath,
  kLaunchOutputFile,
  kErrorEmailAddress,
  kSendEmailOnError,
  kOutputFileMethod,
  kUnusedByFolder,
  kUnusedByConstantName,
  kAutoReplace,
  kEverySheetRepresents,
  kOutputColumns,
  kKeysColumns,
  kDataColumn,
};

// Every setting, at its Id, in the order in which they are deleted. Nothing writes the two keys
// that are named after the output file methods; they are deleted all the same.
constexpr Setting kSettings[] = {
    {kMain, "Last Path"},
    {kMain, "Output File"},
    {kMain, "Output Path"},
    {kMain, "Launch Output File", "1"},
    {kMain, "Error Email Address", "postmaster@localhost"},
    {kMain, "Send Email on Error", "1"},
    {kMain, "Output File Method", kByConstantName},
    {kMain, kByFolder},
    {kMain, kByConstantName},
    {kMain, "Auto-Replace Output files", "1"},
    {kStructure, "Every Sheet Represents:", kProcessSubFolders},
    {kStructure, "Output Columns"},
    {kStructure, "Keys Columns"},
    {kStructure, "Data Column", "Delta OD"},
};
static_assert(std::size(kSettings) == kDataColumn + 1);

// Asks the store every time, so that a change by another program counts at once.
std::optional<std::string> Stored(Id id) {
  return Platform().settings->Get(kSettings[id].section, kSettings[id].key);
}

std::string Read(Id id) {
  return Stored(id).value_or(std::string(kSettings[id].default_text));
}

void Write(Id id, std::string_view text) {
  Platform().settings->Save(kSettings[id].section, kSettings[id].key, text);
}

int ReadNumber(Id id) {
  const std::string text = Read(id);
  try {
    return ToInt16(text);
  } catch (const Error& error) {
    // Without its name the user would not know which setting to correct.
    throw Error(error.Number(), "The stored setting \"" + std::string(kSettings[id].key) +
                                    "\" cannot be read. " + error.Description());
  }
}

bool ReadFlag(Id id) {
  return ReadNumber(id) != 0;
}

void WriteFlag(Id id, bool flag) {
  // True is -1, as it always was in the store.
  Write(id, flag ? "-1" : "0");
}

}  // namespace

std::string LastPath() {
  return Read(kLastPath);
}

std::string LastPathAtStart() {
  // An empty path that was stored is a choice; only a missing one has a default.
  const std::optional<std::string> stored = Stored(kLastPath);
  return stored ? *stored : Platform().files->DefaultFolder();
}

void SetLastPath(const std::string& path) {
  Write(kLastPath, path);
}

std::string OutputFile() {
  return Read(kOutputFile);
}

void SetOutputFile(const std::string& name) {
  Write(kOutputFile, name);
}

std::string OutputPath() {
  return Read(kOutputPath);
}

void WriteOutputPath(const std::string& folder) {
  Write(kOutputPath, WithSeparator(folder));
}

std::string OutputFileMethod() {
  return Read(kOutputFileMethod);
}

void SetOutputFileMethod(const std::string& method) {
  Write(kOutputFileMethod, method);
}

std::string OutputFullName() {
  const std::string method = OutputFileMethod();
  if (method == kByConstantName) return OutputPath() + OutputFile();
  if (method == kByFolder) {
    // The workbook lies in the folder that is processed, whatever output path is stored.
    return Platform().main_window->ProcessingFolder() + Platform().files->Separator() +
           OutputFile();
  }
  return "";
}

void WriteOutputFullName(const std::string& full_name) {
  Write(kOutputPath, SharedFileSys().GetFilePath(full_name, true));
  Write(kOutputFile, SharedFileSys().GetFileTitle(full_name, false));
}

bool AutoReplaceOutputFiles() {
  return ReadFlag(kAutoReplace);
}

void SetAutoReplaceOutputFiles(bool replace) {
  WriteFlag(kAutoReplace, replace);
}

bool LaunchOutputFile() {
  return ReadFlag(kLaunchOutputFile);
}

bool LaunchOutputFileIsStored() {
  return Stored(kLaunchOutputFile).has_value();
}

int LaunchOutputFileNumber() {
  return ReadNumber(kLaunchOutputFile);
}

void SetLaunchOutputFile(bool launch) {
  WriteFlag(kLaunchOutputFile, launch);
}

void SetLaunchOutputFileNumber(int launch) {
  Write(kLaunchOutputFile, std::to_string(launch));
}

bool SendEmailOnError() {
  return ReadFlag(kSendEmailOnError);
}

void SetSendEmailOnError(bool send) {
  WriteFlag(kSendEmailOnError, send);
}

std::string ErrorEmailAddress() {
  return Read(kErrorEmailAddress);
}

void SetErrorEmailAddress(const std::string& address) {
  Write(kErrorEmailAddress, address);
}

std::string EverySheetRepresents() {
  return Read(kEverySheetRepresents);
}

void SetEverySheetRepresents(const std::string& mode) {
  Write(kEverySheetRepresents, mode);
}

bool ProcessingSubFolders() {
  return EverySheetRepresents() == kProcessSubFolders;
}

bool ProcessingFiles() {
  return !ProcessingSubFolders();
}

std::vector<std::string> OutputColumns() {
  return Split(Read(kOutputColumns), kListSeparator);
}

void SetOutputColumns(const std::vector<std::string>& names) {
  Write(kOutputColumns, Join(names, kListSeparator));
}

std::vector<std::string> KeysColumns() {
  return Split(Read(kKeysColumns), kListSeparator);
}

void SetKeysColumns(const std::vector<std::string>& names) {
  Write(kKeysColumns, Join(names, kListSeparator));
}

std::string DataColumn() {
  return Read(kDataColumn);
}

void SetDataColumn(const std::string& name) {
  Write(kDataColumn, name);
}

void DeleteAllSettings() {
  bool all_deleted = true;
  for (const Setting& setting : kSettings) {
    const bool deleted =
        Attempt([&] { Platform().settings->Delete(setting.section, setting.key); });
    // Goes on after a failure: one key that is missing must not keep the others.
    all_deleted = all_deleted && deleted;
  }
  if (all_deleted) return;
  // A message that cannot be shown is no reason to fail.
  Attempt([] {
    Platform().dialogs->ShowPlain({"Errors while deleting registry settings.", BoxButtons::kOk,
                                   BoxIcon::kExclamation, kProgramTitle});
  });
}

}  // namespace korvex::basSettings
