#include "ui/text_box.h"

#include <algorithm>

namespace korvex {
namespace {

constexpr int kAroundText = 8;  // device independent pixels, above and below together

}  // namespace

wxTextCtrl* NewTextBox(wxWindow& parent, const char* name, int characters) {
  auto* box = new wxTextCtrl(&parent, wxID_ANY);
  box->SetName(name);
  const int height = box->GetCharHeight() + box->FromDIP(kAroundText);
  box->SetMinSize(
      wxSize(characters * box->GetCharWidth(), std::max(height, box->GetBestSize().GetHeight())));
  return box;
}

}  // namespace korvex
