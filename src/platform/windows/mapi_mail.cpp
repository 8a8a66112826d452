#include "platform/windows/mapi_mail.h"

#include <utility>

#include "platform/code_page_converter.h"
#include "platform/error.h"
#include "platform/windows/com_apartment.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"
#include "platform/windows/windows_error.h"

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

}  // namespace

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
