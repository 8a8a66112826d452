// A platform with a spreadsheet application in memory, on which a test lays out a campaign.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "tests/support/fake_spreadsheet.h"
#include "tests/support/fakes.h"
#include "util/text.h"

namespace korvex {

// The processing folder is /data/screen, the output workbook /out/all.xls. Key column "compound
// ID", output columns "compound ID" and "plate", data column "Delta OD", nothing mailed.
struct Campaign {
  Campaign() {
    platform.SetSpreadsheet(&spreadsheet);
    platform.files.AddFolder("/data/screen");
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
  void Put(const std::string& name, std::initializer_list<FakeSheet::Row> rows) {
    FakeSheet sheet("data", {{"12/03/2002 10:15"}, {"#", "compound ID", "plate", "Delta OD"}});
    int row_number = 2;
    for (const FakeSheet::Row& row : rows) {
      ++row_number;
      int column = 0;
      for (const FakeCell& cell : row) {
        if (++column; cell.kind != CellKind::kEmpty) sheet.cells[{row_number, column}] = cell;
      }
    }
    PutContent(name, {{sheet}});
  }
  void PutContent(const std::string& name, FakeWorkbookContent content) {
    platform.files.AddFile(Path(name));
    spreadsheet.Put(Path(name), std::move(content));
  }

  std::string Path(const std::string& name) const { return folder + "/" + name; }
  const FakeSheet& Output() const { return spreadsheet.Saved("/out/all.xls"); }

  const std::string folder = "/data/screen";
  TestPlatform platform;
  FakeSpreadsheet spreadsheet;
};

}  // namespace korvex
