#include "spreadsheet/shared_strings.h"

#include <gtest/gtest.h>

#include <tuple>

#include "tests/support/workbook_bytes.h"

namespace korvex::test {
namespace {

using Texts = std::vector<std::string>;

// Decodes a table from the pieces of data in the SST record and in the CONTINUE records behind it.
Texts Decode(const std::vector<Bytes>& pieces) {
  Bytes stream;
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    stream += Record(i == 0 ? 0x00FC : 0x003C, pieces[i]);
  }
  stream += Record(0x00FF, U16(8));
  const auto* bytes = reinterpret_cast<const std::byte*>(stream.data());
  SharedStrings strings;
  strings.Decode(ContinuedData({bytes + 4, stream.size() - 4}, pieces[0].size()));
  Texts texts;
  for (std::size_t i = 0; i < strings.Count(); ++i) {
    texts.emplace_back(strings.Arena().Text(strings.Range(i)));
  }
  return texts;
}

Bytes Counts(std::uint32_t count) {
  return U32(count) + U32(count);
}

TEST(SharedStrings, DecodesEveryFormOfText) {
  const Bytes rich = U16(2) + U8(8) + U16(1) + "ab" + U32(0);
  const Bytes phonetic = U16(1) + U8(5) + U32(6) + U16(0x6F22) + Bytes(6, 'p');
  const Bytes both = U16(1) + U8(0xCC) + U16(2) + U32(3) + "c" + Bytes(8, 'r') + Bytes(3, 'p');
  EXPECT_EQ(Decode({Counts(6) + NarrowText("\xB5M") + WideText(u"\u03B1\u20AC\U0001F9EA") +
                    NarrowText("") + rich + phonetic + both}),
            (Texts{"µM", "α€🧪", "", "ab", "漢", "c"}));
}

TEST(SharedStrings, JoinsTextsThatAreCutByRecords) {
  const Bytes head = Counts(2);
  const Bytes end = NarrowText("end");
  const std::tuple<const char*, std::vector<Bytes>, const char*> cases[] = {
      {"within narrow characters", {head + U16(4) + U8(0) + "ab", U8(0) + "cd" + end}, "abcd"},
      {"narrow, then wide", {head + U16(3) + U8(0) + "ab", U8(1) + U16(0x3B1) + end}, "abα"},
      {"wide, then narrow", {head + U16(3) + U8(1) + U16(0x3B1), U8(0) + "bc" + end}, "αbc"},
      {"within a surrogate pair",
       {head + U16(2) + U8(1) + U16(0xD83E), U8(1) + U16(0xDDEA) + end},
       "🧪"},
      {"between header and characters", {head + U16(2) + U8(0), U8(0) + "ab" + end}, "ab"},
      {"within the header", {head + U8(2), U8(0) + U8(0) + "ab" + end}, "ab"},
      {"empty record between", {head + U16(2) + U8(0) + "a", "", U8(0) + "b" + end}, "ab"},
      {"within formatting runs, where no flag byte is repeated",
       {head + U16(1) + U8(8) + U16(2) + "a" + Bytes(3, 'r'), Bytes(5, 'r') + end},
       "a"},
      {"within phonetic data",
       {head + U16(1) + U8(4) + U32(9) + "a" + Bytes(2, 'p'), Bytes(7, 'p') + end},
       "a"},
      {"between two texts", {head + NarrowText("ab"), end}, "ab"},
  };
  for (const auto& [condition, pieces, text] : cases) {
    EXPECT_EQ(Decode(pieces), (Texts{text, "end"})) << condition;
  }
}

TEST(SharedStrings, EndsWhereTheDataEnds) {
  EXPECT_EQ(Decode({Counts(4'000'000'000) + NarrowText("a")}), Texts{"a"});
  EXPECT_EQ(Decode({Counts(1) + NarrowText("a") + NarrowText("b")}), (Texts{"a", "b"}));
  EXPECT_EQ(Decode({Counts(2) + NarrowText("a") + U16(500) + U8(0) + "cut"}), Texts{"a"});
  EXPECT_EQ(Decode({U32(1)}), Texts{});
  const std::u16string lone_surrogates = {0xDDEA, 'a', 0xD83E, 'b', 0xD83E};
  EXPECT_EQ(Decode({Counts(1) + WideText(lone_surrogates)}), Texts{"\uFFFDa\uFFFDb\uFFFD"});
}

}  // namespace
}  // namespace korvex::test
