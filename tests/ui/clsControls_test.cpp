#include "ui/clsControls.h"

#include <gtest/gtest.h>
#include <wx/checkbox.h>
#include <wx/combobox.h>
#include <wx/frame.h>
#include <wx/listbox.h>
#include <wx/textctrl.h>

#include "tests/support/errors.h"
#include "ui/frame_panel.h"
#include "ui/late_bound.h"

namespace korvex {
namespace {

// A frame with an inner frame, which holds one option, and two options of its own; and a text box
// after the frame.
struct ClsControls : testing::Test {
  ~ClsControls() override { delete frame; }

  wxFrame* frame = new wxFrame(nullptr, wxID_ANY, "form");
  FramePanel& group = *new FramePanel(frame, "fraGroup", "Mode");
  FramePanel& inner = *new FramePanel(&group, "fraInner");
  wxCheckBox& deep = *new wxCheckBox(&inner, wxID_ANY, "Inner");
  wxCheckBox& first = *new wxCheckBox(&group, wxID_ANY, "&First");
  wxCheckBox& second = *new wxCheckBox(&group, wxID_ANY, "&Second");
  wxTextCtrl& other = *new wxTextCtrl(frame, wxID_ANY);
  clsControls controls;
};

// A combo box takes what is typed; the other two are the lists of the options dialog.
TEST_F(ClsControls, ListsTakeTextsWithTheirDataAndSelectByEither) {
  for (wxControlWithItems* list : std::initializer_list<wxControlWithItems*>{
           new wxListBox(frame, wxID_ANY), new wxChoice(frame, wxID_ANY),
           new wxComboBox(frame, wxID_ANY)}) {
    controls.ArrayToList(*list, {"a", "", "b", "b"}, {7, 8, -3, 7});
    controls.ArrayToList(*list, {"d"});
    ASSERT_EQ(late_bound::ListCount(*list), 4) << "an empty text is left out";
    EXPECT_EQ(late_bound::List(*list, 3), "d");
    EXPECT_EQ(late_bound::ItemData(*list, 1), -3);
    EXPECT_TRUE(controls.SelectInList(*list, "b"));
    EXPECT_EQ(list->GetSelection(), 1) << "the first of a text";
    EXPECT_TRUE(controls.SelectInList(*list, "", 7));
    EXPECT_EQ(list->GetSelection(), 2) << "the last of a datum";
    EXPECT_TRUE(controls.SelectInList(*list, "", 5)) << "no match";
  }
  EXPECT_EQ(ErrorOf([&] { controls.ArrayToList(first, {"a"}); }).Number(),
            error_number::kNoSuchMember);
}

// A position that is read counts the controls of the container, one that is set those of the form.
TEST_F(ClsControls, ReadAndSetAnOptionByEachOfItsMarks) {
  first.SetName("chkFirst");
  late_bound::SetTag(first, "4");
  EXPECT_EQ(controls.GetSelectedOption(group, kByName), OptionId()) << "none selected";
  const struct {
    obWhatData what;
    OptionId read, set;
  } cases[] = {{kByPosition, std::int16_t{2}, "3"}, {kByName, "chkFirst", "chkFirst"},
               {kByCaption, "&First", "&First"},    {kByTag, "4", std::int16_t{4}},
               {kByControl, &first, &first},        {6, OptionId(), OptionId()}};
  for (const auto& [what, read, set] : cases) {
    first.SetValue(true);
    EXPECT_EQ(controls.GetSelectedOption(group, what), read) << what;
    first.SetValue(false);
    EXPECT_TRUE(controls.SetSelectedOption(set, group, what));
    EXPECT_EQ(first.GetValue(), read != OptionId()) << what;
    EXPECT_FALSE(second.GetValue()) << what;
  }
  new wxTextCtrl(&group, wxID_ANY);  // a control without a value ends the walk
  first.SetValue(true);
  EXPECT_EQ(controls.GetSelectedOption(group, kByCaption), OptionId());
  EXPECT_TRUE(controls.SetSelectedOption("&Second", group, kByCaption));
  EXPECT_FALSE(second.GetValue());
}

TEST_F(ClsControls, EnableOnlyWhatLiesDirectlyInAContainer) {
  for (const bool enable : {false, true}) {
    controls.EnableFrame(group, enable);
    EXPECT_EQ(first.IsThisEnabled(), enable);
    EXPECT_EQ(inner.IsThisEnabled(), enable);
    EXPECT_TRUE(deep.IsThisEnabled() && group.IsThisEnabled() && other.IsThisEnabled());
  }
}

}  // namespace
}  // namespace korvex
