#pragma once

namespace korvex {

// Raises a flag for its own lifetime.
class RaisedFlag {
 public:
  explicit RaisedFlag(bool& flag) : flag_(flag), former_(flag) { flag_ = true; }
  ~RaisedFlag() { flag_ = former_; }
  RaisedFlag(const RaisedFlag&) = delete;
  RaisedFlag& operator=(const RaisedFlag&) = delete;

 private:
  bool& flag_;
  bool former_;
};

}  // namespace korvex
