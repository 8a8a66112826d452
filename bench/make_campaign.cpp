// Makes a large campaign to measure with:
//
//   make_campaign FOLDER [WORKBOOKS [REPLICATIONS]]
//
// By default 400 workbooks of 384 wells and 10 columns: 100 plates, read four times each, in four
// sub-folders. The content follows from a fixed seed. More than 170 plates would not fit the rows
// of one output sheet, so a larger campaign needs more replications, up to 32: their letters still
// differ in more than case. No cell is a date: the reader in C counts the days of a date one by
// one, which would measure nothing else.
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>

#include "platform/error.h"
#include "platform/posix/posix_file_system.h"
#include "spreadsheet/embedded_application.h"

namespace korvex {
namespace {

constexpr int kSubFolders = 4;
constexpr int kRowsOfPlate = 16;
constexpr int kColumnsOfPlate = 24;
constexpr int kWells = kRowsOfPlate * kColumnsOfPlate;
constexpr const char* kHeaders[] = {"cell plate #", "cell plate wells ##",
                                    "compound ID",  "compound #",
                                    "conc uM",      "OD 0 h",
                                    "OD 24 h",      "Delta OD",
                                    "temp C",       "remarks"};

std::string Padded(int number, std::size_t width) {
  std::string digits = std::to_string(number);
  if (digits.size() < width) digits.insert(0, width - digits.size(), '0');
  return digits;
}

class CampaignWriter {
 public:
  CampaignWriter(PosixFileSystem& files, std::string folder)
      : application_(EmbeddedSpreadsheet(files).CreateApplication()),
        files_(files),
        folder_(files.AbsolutePath(folder)) {}

  void Write(int workbooks, int replications) {
    const int plates = workbooks / replications;
    files_.CreateFolder(folder_);
    for (int plate = 0; plate < plates; ++plate) {
      const int set = plate * kSubFolders / plates + 1;
      const std::string sub_folder = folder_ + "/set " + std::to_string(set);
      files_.CreateFolder(sub_folder);
      for (int replication = 1; replication <= replications; ++replication) {
        std::string name = "P";
        name += Padded(plate + 1, 3) + "-" + std::to_string(set) + "-" +
                std::to_string(replication) + ".xls";
        WriteWorkbook(sub_folder + "/" + name, plate, replication);
      }
    }
  }

 private:
  void WriteWorkbook(const std::string& full_name, int plate, int replication) {
    Workbook& workbook = application_->AddWorkbook(full_name);
    while (workbook.WorksheetCount() > 1) workbook.Worksheets(1).Delete();
    Worksheet& sheet = workbook.Worksheets(1);
    sheet.SetName("data");
    const std::string read_at =
        "12/03/2002 " + std::to_string(8 + plate % 10) + ":" + Padded(replication, 2);
    sheet.SetValue(1, 1, CellValue::Text(read_at));
    sheet.SetValue(1, 3, CellValue::Text("plate reader export"));
    int column = 0;
    for (const char* header : kHeaders) sheet.SetValue(2, ++column, CellValue::Text(header));
    for (int well = 0; well < kWells; ++well) WriteWell(sheet, plate, well);
    workbook.SaveAs(full_name);
    workbook.Close();
  }

  void WriteWell(Worksheet& sheet, int plate, int well) {
    const int row = well + 3;
    const int compound = plate * kWells + well + 1;
    const std::string name =
        char('A' + well / kColumnsOfPlate) + Padded(well % kColumnsOfPlate + 1, 2);
    const double start = 0.08 + Noise(0.01);
    const double end = start + 0.7 + Noise(0.2);
    sheet.SetValue(row, 1, CellValue::Number(1000 + plate));
    sheet.SetValue(row, 2, CellValue::Text(name));
    sheet.SetValue(row, 3, CellValue::Text("CMP-" + Padded(compound, 7)));
    sheet.SetValue(row, 4, CellValue::Number(compound));
    sheet.SetValue(row, 5, CellValue::Number(2.5));
    sheet.SetValue(row, 6, CellValue::Number(Rounded(start)));
    sheet.SetValue(row, 7, CellValue::Number(Rounded(end)));
    sheet.SetValue(row, 8, CellValue::Number(end - start));
    sheet.SetValue(row, 9, CellValue::Number(30 + Rounded(Noise(0.4))));
    if (well % 40 == 7) sheet.SetValue(row, 10, CellValue::Text("edge well"));
  }

  double Noise(double width) {
    return width * static_cast<double>(random_() >> 11U) / static_cast<double>(1ULL << 53U);
  }
  static double Rounded(double value) { return std::round(value * 1000) / 1000; }

  std::unique_ptr<Application> application_;
  PosixFileSystem& files_;
  std::string folder_;
  std::mt19937_64 random_{20021203};
};

}  // namespace
}  // namespace korvex

int main(int argc, char** argv) {
  const int workbooks = argc > 2 ? std::atoi(argv[2]) : 400;
  const int replications = argc > 3 ? std::atoi(argv[3]) : 4;
  if (argc < 2 || argc > 4 || workbooks < 1 || replications < 1 || replications > 32) {
    std::fputs("usage: make_campaign FOLDER [WORKBOOKS [REPLICATIONS]]\n", stderr);
    return 2;
  }
  try {
    korvex::PosixFileSystem files;
    korvex::CampaignWriter(files, argv[1]).Write(workbooks, replications);
  } catch (const korvex::Error& error) {
    std::fprintf(stderr, "%s\n", error.Description().c_str());
    return 1;
  }
  return 0;
}
