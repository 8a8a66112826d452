#include "ui/clsControls.h"

#include <gtest/gtest.h>
#include <wx/checkbox.h>
#include <wx/choice.h>
#include <wx/combobox.h>
#include <wx/frame.h>
#include <wx/listbox.h>
#include <wx/radiobut.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include "tests/support/errors.h"
#include "ui/frame_panel.h"
#include "ui/late_bound.h"

namespace korvex {
namespace {

// A text box after a frame, which holds an inner frame with one option and two options of its own.
struct Form {
  ~Form() { delete frame; }

  wxFrame* frame = new wxFrame(nullptr, wxID_ANY, "form");
  FramePanel& group = *new FramePanel(frame, "fraGroup", "Mode");
  FramePanel& inner = *new FramePanel(&group, "fraInner");
  wxCheckBox& deep = *new wxCheckBox(&inner, wxID_ANY, "Inner");
  wxCheckBox& first = *new wxCheckBox(&group, wxID_ANY, "&First");
  wxCheckBox& second = *new wxCheckBox(&group, wxID_ANY, "&Second");
  wxTextCtrl& other = *new wxTextCtrl(frame, wxID_ANY);
  clsControls controls;
};

template <class List>
struct ListForm : Form {
  List& list = *new List(frame, wxID_ANY);
};

template <class List>
class Lists : public testing::Test {};
using ListClasses = testing::Types<wxListBox, wxChoice, wxComboBox>;
TYPED_TEST_SUITE(Lists, ListClasses);

TYPED_TEST(Lists, LeaveOutEmptyTextsWithTheirData) {
  ListForm<TypeParam> form;
  form.controls.ArrayToList(form.list, {"a", "", "c"}, {1, 2, -3});
  form.controls.ArrayToList(form.list, {"d"});
  ASSERT_EQ(late_bound::ListCount(form.list), 3);
  EXPECT_EQ(late_bound::List(form.list, 1), "c");
  EXPECT_EQ(late_bound::ItemData(form.list, 0), 1);
  EXPECT_EQ(late_bound::ItemData(form.list, 1), -3);
  EXPECT_EQ(late_bound::ItemData(form.list, 2), 0);
}

TYPED_TEST(Lists, SelectTheFirstOfATextAndTheLastOfADatum) {
  ListForm<TypeParam> form;
  form.controls.ArrayToList(form.list, {"a", "b", "b", "c"}, {7, 8, 7, 9});
  EXPECT_TRUE(form.controls.SelectInList(form.list, "b"));
  EXPECT_EQ(form.list.GetSelection(), 1);
  EXPECT_TRUE(form.controls.SelectInList(form.list, "", 7));
  EXPECT_EQ(form.list.GetSelection(), 2);
  EXPECT_TRUE(form.controls.SelectInList(form.list, "", 5));
}

TEST(ClsControls, RefuseToFillWhatIsNoList) {
  Form form;
  EXPECT_EQ(ErrorOf([&] { form.controls.ArrayToList(form.first, {"a"}); }).Number(),
            error_number::kNoSuchMember);
  EXPECT_EQ(ErrorOf([&] { form.controls.SelectInList(form.first, "a"); }).Number(),
            error_number::kNoSuchMember);
}

TEST(ClsControls, IdentifyTheSelectedOption) {
  Form form;
  EXPECT_EQ(form.controls.GetSelectedOption(form.group, kByName), OptionId()) << "none selected";
  form.first.SetValue(true);
  form.first.SetName("chkFirst");
  late_bound::SetTag(form.first, "tag");
  const std::vector<std::pair<obWhatData, OptionId>> cases = {
      {kByPosition, std::int16_t{2}}, {kByName, "chkFirst"},
      {kByCaption, "&First"},         {kByTag, "tag"},
      {kByControl, &form.first},      {6, OptionId()},
  };
  for (const auto& [what, id] : cases)
    EXPECT_EQ(form.controls.GetSelectedOption(form.group, what), id) << what;
}

TEST(ClsControls, SelectAnOptionByAnyOfItsMarks) {
  for (const auto& [what, value] :
       std::vector<std::pair<obWhatData, OptionId>>{{kByName, "chkFirst"},
                                                    {kByCaption, "&First"},
                                                    {kByTag, "4"},
                                                    {kByTag, std::int16_t{4}}}) {
    Form form;
    form.first.SetName("chkFirst");
    late_bound::SetTag(form.first, "4");
    EXPECT_TRUE(form.controls.SetSelectedOption(value, form.group, what));
    EXPECT_TRUE(form.first.GetValue()) << what;
    EXPECT_FALSE(form.second.GetValue()) << what;
  }
  Form form;
  form.controls.SetSelectedOption(&form.second, form.group, kByControl);
  EXPECT_TRUE(form.second.GetValue());
}

// Reading counts the controls of the container, setting those of the whole form.
TEST(ClsControls, CountPositionsInTwoWays) {
  Form form;
  form.second.SetValue(true);
  const OptionId position = form.controls.GetSelectedOption(form.group, kByPosition);
  EXPECT_EQ(position, OptionId(std::int16_t{1}));
  form.second.SetValue(false);
  form.controls.SetSelectedOption(position, form.group, kByPosition);
  EXPECT_FALSE(form.second.GetValue());
  form.controls.SetSelectedOption("2", form.group, kByPosition);
  EXPECT_TRUE(form.second.GetValue());
}

TEST(ClsControls, EndQuietlyAtAControlWithoutAValue) {
  Form form;
  form.first.SetValue(true);
  new wxStaticText(&form.group, wxID_ANY, "label");
  EXPECT_EQ(form.controls.GetSelectedOption(form.group, kByCaption), OptionId());
  new wxTextCtrl(&form.group, wxID_ANY);
  EXPECT_TRUE(form.controls.SetSelectedOption("&Second", form.group, kByCaption));
  EXPECT_FALSE(form.second.GetValue());
}

TEST(ClsControls, EnableOnlyWhatLiesDirectlyInAContainer) {
  Form form;
  form.controls.EnableFrame(form.group, false);
  EXPECT_FALSE(form.first.IsThisEnabled());
  EXPECT_FALSE(form.inner.IsThisEnabled());
  EXPECT_TRUE(form.deep.IsThisEnabled());
  EXPECT_TRUE(form.group.IsThisEnabled());
  EXPECT_TRUE(form.other.IsThisEnabled());
  form.controls.EnableFrame(form.group, true);
  EXPECT_TRUE(form.first.IsThisEnabled());
}

}  // namespace
}  // namespace korvex
