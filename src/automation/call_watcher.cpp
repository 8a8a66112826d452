#include "automation/call_watcher.h"

#include <utility>

namespace korvex {
namespace {

constexpr DWORD kInterval = 200;  // milliseconds between two looks

// Some systems have only one of them, and then neither is of use.
struct Cancellation {
  HRESULT(WINAPI* enable)(void* reserved) = nullptr;
  HRESULT(WINAPI* cancel)(DWORD thread, ULONG seconds) = nullptr;

  Cancellation() {
    const HMODULE com = GetModuleHandleW(L"ole32.dll");
    if (com == nullptr) return;
    Load(com, "CoEnableCallCancellation", enable);
    Load(com, "CoCancelCall", cancel);
  }
  bool IsThere() const { return enable != nullptr && cancel != nullptr; }

 private:
  template <class Function>
  static void Load(HMODULE com, const char* name, Function& function) {
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(com, name)));
  }
};

}  // namespace

CallWatcher::CallWatcher(std::function<bool()> stop_is_asked) {
  const Cancellation com;
  if (!stop_is_asked || !com.IsThere() || FAILED(com.enable(nullptr))) return;
  end_ = Handle(CreateEventW(nullptr, TRUE, FALSE, nullptr));
  if (!end_.IsOpen()) return;
  const DWORD calling_thread = GetCurrentThreadId();
  watch_ = std::make_unique<CallWatch>(
      std::move(stop_is_asked),
      [cancel = com.cancel, calling_thread] { cancel(calling_thread, 0); });
  thread_ = std::thread([this] {
    while (WaitForSingleObject(end_.Get(), kInterval) == WAIT_TIMEOUT) watch_->Look();
  });
}

CallWatcher::~CallWatcher() {
  if (!thread_.joinable()) return;
  SetEvent(end_.Get());
  thread_.join();
}

}  // namespace korvex
