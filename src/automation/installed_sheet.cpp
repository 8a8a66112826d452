#include "automation/installed_sheet.h"

#include <utility>

#include "automation/installed_workbook.h"
#include "workbook/output_rules.h"

namespace korvex {

InstalledSheet::InstalledSheet(InstalledWorkbook& workbook, Dispatch sheet, std::string name)
    : workbook_(workbook), sheet_(std::move(sheet)), name_(std::move(name)) {}

void InstalledSheet::SetName(const std::string& name) {
  CheckSheetName(name);
  sheet_.Put(L"Name", name);
  name_ = name;
}

int InstalledSheet::Index() const {
  return sheet_.Get(L"Index").Integer();
}

void InstalledSheet::Activate() {
  sheet_.Call(L"Activate");
}

void InstalledSheet::Delete() {
  sheet_.Call(L"Delete");
  workbook_.Drop(*this);
}

}  // namespace korvex
