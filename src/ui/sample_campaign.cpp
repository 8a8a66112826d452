#include "ui/sample_campaign.h"

#include <cstddef>
#include <memory>
#include <vector>

#include "files/folder_listing.h"
#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/services.h"
#include "settings/basSettings.h"
#include "settings/ini_settings_store.h"

namespace korvex::sample_campaign {
namespace {

constexpr char kCampaign[] = "campaign";
constexpr char kCopy[] = "KORVEX sample campaign";

struct Settings {
  std::vector<std::string> keys, columns;
  std::string data_column, output_file, output_method;

  friend bool operator==(const Settings&, const Settings&) = default;
};

Settings Stored() {
  return {basSettings::KeysColumns(), basSettings::OutputColumns(), basSettings::DataColumn(),
          basSettings::OutputFile(), basSettings::OutputFileMethod()};
}

// Those of the samples' own settings file.
Settings OfSamples(const std::string& samples) {
  Services services = Platform();
  IniSettingsStore store(*services.files, JoinPath(samples, "korvex.ini"));
  services.settings = &store;
  const InstalledServices installed(services);
  return Stored();
}

}  // namespace

// "samples" beside the folder of the programs on Windows, "share/korvex/samples" beside their
// "lib/korvex/bin" on Linux, and in the source tree for a program that was only built.
std::string InstalledFolder() {
  const FileSystem& files = *Platform().files;
  const std::vector<std::vector<const char*>> places = {
      {"..", "samples"}, {"..", "..", "..", "share", "korvex", "samples"}, {"..", "..", "samples"}};
  for (const std::vector<const char*>& names : places) {
    std::string folder = Platform().program_folder;
    for (const char* name : names) folder = JoinPath(folder, name);
    folder = files.AbsolutePath(folder);
    if (files.FolderExists(JoinPath(folder, kCampaign))) return folder;
  }
  throw Error(error_number::kPathNotFound,
              "The sample campaign was not installed with the program.");
}

std::string Copy(const std::string& samples) {
  FileSystem& files = *Platform().files;
  const std::string& documents = Platform().documents_folder;
  if (documents.empty()) {
    throw Error(error_number::kPathNotFound, "This user has no folder for documents.");
  }
  const std::string from = JoinPath(samples, kCampaign);
  const std::string to = JoinPath(documents, kCopy);
  ListedFolders listed;
  std::vector<std::byte> content;
  // A run may have written into the folder itself, so only what lies in its sub-folders counts.
  for (const std::string& name : listed.SubFolders(from)) {
    const std::string set = JoinPath(from, name);
    const std::string copied_set = JoinPath(to, name);
    CreateFolders(files, copied_set, FolderUse::kShared);
    for (const std::string& workbook : listed.Workbooks(set)) {
      const std::string target = JoinPath(copied_set, workbook);
      if (files.FileExists(target)) continue;
      files.ReadFile(JoinPath(set, workbook), content);
      const std::unique_ptr<ReplacementFile> file = files.Replace(target);
      file->Write(content);
      file->CommitAsNew();
    }
  }
  return to;
}

bool WouldReplaceSettings(const std::string& samples) {
  const Settings current = Stored();
  const bool has_own =
      !current.keys.empty() || !current.columns.empty() || !current.output_file.empty();
  return has_own && current != OfSamples(samples);
}

void TakeSettings(const std::string& samples) {
  const Settings settings = OfSamples(samples);
  basSettings::SetKeysColumns(settings.keys);
  basSettings::SetOutputColumns(settings.columns);
  basSettings::SetDataColumn(settings.data_column);
  basSettings::SetOutputFile(settings.output_file);
  basSettings::SetOutputFileMethod(settings.output_method);
}

}  // namespace korvex::sample_campaign
