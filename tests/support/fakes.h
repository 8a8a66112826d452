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

#include "errors/clsAppLog.h"
#include "platform/desktop.h"
#include "platform/dialogs.h"
#include "platform/error.h"
#include "platform/services.h"
#include "platform/settings_store.h"
#include "tests/support/memory_file_system.h"
#include "text/text.h"

namespace korvex {

struct FakeSettingsStore : SettingsStore {
  using Name = std::pair<std::string, std::string>;  // section and key, in upper case

  std::optional<std::string> Get(std::string_view section, std::string_view key) override {
    const auto found = values.find(NameOf(section, key));
    return found == values.end() ? std::nullopt : std::optional(found->second);
  }
  void Save(std::string_view section, std::string_view key, std::string_view value) override {
    values[NameOf(section, key)] = value;
  }
  void Delete(std::string_view section, std::string_view key) override {
    if (values.erase(NameOf(section, key)) == 0) throw Error(error_number::kInvalidCall);
  }
  Name NameOf(std::string_view section, std::string_view key) const {
    if (failure != 0) throw Error(failure);
    return {UpperCase(section), UpperCase(key)};
  }

  std::map<Name, std::string> values;
  int failure = 0;  // of every call unless 0
};

// Answers from the queues, the oldest first; without any OK, the first caption, and no folder.
class RecordingDialogs : public Dialogs {
 public:
  BoxAnswer ShowPlain(const PlainMessage& message) override {
    plain.push_back(message);
    Record(message.text);
    return Next(plain_answers, BoxAnswer::kOk);
  }
  std::string ShowButtons(const ButtonMessage& message) override {
    buttons.push_back(message);
    Record(message.prompt);
    return Next(button_answers, message.buttons.at(0));
  }
  std::string BrowseForFolder(void*, const std::string&) override {
    return Next(folder_answers, std::string());
  }
  std::string BrowseNetwork(void*, const std::string&) override {
    return Next(folder_answers, std::string());
  }

  std::vector<PlainMessage> plain;
  std::vector<ButtonMessage> buttons;
  std::vector<std::string> texts;  // of every message of either kind, in order
  std::deque<BoxAnswer> plain_answers;
  std::deque<std::string> button_answers;
  std::deque<std::string> folder_answers;
  int failure = 0;  // raised by every message, once recorded, unless 0

 private:
  void Record(const std::string& text) {
    texts.push_back(text);
    if (failure != 0) throw Error(failure);
  }
  template <class Answer>
  static Answer Next(std::deque<Answer>& answers, Answer otherwise) {
    if (answers.empty()) return otherwise;
    Answer answer = std::move(answers.front());
    answers.pop_front();
    return answer;
  }
};

// Records a step as its name, followed by ": " and its argument when it has one.
class FakeMail : public Mail {
 public:
  std::string Obstacle() const override { return obstacle; }
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
  std::string obstacle;
  std::set<std::string> failing;  // names of the steps that raise an error, once recorded

 private:
  void Step(const std::string& name, const std::string& argument = {}) {
    steps.push_back(argument.empty() ? name : name + ": " + argument);
    if (failing.contains(name)) throw Error(error_number::kDeviceUnavailable);
  }
};

struct FakeShell : Shell {
  void Open(const std::string& file) override { opened.push_back(file); }
  void OpenInTextEditor(const std::string& file) override { edited.push_back(file); }
  std::string EnvironmentVariable(const std::string& name) const override {
    return environment.contains(name) ? environment.at(name) : std::string();
  }

  std::vector<std::string> opened;
  std::vector<std::string> edited;
  std::map<std::string, std::string> environment;
};

struct FakeSound : Sound {
  void Beep() override { played.push_back("beep"); }
  void PlayAlias(const std::string& alias) override { played.push_back("alias " + alias); }

  std::vector<std::string> played;
};

struct FakeMessageLoop : MessageLoop {
  void Yield() override {
    if (on_yield) on_yield();
  }

  std::function<void()> on_yield;
};

// It is always the fifth of March 2004, 14:07:09.
struct FakeClock : Clock {
  std::tm Now() const override {
    std::tm now{};
    now.tm_year = 104, now.tm_mon = 2, now.tm_mday = 5;
    now.tm_hour = 14, now.tm_min = 7, now.tm_sec = 9;
    return now;
  }
};

struct FakeMainWindow : MainWindow {
  std::string ProcessingFolder() const override { return processing_folder; }

  std::string processing_folder;
};

// Owns one fake of each service and installs them for its own lifetime. The program lies in
// "C:\KORVEX\bin" or "/opt/korvex/bin", which exists; there is no spreadsheet until one is set.
class TestPlatform {
 public:
  explicit TestPlatform(PathStyle style = PathStyle::kLinux) : files(style) {
    services_.cache_folder =
        style == PathStyle::kWindows ? "C:\\Users\\user\\KORVEX" : "/home/user/.cache/korvex";
    services_.documents_folder =
        style == PathStyle::kWindows ? "C:\\Users\\user\\Documents" : "/home/user/Documents";
    SetProgramFolder(style == PathStyle::kWindows ? "C:\\KORVEX\\bin" : "/opt/korvex/bin");
    files.AddFolder(services_.program_folder);
  }
  // The log outlives every test; it must not keep a file of this one's file system.
  ~TestPlatform() { AppLog().CloseFile(); }
  TestPlatform(const TestPlatform&) = delete;
  TestPlatform& operator=(const TestPlatform&) = delete;

  void SetProgramFolder(const std::string& folder) {
    services_.program_folder = folder;
    Install();
  }
  void SetSpreadsheet(SpreadsheetProgram* spreadsheet) {
    services_.spreadsheet = spreadsheet;
    Install();
  }

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
  void Install() {
    installed_.reset();
    installed_.emplace(services_);
  }

  Services services_{.settings = &settings,
                     .files = &files,
                     .mail = &mail,
                     .shell = &shell,
                     .sound = &sound,
                     .dialogs = &dialogs,
                     .message_loop = &message_loop,
                     .clock = &clock,
                     .main_window = &main_window,
                     .program_folder = {}};
  std::optional<InstalledServices> installed_;
};

}  // namespace korvex
