#include "automation/installed_spreadsheet.h"

#include <utility>

#include "automation/automation_error.h"
#include "automation/installed_application.h"
#include "platform/error.h"
#include "platform/windows/wide_text.h"
#include "workbook/output_rules.h"

namespace korvex {
namespace {

void Require(HRESULT result) {
  if (SUCCEEDED(result)) return;
  throw Error(error_number::kNoSuchApplication,
              "The spreadsheet application cannot be started: " + ResultText(result) + ".");
}

}  // namespace

bool InstalledSpreadsheet::IsInstalled(const std::string& program_id) {
  // May be asked before there is an application, so COM may not be initialized yet.
  const ComApartment apartment;
  CLSID id;
  return SUCCEEDED(CLSIDFromProgID(ToWide(program_id).c_str(), &id));
}

InstalledSpreadsheet::InstalledSpreadsheet(FileSystem& files, std::string program_id)
    : files_(files), program_id_(std::move(program_id)) {}

std::unique_ptr<Application> InstalledSpreadsheet::CreateApplication() {
  CLSID id;
  Require(CLSIDFromProgID(ToWide(program_id_).c_str(), &id));
  IDispatch* application = nullptr;
  // In a process of its own: if it crashes, this program is still there to say so.
  Require(CoCreateInstance(id, nullptr, CLSCTX_LOCAL_SERVER, IID_IDispatch,
                           reinterpret_cast<void**>(&application)));
  return std::make_unique<InstalledApplication>(Dispatch(application), files_);
}

void InstalledSpreadsheet::CheckOutputName(const std::string& full_name) const {
  OutputFormatOf(full_name);
}

}  // namespace korvex
