#include "engine/refusal_recorder.h"

namespace korvex {

RefusalRecorder::RefusalRecorder(const Services& services, RunRecord& record,
                                 const FindingPlace& place)
    : services_(services), shown_(*services.dialogs), record_(record), place_(place) {
  // A copy is changed: the services that were installed stay as they are.
  services_.dialogs = this;
  if (record.options.check) services_.mail = this;
}

BoxAnswer RefusalRecorder::ShowPlain(const PlainMessage& message) {
  // What gives a choice is a question, not a refusal.
  if (message.buttons != BoxButtons::kOk) return shown_.ShowPlain(message);
  record_.AddProblem({message.text, message.cause, place_});
  return record_.options.check ? BoxAnswer::kOk : shown_.ShowPlain(message);
}

std::string RefusalRecorder::ShowButtons(const ButtonMessage& message) {
  if (message.buttons.size() != 1) return shown_.ShowButtons(message);
  record_.AddProblem({message.prompt, message.cause, place_});
  return record_.options.check ? message.buttons.front() : shown_.ShowButtons(message);
}

std::string RefusalRecorder::BrowseForFolder(void* owner, const std::string& prompt) {
  return shown_.BrowseForFolder(owner, prompt);
}

std::string RefusalRecorder::BrowseNetwork(void* owner, const std::string& title) {
  return shown_.BrowseNetwork(owner, title);
}

}  // namespace korvex
