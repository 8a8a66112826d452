#include "platform/background_mail.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <utility>

#include "platform/error.h"

namespace korvex {
namespace {

// A run whose every file fails reports each. What a mail program that hangs has not taken of so
// many will not be missed: the error log has them all.
constexpr std::size_t kMostWaiting = 100;

}  // namespace

struct BackgroundMail::Desk {
  std::function<std::unique_ptr<Mail>()> make;
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<std::vector<Step>> messages;
  bool is_closed = false;  // no more messages will come
  bool is_done = false;    // the thread has ended its work
};

BackgroundMail::BackgroundMail(std::function<std::unique_ptr<Mail>()> make,
                               std::function<std::string()> obstacle,
                               std::chrono::milliseconds patience)
    : desk_(std::make_shared<Desk>()), obstacle_(std::move(obstacle)), patience_(patience) {
  desk_->make = std::move(make);
}

BackgroundMail::~BackgroundMail() {
  if (!thread_.joinable()) return;
  std::unique_lock lock(desk_->mutex);
  desk_->is_closed = true;
  desk_->changed.notify_all();
  const bool is_done = desk_->changed.wait_for(lock, patience_, [&] { return desk_->is_done; });
  lock.unlock();
  if (is_done) {
    thread_.join();
  } else {
    thread_.detach();  // it ends with the process, at the latest
  }
}

void BackgroundMail::Compose() {
  message_.emplace_back([](Mail& mail) { mail.Compose(); });
}

void BackgroundMail::SetSubject(const std::string& subject) {
  message_.emplace_back([subject](Mail& mail) { mail.SetSubject(subject); });
}

void BackgroundMail::SetNoteText(const std::string& text) {
  message_.emplace_back([text](Mail& mail) { mail.SetNoteText(text); });
}

void BackgroundMail::SetPrimaryRecipient(const std::string& address) {
  message_.emplace_back([address](Mail& mail) { mail.SetPrimaryRecipient(address); });
}

void BackgroundMail::ResolveName() {
  message_.emplace_back([](Mail& mail) { mail.ResolveName(); });
}

void BackgroundMail::Send() {
  message_.emplace_back([](Mail& mail) { mail.Send(); });
}

void BackgroundMail::SignOff() {
  {
    const std::lock_guard lock(desk_->mutex);
    if (desk_->messages.size() == kMostWaiting) return;
    desk_->messages.push_back(std::exchange(message_, {}));
  }
  desk_->changed.notify_all();
  if (!thread_.joinable()) thread_ = std::thread([desk = desk_] { Work(*desk); });
}

void BackgroundMail::Work(Desk& desk) {
  std::unique_ptr<Mail> mail = desk.make();
  std::unique_lock lock(desk.mutex);
  for (;;) {
    desk.changed.wait(lock, [&] { return desk.is_closed || !desk.messages.empty(); });
    if (desk.messages.empty()) break;
    const std::vector<Step> message = std::move(desk.messages.front());
    desk.messages.pop_front();
    lock.unlock();
    // All steps, whatever fails: signing off frees what the others took.
    Attempt([&] { mail->SignOn(); });
    for (const Step& step : message) Attempt([&] { step(*mail); });
    Attempt([&] { mail->SignOff(); });
    lock.lock();
  }
  lock.unlock();
  mail.reset();
  lock.lock();
  desk.is_done = true;
  desk.changed.notify_all();
}

}  // namespace korvex
