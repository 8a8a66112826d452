// Another program's object, whose members are called by name.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "automation/call_watch.h"
#include "automation/com_value.h"

namespace korvex {

struct NamedArgument {
  const wchar_t* name;
  ComValue value;
};

// Holds one reference to the object. Every member can fail:
//   - what the program refuses comes with its own number and description; numbers that mean
//     something else in this program, and refusals without a number, are error 1004;
//   - an index or name that a collection lacks is error 9, a member that the object lacks is 438;
//   - a program that has ended is error 1004, which says so;
//   - a program that is busy is asked again for as long as the patience lasts; then error 1004;
//   - a call that the watch gives up is error 1004.
class Dispatch {
 public:
  using Milliseconds = std::chrono::milliseconds;
  // An application that has just been started may reject calls for most of a minute.
  static constexpr Milliseconds kPatience = std::chrono::seconds(60);

  Dispatch() = default;
  // Takes over the reference. Objects that this one answers with inherit its patience and its
  // watch, which must outlive them.
  explicit Dispatch(IDispatch* object, Milliseconds patience = kPatience,
                    CallWatch* watch = nullptr);

  // Arguments go by their position, from the first one on.
  ComValue Get(const wchar_t* property, const std::vector<ComValue>& arguments = {}) const;
  // A property, or an element, that is an object itself.
  Dispatch Object(const wchar_t* property, const std::vector<ComValue>& arguments = {}) const;
  void Put(const wchar_t* property, const ComValue& value) const;
  ComValue Call(const wchar_t* method, const std::vector<ComValue>& arguments = {}) const;
  ComValue CallNamed(const wchar_t* method, const std::vector<NamedArgument>& arguments) const;

  // The object that a member answered with; error 91 when it is none.
  Dispatch ObjectFrom(const ComValue& answer) const;

 private:
  struct Release {
    void operator()(IDispatch* object) const { object->Release(); }
  };

  ComValue Invoke(WORD kind, const wchar_t* member, const std::vector<ComValue>& positional,
                  const std::vector<NamedArgument>& named) const;
  // Repeats `attempt`, which answers with an HRESULT, while the program is busy.
  template <class Attempt>
  HRESULT Patiently(Attempt&& attempt) const;

  std::unique_ptr<IDispatch, Release> object_;
  Milliseconds patience_ = kPatience;
  CallWatch* watch_ = nullptr;
};

}  // namespace korvex
