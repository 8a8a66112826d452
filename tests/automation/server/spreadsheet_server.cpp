// The scripted spreadsheet application as a program of its own, which COM starts:
//   spreadsheet_server CLASS-ID LOG-FILE [CALL-TO-DIE-AT]
// Writes what is called to the log, a line each, and its process id first. Ends when nobody holds
// any of its objects, and after a minute in any case.

#include <cstdio>
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

constexpr UINT kLongestLife = 60'000;  // milliseconds

// Lives as long as the program.
class ApplicationFactory : public IClassFactory {
 public:
  explicit ApplicationFactory(ScriptedApplication& application) : application_(application) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
    const bool is_known = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IClassFactory);
    *object = is_known ? this : nullptr;
    return is_known ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID id, void** object) override {
    ScriptedObject* const root = application_.Root();
    const HRESULT result = root->QueryInterface(id, object);
    root->Release();
    return result;
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

 private:
  ScriptedApplication& application_;
};

int Serve(const CLSID& id, const std::wstring& log_file, const std::string& dies_at) {
  WindowsFileSystem files;
  ScriptedApplication application(files);
  std::FILE* const log = _wfopen(log_file.c_str(), L"ab");
  if (log == nullptr) return 1;
  application.program.log = [log](const std::string& call) {
    std::fprintf(log, "%s\n", call.c_str());
    std::fflush(log);
  };
  application.program.log(std::to_string(GetCurrentProcessId()));
  application.program.dies_at = dies_at;
  application.program.die = [] { TerminateProcess(GetCurrentProcess(), 3); };
  application.program.on_last_release = [thread = GetCurrentThreadId()] {
    PostThreadMessageW(thread, WM_QUIT, 0, 0);
  };

  ApplicationFactory factory(application);
  DWORD registration = 0;
  if (FAILED(CoRegisterClassObject(id, &factory, CLSCTX_LOCAL_SERVER, REGCLS_SINGLEUSE,
                                   &registration))) {
    return 1;
  }
  SetTimer(nullptr, 0, kLongestLife, [](HWND, UINT, UINT_PTR, DWORD) { PostQuitMessage(2); });
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
  std::fclose(log);
  return static_cast<int>(message.wParam);
}

}  // namespace
}  // namespace korvex

int main() {
  int count = 0;
  wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
  CLSID id;
  if (count < 3 || FAILED(CLSIDFromString(arguments[1], &id))) return 2;
  if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) return 1;
  // COM puts "-Embedding" at the end.
  const bool dies = count > 3 && arguments[3][0] != L'-';
  const int status =
      korvex::Serve(id, arguments[2], dies ? korvex::FromWide(arguments[3]) : std::string());
  // Without ending COM, which can wait for its own threads without end here.
  TerminateProcess(GetCurrentProcess(), static_cast<UINT>(status));
}
