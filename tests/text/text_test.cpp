#include "text/text.h"

#include <gmock/gmock.h>

#include <charconv>
#include <cmath>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/error.h"
#include "platform/shown_text.h"
#include "text/code_page_1252.h"
#include "text/number_text.h"
#include "text/text_hash.h"

namespace korvex {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Text, IgnoresLetterCaseOfLatinGreekAndCyrillic) {
  const std::tuple<const char*, const char*, bool> cases[] = {
      {"Compound ID", "COMPOUND id", true},
      {"Größe", "GRÖßE", true},
      {"ÿ", "Ÿ", true},
      {"Łódź", "ŁÓDŹ", true},
      {"ẽ", "Ẽ", true},
      {"λόγος", "ΛΌΓΟΣ", true},
      {"ᾳ", "ᾼ", true},
      {"жизнь", "ЖИЗНЬ", true},
      {"ђ", "Ђ", true},
      {"µ÷×", "µ÷×", true},
      {"÷", "×", false},
      {"ß", "SS", false},
      {"ı", "I", false},
      {"a", "ab", false},
      {"\xE4", "\xC4", false},
      {"caf\xC3", "CAF\xC3", true},
      {"az@[`{ 09=az;", "AZ@[`{ 09=AZ;", true},
      {"@z[", "`z{", false},
      {"compound ID=a", "compound ID={", false},
  };
  for (const auto& [a, b, equal] : cases) {
    EXPECT_EQ(EqualText(a, b), equal) << a << " " << b;
    EXPECT_EQ(UpperCase(a) == UpperCase(b), equal) << a << " " << b;
    EXPECT_EQ(HashIgnoringCase(a) == HashIgnoringCase(b), equal) << a << " " << b;
  }
}

// Tables use the lowest bits. The names of compounds and wells differ in a few letters, mostly the
// last ones.
TEST(TextHash, SpreadsNamesThatDifferInAFewLetters) {
  constexpr int kNames = 1000;
  for (const char* before : {"", "X-", "KIN-00", "compound ID=KIN-", "cell plate #="}) {
    for (const char* behind : {"", ";", ";cell plate wells ##=A01;"}) {
      std::set<std::uint32_t> hashes;
      std::set<std::uint32_t> hashes_ignoring_case;
      for (int i = 0; i < kNames; ++i) {
        const std::string name = before + std::to_string(kNames + i) + behind;
        hashes.insert(HashOf(name) & 0xFFFF);
        hashes_ignoring_case.insert(HashIgnoringCase(name) & 0xFFFF);
      }
      EXPECT_GT(hashes.size(), kNames * 9u / 10) << before << behind;
      EXPECT_GT(hashes_ignoring_case.size(), kNames * 9u / 10) << before << behind;
    }
  }
}

TEST(Text, ComparesAsTheUpperCasedBytesDo) {
  const char* const texts[] = {"", "a", "A_", "aB", "b", "_", "Zz", "ä", "Äa", "ж", "a\xFF", "ab"};
  const auto sign = [](int value) { return (value > 0) - (value < 0); };
  for (const char* a : texts)
    for (const char* b : texts)
      EXPECT_EQ(sign(CompareText(a, b)), sign(UpperCase(a).compare(UpperCase(b)))) << a << " " << b;
}

TEST(Text, SplitsAtEverySeparator) {
  EXPECT_THAT(Split("", "-"), IsEmpty());
  EXPECT_THAT(Split("P1", "-"), ElementsAre("P1"));
  EXPECT_THAT(Split("-a--b-", "-"), ElementsAre("", "a", "", "b", ""));
  EXPECT_THAT(Split("1 AND 2 and 3", " and "), ElementsAre("1", "2", "3"));
  EXPECT_THAT(Split("a<-- -->b<-- ->c", "<-- -->"), ElementsAre("a", "b<-- ->c"));
  EXPECT_EQ(Join(Split("a;;b", ";"), ";"), "a;;b");
}

TEST(Text, TrimsBlanksAlone) {
  EXPECT_EQ(TrimBlanks("  a b \t "), "a b \t");
  EXPECT_EQ(TrimBlanks("   "), "");
}

TEST(Text, ShowsControlCharactersAsTheirEscapes) {
  EXPECT_EQ(Shown("Größe µ \xFF 漢字 a\\b"), "Größe µ \xFF 漢字 a\\b");
  EXPECT_EQ(Shown("a\r\n\tb\x1B[2J\x7F"), "a\\r\\n\\tb\\x1B[2J\\x7F");
  EXPECT_EQ(Shown("\xC2\x9B|\xC2\xA0|\u2028|\u202E|\u2066|\u2030"),
            "\\u009B|\xC2\xA0|\\u2028|\\u202E|\\u2066|\u2030");
  EXPECT_EQ(Error(70, "Cannot read x\r\n<<<").Description(), "Cannot read x\\r\\n<<<");
}

TEST(NumberText, IsThatOfTheStandardLibrary) {
  const auto standard = [](double number) {
    char text[kLongestNumberText];
    return std::string(text, std::to_chars(text, text + sizeof text, number).ptr);
  };
  std::vector<double> numbers = {0,
                                 -0.0,
                                 0.001,
                                 99999.999999999,
                                 1e5,
                                 123456789,
                                 1e-7,
                                 0.0009,
                                 1e300,
                                 5e-324,
                                 1.0,
                                 120.0,
                                 1e-10,
                                 2e15,
                                 0.5,
                                 0.30000000000000004,
                                 99999.9999999999};
  std::mt19937_64 random(11);
  for (int i = 0; i < 20000; ++i) {
    const auto digits = static_cast<double>(random() >> (11 + i % 50));
    numbers.push_back(digits / std::pow(10, i % 13));
  }
  for (const double number : numbers) {
    for (const double one : {number, -number, std::nextafter(number, 0), number * 1.5}) {
      char text[kLongestNumberText];
      ASSERT_EQ(std::string(text, WriteNumber(one, text)), standard(one));
    }
  }
}

TEST(CodePage, KeepsWhatItHoldsAndMarksTheRest) {
  EXPECT_EQ(ToCodePage1252("Maß 5 µM €20 “x” Ÿ"),
            "Ma\xDF 5 \xB5M \x80"
            "20 \x93x\x94 \x9F");
  EXPECT_EQ(ToCodePage1252("λ→\xFF\uFFFD|\xC2\x81"), "????|?");
  EXPECT_EQ(ToCodePage1252("\xE0\x80\xAF \xED\xA0\x80"), "??? ???");  // overlong, surrogate
  EXPECT_EQ(Utf8FromCodePage1252('A'), "A");
  EXPECT_EQ(Utf8FromCodePage1252(0x80), "€");
  EXPECT_EQ(Utf8FromCodePage1252(0x81), "\xC2\x81");  // stands for nothing
  EXPECT_EQ(Utf8FromCodePage1252(0xE9), "é");
}

}  // namespace
}  // namespace korvex
