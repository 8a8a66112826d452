#include "platform/windows/command_line.h"

#include <gmock/gmock.h>

#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"
#include "tests/platform/temp_folder.h"

namespace korvex {
namespace {

using testing::ElementsAre;

TEST(CommandLine, PartsArguments) {
  const struct {
    const wchar_t* line;  // behind the program's name
    std::vector<std::string> arguments;
  } cases[] = {
      {L"", {}},
      {L"  a  \"b c\"\td", {"a", "b c", "d"}},
      {L"\"\" x\"y z\"w", {"", "xy zw"}},
      {LR"(C:\plates\ \\lab\run a\\b)", {"C:\\plates\\", "\\\\lab\\run", "a\\\\b"}},
      // A folder as command processors complete it.
      {LR"("C:\my plates\")", {"C:\\my plates\\"}},
      {LR"("Set 1\" -o "out 2.xls")", {"Set 1\\", "-o", "out 2.xls"}},
      {LR"(-o "a b\" --files "c d\")", {"-o", "a b\\", "--files", "c d\\"}},
      {LR"("C:\a b\\" x)", {"C:\\a b\\", "x"}},
      // Columns with a quotation mark in their names.
      {LR"(--data "Name 5\" long" -q)", {"--data", "Name 5\" long", "-q"}},
      {LR"(--keys "5\"" --data "5\" x")", {"--keys", "5\"", "--data", "5\" x"}},
      {LR"("a""b" \"c\\\"d)", {"a\"b", "\"c\\\"d"}},
      {L"\"never closed", {"never closed"}},
  };
  for (const auto& c : cases) {
    for (const std::wstring program : {L"korvex-convert ", L"\"C:\\Program Files\\korvex.exe\" "}) {
      EXPECT_EQ(CommandLineArguments(program + c.line), c.arguments) << FromWide(c.line);
    }
  }
  EXPECT_THAT(CommandLineArguments(L"korvex-convert"), testing::IsEmpty());
}

TEST(CommandLine, ListsFilesForPatternsAsThereAreAny) {
  const TempFolder folder;
  for (const char* name : {"b.XLS", "a.xls", "a.xlsx", "Größe.xls", "c.txt", "~$a.xls"}) {
    folder.Put(name, "");
  }
  SetFileAttributesW(ToWide(folder / "~$a.xls").c_str(), FILE_ATTRIBUTE_HIDDEN);
  const std::wstring start = L"k " + ToWide(folder.Path()) + L"\\";
  EXPECT_THAT(CommandLineArguments(start + L"*.xls x"),
              ElementsAre(folder / "a.xls", folder / "b.XLS", folder / "Größe.xls", "x"));
  EXPECT_THAT(CommandLineArguments(start + L"?.xls*"),
              ElementsAre(folder / "a.xls", folder / "a.xlsx", folder / "b.XLS"));
  EXPECT_THAT(CommandLineArguments(start + L"*.ods"), ElementsAre(folder / "*.ods"));
  EXPECT_THAT(CommandLineArguments(L"k \"" + ToWide(folder / "*.xls") + L"\""),
              ElementsAre(folder / "*.xls"))
      << "quoted";
}

}  // namespace
}  // namespace korvex
