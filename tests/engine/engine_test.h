// What tests of the engine share: a campaign, and what a run on it tells.
#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "engine/MainRun.h"
#include "tests/support/campaign.h"

namespace korvex {

struct RecordedView : RunView {
  void EnterRunning() override { calls.push_back("running"); }
  void LeaveRunning() override { calls.push_back("idle"); }
  void ErrorMessage(const std::string& text) override { calls.push_back(text); }
  void Message(const std::string& text) override { calls.push_back(text); }
  void ProcessedFile() override { calls.push_back("processed"); }
  void SetMessage(const std::string& text) override { calls.push_back(text); }
  void SetProgress(std::int32_t value, std::int32_t maximum) override {
    calls.push_back(std::to_string(value) + "/" + std::to_string(maximum));
  }
  void RunEnded(const RunRecord& ended) override {
    calls.push_back("ended");
    record = ended;
  }

  std::vector<std::string> calls;
  RunRecord record;  // of the last run
};

class EngineTest : public testing::Test {
 protected:
  // A workbook with one row.
  void Put(const std::string& name, double value = 0.1) {
    campaign.Put(name, {{1, "K1", 7, value}});
  }
  // Forgets what earlier runs told.
  void Forget() {
    view.calls.clear();
    campaign.platform.dialogs.texts.clear();
    campaign.platform.dialogs.plain.clear();
  }
  auto Processed() const { return std::ranges::count(view.calls, "processed"); }
  const std::vector<std::string>& Texts() const { return campaign.platform.dialogs.texts; }
  // The messages, and behind them the cause of the last report.
  std::string Told() const {
    const auto& plain = campaign.platform.dialogs.plain;
    return Join(Texts(), "; ") + (plain.empty() ? "" : plain.back().cause);
  }

  Campaign campaign;
  MemoryFileSystem& files = campaign.platform.files;
  std::function<void()>& on_yield = campaign.platform.message_loop.on_yield;
  RecordedView view;
};

}  // namespace korvex
