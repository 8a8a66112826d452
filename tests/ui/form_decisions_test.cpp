// What the forms decide without their controls.

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <numeric>
#include <thread>

#include "tests/support/errors.h"
#include "tests/support/fakes.h"
#include "ui/file_pattern.h"
#include "ui/folder_contents.h"
#include "ui/form_helpers.h"
#include "ui/message_box_layout.h"
#include "ui/option_choices.h"
#include "ui/run_summary.h"
#include "ui/sample_campaign.h"

namespace korvex {
namespace {

TEST(FilePattern, MatchesNamesAsFileListsDo) {
  const struct {
    const char *pattern, *name;
    bool matches;
  } cases[] = {
      {"*.xls", "Plate 1.XLS", true},
      {"*.xls", "plate.xlsx", false},
      {"*.*", "no dot", true},
      {"*.", "no dot", false},
      {"p?ate.xls", "plate.xls", true},
      {"p?ate.xls", "pate.xls", false},
      {"?.xls", "ä.xls", true},
      {"Ä.xls", "ä.xls", true},
      {"?.xls", "\xff.xls", true},
      {"*a*b", "aabxab", true},
      {"*a*b", "aabxa", false},
      {"x*", "x", true},
      {"x", "", false},
      {"*.xls; *.csv ;", "b.csv", true},
      {"*.xls; *.csv ;", "b.txt", false},
      {"bijo.bijo", "plate.xls", false},
  };
  for (const auto& [pattern, name, matches] : cases)
    EXPECT_EQ(FilePattern(pattern).Matches(name), matches) << pattern << " " << name;
  for (const char* pattern : {"", " ; ", "a/*.xls", "a\\b", "c:*", "\"x\"", "<x", "x>", "a|b"})
    EXPECT_EQ(ErrorOf([&] { FilePattern{pattern}; }).Number(), error_number::kInvalidCall)
        << pattern;
}

TEST(DisabledShade, LeavesTextReadable) {
  const wxColour face(240, 240, 240);
  const struct {
    wxColour caption, text;
    bool is_kept;
  } cases[] = {
      {wxColour(192, 192, 192), wxColour(0, 0, 0), true},  // as it once was
      {wxColour(0, 0, 0), wxColour(0, 0, 0), false},       // Windows 10 and 11
      {wxColour(67, 78, 84), wxColour(0, 0, 0), false},    // Windows 7
      {wxColour(0, 0, 0), wxColour(255, 255, 255), true},  // dark themes
  };
  for (const auto& c : cases) {
    EXPECT_EQ(DisabledShade(c.caption, c.text, face), c.is_kept ? c.caption : face);
  }
}

TEST(WidenedPattern, TakesInWhatItDoesNotMatch) {
  const struct {
    const char* pattern;
    std::vector<std::string> names;
    const char* widened;
  } cases[] = {
      {"*.xls", {"a.xls", "b.XLS"}, "*.xls"},
      {"*.xls", {"a.ods", "b.ods", "c.xlsx"}, "*.xls;*.ods;*.xlsx"},
      {"KIN*", {"plate"}, "KIN*;*"},
      {"*.xls", {"a.b;c"}, "*.xls;*"},
  };
  for (const auto& c : cases) {
    const std::string widened = WidenedPattern(c.pattern, c.names);
    EXPECT_EQ(widened, c.widened);
    for (const std::string& name : c.names) EXPECT_TRUE(FilePattern(widened).Matches(name)) << name;
  }
}

TEST(FolderContents, SaysWhatARunWouldReadAndWhatNot) {
  TestPlatform platform;
  MemoryFileSystem& files = platform.files;
  FolderContents contents;
  const auto text = [&](bool to_the_end = true) {
    contents.Start("/data", SortedEntries("/data"));
    while (to_the_end && !contents.IsDone()) contents.Step();
    return contents.Text();
  };
  files.AddFile("/data/all.xls");
  EXPECT_EQ(text(),
            "There are no sub-folders here. Choose the folder above, or process selected files.");
  files.AddFile("/data/Set 1/a.xls");
  EXPECT_EQ(text(), "1 sub-folder, 1 file: all will be read");
  for (const char* name : {"Set 1/.b", "Set 2/c.txt", "Set 2/taken for a workbook.xls/d.xls"})
    files.AddFile(std::string("/data/") + name);
  EXPECT_EQ(text(false), "2 sub-folders");
  EXPECT_EQ(text(), "2 sub-folders, 4 files: all will be read");
  files.AddFolder("/data/Set 2/old");
  EXPECT_EQ(text(),
            "2 sub-folders, 4 files: all will be read\n\nFolders inside them will be skipped: "
            "Set 2/old");
  for (const char* name : {"1", "2", "3", "4", "5", "6"})
    files.AddFolder(std::string("/data/Set 1/raw") + name);
  EXPECT_THAT(
      text(),
      testing::EndsWith(": Set 1/raw1, Set 1/raw2, Set 1/raw3, Set 1/raw4, Set 1/raw5 and 2 more"));
  int listed = 0;
  files.on_list = [&](const std::string& folder) {
    if (folder != "/data" && ++listed == 1)
      std::this_thread::sleep_for(std::chrono::milliseconds(160));
  };
  EXPECT_EQ(text(), "2 sub-folders: all files in them will be read");
  EXPECT_EQ(listed, 1);
  files.Deny("/data/Set 1");
  EXPECT_EQ(text(), "2 sub-folders: all files in them will be read");
}

TEST(SampleCampaign, IsFoundWhereverTheProgramLiesAndCopiedOnce) {
  const struct {
    PathStyle style;
    const char *programs, *samples, *copy;
  } cases[] = {
      {PathStyle::kLinux, "/usr/lib/korvex/bin", "/usr/share/korvex/samples",
       "/home/user/Documents/KORVEX sample campaign"},
      {PathStyle::kLinux, "/src/korvex/build/bin", "/src/korvex/samples",
       "/home/user/Documents/KORVEX sample campaign"},
      {PathStyle::kWindows, "C:\\KORVEX\\bin", "C:\\KORVEX\\samples",
       "C:\\Users\\user\\Documents\\KORVEX sample campaign"},
  };
  for (const auto& c : cases) {
    TestPlatform platform(c.style);
    MemoryFileSystem& files = platform.files;
    platform.SetProgramFolder(c.programs);
    EXPECT_EQ(ErrorOf([] { sample_campaign::InstalledFolder(); }).Number(),
              error_number::kPathNotFound);
    const std::string s(1, files.Separator());
    const std::string campaign = s + "campaign" + s;
    for (const char* name : {"1.xls", "2.xls"})
      files.AddFile(c.samples + campaign + "Set" + s + name, "reading");
    files.AddFile(c.samples + campaign + "campaign.xls", "output of a run");
    files.AddFile(c.copy + s + "Set" + s + "2.xls", "changed by the user");
    EXPECT_EQ(sample_campaign::InstalledFolder(), c.samples);
    for (int time = 0; time < 2; ++time) EXPECT_EQ(sample_campaign::Copy(c.samples), c.copy);
    EXPECT_EQ(files.Content(c.copy + s + "Set" + s + "1.xls"), "reading");
    EXPECT_EQ(files.Content(c.copy + s + "Set" + s + "2.xls"), "changed by the user");
    EXPECT_FALSE(files.FileExists(c.copy + s + "campaign.xls"));
  }
}

TEST(ColumnList, KeepsANameThatItHasAndRemovesNothingWhileNothingIsSelected) {
  ColumnList list{{"ID"}, std::nullopt};
  EXPECT_EQ(AddToList("ID", list), std::nullopt);
  EXPECT_EQ(RemoveFromList(list), std::nullopt);
}

TEST(OutputFilters, GiveTheEndingThatTheUserMeans) {
  const TestPlatform platform;
  const struct {
    const char* name;
    int offered, chosen;
    const char* meant;
  } cases[] = {
      {"/runs/a.xls", 0, 0, "/runs/a.xls"},     {"/runs/a.XLS", 0, 1, "/runs/a.xlsx"},
      {"/runs/a.csv", 2, 0, "/runs/a.xls"},     {"/runs/a.xlsx", 0, 2, "/runs/a.xlsx"},
      {"/runs/1.2/a", 0, 2, "/runs/1.2/a.csv"}, {"/runs/a.b", 1, 0, "/runs/a.b"},
      {"/runs/a.tsv", 3, 2, "/runs/a.csv"},     {"/runs/a", 3, 3, "/runs/a.tsv"},
  };
  for (const auto& [name, offered, chosen, meant] : cases)
    EXPECT_EQ(OutputFileChosen(name, offered, chosen), meant) << name;
}

TEST(WithEnding, CompletesNamesThatHaveNone) {
  const TestPlatform platform;
  for (const auto& [typed, meant] : {std::pair("day", "day.xls"),
                                     {" day 1 ", "day 1.xls"},
                                     {"/runs/1.2/day", "/runs/1.2/day.xls"},
                                     {"day.CSV", "day.CSV"},
                                     {"day.", "day."},
                                     {"/runs/", "/runs/"},
                                     {" ", " "}})
    EXPECT_EQ(WithEnding(typed), meant) << typed;
}

TEST(MessageBoxLayout, GrowsWithTheMessageAndTheButtonsAndNeverShrinks) {
  constexpr MessageBoxDesign kDesign{6000, 2000, {100, 1200, 1000, 400}, 900, 150};
  const struct {
    std::vector<int> captions;
    int message_height;
    bool has_icon;
    int form_width, form_height, message_left;
    TwipBox first_button;
  } cases[] = {
      {{300}, 850, true, 6000, 2000, 900, {2500, 1200, 1000, 400}},
      {{300}, 850, false, 6000, 2000, 150, {2500, 1200, 1000, 400}},
      // Below the message.
      {{300, 300}, 851, true, 6000, 2051, 900, {1900, 1201, 1000, 400}},
      // As wide as the widest caption needs, and in the middle as long as there is room.
      {{801, 300, 1200}, 100, true, 6000, 2000, 900, {700, 1200, 1400, 400}},
      {{2000, 2000, 2000}, 100, true, 7300, 2000, 900, {100, 1200, 2200, 400}},
  };
  for (const auto& c : cases) {
    const auto message_height = [&](int) { return c.message_height; };
    const MessageBoxLayout layout =
        LayOutMessageBox(kDesign, {c.captions, c.has_icon, message_height, 20'000, 15'000});
    EXPECT_EQ(layout.form_width, c.form_width);
    EXPECT_EQ(layout.form_height, c.form_height);
    const int message_width = c.form_width - c.message_left - 250;
    EXPECT_TRUE((layout.message == TwipBox{c.message_left, 150, message_width, c.message_height}));
    ASSERT_EQ(layout.buttons.size(), c.captions.size());
    TwipBox button = c.first_button;
    for (const TwipBox& placed : layout.buttons) {
      EXPECT_TRUE(placed == button) << placed.left << ", not " << button.left;
      button.left = button.Right() + 200;
    }
  }
}

// A record with that many problems, and notes of that many kinds.
RunRecord Record(RunRecord::Outcome outcome, bool check, int problems, int notes) {
  RunRecord record;
  record.outcome = outcome;
  record.options.check = check;
  record.inputs.resize(7);
  record.input_count = 1200;
  for (int i = 0; i < problems; ++i) {
    const std::string file = "a/P" + std::to_string(i) + ".xls";
    record.problems.push_back({"Duplicate key in file \r\n'/.../" + file + "'",
                               "Row 5 repeats row 3. So.",
                               {file, i + 1, "K1", "", ""}});
  }
  for (int i = 0; i < notes; ++i)
    record.findings.Note(static_cast<FindingKind>(i), [] { return FindingPlace(); });
  return record;
}

TEST(RunSummary, TellsWhatWasFoundInAFewLines) {
  using enum RunRecord::Outcome;
  const std::string problem = "\r\n\u2022 a/P0.xls: Duplicate key in file. Row 5 repeats row 3.";
  const std::string note = Record(kFinished, false, 0, 1).findings.All().front().text;
  const std::string short_note = note.substr(0, note.find(": ")) + ".";
  const struct {
    RunRecord::Outcome outcome;
    bool check;
    int problems, notes;
    std::string text;
    int icon;
  } cases[] = {
      {kFinished, false, 0, 0, "", 0},
      {kFailed, false, 1, 1, "", 0},
      {kStopped, false, 1, 1, "", 0},
      {kFinished, false, 0, 1,
       "The output was written, but the data do not look right:\r\n\u2022 " + note, 17},
      {kChecked, true, 0, 0, "Checked 7 files: nothing was found. No output was written.", 13},
      {kChecked, true, 1, 1,
       "Checked 7 files: 1 problem, 1 note. No output was written.\r\n\r\n"
       "These problems keep a run from finishing:" +
           problem + "\r\n\r\nBesides, the data do not look right:\r\n\u2022 " + short_note,
       17},
      {kStopped, true, 0, 0,
       "The check was stopped at file 7 of 1,200: nothing was found until then.", 13},
      {kFailed, true, 1, 0,
       "The check could not be made.\r\n\r\nThese problems keep a run from finishing:" + problem,
       17},
  };
  for (const auto& c : cases) {
    const RunSummary summary = Summary(Record(c.outcome, c.check, c.problems, c.notes));
    EXPECT_EQ(summary.text, c.text);
    EXPECT_EQ(summary.icon, c.icon) << c.text;
  }
  // The stop itself is no problem of the data.
  RunRecord stopped = Record(kStopped, true, 0, 0);
  stopped.problems.push_back({"An error occurred", kStopCause, {}});
  stopped.problems.push_back({kStopCause, "", {}});
  EXPECT_EQ(Summary(stopped).text, cases[6].text);
  // Every row of a file can have the same problem.
  RunRecord alike = Record(kChecked, true, 2, 0);
  alike.problems.resize(1200, alike.problems.back());
  EXPECT_THAT(Summary(alike).text, testing::EndsWith("row 3. (and 1,198 more like it)"));
}

TEST(RunSummary, StaysShortHoweverMuchWasFound) {
  using enum RunRecord::Outcome;
  for (const auto& [problems, notes, entries] :
       {std::array{0, 4, 4}, std::array{0, 14, 9}, std::array{30, 0, 9}, std::array{30, 1, 9},
        std::array{2, 14, 9}, std::array{30, 14, 10}}) {
    RunRecord record = Record(kChecked, true, problems, notes);
    for (Problem& problem : record.problems) problem.text = std::string(300, '\xC4') + problem.text;
    const std::vector<std::string> lines = Split(Summary(record).text, kLineBreak);
    EXPECT_EQ(std::ranges::count_if(lines, [](auto& line) { return line.starts_with("\u2022"); }),
              entries)
        << problems << " problems, " << notes << " notes";
    for (const std::string& line : lines) EXPECT_LE(line.size(), 250u) << line;
  }
  const std::string text = Summary(Record(kChecked, true, 30, 14)).text;
  EXPECT_THAT(text, testing::HasSubstr("and 25 more problems"));
  EXPECT_THAT(text, testing::HasSubstr("and 11 more notes"));
}

TEST(WrappedLines, BreakBetweenWordsAndWithinTooLongOnes) {
  const std::pair<std::wstring, int> cases[] = {{L"", 1},
                                                {L"0123456789     ", 1},
                                                {L"one three six", 2},
                                                {L"to 0123456789", 2},
                                                {L"to 01234567890123456789 go", 4},
                                                {L"0123456789012345 four", 3}};
  for (const auto& [paragraph, lines] : cases) {
    std::vector<int> ends(paragraph.size());
    std::iota(ends.begin(), ends.end(), 1);
    EXPECT_EQ(WrappedLines(paragraph, ends, 10), lines) << testing::PrintToString(paragraph);
  }
  const int wide[] = {20, 40};
  EXPECT_EQ(WrappedLines(L"WW", wide, 10), 2);
}

}  // namespace
}  // namespace korvex
