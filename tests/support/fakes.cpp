#include "tests/support/fakes.h"

#include "errors/clsAppLog.h"
#include "platform/error.h"
#include "util/text.h"

namespace korvex {
namespace {

std::pair<std::string, std::string> StoreKey(std::string_view section, std::string_view key) {
  return {UpperCase(section), UpperCase(key)};
}

template <class Answer>
Answer NextAnswer(std::deque<Answer>& answers, Answer otherwise) {
  if (answers.empty()) return otherwise;
  Answer answer = std::move(answers.front());
  answers.pop_front();
  return answer;
}

void RaiseUnlessZero(int number) {
  if (number != 0) throw Error(number);
}

}  // namespace

std::optional<std::string> FakeSettingsStore::Get(std::string_view section, std::string_view key) {
  RaiseUnlessZero(failure);
  const auto found = values_.find(StoreKey(section, key));
  if (found == values_.end()) return std::nullopt;
  return found->second;
}

void FakeSettingsStore::Save(std::string_view section, std::string_view key,
                             std::string_view value) {
  RaiseUnlessZero(failure);
  values_[StoreKey(section, key)] = value;
}

void FakeSettingsStore::Delete(std::string_view section, std::string_view key) {
  deletes.emplace_back(section, key);
  RaiseUnlessZero(failure);
  if (values_.erase(StoreKey(section, key)) == 0) throw Error(error_number::kInvalidCall);
}

BoxAnswer RecordingDialogs::ShowPlain(const PlainMessage& message) {
  plain.push_back(message);
  texts.push_back(message.text);
  RaiseUnlessZero(failure);
  return NextAnswer(plain_answers, BoxAnswer::kOk);
}

std::string RecordingDialogs::ShowButtons(const ButtonMessage& message) {
  buttons.push_back(message);
  texts.push_back(message.prompt);
  RaiseUnlessZero(failure);
  return NextAnswer(button_answers, message.buttons.at(0));
}

std::string RecordingDialogs::BrowseForFolder(void*, const std::string& prompt) {
  browse_prompts.push_back(prompt);
  RaiseUnlessZero(failure);
  return NextAnswer(folder_answers, std::string());
}

std::string RecordingDialogs::BrowseNetwork(void* owner, const std::string& title) {
  return BrowseForFolder(owner, title);
}

void FakeMail::Step(const std::string& name) {
  steps.push_back(name);
  if (failing.contains(name)) throw Error(error_number::kDeviceUnavailable);
}

void FakeMail::Step(const std::string& name, const std::string& argument) {
  steps.push_back(name + ": " + argument);
  if (failing.contains(name)) throw Error(error_number::kDeviceUnavailable);
}

std::string FakeShell::EnvironmentVariable(const std::string& name) const {
  const auto found = environment.find(name);
  return found == environment.end() ? std::string() : found->second;
}

void FakeMessageLoop::Yield() {
  ++yields;
  if (on_yield) on_yield();
}

void FakeClock::Set(int year, int month, int day, int hour, int minute, int second) {
  now_ = {};
  now_.tm_year = year - 1900;
  now_.tm_mon = month - 1;
  now_.tm_mday = day;
  now_.tm_hour = hour;
  now_.tm_min = minute;
  now_.tm_sec = second;
}

TestPlatform::TestPlatform(PathStyle style) : files(style) {
  services_.settings = &settings;
  services_.files = &files;
  services_.mail = &mail;
  services_.shell = &shell;
  services_.sound = &sound;
  services_.dialogs = &dialogs;
  services_.message_loop = &message_loop;
  services_.clock = &clock;
  services_.main_window = &main_window;
  services_.program_folder = style == PathStyle::kWindows ? "C:\\KORVEX\\bin" : "/opt/korvex/bin";
  files.AddFolder(services_.program_folder);
  Install();
}

// The log outlives every test; it must not keep a file of this one's file system.
TestPlatform::~TestPlatform() {
  AppLog().CloseFile();
}

void TestPlatform::SetProgramFolder(const std::string& folder) {
  services_.program_folder = folder;
  Install();
}

void TestPlatform::SetSpreadsheet(SpreadsheetProgram* spreadsheet) {
  services_.spreadsheet = spreadsheet;
  Install();
}

void TestPlatform::Install() {
  installed_.reset();
  installed_.emplace(services_);
}

}  // namespace korvex
