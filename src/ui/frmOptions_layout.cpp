// The options dialog's controls and where they stand. The tab order is the order of creation.

#include <wx/accel.h>
#include <wx/dcclient.h>
#include <wx/display.h>
#include <wx/gbsizer.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include <algorithm>

#include "files/basGeneral.h"
#include "ui/accessible_names.h"
#include "ui/form_helpers.h"
#include "ui/frmOptions.h"

namespace korvex {
namespace {

// Device independent pixels.
constexpr int kGap = 8;
constexpr int kMargin = 12;  // around a frame
constexpr int kOutline = 4;  // of the control that has the focus, drawn around it
constexpr int kIndent = 24;  // of what belongs to an option, below its caption

// Characters of an ordinary text, and lines.
constexpr int kPathWidth = 44;
constexpr int kListWidth = 24;
constexpr int kArrowWidth = 6;
constexpr int kListHeight = 3;  // at least; the dialog opens with more
constexpr int kScrollBarWidth = 3;
constexpr int kButtonPadding = 5;
constexpr int kMoreLines = 7;

template <class Control>
Control* Named(Control* control, const char* name) {
  static_cast<wxWindow*>(control)->SetName(name);
  return control;
}

// The letter behind the mark.
int AccessKey(const wxString& caption) {
  return wxToupper(caption[static_cast<std::size_t>(caption.Find('&')) + 1]);
}

int LineHeight(const wxWindow& window) {
  return window.GetCharHeight() * 3 / 2;
}

FramePanel& AddFrame(FramePanel& page, const char* name, int proportion = 0) {
  auto* frame = new FramePanel(&page, name, {}, false);
  const int outline = page.FromDIP(kOutline);
  frame->GetSizer()->GetItem(&frame->Content())->SetBorder(outline);
  page.Content().Add(
      frame, wxSizerFlags(proportion).Expand().Border(wxALL, page.FromDIP(kMargin) - outline));
  return *frame;
}

wxRadioButton* NewOption(wxWindow& parent, const char* name, const char* caption, long style = 0) {
  return Named(
      new wxRadioButton(&parent, wxID_ANY, caption, wxDefaultPosition, wxDefaultSize, style), name);
}

// Where the text box stands that an option or a check box is about.
wxSizerFlags BelowOption(const wxWindow& frame) {
  return wxSizerFlags().Expand().Border(wxLEFT, frame.FromDIP(kIndent));
}

wxStaticText* NewLabel(wxWindow& parent, const char* text) {
  return new wxStaticText(&parent, wxID_ANY, text);
}

// Not as wide as its longest name: long ones scroll sideways.
template <class List>
List* AsColumnList(List* list) {
  list->SetMinSize(wxSize(kListWidth * list->GetCharWidth(), kListHeight * LineHeight(*list)));
  return list;
}

// The small line below a list, no wider than the list.
wxStaticText* NewLine(wxWindow& parent, const char* name) {
  auto* line = Named(new wxStaticText(&parent, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
                                      wxST_NO_AUTORESIZE | wxST_ELLIPSIZE_END),
                     name);
  line->SetMinSize(wxSize(kListWidth * parent.GetCharWidth(), -1));
  return line;
}

wxSizer* Above(wxWindow* list, wxStaticText* line) {
  auto* column = new wxBoxSizer(wxVERTICAL);
  column->Add(list, wxSizerFlags(1).Expand());
  column->Add(line, wxSizerFlags().Expand().Border(wxTOP, line->FromDIP(kGap / 4)));
  return column;
}

wxButton* NewArrow(wxWindow& parent, const char* name, const char* caption) {
  auto* arrow = Named(
      new wxButton(&parent, wxID_ANY, caption, wxDefaultPosition, wxDefaultSize, wxBU_EXACTFIT),
      name);
  arrow->SetMinSize(wxSize(kArrowWidth * parent.GetCharWidth(), -1));
  return arrow;
}

wxSizer* ArrowColumn(wxButton* to, wxButton* from) {
  auto* column = new wxBoxSizer(wxVERTICAL);
  column->Add(to, wxSizerFlags().Expand());
  column->AddSpacer(to->FromDIP(kGap));
  column->Add(from, wxSizerFlags().Expand());
  return column;
}

}  // namespace

frmOptions::frmOptions(wxWindow* owner)
    : wxDialog(owner, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
               wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER, "frmOptions") {
  SetIcons(AppIcons());
  tabOptions_ = Named(new wxNotebook(this, wxID_ANY), "tabOptions");
  auto& general = *new FramePanel(tabOptions_, "fraOptions(0)", {}, false);
  BuildOutputFile(AddFrame(general, "fraMain(0)"));
  BuildReplacing(AddFrame(general, "fraMain(1)"));
  BuildAfterwards(AddFrame(general, "fraMain(2)"));
  auto& structure = *new FramePanel(tabOptions_, "fraOptions(1)", {}, false);
  BuildColumns(AddFrame(structure, "fraMain(3)", 1));
  BuildSample(AddFrame(structure, "fraMain(4)"));
  AddPage(general, "&General Options");
  AddPage(structure, "&Structure Options");
  cmdOK_ = Named(new wxButton(this, wxID_ANY, "OK"), "cmdOK");
  cmdOK_->SetDefault();

  auto* form = new wxBoxSizer(wxVERTICAL);
  form->Add(tabOptions_, wxSizerFlags(1).Expand().Border(wxALL, FromDIP(kMargin)));
  form->Add(cmdOK_, wxSizerFlags().Right().Border(wxLEFT | wxRIGHT | wxBOTTOM, FromDIP(kMargin)));
  SetSizerAndFit(form);
  NameControls(*this);
  BindEvents();
  Form_Load();
}

// Room for more lines and for long names, as far as the screen has it.
void frmOptions::OpenLarger() {
  int missing = 0;
  for (const wxString& name : lstAvailableCols_->GetStrings()) {
    const int needed = GetTextExtent(name).GetWidth() + kScrollBarWidth * GetCharWidth();
    missing = std::max(missing, needed - lstAvailableCols_->GetMinWidth());
  }
  wxSize size = GetMinSize();
  size += wxSize(std::min(2 * missing, size.GetWidth()), kMoreLines * LineHeight(*this));
  size.DecTo(wxDisplay(this).GetClientArea().GetSize());
  SetSize(size);
  CentreWhenShown(*this);
}

// The caption of the button, shortened to its width.
void frmOptions::ShowSampleName() {
  wxString name = ToWx(SharedFileSys().GetFileTitle(structure_.SampleFileUsed(false), false));
  if (name.empty()) name = "...";
  const int width = cmdSampleFile_->GetSize().GetWidth() - kButtonPadding * GetCharWidth();
  const wxString face = wxControl::EscapeMnemonics(
      wxControl::Ellipsize(name, wxClientDC(cmdSampleFile_), wxELLIPSIZE_MIDDLE, width));
  if (cmdSampleFile_->GetLabel() != face) cmdSampleFile_->SetLabel(face);
}

// Tabs do not follow the access keys of their captions by themselves.
void frmOptions::AddPage(wxWindow& page, const wxString& caption) {
  const std::size_t index = tabOptions_->GetPageCount();
  // Sized at once: GTK would complain of controls squeezed into a page that has no size yet.
  page.Fit();
  page.Layout();
  tabOptions_->AddPage(&page, caption);
  const int id = NewControlId();
  access_keys_.emplace_back(wxACCEL_ALT, AccessKey(caption), id);
  SetAcceleratorTable(
      wxAcceleratorTable(static_cast<int>(access_keys_.size()), access_keys_.data()));
  const auto turn_to_page = [this, index](wxCommandEvent&) {
    tabOptions_->SetSelection(index);
    tabOptions_->GetPage(index)->SetFocus();
  };
  Bind(wxEVT_MENU, turn_to_page, id);
}

void frmOptions::BuildOutputFile(FramePanel& frame) {
  // One option of a group is always selected. This hidden one is selected while none of the visible
  // ones is.
  optOutputFileUnknown_ = NewOption(frame, "optOutputFileUnknown", "", wxRB_GROUP);
  optOutputFileUnknown_->Hide();
  optOutputFileByFolder_ = NewOption(frame, "optOutputFileByFolder",
                                     "Always output to current process folder, with this name:");
  txtFilename_.box = NewTextBox(frame, "txtFilename", kPathWidth);
  optOutputFileByName_ = NewOption(frame, "optOutputFileByName", "Output to this file:");
  txtOutputFile_.box = NewTextBox(frame, "txtOutputFile", kPathWidth);
  cmdBrowse_ = Named(new wxButton(&frame, wxID_ANY, "Browse..."), "cmdBrowse");

  auto* row = new wxBoxSizer(wxHORIZONTAL);
  row->Add(txtOutputFile_.box, wxSizerFlags(1).CenterVertical());
  row->AddSpacer(FromDIP(kGap));
  row->Add(cmdBrowse_, wxSizerFlags().CenterVertical());
  wxBoxSizer& content = frame.Content();
  content.Add(optOutputFileByFolder_);
  content.AddSpacer(FromDIP(kOutline));
  content.Add(txtFilename_.box, BelowOption(frame));
  content.AddSpacer(FromDIP(kGap));
  content.Add(optOutputFileByName_);
  content.AddSpacer(FromDIP(kOutline));
  content.Add(row, BelowOption(frame));
}

void frmOptions::BuildReplacing(FramePanel& frame) {
  optAutoReplaceTrue_ = NewOption(frame, "optAutoReplaceTrue",
                                  "Automatically replace output files if they exist.", wxRB_GROUP);
  optAutoReplaceFalse_ =
      NewOption(frame, "optAutoReplaceFalse", "Ask me before replacing output files.");
  frame.Content().Add(optAutoReplaceTrue_);
  frame.Content().AddSpacer(FromDIP(kGap));
  frame.Content().Add(optAutoReplaceFalse_);
}

void frmOptions::BuildAfterwards(FramePanel& frame) {
  chkLaunchOutputFile_ =
      Named(new wxCheckBox(&frame, wxID_ANY, "Launch output file at end of process."),
            "chkLaunchOutputFile");
  chkErrMail_ =
      Named(new wxCheckBox(&frame, wxID_ANY, "On Error, email this person:"), "chkErrMail");
  txtEmailAddress_ = NewTextBox(frame, "txtEmailAddress", kPathWidth);
  frame.Content().Add(chkLaunchOutputFile_);
  frame.Content().AddSpacer(FromDIP(kGap));
  frame.Content().Add(chkErrMail_);
  frame.Content().AddSpacer(FromDIP(kOutline));
  frame.Content().Add(txtEmailAddress_, BelowOption(frame));
}

// The available columns on the left, and what goes where on the right, each with its arrows.
void frmOptions::BuildColumns(FramePanel& frame) {
  wxStaticText* available = NewLabel(frame, "Available Columns:");
  lstAvailableCols_ =
      AsColumnList(Named(new wxListBox(&frame, wxID_ANY, wxDefaultPosition, wxDefaultSize, 0,
                                       nullptr, wxLB_EXTENDED | wxLB_NEEDED_SB | wxLB_HSCROLL),
                         "lstAvailableCols"));
  SelectOnlyWhenAsked(*lstAvailableCols_);
  lblTarget_ = NewLine(frame, "lblTarget");
  cmdToKeys_ = NewArrow(frame, "cmdToKeys", "-->");
  cmdFromKeys_ = NewArrow(frame, "cmdFromKeys", "<--");
  wxStaticText* keys = NewLabel(frame, "Columns that comprise the key:");
  lstKeyColumns_ = AsColumnList(new ColumnListBox(&frame, "lstKeyColumns"));
  lblKeysMissing_ = NewLine(frame, "lblKeysMissing");
  cmdToOutput_ = NewArrow(frame, "cmdToOutput", "-->");
  cmdFromOutput_ = NewArrow(frame, "cmdFromOutput", "<--");
  wxStaticText* output = NewLabel(frame, "Columns for the output file:");
  lstOutputColumns_ = AsColumnList(new ColumnListBox(&frame, "lstOutputColumns"));
  lblOutputMissing_ = NewLine(frame, "lblOutputMissing");

  const int gap = FromDIP(kGap);
  auto* grid = new wxGridBagSizer(gap / 2, gap);
  grid->Add(available, {0, 0});
  grid->Add(Above(lstAvailableCols_, lblTarget_), {1, 0}, {3, 1}, wxEXPAND);
  grid->Add(keys, {0, 2});
  grid->Add(ArrowColumn(cmdToKeys_, cmdFromKeys_), {1, 1}, {}, wxALIGN_CENTER_VERTICAL);
  grid->Add(Above(lstKeyColumns_, lblKeysMissing_), {1, 2}, {}, wxEXPAND);
  grid->Add(output, {2, 2}, {}, wxTOP, gap);
  grid->Add(ArrowColumn(cmdToOutput_, cmdFromOutput_), {3, 1}, {}, wxALIGN_CENTER_VERTICAL);
  grid->Add(Above(lstOutputColumns_, lblOutputMissing_), {3, 2}, {}, wxEXPAND);
  for (const std::size_t column : {0, 2}) grid->AddGrowableCol(column, 1);
  for (const std::size_t row : {1, 3}) grid->AddGrowableRow(row, 1);
  frame.Content().Add(grid, wxSizerFlags(1).Expand());
}

void frmOptions::BuildSample(FramePanel& frame) {
  wxStaticText* data = NewLabel(frame, "Data Column:");
  cboDataCol_ = Named(new wxChoice(&frame, wxID_ANY), "cboDataCol");
  IgnoreWheel(*cboDataCol_);
  lblDataMissing_ = NewLine(frame, "lblDataMissing");
  wxStaticText* sample = NewLabel(frame, "Launch Sample File -->");
  cmdSampleFile_ = Named(new wxButton(&frame, wxID_ANY, "..."), "cmdSampleFile");
  for (wxWindow* control :
       {static_cast<wxWindow*>(cboDataCol_), static_cast<wxWindow*>(cmdSampleFile_)}) {
    control->SetMinSize(wxSize(kListWidth * frame.GetCharWidth(), -1));
  }

  auto* grid = new wxFlexGridSizer(2, wxSize(FromDIP(kGap), FromDIP(kGap)));
  grid->AddGrowableCol(1);
  grid->Add(data, wxSizerFlags().CenterVertical());
  grid->Add(Above(cboDataCol_, lblDataMissing_), wxSizerFlags().Expand());
  grid->Add(sample, wxSizerFlags().CenterVertical());
  grid->Add(cmdSampleFile_, wxSizerFlags().Expand());
  frame.Content().Add(grid, wxSizerFlags().Expand());
}

}  // namespace korvex
