// Stand-ins for the platform services, and the set of them that a test installs.
#pragma once

#include <ctime>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/clock.h"
#include "platform/dialogs.h"
#include "platform/mail.h"
#include "platform/main_window.h"
#include "platform/message_loop.h"
#include "platform/services.h"
#include "platform/settings_store.h"
#include "platform/shell.h"
#include "platform/sound.h"
#include "tests/support/memory_file_system.h"

namespace korvex {

class FakeSettingsStore : public SettingsStore {
 public:
  std::optional<std::string> Get(std::string_view section, std::string_view key) override;
  void Save(std::string_view section, std::string_view key, std::string_view value) override;
  void Delete(std::string_view section, std::string_view key) override;

  std::vector<std::pair<std::string, std::string>> deletes;  // section and key, as asked for
  int failure = 0;                                           // raised by every call unless 0

 private:
  std::map<std::pair<std::string, std::string>, std::string> values_;
};

// Answers from the queues, the oldest first; without any OK, the first caption, and no folder.
class RecordingDialogs : public Dialogs {
 public:
  BoxAnswer ShowPlain(const PlainMessage& message) override;
  std::string ShowButtons(const ButtonMessage& message) override;
  std::string BrowseForFolder(void* owner, const std::string& prompt) override;
  std::string BrowseNetwork(void* owner, const std::string& title) override;

  std::vector<PlainMessage> plain;
  std::vector<ButtonMessage> buttons;
  std::vector<std::string> texts;  // of every message of either kind, in order
  std::vector<std::string> browse_prompts;
  std::deque<BoxAnswer> plain_answers;
  std::deque<std::string> button_answers;
  std::deque<std::string> folder_answers;
  int failure = 0;  // raised by every call, once recorded, unless 0
};

// Records a step as its name, followed by ": " and its argument when it has one.
class FakeMail : public Mail {
 public:
  void SignOn() override { Step("SignOn"); }
  void Compose() override { Step("Compose"); }
  void SetSubject(const std::string& subject) override { Step("SetSubject", subject); }
  void SetNoteText(const std::string& text) override { Step("SetNoteText", text); }
  void SetPrimaryRecipient(const std::string& address) override {
    Step("SetPrimaryRecipient", address);
  }
  void ResolveName() override { Step("ResolveName"); }
  void Send() override { Step("Send"); }
  void SignOff() override { Step("SignOff"); }

  std::vector<std::string> steps;
  std::set<std::string> failing;  // names of the steps that raise an error, once recorded

 private:
  void Step(const std::string& name);
  void Step(const std::string& name, const std::string& argument);
};

class FakeShell : public Shell {
 public:
  void Open(const std::string& file) override { opened.push_back(file); }
  void OpenInTextEditor(const std::string& file) override { edited.push_back(file); }
  std::string EnvironmentVariable(const std::string& name) const override;

  std::vector<std::string> opened;
  std::vector<std::string> edited;
  std::map<std::string, std::string> environment;
};

class FakeSound : public Sound {
 public:
  void Beep() override { played.push_back("beep"); }
  void PlayAlias(const std::string& alias) override { played.push_back("alias " + alias); }

  std::vector<std::string> played;
};

class FakeMessageLoop : public MessageLoop {
 public:
  void Yield() override;

  std::function<void()> on_yield;
  int yields = 0;
};

class FakeClock : public Clock {
 public:
  FakeClock() { Set(2004, 3, 5, 14, 7, 9); }

  std::tm Now() const override { return now_; }
  void Set(int year, int month, int day, int hour, int minute, int second);

 private:
  std::tm now_ = {};
};

class FakeMainWindow : public MainWindow {
 public:
  std::string ProcessingFolder() const override { return processing_folder; }

  std::string processing_folder;
};

// Owns one fake of each service and installs them for its own lifetime. The program lies in
// "C:\KORVEX\bin" or "/opt/korvex/bin", which exists; there is no spreadsheet until one is set.
struct TestPlatform {
  explicit TestPlatform(PathStyle style = PathStyle::kLinux);
  ~TestPlatform();
  TestPlatform(const TestPlatform&) = delete;
  TestPlatform& operator=(const TestPlatform&) = delete;

  void SetProgramFolder(const std::string& folder);
  void SetSpreadsheet(SpreadsheetProgram* spreadsheet);

  MemoryFileSystem files;
  FakeSettingsStore settings;
  RecordingDialogs dialogs;
  FakeMail mail;
  FakeShell shell;
  FakeSound sound;
  FakeMessageLoop message_loop;
  FakeClock clock;
  FakeMainWindow main_window;

 private:
  void Install();

  Services services_;
  std::optional<InstalledServices> installed_;
};

}  // namespace korvex
