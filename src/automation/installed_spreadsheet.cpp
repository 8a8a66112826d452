#include "automation/installed_spreadsheet.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <thread>
#include <utility>

#include "automation/automation_error.h"
#include "automation/installed_application.h"
#include "platform/error.h"
#include "platform/windows/wide_text.h"
#include "workbook/output_rules.h"

namespace korvex {
namespace {

constexpr int kStarts = 3;
constexpr std::chrono::seconds kStartPause{1};

void Require(HRESULT result) {
  if (SUCCEEDED(result)) return;
  throw Error(error_number::kNoSuchApplication,
              "The spreadsheet application cannot be started: " + ResultText(result) +
                  ". To convert without it, use the option --spreadsheet embedded.");
}

// The application that ran before is still ending, or one has not come up in time.
bool MayStartLater(HRESULT result) {
  return result == CO_E_SERVER_STOPPING || result == CO_E_SERVER_EXEC_FAILURE ||
         result == HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE) || result == RPC_E_CALL_REJECTED;
}

IDispatch* StartProcess(const CLSID& id) {
  for (int start = 1;; ++start) {
    IDispatch* application = nullptr;
    // In a process of its own: if it crashes, this program is still there to say so.
    const HRESULT result = CoCreateInstance(id, nullptr, CLSCTX_LOCAL_SERVER, IID_IDispatch,
                                            reinterpret_cast<void**>(&application));
    if (start == kStarts || !MayStartLater(result)) {
      Require(result);
      return application;
    }
    std::this_thread::sleep_for(kStartPause);
  }
}

// Without a separator at its end.
std::string TemporaryFolder() {
  std::array<wchar_t, MAX_PATH + 1> path{};
  std::string folder =
      FromWide({path.data(), GetTempPathW(static_cast<DWORD>(path.size()), path.data())});
  while (folder.ends_with('\\')) folder.pop_back();
  return folder;
}

}  // namespace

bool InstalledSpreadsheet::IsInstalled(const std::string& program_id) {
  // May be asked before there is an application, so COM may not be initialized yet.
  const ComApartment apartment;
  CLSID id;
  return SUCCEEDED(CLSIDFromProgID(ToWide(program_id).c_str(), &id));
}

InstalledSpreadsheet::InstalledSpreadsheet(FileSystem& files, std::function<bool()> stop_is_asked,
                                           std::string program_id)
    : watcher_(std::move(stop_is_asked)), files_(files), program_id_(std::move(program_id)) {}

std::unique_ptr<Application> InstalledSpreadsheet::CreateApplication() {
  CLSID id;
  Require(CLSIDFromProgID(ToWide(program_id_).c_str(), &id));
  const std::string scratch_folder = TemporaryFolder();
  ScratchFile::RemoveLeftovers(scratch_folder);
  IDispatch* const application = StartProcess(id);
  // A question that it asks all the same is to come to the front.
  CoAllowSetForegroundWindow(application, nullptr);
  return std::make_unique<InstalledApplication>(
      Dispatch(application, Dispatch::kPatience, watcher_.Watch()), files_, scratch_folder);
}

void InstalledSpreadsheet::CheckOutputName(const std::string& full_name) const {
  // What it writes are workbooks, for it to open again.
  if (OutputFormatOf(full_name).separator == 0) CheckFileForApplication(full_name);
}

}  // namespace korvex
