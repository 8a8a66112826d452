#include "spreadsheet/read_ahead.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "platform/error.h"
#include "platform/file_system.h"

namespace korvex {

ReadAhead::ReadAhead(const FileSystem& files, ReadBufferPool& buffers, int jobs)
    : files_(files), buffers_(buffers), jobs_(static_cast<std::size_t>(std::max(jobs, 1))) {}

ReadAhead::~ReadAhead() {
  Stop();
}

void ReadAhead::Expect(const std::vector<std::string>& full_names, const std::string& sheet) {
  if (jobs_ < 2) return;
  {
    const std::lock_guard lock(mutex_);
    Drop();
    bytes_ahead_ = 0;
    workbooks_ahead_ = 0;
    for (const std::string& name : full_names) {
      expected_.push_back(std::make_shared<Expected>());
      expected_.back()->full_name = name;
    }
    sheet_ = sheet;
  }
  Start();
  changed_.notify_all();
}

// What is being read belongs to its worker as well, which drops it soon.
void ReadAhead::Drop() {
  for (const std::shared_ptr<Expected>& expected : expected_) *expected->given_up = true;
  expected_.clear();
}

// A machine that has no thread left reads every workbook when it is asked for.
void ReadAhead::Start() {
  try {
    while (workers_.size() + 1 < jobs_) workers_.emplace_back([this] { Work(); });
  } catch (const std::system_error&) {
  }
}

void ReadAhead::Stop() {
  {
    const std::lock_guard lock(mutex_);
    stops_ = true;
    Drop();
  }
  changed_.notify_all();
  for (std::thread& worker : workers_) worker.join();
  workers_.clear();
}

void ReadAhead::Work() {
  std::unique_lock lock(mutex_);
  while (!stops_) {
    const std::shared_ptr<Expected> next = NextToRead();
    if (next == nullptr) {
      changed_.wait(lock);
      continue;
    }
    const std::string sheet = sheet_;
    lock.unlock();
    Read(*next, sheet);
    lock.lock();
    next->state = State::kRead;
    changed_.notify_all();
  }
}

// The first that waits, if it may be ahead yet. The one that is wanted now is left to the thread
// that asks, which would wait otherwise.
std::shared_ptr<ReadAhead::Expected> ReadAhead::NextToRead() {
  if (workbooks_ahead_ >= jobs_) return nullptr;
  for (const std::shared_ptr<Expected>& expected : expected_) {
    if (expected->state != State::kWaiting) continue;
    if (expected->size == 0) {
      const auto version = files_.VersionOf(expected->full_name);
      expected->size = version ? static_cast<std::uint64_t>(version->size) : 0;
    }
    // None is overtaken: those behind it are wanted later.
    if (bytes_ahead_ + expected->size > kMostBytesAhead) return nullptr;
    expected->state = State::kReading;
    bytes_ahead_ += expected->size;
    ++workbooks_ahead_;
    return expected;
  }
  return nullptr;
}

void ReadAhead::Read(Expected& expected, const std::string& sheet) {
  try {
    expected.workbook =
        std::make_unique<InputWorkbook>(files_, expected.full_name, buffers_, expected.given_up);
    expected.workbook->Prepare(sheet);
  } catch (...) {
    expected.error = std::current_exception();
  }
}

std::unique_ptr<InputWorkbook> ReadAhead::Take(const std::string& full_name) {
  std::unique_lock lock(mutex_);
  const auto found = std::ranges::find(expected_, full_name,
                                       [](const auto& expected) { return expected->full_name; });
  if (found == expected_.end()) return nullptr;
  const std::shared_ptr<Expected> wanted = *found;
  // Those before it were passed over, and make room.
  for (auto passed = expected_.begin(); passed != found + 1; ++passed) {
    if ((*passed)->state == State::kWaiting) continue;
    bytes_ahead_ -= (*passed)->size;
    --workbooks_ahead_;
  }
  expected_.erase(expected_.begin(), found + 1);
  changed_.notify_all();
  if (wanted->state == State::kWaiting) return nullptr;
  changed_.wait(lock, [&] { return wanted->state == State::kRead; });
  if (wanted->error) std::rethrow_exception(wanted->error);
  return std::move(wanted->workbook);
}

}  // namespace korvex
