// Takes down what a run tells the user when it refuses something, on its way to the dialogs.
#pragma once

#include <string>
#include <vector>

#include "engine/run_record.h"
#include "platform/desktop.h"
#include "platform/dialogs.h"
#include "platform/services.h"

namespace korvex {

// The services that were installed, but with dialogs that record every message without a choice.
// A check shows none of them and mails nobody; questions are always asked.
class RefusalRecorder : private Dialogs, private Mail {
 public:
  // The services, `record` and `place` (what the run works on now) must outlive the recorder.
  RefusalRecorder(const Services& services, RunRecord& record, const FindingPlace& place);

  // To be installed while the run is on the stack. The reference lasts as long as the recorder.
  const Services& Recording() const { return services_; }

 private:
  // A message with one button is taken down; in a check that button is its answer at once.
  BoxAnswer ShowPlain(const PlainMessage& message) override;
  std::string ShowButtons(const ButtonMessage& message) override;
  std::string BrowseForFolder(void* owner, const std::string& prompt) override;
  std::string BrowseNetwork(void* owner, const std::string& title) override;

  // The mail of a check, which is never sent.
  void SignOn() override {}
  void Compose() override {}
  void SetSubject(const std::string&) override {}
  void SetNoteText(const std::string&) override {}
  void SetPrimaryRecipient(const std::string&) override {}
  void ResolveName() override {}
  void Send() override {}
  void SignOff() override {}

  Services services_;
  Dialogs& shown_;
  RunRecord& record_;
  const FindingPlace& place_;
};

}  // namespace korvex
