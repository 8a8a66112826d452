#include "platform/background_mail.h"

#include <gmock/gmock.h>

#include <future>
#include <memory>
#include <thread>
#include <utility>

#include "tests/support/fakes.h"

namespace korvex {
namespace {

using std::chrono_literals::operator""ms;

void SendOne(Mail& mail, const std::string& subject) {
  mail.SignOn();
  mail.Compose();
  mail.SetSubject(subject);
  mail.SetNoteText("text");
  mail.SetPrimaryRecipient("lab");
  mail.ResolveName();
  mail.Send();
  mail.SignOff();
}

// Records into a list that outlives it, since the thread's mail ends with the thread.
struct WatchedMail : FakeMail {
  explicit WatchedMail(std::vector<std::string>& kept) : kept_(kept) { failing = {"Compose"}; }
  ~WatchedMail() override { kept_ = steps; }

  std::vector<std::string>& kept_;
};

TEST(BackgroundMail, SendsEveryMessageWholeBeforeItEnds) {
  std::vector<std::string> steps;
  {
    BackgroundMail mail([&] { return std::make_unique<WatchedMail>(steps); });
    mail.SetSubject("of a message that was given up");
    SendOne(mail, "first");
    SendOne(mail, "second");
  }
  const auto said = [](const char* subject) {
    return std::vector<std::string>{"SignOn",
                                    "Compose",
                                    std::string("SetSubject: ") + subject,
                                    "SetNoteText: text",
                                    "SetPrimaryRecipient: lab",
                                    "ResolveName",
                                    "Send",
                                    "SignOff"};
  };
  std::vector<std::string> expected = said("first");
  for (const std::string& step : said("second")) expected.push_back(step);
  EXPECT_EQ(steps, expected);
}

// A mail program that does not answer the first message until it is let go.
struct HangingMail : FakeMail {
  struct Signals {
    std::promise<void> called, let_go;
  };
  explicit HangingMail(std::shared_ptr<Signals> signals) : signals_(std::move(signals)) {}
  void Compose() override {
    if (std::exchange(has_hung_, true)) return;
    signals_->called.set_value();
    signals_->let_go.get_future().wait();
  }

  std::shared_ptr<Signals> signals_;
  bool has_hung_ = false;
};

TEST(BackgroundMail, IsNotHeldUpByAMailProgramThatHangs) {
  const auto signals = std::make_shared<HangingMail::Signals>();
  std::promise<void> ended;
  auto mail = std::make_unique<BackgroundMail>(
      [signals] { return std::make_unique<HangingMail>(signals); }, nullptr, 20ms);
  SendOne(*mail, "hangs");
  signals->called.get_future().wait();
  SendOne(*mail, "waits");
  std::thread leaving([&] {
    mail.reset();
    ended.set_value();
  });
  EXPECT_EQ(ended.get_future().wait_for(std::chrono::seconds(60)), std::future_status::ready);
  signals->let_go.set_value();
  leaving.join();
}

}  // namespace
}  // namespace korvex
