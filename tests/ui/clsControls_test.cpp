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

TYPED_TEST(Lists, TakeTextsWithTheirDataAndSelectByEither) {
  ListForm<TypeParam> form;
  form.controls.ArrayToList(form.list, {"a", "", "b", "b"}, {7, 8, -3, 7});
  form.controls.ArrayToList(form.list, {"d"});
  ASSERT_EQ(late_bound::ListCount(form.list), 4) << "an empty text is left out";
  EXPECT_EQ(late_bound::List(form.list, 3), "d");
  EXPECT_EQ(late_bound::ItemData(form.list, 1), -3);
  EXPECT_EQ(late_bound::ItemData(form.list, 3), 0);
  EXPECT_TRUE(form.controls.SelectInList(form.list, "b"));
  EXPECT_EQ(form.list.GetSelection(), 1) << "the first of a text";
  EXPECT_TRUE(form.controls.SelectInList(form.list, "", 7));
  EXPECT_EQ(form.list.GetSelection(), 2) << "the last of a datum";
  EXPECT_TRUE(form.controls.SelectInList(form.list, "", 5)) << "no match";
  EXPECT_EQ(ErrorOf([&] { form.controls.ArrayToList(form.first, {"a"}); }).Number(),
            error_number::kNoSuchMember);
}

// Reading counts the controls of the container, setting those of the whole form.
TEST(ClsControls, IdentifyAndSelectAnOptionByEachOfItsMarks) {
  Form form;
  form.first.SetName("chkFirst");
  late_bound::SetTag(form.first, "4");
  EXPECT_EQ(form.controls.GetSelectedOption(form.group, kByName), OptionId()) << "none selected";
  const struct {
    obWhatData what;
    OptionId read, set;
  } cases[] = {{kByPosition, std::int16_t{2}, "3"},    {kByName, "chkFirst", "chkFirst"},
               {kByCaption, "&First", "&First"},       {kByTag, "4", std::int16_t{4}},
               {kByControl, &form.first, &form.first}, {6, OptionId(), OptionId()}};
  for (const auto& c : cases) {
    form.first.SetValue(true);
    EXPECT_EQ(form.controls.GetSelectedOption(form.group, c.what), c.read) << c.what;
    form.first.SetValue(false);
    EXPECT_TRUE(form.controls.SetSelectedOption(c.set, form.group, c.what));
    EXPECT_EQ(form.first.GetValue(), c.read != OptionId()) << c.what;
    EXPECT_FALSE(form.second.GetValue()) << c.what;
  }
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
