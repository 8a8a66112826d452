#include "platform/windows/mapi_mail.h"

#include <utility>

#include "platform/error.h"
#include "platform/windows/com_apartment.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"
#include "platform/windows/windows_desktop.h"
#include "platform/windows/windows_error.h"
#include "platform/windows/windows_file.h"
#include "platform/windows/windows_handle.h"

// After the header of the system, which it needs.
#include <mapi.h>

namespace korvex {
namespace {

void Check(ULONG result, const std::string& action) {
  if (result == SUCCESS_SUCCESS) return;
  throw Error(error_number::kDeviceIo, "Cannot " + action +
                                           ": The mail program answered with error " +
                                           std::to_string(result) + " of Simple MAPI.");
}

// A text of the registry, variables in it replaced; empty when there is none.
std::wstring RegistryText(HKEY root, const std::wstring& key, const wchar_t* name) {
  std::wstring text(32'768, L'\0');
  auto size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
  constexpr DWORD kTexts = RRF_RT_REG_SZ;  // expandable ones come as these
  const LSTATUS read = RegGetValueW(root, key.c_str(), name, kTexts, nullptr, text.data(), &size);
  return read == ERROR_SUCCESS ? std::wstring(text.c_str()) : std::wstring();
}

// The user's own choice, or else the machine's.
std::wstring ClientsText(const std::wstring& key, const wchar_t* name) {
  const std::wstring own = RegistryText(HKEY_CURRENT_USER, key, name);
  return own.empty() ? RegistryText(HKEY_LOCAL_MACHINE, key, name) : own;
}

template <class Value>
bool ReadAt(HANDLE file, LONG place, Value& value) {
  DWORD count = 0;
  return SetFilePointer(file, place, nullptr, FILE_BEGIN) != INVALID_SET_FILE_POINTER &&
         ReadFile(file, &value, sizeof value, &count, nullptr) && count == sizeof value;
}

// The processors that a program or library was built for; 0 when it is none.
WORD MachineOf(const std::wstring& image) {
  const Handle file(
      CreateFileW(image.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
  IMAGE_DOS_HEADER start;
  IMAGE_NT_HEADERS header;
  return file.IsOpen() && ReadAt(file.Get(), 0, start) &&
                 ReadAt(file.Get(), start.e_lfanew, header) &&
                 header.Signature == IMAGE_NT_SIGNATURE
             ? header.FileHeader.Machine
             : WORD{0};
}

// Whether a library can be loaded into this process.
bool IsOfOurKind(const std::wstring& library) {
  wchar_t path[MAX_PATH];
  wchar_t own[MAX_PATH];
  // A bare name is looked for where the system keeps its own.
  return SearchPathW(nullptr, library.c_str(), nullptr, MAX_PATH, path, nullptr) != 0 &&
         GetModuleFileNameW(nullptr, own, MAX_PATH) != 0 && MachineOf(path) == MachineOf(own);
}

}  // namespace

std::string MapiObstacle(const std::wstring& clients) {
  const std::string nothing = "Nothing is mailed: ";
  if (!HasDesktop()) {
    return nothing + "the program runs without a desktop, where nobody could answer a question.";
  }
  const std::wstring name = ClientsText(clients, nullptr);
  if (name.empty()) return nothing + "this machine has no mail program.";
  const std::string its_name = "the mail program \"" + FromWide(name) + "\" ";
  for (const wchar_t* value : {L"DLLPathEx", L"DLLPath"}) {
    const std::wstring library = ClientsText(clients + L"\\" + name, value);
    if (library.empty()) continue;
    if (IsOfOurKind(library)) return {};
    return nothing + its_name + "is not there, or was built for other processors.";
  }
  return nothing + its_name + "does not take messages from other programs.";
}

// The functions of Simple MAPI, and what one signing on gave. The library is never unloaded: a mail
// program may leave threads behind in it.
class MapiMail::Session {
 public:
  explicit Session(const std::string& library) {
    const HMODULE module = LoadLibraryW(ToWide(library).c_str());
    if (!module) throw Missing(library);
    Find(module, library, "MAPILogon", sign_on_);
    Find(module, library, "MAPILogoff", sign_off_);
    Find(module, library, "MAPIResolveName", resolve_);
    Find(module, library, "MAPISendMail", send_);
    Find(module, library, "MAPIFreeBuffer", free_);
    Check(sign_on_(0, nullptr, nullptr, 0, 0, &handle_), "sign on to the mail program");
    signed_on_ = true;
  }
  ~Session() {
    if (signed_on_) sign_off_(handle_, 0, 0, 0);
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  lpMapiRecipDesc Resolve(const std::string& name) {
    lpMapiRecipDesc recipient = nullptr;
    Check(resolve_(handle_, 0, ToSystemCodePage(name).data(), 0, 0, &recipient),
          "find the e-mail address " + name);
    return recipient;
  }
  void Send(MapiMessage& message) {
    Check(send_(handle_, 0, &message, 0, 0), "send the e-mail message");
  }
  void Free(void* buffer) { free_(buffer); }
  void SignOff() {
    // First, so that a failure is not tried a second time by the destructor.
    signed_on_ = false;
    Check(sign_off_(handle_, 0, 0, 0), "sign off from the mail program");
  }

 private:
  static Error Missing(const std::string& what) {
    return Error(error_number::kDeviceUnavailable,
                 "Cannot find a mail program (" + what + "): " + SystemText(GetLastError()) + ".");
  }

  template <class Function>
  static void Find(HMODULE module, const std::string& library, const char* name,
                   Function& function) {
    // By way of a function without arguments, which every function may be taken for.
    const auto address = reinterpret_cast<void (*)()>(GetProcAddress(module, name));
    if (!address) throw Missing(name + (" of " + library));
    function = reinterpret_cast<Function>(address);
  }

  ComApartment apartment_;  // mail programs are made of COM components
  LPMAPILOGON sign_on_ = nullptr;
  LPMAPILOGOFF sign_off_ = nullptr;
  LPMAPIRESOLVENAME resolve_ = nullptr;
  LPMAPISENDMAIL send_ = nullptr;
  LPMAPIFREEBUFFER free_ = nullptr;
  LHANDLE handle_ = 0;
  bool signed_on_ = false;
};

// What the mail program made of an address, in the mail program's memory.
class MapiMail::Recipient {
 public:
  Recipient(Session& session, const std::string& name)
      : session_(session), description_(session.Resolve(name)) {}
  ~Recipient() {
    if (description_) session_.Free(description_);
  }
  Recipient(const Recipient&) = delete;
  Recipient& operator=(const Recipient&) = delete;

  const MapiRecipDesc* Description() const { return description_; }

 private:
  Session& session_;
  lpMapiRecipDesc description_;
};

MapiMail::MapiMail(std::string library) : library_(std::move(library)) {}

MapiMail::~MapiMail() {
  resolved_.reset();
  session_.reset();
}

MapiMail::Session& MapiMail::SignedOn() const {
  if (session_) return *session_;
  throw Error(error_number::kDeviceUnavailable, "The mail program is not signed on to.");
}

void MapiMail::SignOn() {
  resolved_.reset();
  session_.reset();
  session_ = std::make_unique<Session>(library_);
}

void MapiMail::Compose() {
  SignedOn();
  subject_.clear();
  text_.clear();
  SetPrimaryRecipient("");
}

void MapiMail::SetPrimaryRecipient(const std::string& address) {
  resolved_.reset();
  recipient_ = address;
}

void MapiMail::ResolveName() {
  CheckMailAddress(recipient_);
  resolved_ = std::make_unique<Recipient>(SignedOn(), recipient_);
}

void MapiMail::Send() {
  // Without a session the mail program would sign on by itself, with a dialog perhaps.
  Session& session = SignedOn();
  CheckMailAddress(recipient_);
  std::string name = ToSystemCodePage(recipient_);
  std::string subject = ToSystemCodePage(subject_);
  std::string text = ToSystemCodePage(text_);
  MapiRecipDesc recipient{};
  recipient.lpszName = name.data();
  // A copy, so that the class set below does not change what belongs to the mail program.
  if (resolved_ && resolved_->Description()) recipient = *resolved_->Description();
  // The mail program leaves open what a resolved name is for: it could be a sender as well.
  recipient.ulRecipClass = MAPI_TO;
  MapiMessage message{};
  message.lpszSubject = subject.data();
  message.lpszNoteText = text.data();
  message.nRecipCount = 1;
  message.lpRecips = &recipient;
  session.Send(message);
}

void MapiMail::SignOff() {
  resolved_.reset();
  if (const std::unique_ptr<Session> session = std::move(session_)) session->SignOff();
}

}  // namespace korvex
