// The scripted spreadsheet application as a program of its own, which COM starts:
//   spreadsheet_server CLASS-ID LOG-FILE [BEHAVIOUR[=VALUE]…]
// Writes what is called to the log, a line each, and its process id first. Ends when nobody holds
// any of its objects, which it also writes, and after two minutes in any case. What it does like
// the real one, in its worse moments:
//   dies=CALL      ends when it is called so
//   hangs=CALL     never answers
//   busy=SECONDS   rejects every call for so long after its start, the first time it is started
//   stays=SECONDS  goes on for so long after nobody holds its objects
//   stopping       when it ran before, refuses the first one who wants it
//   foreign        shows itself with a workbook of the user's when one is added, and goes on
//
//   spreadsheet_server --without-desktop PROGRAM [ARGUMENT…]
// runs a program as a service does, where nobody sees windows. Answers with its status.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"
#include "platform/windows/windows_file_system.h"
#include "tests/automation/server/scripted_application.h"

// After the header of the system, which they need.
#include <objbase.h>
#include <shellapi.h>

namespace korvex {
namespace {

constexpr DWORD kLongestLife = 120'000;  // milliseconds
constexpr UINT kForeignLook = 2000;      // milliseconds until it looks whether it goes on alone

using Behaviours = std::map<std::string, std::string>;

// Lives as long as the program.
class ApplicationFactory : public IClassFactory {
 public:
  // `stops` refuses whoever wants one, as an application does that is just ending.
  ApplicationFactory(ScriptedApplication& application, bool stops)
      : application_(application), stops_(stops) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
    const bool is_known = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IClassFactory);
    *object = is_known ? this : nullptr;
    return is_known ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID id, void** object) override {
    if (stops_) {
      application_.program.log("stopping");
      // After the answer, which another thread sends.
      SetTimer(nullptr, 0, 500, [](HWND, UINT, UINT_PTR, DWORD) { PostQuitMessage(3); });
      return CO_E_SERVER_STOPPING;
    }
    ScriptedObject* const root = application_.Root();
    const HRESULT result = root->QueryInterface(id, object);
    root->Release();
    return result;
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

 private:
  ScriptedApplication& application_;
  const bool stops_;
};

// Rejects the calls to objects of the application until that time.
class BusyFilter : public IMessageFilter {
 public:
  explicit BusyFilter(DWORD milliseconds) : milliseconds_(milliseconds) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
    const bool is_known = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IMessageFilter);
    *object = is_known ? this : nullptr;
    return is_known ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  DWORD STDMETHODCALLTYPE HandleInComingCall(DWORD, HTASK, DWORD, INTERFACEINFO* call) override {
    const bool is_call = call != nullptr && IsEqualIID(call->iid, IID_IDispatch);
    return is_call && GetTickCount() - start_ < milliseconds_ ? SERVERCALL_RETRYLATER
                                                              : SERVERCALL_ISHANDLED;
  }
  DWORD STDMETHODCALLTYPE RetryRejectedCall(HTASK, DWORD, DWORD) override { return MAXDWORD; }
  DWORD STDMETHODCALLTYPE MessagePending(HTASK, DWORD, DWORD) override {
    return PENDINGMSG_WAITDEFPROCESS;
  }

 private:
  const DWORD milliseconds_;
  const DWORD start_ = GetTickCount();
};

std::string LastLine(const std::wstring& file) {
  std::ifstream input{std::filesystem::path(file)};
  std::string line, last;
  while (std::getline(input, line)) last = line;
  return last;
}

DWORD Milliseconds(const std::string& seconds) {
  return static_cast<DWORD>(std::atoi(seconds.c_str())) * 1000;
}

int Serve(const CLSID& id, const std::wstring& log_file, const Behaviours& behaviours) {
  const auto value = [&](const char* behaviour) {
    const auto found = behaviours.find(behaviour);
    return found == behaviours.end() ? std::string() : found->second;
  };
  const std::string last_line = LastLine(log_file);
  WindowsFileSystem files;
  ScriptedApplication application(files);
  std::FILE* const log = _wfopen(log_file.c_str(), L"ab");
  if (log == nullptr) return 1;
  application.program.log = [log](const std::string& call) {
    std::fprintf(log, "%s\n", call.c_str());
    std::fflush(log);
  };
  application.program.log(std::to_string(GetCurrentProcessId()));
  const auto wait_for_ever = [] { Sleep(INFINITE); };
  const bool dies = behaviours.contains("dies");
  application.program.dies_at = value(dies ? "dies" : "hangs");
  application.program.die = [=] {
    if (dies) TerminateProcess(GetCurrentProcess(), 3);
    wait_for_ever();
  };
  application.program.ask = [&, wait_for_ever](const std::string& question) {
    application.program.log("asks: " + question);
    wait_for_ever();
  };
  application.opens_foreign_workbook = behaviours.contains("foreign");
  // One that nobody sees, also without a display.
  const HWND window =
      CreateWindowExW(0, L"Message", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
  application.window = static_cast<int>(reinterpret_cast<INT_PTR>(window));
  bool goes_on = false;
  application.program.on_last_release = [&, thread = GetCurrentThreadId()] {
    goes_on = application.is_visible;
    Sleep(Milliseconds(value("stays")));
    PostThreadMessageW(thread, WM_QUIT, 0, 0);
  };
  BusyFilter filter(last_line.empty() ? Milliseconds(value("busy")) : 0);
  IMessageFilter* former = nullptr;
  CoRegisterMessageFilter(&filter, &former);

  const bool stops = behaviours.contains("stopping") && last_line == "ended";
  ApplicationFactory factory(application, stops);
  DWORD registration = 0;
  if (FAILED(CoRegisterClassObject(id, &factory, CLSCTX_LOCAL_SERVER, REGCLS_SINGLEUSE,
                                   &registration))) {
    return 1;
  }
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
  if (goes_on) {
    Sleep(kForeignLook);
    application.program.log("The user's workbook is still open.");
    Sleep(kLongestLife);
  }
  if (!stops) application.program.log("ended");
  std::fclose(log);
  return static_cast<int>(message.wParam);
}

// The command line behind the option, as it was quoted.
int RunWithoutDesktop(const wchar_t* command_line) {
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  const HWINSTA station = CreateWindowStationW(L"KorvexTest", 0, WINSTA_ALL_ACCESS, &inherited);
  if (station == nullptr || !SetProcessWindowStation(station)) return 4;
  if (CreateDesktopW(L"Default", nullptr, nullptr, 0, GENERIC_ALL, &inherited) == nullptr) return 5;
  std::wstring command(command_line);
  std::wstring desktop = L"KorvexTest\\Default";
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.lpDesktop = desktop.data();
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
  startup.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
  startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                      &startup, &process)) {
    return 6;
  }
  WaitForSingleObject(process.hProcess, INFINITE);
  DWORD status = 7;
  GetExitCodeProcess(process.hProcess, &status);
  return static_cast<int>(status);
}

}  // namespace
}  // namespace korvex

int main() {
  int count = 0;
  wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
  constexpr wchar_t kWithoutDesktop[] = L"--without-desktop ";
  const wchar_t* const option = std::wcsstr(GetCommandLineW(), kWithoutDesktop);
  if (option != nullptr) {
    return korvex::RunWithoutDesktop(option + std::size(kWithoutDesktop) - 1);
  }
  CLSID id;
  if (count < 3 || FAILED(CLSIDFromString(arguments[1], &id))) return 2;
  if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) return 1;
  korvex::Behaviours behaviours;
  // COM puts "-Embedding" at the end.
  for (int i = 3; i < count && arguments[i][0] != L'-'; ++i) {
    const std::string text = korvex::FromWide(arguments[i]);
    const std::size_t end = std::min(text.find('='), text.size());
    behaviours[text.substr(0, end)] = text.substr(std::min(end + 1, text.size()));
  }
  CloseHandle(CreateThread(
      nullptr, 0,
      [](void*) -> DWORD {
        Sleep(korvex::kLongestLife);
        TerminateProcess(GetCurrentProcess(), 2);
        return 0;
      },
      nullptr, 0, nullptr));
  const int status = korvex::Serve(id, arguments[2], behaviours);
  // Without ending COM, which can wait for its own threads without end here.
  TerminateProcess(GetCurrentProcess(), static_cast<UINT>(status));
}
