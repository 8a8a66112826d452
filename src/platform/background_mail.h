// Mail by a thread of its own, so that a mail program that is slow, or hangs, holds up neither the
// window nor a run. Messages go out one after the other; what fails is told to nobody, since nobody
// waits for it.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/desktop.h"

namespace korvex {

class BackgroundMail : public Mail {
 public:
  // `make` makes the mail that does the work. It is called on the thread, since a mail program may
  // belong to the thread that speaks to it first. `obstacle` is asked on the caller's thread.
  explicit BackgroundMail(std::function<std::unique_ptr<Mail>()> make,
                          std::function<std::string()> obstacle = {},
                          std::chrono::milliseconds patience = std::chrono::seconds(10));
  // Waits for what is under way, for `patience` at most. What is not sent by then is lost, unless
  // the process goes on long enough.
  ~BackgroundMail() override;
  BackgroundMail(const BackgroundMail&) = delete;
  BackgroundMail& operator=(const BackgroundMail&) = delete;

  std::string Obstacle() const override { return obstacle_ ? obstacle_() : std::string(); }
  // A message is handed on as a whole, when its session is signed off.
  void SignOn() override { message_.clear(); }
  void Compose() override;
  void SetSubject(const std::string& subject) override;
  void SetNoteText(const std::string& text) override;
  void SetPrimaryRecipient(const std::string& address) override;
  void ResolveName() override;
  void Send() override;
  void SignOff() override;

 private:
  using Step = std::function<void(Mail&)>;
  struct Desk;  // where messages wait; shared with the thread, which may live on

  static void Work(Desk& desk);

  std::vector<Step> message_;  // that is being composed
  std::shared_ptr<Desk> desk_;
  std::function<std::string()> obstacle_;
  std::chrono::milliseconds patience_;
  std::thread thread_;  // from the first message on
};

}  // namespace korvex
