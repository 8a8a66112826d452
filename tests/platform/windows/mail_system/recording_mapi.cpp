// A mail program for the tests: writes what is asked of it to the file that RECORDING_MAPI names,
// byte for byte, and refuses the function that RECORDING_MAPI_REFUSES names.

#include <fstream>
#include <sstream>
#include <string>

#include "platform/windows/windows_api.h"

// After the header of the system, which it needs.
#include <mapi.h>

namespace {

constexpr LHANDLE kSession = 42;

std::string Variable(const char* name) {
  char value[MAX_PATH];
  const DWORD length = GetEnvironmentVariableA(name, value, sizeof value);
  return length < sizeof value ? std::string(value, length) : "";
}

std::string Text(const char* text) {
  return text ? text : "(null)";
}

ULONG Answer(const std::string& function, LHANDLE session, const std::string& arguments) {
  std::ofstream record(Variable("RECORDING_MAPI"), std::ios::app | std::ios::binary);
  record << function << arguments << '\n';
  if (Variable("RECORDING_MAPI_REFUSES") == function) return MAPI_E_FAILURE;
  return session == kSession ? SUCCESS_SUCCESS : MAPI_E_INVALID_SESSION;
}

std::string Flags(FLAGS flags) {
  return " flags=" + std::to_string(flags);
}

}  // namespace

extern "C" {

__declspec(dllexport) ULONG WINAPI
    MAPILogon(ULONG_PTR, LPSTR profile, LPSTR, FLAGS flags, ULONG, LPLHANDLE session) {
  *session = kSession;
  return Answer("MAPILogon", kSession, " " + Text(profile) + Flags(flags));
}

__declspec(dllexport) ULONG WINAPI MAPILogoff(LHANDLE session, ULONG_PTR, FLAGS, ULONG) {
  return Answer("MAPILogoff", session, "");
}

__declspec(dllexport) ULONG WINAPI MAPIResolveName(LHANDLE session, ULONG_PTR, LPSTR name,
                                                   FLAGS flags, ULONG, lpMapiRecipDesc* recipient) {
  const ULONG answer = Answer("MAPIResolveName", session, " " + Text(name) + Flags(flags));
  if (answer != SUCCESS_SUCCESS) return answer;
  static char full_name[] = "The Laboratory";
  static char address[] = "SMTP:lab@example.org";
  *recipient = new MapiRecipDesc{0, MAPI_ORIG, full_name, address, 0, nullptr};
  return answer;
}

__declspec(dllexport) ULONG WINAPI
    MAPISendMail(LHANDLE session, ULONG_PTR, lpMapiMessage message, FLAGS flags, ULONG) {
  std::ostringstream record;
  record << Flags(flags);
  for (ULONG i = 0; i < message->nRecipCount; ++i) {
    const MapiRecipDesc& to = message->lpRecips[i];
    record << "\nTo (" << to.ulRecipClass << "): " << Text(to.lpszName) << " <"
           << Text(to.lpszAddress) << ">";
  }
  record << "\nSubject: " << Text(message->lpszSubject) << "\n" << Text(message->lpszNoteText);
  return Answer("MAPISendMail", session, record.str());
}

__declspec(dllexport) ULONG WINAPI MAPIFreeBuffer(LPVOID buffer) {
  delete static_cast<MapiRecipDesc*>(buffer);
  return Answer("MAPIFreeBuffer", kSession, "");
}

}  // extern "C"
