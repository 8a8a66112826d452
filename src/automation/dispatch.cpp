#include "automation/dispatch.h"

#include <oleauto.h>

#include <algorithm>
#include <thread>
#include <utility>

#include "automation/automation_error.h"
#include "platform/error.h"
#include "platform/windows/wide_text.h"

namespace korvex {
namespace {

constexpr std::chrono::milliseconds kFirstPause(10);
constexpr std::chrono::milliseconds kLongestPause(500);

// The arguments in the order that IDispatch wants: the named ones first, then the others from last
// to first. Does not own their values.
std::vector<VARIANTARG> InCallOrder(const std::vector<ComValue>& positional,
                                    const std::vector<NamedArgument>& named) {
  std::vector<VARIANTARG> ordered;
  ordered.reserve(positional.size() + named.size());
  for (const NamedArgument& argument : named) ordered.push_back(argument.value.Raw());
  for (auto value = positional.rbegin(); value != positional.rend(); ++value) {
    ordered.push_back(value->Raw());
  }
  return ordered;
}

}  // namespace

Dispatch::Dispatch(IDispatch* object, Milliseconds patience, CallWatch* watch)
    : object_(object), patience_(patience), watch_(watch) {}

ComValue Dispatch::Get(const wchar_t* property, const std::vector<ComValue>& arguments) const {
  // Some applications declare a property with arguments as a method, or a method as a property.
  const WORD kind =
      arguments.empty() ? DISPATCH_PROPERTYGET : WORD{DISPATCH_PROPERTYGET | DISPATCH_METHOD};
  return Invoke(kind, property, arguments, {});
}

Dispatch Dispatch::Object(const wchar_t* property, const std::vector<ComValue>& arguments) const {
  return ObjectFrom(Get(property, arguments));
}

void Dispatch::Put(const wchar_t* property, const ComValue& value) const {
  Invoke(DISPATCH_PROPERTYPUT, property, {value}, {});
}

ComValue Dispatch::Call(const wchar_t* method, const std::vector<ComValue>& arguments) const {
  return Invoke(DISPATCH_METHOD, method, arguments, {});
}

ComValue Dispatch::CallNamed(const wchar_t* method,
                             const std::vector<NamedArgument>& arguments) const {
  return Invoke(DISPATCH_METHOD, method, {}, arguments);
}

Dispatch Dispatch::ObjectFrom(const ComValue& answer) const {
  IDispatch* object = nullptr;
  if (answer.Type() == VT_DISPATCH || answer.Type() == VT_UNKNOWN) {
    IUnknown* const held = answer.Raw().punkVal;
    if (held != nullptr) {
      // The answer keeps its own reference, so this adds one for the new object.
      held->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&object));
    }
  }
  if (object == nullptr) throw Error(error_number::kObjectNotSet);
  return Dispatch(object, patience_, watch_);
}

template <class Attempt>
HRESULT Dispatch::Patiently(Attempt&& attempt) const {
  const auto start = std::chrono::steady_clock::now();
  for (Milliseconds pause = kFirstPause;; pause = std::min(pause * 2, kLongestPause)) {
    HRESULT result;
    {
      const CallWatch::Call watched(watch_);
      result = attempt();
    }
    // An application in which somebody edits a cell, or that shows a box, rejects every call.
    if (!IsBusy(result) || std::chrono::steady_clock::now() - start >= patience_) return result;
    if (watch_ != nullptr && watch_->GivesUp(start)) return result;
    std::this_thread::sleep_for(pause);
  }
}

ComValue Dispatch::Invoke(WORD kind, const wchar_t* member, const std::vector<ComValue>& positional,
                          const std::vector<NamedArgument>& named) const {
  if (object_ == nullptr) throw Error(error_number::kObjectNotSet);
  // GetIDsOfNames takes the names of the arguments in one call with the member's.
  std::vector<LPOLESTR> names = {const_cast<LPOLESTR>(member)};
  for (const NamedArgument& argument : named) names.push_back(const_cast<LPOLESTR>(argument.name));
  std::vector<DISPID> ids(names.size());
  HRESULT result = Patiently([&] {
    return object_->GetIDsOfNames(IID_NULL, names.data(), static_cast<UINT>(names.size()),
                                  kAutomationLocale, ids.data());
  });
  if (FAILED(result)) throw AutomationError(result, FromWide(member));

  std::vector<VARIANTARG> arguments = InCallOrder(positional, named);
  // The value of a property that is put goes by this name, which IDispatch demands.
  DISPID put = DISPID_PROPERTYPUT;
  DISPPARAMS parameters = {arguments.data(), ids.data() + 1, static_cast<UINT>(arguments.size()),
                           static_cast<UINT>(named.size())};
  if (kind == DISPATCH_PROPERTYPUT) {
    parameters.rgdispidNamedArgs = &put;
    parameters.cNamedArgs = 1;
  }
  ComValue answer;
  EXCEPINFO exception = {};
  result = Patiently([&] {
    const HRESULT called = object_->Invoke(
        ids.front(), IID_NULL, kAutomationLocale, kind, &parameters,
        kind == DISPATCH_PROPERTYPUT ? nullptr : answer.Receive(), &exception, nullptr);
    // Some say "busy" as the number of an exception instead of a result.
    return called == DISP_E_EXCEPTION && IsBusy(exception.scode) ? TakeResult(exception) : called;
  });
  if (result == DISP_E_EXCEPTION) throw AutomationError(exception, FromWide(member));
  if (FAILED(result)) throw AutomationError(result, FromWide(member));
  return answer;
}

}  // namespace korvex
