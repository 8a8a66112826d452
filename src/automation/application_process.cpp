#include "automation/application_process.h"

namespace korvex {
namespace {

bool SetKillLimit(HANDLE job, bool kill) {
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
  limits.BasicLimitInformation.LimitFlags = kill ? DWORD{JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE} : 0;
  return SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
}

}  // namespace

ApplicationProcess::ApplicationProcess(HWND window) {
  DWORD id = 0;
  GetWindowThreadProcessId(window, &id);
  // A server of this very process would take it along.
  if (id == 0 || id == GetCurrentProcessId()) return;
  process_ = Handle(OpenProcess(PROCESS_SET_QUOTA | PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id));
  Handle job(CreateJobObjectW(nullptr, nullptr));
  if (process_.IsOpen() && job.IsOpen() && SetKillLimit(job.Get(), true) &&
      AssignProcessToJobObject(job.Get(), process_.Get())) {
    job_ = std::move(job);
  }
}

void ApplicationProcess::SetFree() {
  if (job_.IsOpen() && SetKillLimit(job_.Get(), false)) job_.Close();
}

void ApplicationProcess::WaitForEnd(std::chrono::milliseconds patience) const {
  if (process_.IsOpen()) {
    WaitForSingleObject(process_.Get(), static_cast<DWORD>(patience.count()));
  }
}

}  // namespace korvex
