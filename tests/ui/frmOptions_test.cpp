#include "ui/frmOptions.h"

#include <wx/stopwatch.h>
#include <wx/uiaction.h>

#include "files/folder_listing.h"
#include "tests/support/campaign.h"
#include "tests/ui/ui_support.h"

namespace korvex {
namespace {

constexpr char kByFolder[] = "Output File by Folder";

// The sample workbook offers "Filename", "Date", "day_num", "#", "compound ID", "plate" and
// "Delta OD".
struct Options : testing::Test {
  using Settings = std::vector<std::pair<const char*, std::string>>;

  Options() { campaign.Put("Set 1/a & b.xls", {}); }

  // Opens the dialog, lets the step use it, and closes it unless the step has.
  void Use(const std::function<void()>& step) {
    ModalDriver driver;
    driver.Expect([&](wxDialog& shown) {
      dialog = &shown;
      step();
      if (dialog->IsShown()) dialog->Close();
    });
    Open();
  }
  void Open() {
    ListedFolders folders;
    frmOptions::ShowOptions(campaign.folder, {}, nullptr, folders);
  }
  template <class Control>
  Control& The(const char* name) {
    return Find<Control>(*dialog, name);
  }
  wxTextCtrl& Box(const char* name) { return The<wxTextCtrl>(name); }
  bool Selected(const char* name) { return The<wxRadioButton>(name).GetValue(); }
  std::vector<std::string> Names(const char* list) { return Items(*dialog, list); }
  void Pick(const char* option) { Choose(*dialog, option); }
  void Press(const char* button) { Click(*dialog, button); }
  void Check(const char* name) {
    The<wxCheckBox>(name).SetValue(true);
    Send(The<wxCheckBox>(name), wxEVT_CHECKBOX, 1);
  }
  void TurnToStructure() { The<wxNotebook>("tabOptions").SetSelection(1); }
  // Selects a column in a list and presses a button.
  void Move(const char* list, const char* column, const char* button) {
    The<wxListBox>(list).SetSelection(wxNOT_FOUND);
    ASSERT_TRUE(The<wxListBox>(list).SetStringSelection(column));
    Press(button);
  }
  // Where the item is on the screen; the place below the last one for a number too many.
  wxPoint Place(const char* list, int item) {
    auto& box = The<wxListBox>(list);
    wxPoint place(5, 0);
    const auto is_before = [&](int found) { return found != wxNOT_FOUND && found < item; };
    while (is_before(box.HitTest(place))) ++place.y;
    return box.ClientToScreen(place + wxPoint(0, 5));
  }
  void ExpectStored(const char* section, const Settings& settings) {
    for (const auto& [key, value] : settings)
      EXPECT_EQ(campaign.platform.settings.Get(section, key).value_or("(none)"), value) << key;
  }

  Campaign campaign;
  const std::vector<std::string>& texts = campaign.platform.dialogs.texts;
  wxDialog* dialog = nullptr;
};

TEST_F(Options, ShowsTheStoredChoicesAndTheSample) {
  campaign.Set("Main Section", "Output File Method", kByFolder);
  campaign.Set("Main Section", "Auto-Replace Output files", "0");
  campaign.Set("Main Section", "Error Email Address", "lab@example.org");
  Use([&] {
    EXPECT_EQ(dialog->GetTitle(), "KORVEX - Options");
    EXPECT_TRUE(Selected("optOutputFileByFolder") && Selected("optAutoReplaceFalse"));
    EXPECT_EQ(Box("txtEmailAddress").GetValue(), "lab@example.org");
    EXPECT_FALSE(Box("txtOutputFile").IsEnabled() || Box("txtEmailAddress").IsEnabled());
    for (const char* name : {"chkLaunchOutputFile", "chkErrMail"})
      EXPECT_FALSE(The<wxCheckBox>(name).GetValue()) << name;
    EXPECT_THAT(Names("lstAvailableCols"), ElementsAre("Filename", "Date", "day_num", "#",
                                                       "compound ID", "plate", "Delta OD"));
    EXPECT_THAT(Names("lstKeyColumns"), ElementsAre("compound ID"));
    EXPECT_THAT(Names("lstOutputColumns"), ElementsAre("compound ID", "plate"));
    EXPECT_EQ(The<wxChoice>("cboDataCol").GetStringSelection(), "Delta OD");
    for (const bool by_folder : {false, true}) {  // each offers its stored name anew
      Box(by_folder ? "txtFilename" : "txtOutputFile").SetValue("typed");
      Pick(by_folder ? "optOutputFileByFolder" : "optOutputFileByName");
      EXPECT_EQ(Box("txtFilename").IsEnabled(), by_folder);
      EXPECT_EQ(Box("txtOutputFile").IsEnabled(), !by_folder);
    }
    EXPECT_EQ(Box("txtFilename").GetValue(), "all.xls");
    EXPECT_EQ(Box("txtOutputFile").GetValue(), "/data/screen/all.xls");
    TurnToStructure();
    EXPECT_EQ(The<wxButton>("cmdSampleFile").GetLabelText(), "a & b.xls");
    Press("cmdSampleFile");
  });
  EXPECT_THAT(campaign.platform.shell.opened, ElementsAre("/data/screen/Set 1/a & b.xls"));
  EXPECT_THAT(texts, IsEmpty());
}

TEST_F(Options, OkStoresEveryChoice) {
  Use([&] {
    Pick("optOutputFileByFolder");
    Box("txtFilename").SetValue("day.xls");
    Pick("optAutoReplaceFalse");
    Check("chkLaunchOutputFile");
    Check("chkErrMail");
    EXPECT_TRUE(Box("txtEmailAddress").IsEnabled());
    Box("txtEmailAddress").SetValue("lab@example.org");
    TurnToStructure();
    Move("lstAvailableCols", "Date", "cmdToKeys");
    Move("lstOutputColumns", "plate", "cmdToOutput");
    Press("cmdToOutput");  // it is there already
    Move("lstAvailableCols", "#", "cmdToOutput");
    EXPECT_THAT(Names("lstOutputColumns"), ElementsAre("compound ID", "Date", "#", "plate"));
    // Removing a column selects the next one, else the last.
    for (const auto& [column, next] : {std::pair("compound ID", "Date"), {"plate", "#"}}) {
      Move("lstOutputColumns", column, "cmdFromOutput");
      EXPECT_EQ(The<wxListBox>("lstOutputColumns").GetStringSelection(), next);
    }
    The<wxChoice>("cboDataCol").SetStringSelection("#");
    Press("cmdOK");
    EXPECT_FALSE(dialog->IsShown());
  });
  ExpectStored("Main Section", {{"Last Path", "/data/screen"},
                                {"Output File Method", kByFolder},
                                {"Output File", "day.xls"},
                                {"Output Path", "/out/"},
                                {"Auto-Replace Output files", "0"},
                                {"Launch Output File", "1"},
                                {"Send Email on Error", "-1"},
                                {"Error Email Address", "lab@example.org"}});
  ExpectStored("File Structure", {{"Keys Columns", "compound ID<-- -->Date"},
                                  {"Output Columns", "Date<-- -->#"},
                                  {"Data Column", "#"}});
}

TEST_F(Options, ListsFollowMouseAndKeyboard) {
  campaign.SetOutputs({"compound ID", "plate", "#"});
  Use([&] {
    TurnToStructure();
    ServeEvents();
    wxUIActionSimulator user;
    const auto keys = [&] { return Names("lstKeyColumns"); };
    const auto output = [&] { return Names("lstOutputColumns"); };
    const auto is_selected = [&](const char* list, int item) {
      auto& box = The<wxListBox>(list);
      wxArrayInt selected;
      const int count = box.GetSelections(selected);
      const bool is_blank = item >= static_cast<int>(box.GetCount());
      return is_blank ? count == 0 : box.IsSelected(item);
    };
    const auto click = [&](const char* list, int item, bool selects = true) {
      // Again when it came while the window manager still moved the window.
      for (int attempt = 0; attempt < 5; ++attempt) {
        const wxStopWatch watch;
        user.MouseMove(Place(list, item));
        ServeEvents();
        user.MouseClick();
        WaitUntil([&] { return is_selected(list, item) == selects || watch.Time() > 1'000; });
        if (is_selected(list, item) == selects) break;
      }
      ServeEvents();
    };
    const auto press_until = [&](int key, int modifiers, const auto& condition) {
      user.Char(key, modifiers);
      WaitUntil(condition);
    };
    // Several at once, before the selected column; then a double click, and Enter.
    click("lstKeyColumns", 0);
    click("lstAvailableCols", 1);
    press_until(WXK_DOWN, wxMOD_SHIFT, [&] { return is_selected("lstAvailableCols", 2); });
    EXPECT_TRUE(is_selected("lstAvailableCols", 1));
    Press("cmdToKeys");
    EXPECT_THAT(keys(), ElementsAre("Date", "day_num", "compound ID"));
    user.MouseMove(Place("lstAvailableCols", 3));
    // On a busy machine the second click may come too late to count; a name is added only once.
    for (int attempt = 0; attempt < 5 && keys().size() < 4; ++attempt) {
      const wxStopWatch watch;
      user.MouseDblClick();
      WaitUntil([&] { return keys().size() == 4 || watch.Time() > 1'500; });
    }
    EXPECT_THAT(keys(), ElementsAre("Date", "day_num", "#", "compound ID"));
    EXPECT_EQ(The<wxStaticText>("lblTarget").GetLabel(), "Double-click adds to key");
    click("lstOutputColumns", 3);  // blank
    click("lstAvailableCols", 0);
    press_until(WXK_RETURN, 0, [&] { return output().size() == 4; });
    EXPECT_THAT(output(), ElementsAre("compound ID", "plate", "#", "Filename"));
    EXPECT_TRUE(dialog->IsShown());

    // The selected column moves, and goes.
    click("lstOutputColumns", 3);
    press_until(WXK_UP, wxMOD_ALT, [&] { return output()[2] == "Filename"; });
    press_until(WXK_DOWN, wxMOD_ALT, [&] { return output()[3] == "Filename"; });
    user.MouseMove(Place("lstOutputColumns", 3));
    user.MouseDown();
    ServeEvents();
    for (const int item : {2, 1}) {
      user.MouseMove(Place("lstOutputColumns", item));
      WaitUntil([&] { return output()[static_cast<std::size_t>(item)] == "Filename"; });
    }
    user.MouseUp();
    WaitUntil([] { return !wxGetMouseState().LeftIsDown(); });
    ServeEvents();
    EXPECT_THAT(output(), ElementsAre("compound ID", "Filename", "plate", "#"));
    press_until(WXK_DELETE, 0, [&] { return output().size() == 3; });
    EXPECT_THAT(output(), ElementsAre("compound ID", "plate", "#"));

    // Nothing is selected any more.
    auto& list = The<wxListBox>("lstOutputColumns");
    EXPECT_EQ(list.GetStringSelection(), "plate");
    user.KeyDown(WXK_CONTROL);
    click("lstOutputColumns", 1, false);
    user.KeyUp(WXK_CONTROL);
    EXPECT_EQ(list.GetSelection(), wxNOT_FOUND);
    click("lstOutputColumns", 0);
    EXPECT_EQ(list.GetSelection(), 0);
    click("lstOutputColumns", 3);
    EXPECT_EQ(list.GetSelection(), wxNOT_FOUND);
  });
}

TEST_F(Options, CompletesANameThatIsTyped) {
  campaign.Set("Main Section", "Output File Method", kByFolder);
  campaign.Set("Main Section", "Output File", "of old");
  Use([&] {
    wxTextCtrl& name = Box("txtFilename");
    wxUIActionSimulator user;
    // By a click: a window manager may keep the focus from a window that nobody has touched.
    const auto leave = [&] {
      for (int attempt = 0; attempt < 5; ++attempt) {
        const wxStopWatch watch;
        ServeEvents();
        const wxRect place = name.GetScreenRect();
        user.MouseMove(place.GetPosition() + place.GetSize() / 2);
        user.MouseClick();
        WaitUntil([&] { return (dialog->IsActive() && name.HasFocus()) || watch.Time() > 1'000; });
        if (dialog->IsActive() && name.HasFocus()) break;
      }
      user.Char(WXK_TAB);
      WaitUntil([&] { return !name.HasFocus(); });
      ServeEvents();
    };
    leave();
    EXPECT_EQ(name.GetValue(), "of old");
    name.SetValue("day");
    leave();
    WaitUntil([&] { return name.GetValue() == "day.xls"; });
    name.SetValue("night");
    Press("cmdOK");  // as Enter does, which leaves the box where it is
  });
  ExpectStored("Main Section", {{"Output File", "night.xls"}});
}

TEST_F(Options, AnUnknownMethodSelectsNeitherOptionAndStaysStored) {
  campaign.Set("Main Section", "Output File Method", "by moonlight");
  Use([&] {
    EXPECT_FALSE(Selected("optOutputFileByFolder") || Selected("optOutputFileByName"));
    Box("txtFilename").SetValue("other.xls");
    Press("cmdOK");
  });
  ExpectStored("Main Section", {{"Last Path", "/data/screen"},
                                {"Output File Method", "by moonlight"},
                                {"Output File", "all.xls"}});
}

TEST_F(Options, BrowsingReplacesTheOutputFileUnlessCancelled) {
  const auto former = frmOptions::ask_for_output_file;
  std::string answer = "  ";
  frmOptions::ask_for_output_file = [&](wxWindow&, const std::string& shown) {
    EXPECT_THAT(shown, HasSubstr("/all.xls"));
    return answer;
  };
  Use([&] {
    Press("cmdBrowse");
    EXPECT_EQ(Box("txtOutputFile").GetValue(), "/out/all.xls");
    Pick("optOutputFileByFolder");
    answer = " /data/r\xE9sultat/day.xls ";  // no UTF-8
    Press("cmdBrowse");
    Press("cmdOK");
  });
  frmOptions::ask_for_output_file = former;
  ExpectStored("Main Section", {{"Output File Method", "Output File by constant name"},
                                {"Output Path", "/data/r\xE9sultat/"},
                                {"Output File", "day.xls"}});
}

TEST_F(Options, GivesATypedNameItsFolder) {
  const std::string home = campaign.platform.files.DefaultFolder();
  const struct {
    std::string typed, path, file;
  } cases[] = {{"day.xls", home + "/", "day.xls"}, {"", "", ""}, {"/out/", "/out/", ""}};
  for (const auto& [typed, path, file] : cases) {
    Use([&] {
      Box("txtOutputFile").SetValue(typed);
      Press("cmdOK");
    });
    ExpectStored("Main Section", {{"Output Path", path}, {"Output File", file}});
  }
}

TEST_F(Options, StaysOpenWithoutAKeyColumnAndStoresNothingMoreWhenClosed) {
  Use([&] {
    Pick("optOutputFileByFolder");
    Check("chkErrMail");
    TurnToStructure();
    Move("lstKeyColumns", "compound ID", "cmdFromKeys");
    Press("cmdFromKeys");
    Move("lstOutputColumns", "plate", "cmdFromOutput");
    The<wxNotebook>("tabOptions").SetSelection(0);
    Press("cmdOK");
    EXPECT_TRUE(dialog->IsShown());
    EXPECT_EQ(The<wxNotebook>("tabOptions").GetSelection(), 1);
    WaitUntil([&] { return The<wxListBox>("lstKeyColumns").HasFocus(); });
  });
  EXPECT_THAT(texts, ElementsAre("Please select at least one column for key columns, and output "
                                 "columns."));
  ExpectStored("File Structure",
               {{"Output Columns", "compound ID"}, {"Keys Columns", "compound ID"}});
  ExpectStored(
      "Main Section",
      {{"Last Path", "(none)"}, {"Output File Method", "(none)"}, {"Send Email on Error", "0"}});
}

TEST_F(Options, NamesWhatTheSampleLacksAndAsksBeforeThatIsDropped) {
  campaign.Set("File Structure", "Data Column", "delta od");
  campaign.SetKeys({"compound ID", "batch", "run"});
  campaign.platform.dialogs.button_answers = {"OK", "&Go Back", "&Drop Columns"};
  Use([&] {
    TurnToStructure();
    EXPECT_THAT(Names("lstKeyColumns"), ElementsAre("compound ID"));
    EXPECT_EQ(The<wxChoice>("cboDataCol").GetSelection(), wxNOT_FOUND);
    EXPECT_EQ(The<wxStaticText>("lblKeysMissing").GetLabelText(), "Missing: batch, run");
    for (const auto& [line, shown] :
         {std::pair("lblKeysMissing", true), {"lblOutputMissing", false}, {"lblDataMissing", true}})
      EXPECT_EQ(The<wxStaticText>(line).IsShown(), shown) << line;
    Press("cmdOK");
    EXPECT_TRUE(dialog->IsShown());
    ExpectStored("File Structure", {{"Data Column", "delta od"}});
    Press("cmdOK");
  });
  ExpectStored("File Structure", {{"Keys Columns", "compound ID"}, {"Data Column", ""}});
  EXPECT_THAT(texts, ElementsAre("File format does not correspond to last settings saved. Please "
                                 "make sure the settings are as desired.\r\n\r\nFile used for "
                                 "format check:\r\n\r\n/data/screen/Set 1/a & b.xls",
                                 HasSubstr("Drop them"), HasSubstr("Drop them")));
  const std::vector<ButtonMessage>& shown = campaign.platform.dialogs.buttons;
  EXPECT_EQ(shown[0].icon, 17);
  EXPECT_EQ(shown[0].cause, "Missing: key columns \"batch\", \"run\".");
  EXPECT_EQ(shown[1].cause, "Missing: key columns \"batch\", \"run\"; data column \"delta od\".");
  EXPECT_EQ(shown[1].default_button, 1);
}

TEST_F(Options, SaysWhyThereIsNoSample) {
  const auto open = [&] {
    Use([&] {
      EXPECT_THAT(Names("lstAvailableCols"), IsEmpty());
      Press("cmdOK");  // asks nothing, since it stores nothing
      EXPECT_TRUE(dialog->IsShown());
    });
    return campaign.platform.dialogs.buttons.front().cause;
  };
  campaign.platform.files.AddFile(campaign.Path("Set 0/a.xls"), "no workbook");
  EXPECT_THAT(open(), HasSubstr("a.xls"));
  campaign.platform.dialogs.buttons.clear();
  campaign.platform.files.Remove(campaign.Path("Set 0/a.xls"));
  EXPECT_EQ(open(),
            "The sample is the first file of the first sub-folder, and /data/screen/Set 0 holds "
            "none.");
  for (const std::string& text : texts) EXPECT_THAT(text, testing::Not(HasSubstr("Drop them")));
}

TEST_F(Options, ReportsSettingsThatCannotBeStoredOrRead) {
  Use([&] {
    campaign.platform.settings.failure = error_number::kPermissionDenied;
    Press("cmdOK");
    EXPECT_TRUE(dialog->IsShown());
  });
  Open();
  EXPECT_THAT(texts, ElementsAre(HasSubstr("frmStructure.SaveSettings"),
                                 HasSubstr("frmStructure.cmdOK_Click"),
                                 HasSubstr("frmOptions.ShowOptions")));
}

}  // namespace
}  // namespace korvex
