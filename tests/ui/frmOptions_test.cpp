#include "ui/frmOptions.h"

#include <gmock/gmock.h>

#include "tests/support/campaign.h"
#include "tests/ui/ui_support.h"
#include "ui/wx_text.h"

namespace korvex {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char kByFolder[] = "Output File by Folder";

// The sample workbook offers "Filename", "Date", "day_num", "#", "compound ID", "plate" and
// "Delta OD".
struct Options : testing::Test {
  Options() { campaign.Put("Set 1/a & b.xls", {}); }

  // Opens the dialog, lets the step use it, and closes it unless the step has.
  void Use(const ModalDriver::Step& step) {
    ModalDriver driver;
    driver.Expect([&step](wxDialog& dialog) {
      step(dialog);
      if (dialog.IsShown()) dialog.Close();
    });
    frmOptions::ShowOptions(campaign.folder, {}, nullptr);
  }
  std::string Main(const char* key) { return Stored("Main Section", key); }
  std::string Structure(const char* key) { return Stored("File Structure", key); }
  std::string Stored(const char* section, const char* key) {
    return campaign.platform.settings.Get(section, key).value_or("(none)");
  }

  Campaign campaign;
};

wxTextCtrl& Box(wxWindow& dialog, const char* name) {
  return Find<wxTextCtrl>(dialog, name);
}
std::string Text(wxWindow& dialog, const char* name) {
  return FromWx(Box(dialog, name).GetValue());
}
bool Selected(wxWindow& dialog, const char* name) {
  return Find<wxRadioButton>(dialog, name).GetValue();
}
void Choose(wxWindow& dialog, const char* name) {
  Find<wxRadioButton>(dialog, name).SetValue(true);
  Send(Find<wxRadioButton>(dialog, name), wxEVT_RADIOBUTTON, 1);
}
void Check(wxWindow& dialog, const char* name, bool checked) {
  Find<wxCheckBox>(dialog, name).SetValue(checked);
  Send(Find<wxCheckBox>(dialog, name), wxEVT_CHECKBOX, checked);
}
void Press(wxWindow& dialog, const char* name) {
  Click(Find<wxButton>(dialog, name));
}
void TurnToStructure(wxWindow& dialog) {
  Find<wxNotebook>(dialog, "tabOptions").SetSelection(1);
}
void SelectIn(wxWindow& dialog, const char* list, const char* column) {
  ASSERT_TRUE(Find<wxListBox>(dialog, list).SetStringSelection(column));
}
std::vector<std::string> Items(wxWindow& dialog, const char* list) {
  std::vector<std::string> items;
  for (const wxString& item : Find<wxListBox>(dialog, list).GetStrings()) {
    items.push_back(FromWx(item));
  }
  return items;
}

TEST_F(Options, ShowsTheStoredChoicesAndTheSample) {
  campaign.Set("Main Section", "Output File Method", kByFolder);
  campaign.Set("Main Section", "Auto-Replace Output files", "0");
  campaign.Set("Main Section", "Error Email Address", "lab@example.org");
  Use([](wxDialog& dialog) {
    EXPECT_EQ(dialog.GetTitle(), "KORVEX - Options");
    EXPECT_TRUE(Selected(dialog, "optOutputFileByFolder"));
    EXPECT_TRUE(Selected(dialog, "optAutoReplaceFalse"));
    EXPECT_EQ(Text(dialog, "txtFilename"), "all.xls");
    EXPECT_EQ(Text(dialog, "txtOutputFile"), "/data/screen/all.xls");
    EXPECT_FALSE(Box(dialog, "txtOutputFile").IsEnabled());
    EXPECT_FALSE(Find<wxCheckBox>(dialog, "chkLaunchOutputFile").GetValue());
    EXPECT_FALSE(Find<wxCheckBox>(dialog, "chkErrMail").GetValue());
    EXPECT_EQ(Text(dialog, "txtEmailAddress"), "lab@example.org");
    EXPECT_FALSE(Box(dialog, "txtEmailAddress").IsEnabled());
    EXPECT_THAT(Items(dialog, "lstAvailableCols"), ElementsAre("Filename", "Date", "day_num", "#",
                                                               "compound ID", "plate", "Delta OD"));
    EXPECT_THAT(Items(dialog, "lstKeyColumns"), ElementsAre("compound ID"));
    EXPECT_THAT(Items(dialog, "lstOutputColumns"), ElementsAre("compound ID", "plate"));
    EXPECT_EQ(Find<wxChoice>(dialog, "cboDataCol").GetStringSelection(), "Delta OD");
    TurnToStructure(dialog);
    auto& sample = Find<wxButton>(dialog, "cmdSampleFile");
    EXPECT_EQ(sample.GetLabelText(), "a & b.xls");
    EXPECT_EQ(sample.GetToolTipText(), "/data/screen/Set 1/a & b.xls");
    Click(sample);
  });
  EXPECT_THAT(campaign.platform.shell.opened, ElementsAre("/data/screen/Set 1/a & b.xls"));
  EXPECT_THAT(campaign.platform.dialogs.texts, IsEmpty());
}

TEST_F(Options, OkStoresEveryChoice) {
  Use([](wxDialog& dialog) {
    Choose(dialog, "optOutputFileByFolder");
    Box(dialog, "txtFilename").SetValue("day.xls");
    Choose(dialog, "optAutoReplaceFalse");
    Check(dialog, "chkLaunchOutputFile", true);
    Check(dialog, "chkErrMail", true);
    EXPECT_TRUE(Box(dialog, "txtEmailAddress").IsEnabled());
    Box(dialog, "txtEmailAddress").SetValue("lab@example.org");
    TurnToStructure(dialog);
    SelectIn(dialog, "lstAvailableCols", "Date");
    SelectIn(dialog, "lstOutputColumns", "plate");
    Press(dialog, "cmdToKeys");
    for (int press = 0; press < 2; ++press) Press(dialog, "cmdToOutput");
    SelectIn(dialog, "lstAvailableCols", "#");
    Press(dialog, "cmdToOutput");
    EXPECT_THAT(Items(dialog, "lstOutputColumns"),
                ElementsAre("compound ID", "Date", "#", "plate"));
    Press(dialog, "cmdFromOutput");
    EXPECT_EQ(Find<wxListBox>(dialog, "lstOutputColumns").GetStringSelection(), "#");
    Find<wxChoice>(dialog, "cboDataCol").SetStringSelection("#");
    Press(dialog, "cmdOK");
    EXPECT_FALSE(dialog.IsShown());
  });
  EXPECT_EQ(Main("Last Path"), "/data/screen");
  EXPECT_EQ(Main("Output File Method"), kByFolder);
  EXPECT_EQ(Main("Output File"), "day.xls");
  EXPECT_EQ(Main("Output Path"), "/out/");
  EXPECT_EQ(Main("Auto-Replace Output files"), "0");
  EXPECT_EQ(Main("Launch Output File"), "1");
  EXPECT_EQ(Main("Send Email on Error"), "-1");
  EXPECT_EQ(Main("Error Email Address"), "lab@example.org");
  EXPECT_EQ(Structure("Keys Columns"), "compound ID<-- -->Date");
  EXPECT_EQ(Structure("Output Columns"), "compound ID<-- -->Date<-- -->#");
  EXPECT_EQ(Structure("Data Column"), "#");
}

TEST_F(Options, ClickingAMethodOffersItsStoredName) {
  Use([](wxDialog& dialog) {
    for (const bool by_folder : {true, false}) {
      Box(dialog, by_folder ? "txtFilename" : "txtOutputFile").SetValue("typed");
      Choose(dialog, by_folder ? "optOutputFileByFolder" : "optOutputFileByName");
      EXPECT_EQ(Box(dialog, "txtFilename").IsEnabled(), by_folder);
      EXPECT_EQ(Box(dialog, "txtOutputFile").IsEnabled(), !by_folder);
    }
    EXPECT_EQ(Text(dialog, "txtFilename"), "all.xls");
    EXPECT_EQ(Text(dialog, "txtOutputFile"), "/out/all.xls");
  });
}

TEST_F(Options, AnUnknownMethodSelectsNeitherOptionAndStaysStored) {
  campaign.Set("Main Section", "Output File Method", "by moonlight");
  Use([](wxDialog& dialog) {
    EXPECT_FALSE(Selected(dialog, "optOutputFileByFolder"));
    EXPECT_FALSE(Selected(dialog, "optOutputFileByName"));
    Box(dialog, "txtFilename").SetValue("other.xls");
    Press(dialog, "cmdOK");
  });
  EXPECT_EQ(Main("Last Path"), "/data/screen");
  EXPECT_EQ(Main("Output File Method"), "by moonlight");
  EXPECT_EQ(Main("Output File"), "all.xls");
}

TEST_F(Options, BrowsingReplacesTheOutputFileUnlessCancelled) {
  const auto former = frmOptions::ask_for_output_file;
  std::string asked_with;
  std::string answer;
  frmOptions::ask_for_output_file = [&](wxWindow&, const std::string& shown) {
    asked_with = shown;
    return answer;
  };
  Use([&](wxDialog& dialog) {
    answer = "  ";
    Press(dialog, "cmdBrowse");
    EXPECT_EQ(asked_with, "/out/all.xls");
    EXPECT_EQ(Text(dialog, "txtOutputFile"), "/out/all.xls");
    Choose(dialog, "optOutputFileByFolder");
    answer = " /data/r\xE9sultat/day.xls ";  // no UTF-8
    Press(dialog, "cmdBrowse");
    EXPECT_THAT(Text(dialog, "txtOutputFile"), HasSubstr("/data/r"));
    Press(dialog, "cmdOK");
  });
  frmOptions::ask_for_output_file = former;
  EXPECT_EQ(Main("Output File Method"), "Output File by constant name");
  EXPECT_EQ(Main("Output Path"), "/data/r\xE9sultat/");
  EXPECT_EQ(Main("Output File"), "day.xls");
}

TEST_F(Options, GivesATypedNameItsFolder) {
  const std::string home = campaign.platform.files.DefaultFolder();
  const struct {
    std::string typed, path, file;
  } cases[] = {{"day.xls", home + "/", "day.xls"}, {"", "", ""}, {"/out/", "/out/", ""}};
  for (const auto& c : cases) {
    Use([&](wxDialog& dialog) {
      Box(dialog, "txtOutputFile").SetValue(c.typed);
      Press(dialog, "cmdOK");
    });
    EXPECT_EQ(Main("Output Path"), c.path);
    EXPECT_EQ(Main("Output File"), c.file);
  }
}

TEST_F(Options, StaysOpenWithoutAKeyColumnAndStoresNothingMoreWhenClosed) {
  Use([this](wxDialog& dialog) {
    Choose(dialog, "optOutputFileByFolder");
    Check(dialog, "chkErrMail", true);
    TurnToStructure(dialog);
    SelectIn(dialog, "lstKeyColumns", "compound ID");
    for (int press = 0; press < 2; ++press) Press(dialog, "cmdFromKeys");
    SelectIn(dialog, "lstOutputColumns", "plate");
    Press(dialog, "cmdFromOutput");
    Press(dialog, "cmdOK");
    EXPECT_TRUE(dialog.IsShown());
    EXPECT_THAT(
        campaign.platform.dialogs.texts,
        ElementsAre("Please select at least one column for key columns, and output columns."));
  });
  EXPECT_EQ(Structure("Output Columns"), "compound ID");
  EXPECT_EQ(Structure("Keys Columns"), "compound ID");
  EXPECT_EQ(Main("Last Path"), "(none)");
  EXPECT_EQ(Main("Output File Method"), "(none)");
  EXPECT_EQ(Main("Send Email on Error"), "0");
}

TEST_F(Options, WarnsOfASampleThatDoesNotFitTheSettings) {
  campaign.Set("File Structure", "Data Column", "delta od");
  campaign.SetKeys({"compound ID", "batch"});
  Use([this](wxDialog& dialog) {
    ASSERT_EQ(campaign.platform.dialogs.buttons.size(), 1u);
    const ButtonMessage& warning = campaign.platform.dialogs.buttons[0];
    EXPECT_EQ(warning.prompt,
              "File format does not correspond to last settings saved. Please make sure the "
              "settings are as desired.\r\n\r\nFile used for format check:\r\n\r\n"
              "/data/screen/Set 1/a & b.xls");
    EXPECT_EQ(warning.icon, 17);
    EXPECT_EQ(warning.title, "KORVEX");
    EXPECT_THAT(Items(dialog, "lstKeyColumns"), ElementsAre("compound ID"));
    EXPECT_EQ(Find<wxChoice>(dialog, "cboDataCol").GetSelection(), wxNOT_FOUND);
    Press(dialog, "cmdOK");
  });
  EXPECT_EQ(Structure("Data Column"), "");
}

TEST_F(Options, OpensWithoutASample) {
  campaign.platform.files.Remove(campaign.Path("Set 1"));
  Use([](wxDialog& dialog) {
    EXPECT_THAT(Items(dialog, "lstAvailableCols"), IsEmpty());
    EXPECT_FALSE(Find<wxButton>(dialog, "cmdSampleFile").IsEnabled());
  });
}

TEST_F(Options, ReportsSettingsThatCannotBeStoredAndStaysOpen) {
  Use([this](wxDialog& dialog) {
    campaign.platform.settings.failure = 70;
    Press(dialog, "cmdOK");
    EXPECT_TRUE(dialog.IsShown());
  });
  EXPECT_THAT(campaign.platform.dialogs.texts, ElementsAre(HasSubstr("frmStructure.SaveSettings"),
                                                           HasSubstr("frmStructure.cmdOK_Click")));
}

TEST_F(Options, ReportsSettingsThatCannotBeReadInsteadOfOpening) {
  campaign.Set("Main Section", "Launch Output File", "often");
  frmOptions::ShowOptions(campaign.folder, {}, nullptr);
  EXPECT_THAT(campaign.platform.dialogs.texts, ElementsAre(HasSubstr("frmOptions.ShowOptions")));
}

}  // namespace
}  // namespace korvex
