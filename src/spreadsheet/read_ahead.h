// Reads the workbooks that come next on other threads, while their reader works on one.
//
// Nothing of it can be seen but the time: a workbook is handed over, and its error raised, when it
// is asked for, on the thread that asks.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "spreadsheet/input_workbook.h"

namespace korvex {

// Bounded: at most `jobs` workbooks are ahead, and of those that are ahead at most
// kMostBytesAhead of files. A larger workbook is not read ahead at all.
class ReadAhead {
 public:
  static constexpr std::uint64_t kMostBytesAhead = 8u << 20;

  // `jobs` counts the thread that asks: with 1 nothing is ever read ahead. Both references must
  // outlive this object.
  ReadAhead(const FileSystem& files, ReadBufferPool& buffers, int jobs);
  // Gives up the workbooks that are being read, at the next piece of them that is unpacked.
  ~ReadAhead();
  ReadAhead(const ReadAhead&) = delete;
  ReadAhead& operator=(const ReadAhead&) = delete;

  // These workbooks come next, in this order, and of each the cells of the sheet of that name are
  // wanted. Replaces what was expected.
  void Expect(const std::vector<std::string>& full_names, const std::string& sheet);
  // The workbook, waited for when it is being read; its error is raised. Null when nobody has begun
  // it: the caller reads it then. What was expected before it is not read any more.
  std::unique_ptr<InputWorkbook> Take(const std::string& full_name);

 private:
  enum class State { kWaiting, kReading, kRead };
  struct Expected {
    std::string full_name;
    State state = State::kWaiting;
    std::uint64_t size = 0;
    std::unique_ptr<InputWorkbook> workbook;
    std::exception_ptr error;
    // Set while it is read and nobody wants it any more; never once it was handed over.
    std::shared_ptr<std::atomic<bool>> given_up = std::make_shared<std::atomic<bool>>(false);
  };

  void Work();
  std::shared_ptr<Expected> NextToRead();
  void Read(Expected& expected, const std::string& sheet);
  void Drop();
  void Start();
  void Stop();

  const FileSystem& files_;
  ReadBufferPool& buffers_;
  const std::size_t jobs_;
  std::mutex mutex_;  // of everything below
  std::condition_variable changed_;
  std::deque<std::shared_ptr<Expected>> expected_;
  std::string sheet_;
  std::uint64_t bytes_ahead_ = 0;
  std::size_t workbooks_ahead_ = 0;
  bool stops_ = false;
  std::vector<std::thread> workers_;  // of the thread that asks alone
};

}  // namespace korvex
