// E-mail through the sendmail interface that every mail system of Linux offers: "sendmail -t -i"
// with the message on standard input. On a machine without it nothing is sent and nothing fails.
//
// The sender's address is left to sendmail. A subject cannot smuggle in further header lines; an
// address that tries to is refused with error 5.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

#include "platform/desktop.h"

namespace korvex {

class SendmailMail : public Mail {
 public:
  // `patience` is how long Send waits for sendmail to take the message; a slower one goes on by
  // itself.
  explicit SendmailMail(std::chrono::milliseconds patience = std::chrono::seconds(10))
      : patience_(patience) {}

  void SignOn() override;
  void Compose() override;
  void SetSubject(const std::string& subject) override { subject_ = subject; }
  void SetNoteText(const std::string& text) override { text_ = text; }
  void SetPrimaryRecipient(const std::string& address) override { recipient_ = address; }
  void ResolveName() override;
  // Error 57 when sendmail cannot be started or refuses the message.
  void Send() override;
  void SignOff() override { program_.clear(); }

 private:
  // Collects the exit status of slow programs that have ended meanwhile.
  void ForgetEnded();
  // Headers and text, with LF as line end.
  std::string Message() const;

  std::chrono::milliseconds patience_;
  std::string program_;  // empty: not signed on, or no sendmail here
  std::string subject_;
  std::string text_;
  std::string recipient_;
  // Programs that took longer than the patience.
  std::vector<pid_t> unfinished_;
};

}  // namespace korvex
