// Hands blocks of bytes to a consumer that works on another thread while the next ones are made.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace korvex {

// The consumer gets the blocks one after the other, in order. What it uses is its own until Finish
// or the destructor has returned. The thread starts with the first block; where none can be
// started, Push calls the consumer itself. A few blocks wait at most.
//
// The first error of the consumer is its last call; the next Push or Finish throws it, once.
class BlockQueue {
 public:
  using Consumer = std::function<void(std::string_view)>;

  explicit BlockQueue(Consumer consume);
  // Drops what is waiting, after a consumer that is at work has returned.
  ~BlockQueue();
  BlockQueue(const BlockQueue&) = delete;
  BlockQueue& operator=(const BlockQueue&) = delete;

  // Takes the block, and leaves an empty one with the memory of a former block.
  void Push(std::string& block);
  // Waits until the consumer has had every block. No member is called afterwards.
  void Finish();

 private:
  void Start();
  void Run();
  void Join();

  const Consumer consume_;
  bool has_started_ = false;
  std::thread thread_;

  // Between the threads, under the lock.
  std::mutex lock_;
  std::condition_variable changed_;
  std::vector<std::string> waiting_;  // the next one first
  std::vector<std::string> spare_;    // empty blocks, for their memory
  bool is_finished_ = false;          // no block comes any more
  std::exception_ptr failure_;        // of the consumer, until it is thrown
};

}  // namespace korvex
