// One error message by e-mail, in the steps of Simple MAPI. Every step can fail on its own; the
// caller goes on with the next one. Texts are UTF-8.
#pragma once

#include <string>

namespace korvex {

class Mail {
 public:
  virtual ~Mail() = default;

  virtual void SignOn() = 0;
  virtual void Compose() = 0;  // starts an empty message in the session signed on
  virtual void SetSubject(const std::string& subject) = 0;
  virtual void SetNoteText(const std::string& text) = 0;
  virtual void SetPrimaryRecipient(const std::string& address) = 0;
  virtual void ResolveName() = 0;
  virtual void Send() = 0;  // without a dialog
  virtual void SignOff() = 0;
};

}  // namespace korvex
