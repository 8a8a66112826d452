#include "spreadsheet/bytes/block_queue.h"

#include <system_error>
#include <utility>

namespace korvex {
namespace {

constexpr std::size_t kMostWaiting = 8;
// With the one that is being made and the one that is being consumed.
constexpr std::size_t kMostBlocks = kMostWaiting + 2;

}  // namespace

// The lists get their room here, so that the thread never runs out of memory for them.
BlockQueue::BlockQueue(Consumer consume) : consume_(std::move(consume)) {
  waiting_.reserve(kMostBlocks);
  spare_.reserve(kMostBlocks);
}

BlockQueue::~BlockQueue() {
  {
    const std::lock_guard guard(lock_);
    waiting_.clear();
  }
  Join();
}

void BlockQueue::Push(std::string& block) {
  if (!std::exchange(has_started_, true)) Start();
  if (!thread_.joinable()) {
    consume_(block);
    block.clear();
    return;
  }
  std::unique_lock guard(lock_);
  changed_.wait(guard, [this] { return waiting_.size() < kMostWaiting || failure_ != nullptr; });
  if (failure_ != nullptr) std::rethrow_exception(std::exchange(failure_, nullptr));
  waiting_.push_back(std::move(block));
  block.clear();
  if (!spare_.empty()) {
    block = std::move(spare_.back());
    spare_.pop_back();
  }
  guard.unlock();
  changed_.notify_one();
}

void BlockQueue::Finish() {
  Join();
  if (failure_ != nullptr) std::rethrow_exception(std::exchange(failure_, nullptr));
}

// A process can have too many threads already, or too little memory for the stack of one more.
void BlockQueue::Start() {
  try {
    thread_ = std::thread([this] { Run(); });
  } catch (const std::system_error&) {
  }
}

void BlockQueue::Run() {
  std::unique_lock guard(lock_);
  while (true) {
    changed_.wait(guard, [this] { return !waiting_.empty() || is_finished_; });
    if (waiting_.empty()) return;
    std::string block = std::move(waiting_.front());
    waiting_.erase(waiting_.begin());
    guard.unlock();
    changed_.notify_one();
    std::exception_ptr failure;
    try {
      consume_(block);
    } catch (...) {
      failure = std::current_exception();
    }
    block.clear();
    guard.lock();
    if (failure != nullptr) {
      failure_ = failure;
      waiting_.clear();
      guard.unlock();
      changed_.notify_one();
      return;
    }
    spare_.push_back(std::move(block));
  }
}

void BlockQueue::Join() {
  if (!thread_.joinable()) return;
  {
    const std::lock_guard guard(lock_);
    is_finished_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

}  // namespace korvex
