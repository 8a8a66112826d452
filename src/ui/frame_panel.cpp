#include "ui/frame_panel.h"

#include <wx/settings.h>

#include "ui/form_helpers.h"

namespace korvex {

FramePanel::FramePanel(wxWindow* parent, const std::string& name, const std::string& caption,
                       bool border)
    : wxPanel(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize,
              wxTAB_TRAVERSAL | (border ? wxBORDER_THEME : wxBORDER_NONE), ToWx(name)) {
  SetBackgroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOW));
  const int gap = FromDIP(border ? 10 : 0);
  auto* outer = new wxBoxSizer(wxVERTICAL);
  caption_ = new wxStaticText(this, wxID_ANY, "");
  caption_->SetFont(GetFont().Bold());
  outer->Add(caption_, wxSizerFlags().Border(wxLEFT | wxTOP | wxRIGHT, gap));
  content_ = new wxBoxSizer(wxVERTICAL);
  outer->Add(content_, wxSizerFlags(1).Expand().Border(wxALL, gap));
  SetSizer(outer);
  SetCaption(caption);
}

std::string FramePanel::Caption() const {
  return FromWx(caption_->GetLabel());
}

void FramePanel::SetCaption(const std::string& caption) {
  caption_->SetLabel(ToWx(caption));
  caption_->Show(!caption.empty());
  Layout();
}

}  // namespace korvex
