#include "automation/automation_error.h"

#include <oleauto.h>
#include <algorithm>

#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>

#include "platform/windows/wide_text.h"
#include "platform/windows/windows_error.h"

namespace korvex {
namespace {

// The result of the spreadsheet application while a user edits a cell in it.
constexpr auto kBusyWithAnEdit = static_cast<HRESULT>(0x800AC472);
// In results of this kind the lower 16 bits are an error number of the same series as ours.
constexpr auto kNumbered = 0x800A0000u;

// The results that COM gives for an object whose process is gone: those of COM itself, and those of
// the calls between processes that it is built on.
bool HasEnded(HRESULT result) {
  switch (result) {
    case RPC_E_DISCONNECTED:
    case RPC_E_SERVER_DIED:
    case RPC_E_SERVER_DIED_DNE:
    case RPC_E_CONNECTION_TERMINATED:
    case CO_E_OBJNOTCONNECTED:
      return true;
    default:
      return result == HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE) ||
             result == HRESULT_FROM_WIN32(RPC_S_CALL_FAILED) ||
             result == HRESULT_FROM_WIN32(RPC_S_CALL_FAILED_DNE);
  }
}

int ErrorNumber(HRESULT result) {
  const auto bits = static_cast<std::uint32_t>(result);
  if ((bits & 0xFFFF0000u) == kNumbered) return static_cast<int>(bits & 0xFFFFu);
  switch (result) {
    case DISP_E_BADINDEX:
      return error_number::kSubscript;
    case DISP_E_TYPEMISMATCH:
      return error_number::kTypeMismatch;
    case DISP_E_OVERFLOW:
      return error_number::kOverflow;
    case DISP_E_MEMBERNOTFOUND:
    case DISP_E_UNKNOWNNAME:
      return error_number::kNoSuchMember;
    case E_OUTOFMEMORY:
      return error_number::kOutOfMemory;
    default:
      return error_number::kAutomation;
  }
}

// In this program 17 and 18 mean that the user has been told, or has stopped the run: an
// application that answers with them gets 1004.
int OwnNumber(int number) {
  const bool has_another_meaning = number == error_number::kCannotPerform ||
                                   number == error_number::kUserInterrupt || number == 0;
  return has_another_meaning ? error_number::kAutomation : number;
}

std::string TakeText(BSTR& text) {
  const std::string taken = FromWide({text, SysStringLen(text)});
  SysFreeString(text);
  text = nullptr;
  return taken;
}

}  // namespace

bool IsBusy(HRESULT result) {
  return result == RPC_E_CALL_REJECTED || result == RPC_E_SERVERCALL_RETRYLATER ||
         result == kBusyWithAnEdit;
}

std::string ResultText(HRESULT result) {
  char code[16];
  std::snprintf(code, sizeof code, " (0x%08lX)", static_cast<unsigned long>(result));
  return SystemText(static_cast<std::uint32_t>(result)) + code;
}

Error AutomationError(HRESULT result, std::string_view member) {
  const std::string step = " at the step \"" + std::string(member) + "\"";
  if (IsBusy(result)) {
    return Error(error_number::kAutomation,
                 "The spreadsheet application is busy" + step +
                     ". If it shows a dialog, answer it; then start again.");
  }
  if (HasEnded(result)) {
    return Error(error_number::kAutomation, "The spreadsheet application has ended" + step + ": " +
                                                ResultText(result) +
                                                ". The next run starts it again.");
  }
  if (result == RPC_E_CALL_CANCELED) {
    return Error(error_number::kAutomation, "The spreadsheet application did not answer" + step +
                                                ", and was given up when the run was to stop.");
  }
  return Error(OwnNumber(ErrorNumber(result)),
               "The spreadsheet application failed" + step + ": " + ResultText(result) + ".");
}

HRESULT TakeResult(EXCEPINFO& exception) {
  // The caller owns the texts of an EXCEPINFO.
  for (const BSTR text :
       {exception.bstrSource, exception.bstrDescription, exception.bstrHelpFile}) {
    SysFreeString(text);
  }
  return std::exchange(exception, {}).scode;
}

Error AutomationError(EXCEPINFO& exception, std::string_view member) {
  // Programs may put off making the texts until somebody wants them.
  if (exception.pfnDeferredFillIn != nullptr) exception.pfnDeferredFillIn(&exception);
  const std::string source = TakeText(exception.bstrSource);
  std::string description = TakeText(exception.bstrDescription);
  std::ranges::replace_if(
      description, [](char c) { return c == '\r' || c == '\n'; }, ' ');
  SysFreeString(exception.bstrHelpFile);
  exception.bstrHelpFile = nullptr;
  // A program gives either a 16-bit number of its own or an HRESULT, and some give neither.
  const HRESULT result = exception.wCode != 0   ? static_cast<HRESULT>(kNumbered | exception.wCode)
                         : exception.scode != 0 ? exception.scode
                                                : DISP_E_EXCEPTION;
  // A description without a text, or from a process that is gone, says less than ours.
  if (HasEnded(result) || description.empty()) return AutomationError(result, member);
  return Error(OwnNumber(ErrorNumber(result)), description, source.empty() ? "KORVEX" : source);
}

}  // namespace korvex
