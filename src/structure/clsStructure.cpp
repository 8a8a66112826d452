#include "structure/clsStructure.h"

#include <memory>

#include "errors/trap.h"
#include "files/basFuncs_paths.h"
#include "files/basGeneral.h"
#include "files/folder_listing.h"
#include "files/stray_files.h"
#include "platform/dialogs.h"
#include "platform/error.h"
#include "platform/services.h"
#include "platform/shown_text.h"
#include "settings/basSettings.h"
#include "structure/basFuncs_workbooks.h"
#include "text/text.h"
#include "workbook/cell_text.h"

namespace korvex {
namespace {

constexpr char kNoSample[] =
    "No file could be used in order to determine structure of file. Please make sure you have "
    "files in all sub-folders of chosen processing folder.";
constexpr char kBadSample[] =
    "Problems occurred when opening a file to use as a sample for format settings. Please double "
    "click the folder or parent-folder you want to process, and make sure it has the files with a "
    "correct format in them.";

// Appends one part of the sentence: what they are, and their names.
void AddMissing(const char* what, const std::vector<std::string>& names, std::string& text) {
  if (names.empty()) return;
  text += (text.empty() ? "Missing: " : "; ") + std::string(what) +
          (names.size() == 1 ? " column " : " columns ");
  std::vector<std::string> quoted;
  for (const std::string& name : names) quoted.push_back('"' + Shown(name) + '"');
  text += Join(quoted, ", ");
}

// A setting can be edited by hand, so that a column may be named twice. The message says in which
// setting.
void AddColumn(KeyedCollection<std::int16_t>& columns, const std::string& name, std::int16_t number,
               const char* setting) {
  if (columns.Exists(name)) {
    throw Error(error_number::kDuplicateKey, std::string("The setting \"") + setting +
                                                 "\" names the column \"" + name +
                                                 "\" twice. Choose its columns anew.");
  }
  columns.Add(name, number);
}

// The elements as texts; one may be anything that has a text form.
std::vector<std::string> TextsOf(const std::optional<clsArray::Values>& values) {
  if (!values) throw Error(error_number::kTypeMismatch);
  clsArray list;
  list.AddArray(*values);
  return list.Texts();
}

}  // namespace

std::string MissingText(const MissingColumns& missing) {
  std::string text;
  AddMissing("key", missing.keys, text);
  AddMissing("output", missing.outputs, text);
  if (missing.data && !missing.data->empty()) AddMissing("data", {*missing.data}, text);
  if (!text.empty()) text += '.';
  if (missing.data && missing.data->empty()) {
    text.append(text.empty() ? "" : " ").append("No data column is chosen.");
  }
  return text;
}

void clsStructure::Constructor(const std::string& path, const std::vector<std::string>& files,
                               Application* application, ListedFolders* folders) {
  ListedFolders own_folders;
  if (folders == nullptr) folders = &own_folders;
  std::unique_ptr<Application> started;
  Trap(
      "clsStructure.Constructor",
      [&] {
        discrepancy_ = false;
        sample_usable_ = false;
        available_columns_.RemoveAll();
        output_columns_.RemoveAll();
        key_columns_.RemoveAll();
        missing_ = {};
        ChooseSample(path, files, *folders);
        if (application == nullptr) {
          started = Platform().spreadsheet->CreateApplication();
          application = started.get();
        }
        ReadSample(*application);
        sample_usable_ = true;
      },
      [&](const TrappedError& error) {
        if (error.IsTold()) return;
        const std::string problem = SampleProblem();
        error.Report();
        Platform().dialogs->ShowButtons(
            {.prompt = kBadSample, .buttons = {"OK"}, .title = kProgramTitle, .cause = problem});
      });
  // Whatever happened. An application that was passed belongs to the caller.
  QuitExcel(started);
}

// Only the first sub-folder is looked at: without a file in it there is no sample.
void clsStructure::ChooseSample(const std::string& path, const std::vector<std::string>& files,
                                ListedFolders& folders) {
  sample_file_.clear();
  if (!basSettings::ProcessingSubFolders()) {
    if (files.empty()) throw Error(error_number::kSubscript);
    sample_file_ = files.front();
    return;
  }
  const std::vector<std::string> sub_folders = folders.SubFolders(path);
  if (sub_folders.empty()) TellAndFail(kNoSample, Shown(path) + " has no sub-folder.");
  const std::string sub_folder = JoinPath(path, sub_folders.front());
  const std::vector<std::string> names = folders.Workbooks(sub_folder);
  if (names.empty()) {
    TellAndFail(kNoSample, "The sample is the first file of the first sub-folder, and " +
                               Shown(sub_folder) + " holds none.");
  }
  sample_file_ = JoinPath(sub_folder, names.front());
}

// Most errors name the file themselves, with or without its folder.
std::string clsStructure::SampleProblem() const {
  const std::string why = PendingError().Description();
  const std::string name = Shown(SharedFileSys().GetFileTitle(sample_file_, false));
  const bool is_named = name.empty() || why.find(name) != std::string::npos;
  return is_named ? why : Shown(sample_file_) + ": " + why;
}

void clsStructure::ReadSample(Application& application) {
  application.SetVisible(false);
  application.SetScreenUpdating(false);
  application.SetDisplayAlerts(false);
  Workbook& sample = OpenUnlessStray(
      sample_file_, [&]() -> Workbook& { return application.OpenWorkbook(sample_file_, {}); });
  RefreshAvailableCols(sample);
  sample.Close();
}

void clsStructure::RefreshAvailableCols(Workbook& workbook) {
  available_columns_.RemoveAll();
  Worksheet& sheet = GetDataSheet(workbook);
  const auto fail = [&](int number, const std::string& cause) {
    throw Error(number, "The sheet \"" + sheet.Name() + "\" of " + workbook.Name() + " " + cause);
  };
  header_row_ = GetHeaderRow(sheet);
  // Added before a missing header row is refused: the options offer them even then.
  for (const char* name : {kFilenameColumn, kDateColumn, kDayNumColumn}) {
    available_columns_.Add(name, kPseudoColumn);
  }
  if (header_row_ == 0) {
    fail(error_number::kAutomation,
         "has no header row: the first column holds nothing but numbers and blanks.");
  }
  // Names end at the first blank; in a sheet that is full to its last column there is none.
  const int last_column = sheet.LastCell().column;
  for (std::int16_t column = 1; column <= last_column; ++column) {
    const std::string name = CellText(sheet.Value(header_row_, column));
    if (TrimBlanks(name).empty()) break;
    if (available_columns_.Exists(name)) {
      fail(error_number::kDuplicateKey,
           "has the column name \"" + name + "\" twice; Filename, Date and day_num count, too.");
    }
    available_columns_.Add(name, column);
  }
  // The calls below rebuild the lists from the settings and set discrepancy_ for every column that
  // is not available.
  output_columns_.RemoveAll();
  key_columns_.RemoveAll();
  OutputColsArray();
  KeyColsArray();
  DataColumn();
}

std::vector<std::string> clsStructure::OutputColsArray() {
  if (output_columns_.Count() == 0) {
    clsArray names;
    names.AddTexts(basSettings::OutputColumns());
    names.Remove(DataColumn());  // its values stand in the columns of the replications
    // A name that is left out keeps its position, so that the others stay where the user put them.
    std::int16_t position = 0;
    missing_.outputs.clear();
    for (const std::string& name : names.Texts()) {
      ++position;
      if (available_columns_.Exists(name)) {
        AddColumn(output_columns_, name, position, "Output Columns");
      } else {
        missing_.outputs.push_back(name);
        discrepancy_ = true;
      }
    }
  }
  return output_columns_.Keys();
}

std::vector<std::string> clsStructure::KeyColsArray() {
  if (key_columns_.Count() == 0) {
    missing_.keys.clear();
    for (const std::string& name : basSettings::KeysColumns()) {
      if (available_columns_.Exists(name)) {
        AddColumn(key_columns_, name, available_columns_.Item(name), "Keys Columns");
      } else {
        missing_.keys.push_back(name);
        discrepancy_ = true;
      }
    }
  }
  return key_columns_.Keys();
}

std::string clsStructure::DataColumn() {
  std::string name = basSettings::DataColumn();
  missing_.data.reset();
  if (!available_columns_.Exists(name)) {
    missing_.data = name;
    discrepancy_ = true;
  }
  return name;
}

void clsStructure::SetOutputColsArray(const std::optional<clsArray::Values>& names) {
  basSettings::SetOutputColumns(TextsOf(names));
  output_columns_.RemoveAll();
}

void clsStructure::SetKeyColsArray(const std::optional<clsArray::Values>& names) {
  basSettings::SetKeysColumns(TextsOf(names));
  key_columns_.RemoveAll();
}

void clsStructure::SetDataColumn(const std::string& name) {
  basSettings::SetDataColumn(name);
}

std::string clsStructure::SampleFileUsed(bool short_name) const {
  return short_name ? GetDisplayPath(sample_file_) : sample_file_;
}

}  // namespace korvex
