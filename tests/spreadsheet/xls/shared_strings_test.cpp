#include "spreadsheet/bytes/text_arena.h"

#include <gtest/gtest.h>

#include <tuple>

#include "spreadsheet/bytes/unicode.h"
#include "spreadsheet/xls/biff_globals.h"
#include "spreadsheet/xls/record_reader.h"
#include "spreadsheet/xls/shared_string_writer.h"
#include "tests/spreadsheet/opened_workbook.h"

namespace korvex::test {
namespace {

using Texts = std::vector<std::string>;

// Reads a table from the pieces of data in the SST record and in the CONTINUE records after it,
// with the data of an EXTSST record, if any.
Texts Decode(const std::vector<Bytes>& pieces, const Bytes& index = {}) {
  Bytes stream;
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    stream += Record(i == 0 ? 0x00FC : 0x003C, pieces[i]);
  }
  stream += Record(0x00FF, U16(8));
  BiffGlobals globals;
  globals.strings = std::as_bytes(std::span(stream)).subspan(4);
  globals.strings_length = pieces[0].size();
  globals.string_index = std::as_bytes(std::span(index));
  SharedStrings strings;
  ReadSharedStrings(globals, strings);
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
  EXPECT_EQ(Decode({Counts(1) + NarrowText("a") + Bytes(4, '\0')}), (Texts{"a", ""}));
  EXPECT_EQ(Decode({U32(1)}), Texts{});
  const std::u16string lone_surrogates = {0xDDEA, 'a', 0xD83E, 'b', 0xD83E};
  EXPECT_EQ(Decode({Counts(1) + WideText(lone_surrogates)}), Texts{"\uFFFDa\uFFFDb\uFFFD"});
}

// With one text more or fewer in the middle, every well after it gets the text of another.
TEST(SharedStrings, RefusesNumbersOfTextsThatShowDamage) {
  const Bytes index_of_four = U16(2) + U32(12) + U32(12) + U32(20) + U32(20);
  const struct {
    const char* condition;
    Bytes data;
    Bytes index;
    const char* numbers;
  } cases[] = {
      {"more texts", Counts(1) + NarrowText("a") + NarrowText("b"), "", "1 texts, and holds 2"},
      {"zeros in the place of texts", Counts(3) + NarrowText("a") + Bytes(9, '\0'), "",
       "3 texts, and holds 4"},
      {"end within a text", Counts(2) + NarrowText("a") + U16(500) + U8(0) + "cut", "",
       "2 texts, and holds 1"},
      {"fewer texts than the index is made for", Counts(4) + NarrowText("a") + NarrowText("b"),
       index_of_four, "4 texts, and holds 2"},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(ErrorOf([&] { Decode({test.data}, test.index); }).Description(),
              Bytes("is damaged: its table of shared texts should hold ") + test.numbers)
        << test.condition;
  }
}

std::string Repeat(std::string_view text, std::size_t count) {
  std::string repeated;
  while (count-- > 0) repeated += text;
  return repeated;
}

// A strict reader: texts may be split only between two whole characters, and the flags are
// repeated.
class StrictTable {
 public:
  explicit StrictTable(std::string_view bytes)
      : stream_(std::as_bytes(std::span(bytes))), records_(stream_, 0) {
    NextRecord(biff::kSst);
    Take(4);
    const std::uint32_t count = LoadU32(Take(4));
    while (texts_.size() < count && !testing::Test::HasFatalFailure()) ReadText();
    EXPECT_TRUE(data_.empty());
    NextRecord(biff::kExtSst);
  }

  const std::vector<std::u16string>& Texts() const { return texts_; }

  // Every bucket points at the string that it begins with.
  void ExpectBucketsMatch() {
    const std::size_t a_bucket = LoadU16(Take(2));
    for (std::size_t i = 0; i < starts_.size(); i += a_bucket) {
      ASSERT_GE(data_.size(), 8u);
      ASSERT_EQ(LoadU32(data_.data()), starts_[i].first);
      ASSERT_EQ(LoadU16(data_.data() + 4), starts_[i].second);
      Take(8);
    }
    EXPECT_TRUE(data_.empty());
  }

 private:
  void NextRecord(biff::Record number) {
    ASSERT_TRUE(records_.Next());
    ASSERT_EQ(records_.Number(), number);
    ASSERT_LE(records_.Data().size(), biff::kMaxRecordData);
    data_ = records_.Data();
  }
  const std::byte* Take(std::size_t size) {
    const std::byte* const taken = data_.data();
    data_ = data_.subspan(size);
    return taken;
  }
  void ReadText() {
    if (data_.empty()) NextRecord(biff::kContinue);
    ASSERT_GE(data_.size(), 3u) << "the header is cut";
    starts_.emplace_back(data_.data() - stream_.data(),
                         data_.data() - records_.Data().data() + biff::kRecordHeaderSize);
    const std::size_t units = LoadU16(Take(2));
    const std::uint8_t flags = LoadU8(Take(1));
    EXPECT_TRUE(units == 0 || !data_.empty()) << "header and characters are in two records";
    std::u16string text;
    while (text.size() < units) {
      if (data_.empty()) {
        ASSERT_NE(text.back() & 0xFC00, 0xD800) << "a pair is cut";
        NextRecord(biff::kContinue);
        ASSERT_EQ(LoadU8(Take(1)), flags);
      }
      ASSERT_GE(data_.size(), flags == 1 ? 2u : 1u) << "a unit is cut";
      text += static_cast<char16_t>(flags == 1 ? LoadU16(Take(2)) : LoadU8(Take(1)));
    }
    texts_.push_back(text);
  }

  std::span<const std::byte> stream_;
  RecordReader records_;
  std::span<const std::byte> data_;
  std::vector<std::u16string> texts_;
  std::vector<std::pair<std::size_t, std::size_t>> starts_;  // in the stream, in the record
};

void ExpectTable(const std::vector<std::string>& texts) {
  TextPool pool;
  for (const std::string& text : texts) pool.Intern(text);
  SharedStringWriter writer(pool);
  for (std::uint32_t id = 0; id < pool.Count(); ++id) writer.IndexOf(id);
  const std::string bytes = Written([&](ByteWriter& out) { writer.Write(out, 0, texts.size()); });
  StrictTable table(bytes);
  ASSERT_EQ(table.Texts().size(), texts.size());
  for (std::size_t i = 0; i < texts.size(); ++i) {
    std::u16string expected;
    ToUtf16(texts[i], expected);
    ASSERT_EQ(table.Texts()[i], expected) << i;
  }
  table.ExpectBucketsMatch();
}

TEST(SharedStringWriter, SplitsTextsOnlyBetweenCharacters) {
  // The second text meets the end of the first record at every position in turn.
  for (const char* character : {"a", "\u00E9", "\u0416", "\U0001D11E"}) {
    for (std::size_t distance = 0; distance < 16; ++distance) {
      SCOPED_TRACE(character + std::to_string(distance));
      const std::size_t filler = biff::kMaxRecordData - 8 - 3 - distance;
      ExpectTable({std::string(filler, 'x'), "b" + Repeat(character, 9000), "c"});
    }
  }
}

TEST(SharedStringWriter, FindsAnyOfManyTextsThroughOneIndexRecord) {
  ExpectTable({std::string(32767, 'x'), Repeat("\u00FF", 32767), Repeat("\u0100", 32767),
               "y" + Repeat("\U0001D11E", 16383)});
  for (const int count : {0, 1, 8, 9, 70000}) {
    std::vector<std::string> texts;
    for (int i = 0; i < count; ++i) texts.push_back("plate " + std::to_string(i));
    SCOPED_TRACE(count);
    ExpectTable(texts);
  }
}

}  // namespace
}  // namespace korvex::test
