#include "spreadsheet/shared_string_writer.h"

#include <gtest/gtest.h>

#include "spreadsheet/byte_writer.h"
#include "spreadsheet/record_reader.h"
#include "spreadsheet/utf16.h"
#include "tests/support/memory_file_system.h"

namespace korvex {
namespace {

constexpr char kFile[] = "/table";

std::string Repeat(std::string_view text, std::size_t count) {
  std::string repeated;
  while (count-- > 0) repeated += text;
  return repeated;
}

std::string WriteTable(const std::vector<std::string>& texts) {
  TextPool pool;
  for (const std::string& text : texts) pool.Intern(text);
  SharedStringWriter table(pool);
  for (std::uint32_t id = 0; id < pool.Count(); ++id) table.IndexOf(id);
  MemoryFileSystem files(PathStyle::kLinux);
  const auto file = files.Replace(kFile);
  ByteWriter out(file.get());
  table.Write(out, 0, texts.size());
  out.Flush();
  file->Commit();
  return files.Content(kFile);
}

// A reader that takes splits nowhere but between two whole characters, with the flags repeated.
class StrictTable {
 public:
  explicit StrictTable(std::string_view bytes)
      : stream_(std::as_bytes(std::span(bytes))), records_(stream_, 0) {
    NextRecord(biff::kSst);
    Skip(4);
    const std::uint32_t count = LoadU32(data_.data());
    Skip(4);
    for (std::uint32_t i = 0; i < count; ++i) ReadText();
    EXPECT_TRUE(data_.empty());
    NextRecord(biff::kExtSst);
  }

  const std::vector<std::u16string>& Texts() const { return texts_; }

  // Every bucket points at the string that it begins with.
  void ExpectBucketsMatch() const {
    const std::size_t a_bucket = LoadU16(data_.data());
    const std::size_t buckets = (texts_.size() + a_bucket - 1) / a_bucket;
    ASSERT_EQ(data_.size(), 2 + buckets * 8);
    for (std::size_t i = 0; i < buckets; ++i) {
      const std::byte* const bucket = data_.data() + 2 + i * 8;
      ASSERT_EQ(LoadU32(bucket), starts_[i * a_bucket].in_stream);
      ASSERT_EQ(LoadU16(bucket + 4), starts_[i * a_bucket].in_record);
    }
  }

 private:
  struct Start {
    std::size_t in_stream;
    std::size_t in_record;
  };

  void NextRecord(biff::Record number) {
    ASSERT_TRUE(records_.Next());
    ASSERT_EQ(records_.Number(), number);
    ASSERT_LE(records_.Data().size(), biff::kMaxRecordData);
    data_ = records_.Data();
  }

  void Skip(std::size_t size) { data_ = data_.subspan(size); }

  std::uint8_t TakeByte() {
    const std::uint8_t value = LoadU8(data_.data());
    Skip(1);
    return value;
  }

  void ReadText() {
    if (data_.empty()) NextRecord(biff::kContinue);
    ASSERT_GE(data_.size(), 3u) << "the header is cut";
    const auto in_data = static_cast<std::size_t>(data_.data() - records_.Data().data());
    const auto in_stream = static_cast<std::size_t>(data_.data() - stream_.data());
    starts_.push_back({in_stream, in_data + biff::kRecordHeaderSize});
    const std::size_t units = LoadU16(data_.data());
    Skip(2);
    const std::uint8_t flags = TakeByte();
    EXPECT_TRUE(units == 0 || !data_.empty()) << "header and characters are in two records";
    std::u16string text;
    while (text.size() < units) {
      if (data_.empty()) {
        ASSERT_NE(text.back() & 0xFC00, 0xD800) << "a pair is cut";
        NextRecord(biff::kContinue);
        ASSERT_EQ(TakeByte(), flags);
      }
      ASSERT_GE(data_.size(), flags == 1 ? 2u : 1u) << "a unit is cut";
      text += static_cast<char16_t>(flags == 1 ? LoadU16(data_.data()) : LoadU8(data_.data()));
      Skip(flags == 1 ? 2 : 1);
    }
    texts_.push_back(text);
  }

  std::span<const std::byte> stream_;
  RecordReader records_;
  std::span<const std::byte> data_;
  std::vector<std::u16string> texts_;
  std::vector<Start> starts_;
};

void ExpectTable(const std::vector<std::string>& texts) {
  const std::string bytes = WriteTable(texts);
  const StrictTable table(bytes);
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

TEST(SharedStringWriter, HoldsTheLongestTextsThatACellTakes) {
  ExpectTable({std::string(32767, 'x'), Repeat("\u00FF", 32767), Repeat("\u0100", 32767),
               "y" + Repeat("\U0001D11E", 16383)});
}

TEST(SharedStringWriter, FindsAnyOfManyTextsThroughOneIndexRecord) {
  for (const int count : {0, 1, 8, 9, 9000, 70000}) {
    std::vector<std::string> texts;
    for (int i = 0; i < count; ++i) texts.push_back("plate " + std::to_string(i));
    SCOPED_TRACE(count);
    ExpectTable(texts);
  }
}

}  // namespace
}  // namespace korvex
