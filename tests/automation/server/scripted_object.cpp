#include "tests/automation/server/scripted_object.h"

#include <oleauto.h>

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "platform/windows/wide_text.h"

namespace korvex {
namespace {

std::string Shown(const ComValue& value) {
  if (value.Type() == VT_EMPTY) return "";
  if (value.Type() == VT_BOOL) return value.Raw().boolVal == VARIANT_FALSE ? "False" : "True";
  if ((value.Type() & VT_ARRAY) == 0) return value.Text();
  std::string text = "[";
  for (UINT dimension = 1; dimension <= SafeArrayGetDim(value.Raw().parray); ++dimension) {
    LONG last = 0;
    SafeArrayGetUBound(value.Raw().parray, dimension, &last);
    text += (dimension > 1 ? " x " : "") + std::to_string(last);
  }
  return text + "]";
}

ComValue Copy(VARIANTARG& argument) {
  ComValue value;
  VariantCopyInd(value.Receive(), &argument);
  return value;
}

}  // namespace

std::string ScriptedCall::Text() const {
  if (is_put) return member + " = " + Shown(arguments.back());
  std::string list;
  for (const ComValue& value : arguments) list += (list.empty() ? "" : ", ") + Shown(value);
  // The names in the order of the alphabet: their order means nothing.
  for (const auto& [name, value] : named) {
    list += (list.empty() ? "" : ", ") + name + ":=" + Shown(value);
  }
  return list.empty() ? member : member + "(" + list + ")";
}

ScriptedObject::ScriptedObject(ScriptedProgram& program, std::string kind, Handler handler)
    : program_(program), kind_(std::move(kind)), handler_(std::move(handler)) {
  ++program_.objects;
}

ScriptedObject::~ScriptedObject() {
  if (--program_.objects == 0 && program_.on_last_release) program_.on_last_release();
}

HRESULT ScriptedObject::QueryInterface(REFIID id, void** object) {
  const bool is_known = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IDispatch);
  *object = is_known ? this : nullptr;
  if (!is_known) return E_NOINTERFACE;
  AddRef();
  return S_OK;
}

ULONG ScriptedObject::Release() {
  const ULONG left = --references_;
  if (left == 0) delete this;
  return left;
}

HRESULT ScriptedObject::GetTypeInfoCount(UINT* count) {
  *count = 0;
  return S_OK;
}

HRESULT ScriptedObject::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID locale,
                                      DISPID* ids) {
  if (program_.is_dead) return HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE);
  if (locale != kAutomationLocale) return DISP_E_UNKNOWNLCID;
  for (UINT i = 0; i < count; ++i) {
    auto known = std::ranges::find(program_.names, std::wstring_view(names[i]));
    if (known == program_.names.end()) known = program_.names.insert(known, names[i]);
    ids[i] = static_cast<DISPID>(known - program_.names.begin());
  }
  return S_OK;
}

ScriptedCall ScriptedObject::CallFrom(DISPID member, WORD flags,
                                      const DISPPARAMS& parameters) const {
  const auto name = [this](DISPID id) {
    return FromWide(program_.names.at(static_cast<std::size_t>(id)));
  };
  ScriptedCall call;
  call.member = name(member);
  call.is_put = (flags & DISPATCH_PROPERTYPUT) != 0;
  const UINT named = call.is_put ? 0 : parameters.cNamedArgs;
  for (UINT i = 0; i < named; ++i) {
    call.named[name(parameters.rgdispidNamedArgs[i])] = Copy(parameters.rgvarg[i]);
  }
  for (UINT i = parameters.cArgs; i > named; --i) {
    call.arguments.push_back(Copy(parameters.rgvarg[i - 1]));
  }
  return call;
}

HRESULT ScriptedObject::Invoke(DISPID member, REFIID, LCID locale, WORD flags,
                               DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                               UINT*) {
  if (program_.is_dead) return HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE);
  if (program_.busy_calls > 0) {
    --program_.busy_calls;
    return RPC_E_CALL_REJECTED;
  }
  if (locale != kAutomationLocale) return DISP_E_UNKNOWNLCID;
  const ScriptedCall call = CallFrom(member, flags, *parameters);
  const std::string text = kind_ + "." + call.Text();
  program_.calls.push_back(text);
  if (program_.log) program_.log(text);
  if (text == program_.dies_at) {
    program_.is_dead = true;
    if (program_.die) program_.die();
    return HRESULT_FROM_WIN32(RPC_S_CALL_FAILED);
  }
  try {
    ComValue answer = handler_(call);
    if (result != nullptr) *result = answer.Release();
    return S_OK;
  } catch (const ScriptedResult& failure) {
    return failure.result;
  } catch (const Error& error) {
    *exception = {};
    exception->scode = static_cast<SCODE>(0x800A0000u | static_cast<unsigned>(error.Number()));
    exception->bstrSource = NewComText("Scripted");
    exception->bstrDescription = NewComText(error.Description());
    return DISP_E_EXCEPTION;
  }
}

}  // namespace korvex
