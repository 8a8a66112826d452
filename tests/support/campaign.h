// A platform with a spreadsheet application, on which a test lays out a campaign.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tests/support/fakes.h"
#include "tests/support/watched_spreadsheet.h"
#include "text/text.h"
#include "workbook/cell_text.h"

namespace korvex {

// The processing folder is /data/screen, the output workbook /out/all.xls. Key column "compound
// ID", output columns "compound ID" and "plate", data column "Delta OD", nothing mailed.
struct Campaign {
  explicit Campaign(PathStyle style = PathStyle::kLinux) : platform(style) {
    platform.SetSpreadsheet(&spreadsheet);
    platform.files.AddFolder(folder);
    platform.files.AddFolder("/out");
    platform.main_window.processing_folder = folder;
    Set("Main Section", "Output Path", "/out/");
    Set("Main Section", "Output File", "all.xls");
    Set("Main Section", "Send Email on Error", "0");
    Set("Main Section", "Launch Output File", "0");
    SetKeys({"compound ID"});
    SetOutputs({"compound ID", "plate"});
  }

  void Set(const char* section, const char* key, const std::string& value) {
    platform.settings.Save(section, key, value);
  }
  void SetKeys(const std::vector<std::string>& names) {
    Set("File Structure", "Keys Columns", Join(names, "<-- -->"));
  }
  void SetOutputs(const std::vector<std::string>& names) {
    Set("File Structure", "Output Columns", Join(names, "<-- -->"));
  }
  void ProcessSelectedFiles() {
    Set("File Structure", "Every Sheet Represents:", "Process the selected files.");
  }

  // A workbook with the sheet "data": a date in A1, the header row "#", "compound ID", "plate",
  // "Delta OD", and the rows.
  void Put(const std::string& name, const std::vector<std::vector<TestCell>>& rows) {
    TestSheet sheet{"data", {{"12/03/2002 10:15"}, {"#", "compound ID", "plate", "Delta OD"}}};
    sheet.rows.insert(sheet.rows.end(), rows.begin(), rows.end());
    PutSheets(name, {sheet});
  }
  void PutSheets(const std::string& name, const std::vector<TestSheet>& sheets) {
    platform.files.AddFile(Path(name));
    spreadsheet.Put(Path(name), sheets);
  }

  std::string Path(const std::string& name) const { return folder + "/" + name; }
  // The sheet of the output workbook, until it is asked for again.
  const Worksheet& Output() {
    reader.emplace(platform.files);
    return reader->OpenWorkbook("/out/all.xls", {}).Worksheets(1);
  }
  bool HasOutput() const { return platform.files.FileExists("/out/all.xls"); }
  // The texts of a row of the output up to the last that is not empty.
  std::vector<std::string> OutputRow(int row) {
    const Worksheet& sheet = Output();
    std::vector<std::string> texts;
    for (int column = sheet.LastCell().column; column > 0; --column) {
      std::string text = CellText(sheet.Value(row, column));
      if (!texts.empty() || !text.empty()) texts.insert(texts.begin(), std::move(text));
    }
    return texts;
  }

  const std::string folder = "/data/screen";
  TestPlatform platform;
  WatchedSpreadsheet spreadsheet{platform.files};
  std::optional<EmbeddedApplication> reader;
};

}  // namespace korvex
