// What Windows tells a screen reader of the controls.
#include "ui/accessible_names.h"

#include <wx/choice.h>

// These need the headers of wx before them.
#include <objbase.h>
#include <oleacc.h>

#include "tests/ui/ui_support.h"

namespace korvex {
namespace {

using Getter = HRESULT (STDMETHODCALLTYPE IAccessible::*)(VARIANT, BSTR*);

std::string Told(const wxWindow& window, Getter get) {
  void* found = nullptr;
  const auto client = static_cast<DWORD>(OBJID_CLIENT);
  EXPECT_EQ(AccessibleObjectFromWindow(window.GetHandle(), client, __uuidof(IAccessible), &found),
            S_OK);
  auto* accessible = static_cast<IAccessible*>(found);
  VARIANT self{};
  self.vt = VT_I4;
  self.lVal = CHILDID_SELF;
  BSTR text = nullptr;
  (accessible->*get)(self, &text);
  accessible->Release();
  const wxString told(text ? text : L"");
  SysFreeString(text);
  return FromWx(told);
}

TEST(AccessibleNames, AreToldInPlaceOfCaptionsThatDoNotSayWhatAControlIsFor) {
  wxFrame form(nullptr, wxID_ANY, "Form");
  wxChoice drives(&form, wxID_ANY);
  drives.SetName("drvMain");
  wxButton to_keys(&form, wxID_ANY, "-->");
  to_keys.SetName("cmdToKeys");
  wxButton ok(&form, wxID_ANY, "OK");
  NameControls(form);
  SetAccessibleMessage(form, "All is done.");
  EXPECT_EQ(Told(drives, &IAccessible::get_accName), "Drive");
  EXPECT_EQ(Told(to_keys, &IAccessible::get_accName), "Add to the key");
  EXPECT_EQ(Told(ok, &IAccessible::get_accName), "OK");
  EXPECT_EQ(Told(form, &IAccessible::get_accName), "Form");
  EXPECT_EQ(Told(form, &IAccessible::get_accDescription), "All is done.");
}

}  // namespace
}  // namespace korvex
