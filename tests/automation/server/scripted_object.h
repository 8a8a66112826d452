// Objects for late-bound callers, answered by functions of a test, and the record of what was
// called.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "automation/com_value.h"

namespace korvex {

// One call as it arrived. `arguments` are those without a name, from the first to the last; the
// value of a property that is put is the last of them.
struct ScriptedCall {
  std::string member;
  bool is_put = false;
  std::vector<ComValue> arguments;
  std::map<std::string, ComValue> named;

  // "Open(Filename:=C:\a.xls, ReadOnly:=True)", "Visible = False", "Value = [384 x 10]"
  std::string Text() const;
};

// A result that a handler wants its caller to see, without any description.
struct ScriptedResult {
  HRESULT result;
};

// What all objects of one scripted program share.
struct ScriptedProgram {
  std::vector<std::string> calls;               // "Range(A1).Value", in order
  std::function<void(const std::string&)> log;  // for each of them, when there is one
  int busy_calls = 0;                           // so many calls more are rejected
  std::string dies_at;                          // a call, as recorded, that never returns
  std::function<void()> die;                    // how; a dead program in this process without it
  bool is_dead = false;
  int objects = 0;                        // alive
  std::function<void()> on_last_release;  // when the last of them goes

  // The ids of members and of arguments.
  std::vector<std::wstring> names;
};

class ScriptedObject : public IDispatch {
 public:
  // A thrown Error reaches the caller as the exception of a program that counts errors the same
  // way, with the source "Scripted".
  using Handler = std::function<ComValue(const ScriptedCall&)>;

  // Holds one reference, which a Dispatch or a ComValue takes over. `program` must outlive it.
  ScriptedObject(ScriptedProgram& program, std::string kind, Handler handler);
  virtual ~ScriptedObject();

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override;
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID locale,
                                          DISPID* ids) override;
  HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID, LCID locale, WORD flags,
                                   DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                   UINT*) override;

 private:
  ScriptedCall CallFrom(DISPID member, WORD flags, const DISPPARAMS& parameters) const;

  ScriptedProgram& program_;
  std::string kind_;
  Handler handler_;
  ULONG references_ = 1;
};

}  // namespace korvex
