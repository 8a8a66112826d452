// E-mail through Simple MAPI, the interface of the user's mail program, which is loaded when it is
// first needed. On a machine without one every step fails, and nothing is sent.
//
// Simple MAPI takes texts in the code page of the machine: a character that it lacks becomes one
// that looks like it, or "?".
#pragma once

#include <memory>
#include <string>

#include "platform/desktop.h"

namespace korvex {

// Why no mail program is to be called at all; empty when one is. Without a registered one, or with
// one that was built for other processors, the system would show a box; without a desktop nobody
// could answer what the mail program asks. `clients` is the key of the registry that has them.
std::string MapiObstacle(const std::wstring& clients = L"Software\\Clients\\Mail");

class MapiMail : public Mail {
 public:
  explicit MapiMail(std::string library = "MAPI32.DLL");
  ~MapiMail() override;

  // By the user's own profile, without a dialog, since the user may be away. Error 68 when
  // there is no mail program, 57 when it refuses.
  void SignOn() override;
  void Compose() override;
  void SetSubject(const std::string& subject) override { subject_ = subject; }
  void SetNoteText(const std::string& text) override { text_ = text; }
  void SetPrimaryRecipient(const std::string& address) override;
  // Asks the mail program for the one recipient that an address means. Error 5 for an address that
  // is empty or not one line, 57 when the mail program knows none or several.
  void ResolveName() override;
  // Error 57 when the message is refused. A name that is not resolved yet is left to the mail
  // program.
  void Send() override;
  void SignOff() override;

 private:
  class Session;
  class Recipient;

  // Error 68 without a session.
  Session& SignedOn() const;

  std::string library_;
  std::unique_ptr<Session> session_;
  std::unique_ptr<Recipient> resolved_;  // of this session
  std::string subject_;
  std::string text_;
  std::string recipient_;
};

}  // namespace korvex
