#include "spreadsheet/xls/biff_workbook.h"

#include <memory>
#include <utility>
#include <vector>

#include "spreadsheet/bytes/refusal.h"
#include "spreadsheet/xls/biff_decryption.h"
#include "spreadsheet/xls/compound_file_reader.h"
#include "spreadsheet/xls/record_reader.h"
#include "spreadsheet/xls/sheet_reader.h"
#include "text/text.h"

namespace korvex {
namespace {

// Damage, or ill will, can let many sheets begin at the same byte, so that a small file takes for
// ever. Sound sheets share no bytes, but the same one may be read more than once.
constexpr std::size_t kMostReadAtLeast = 32u << 20;
constexpr std::size_t kMostReadings = 4;

// Other programs keep their documents in compound files, too; the name of a stream tells whose.
void RefuseOtherDocument(const CompoundFileReader& file) {
  if (file.FindInRoot("EncryptedPackage") >= 0) {
    Refuse("needs a password: it is an encrypted .xlsx workbook");
  }
  if (file.FindInRoot("WordDocument") >= 0) RefuseAs("a Word document");
  if (file.FindInRoot("PowerPoint Document") >= 0) RefuseAs("a PowerPoint presentation");
  if (file.FindInRoot("__properties_version1.0") >= 0) RefuseAs("an e-mail message (.msg)");
}

// The entry of the workbook stream, and whether it has the name that Excel 5 gives. A file with
// both streams is read as the newer one. A stream outside of the root storage counts last: other
// documents can have workbooks embedded in them, but damage to the directory can also hide the
// root's entries.
std::pair<int, bool> FindWorkbook(const CompoundFileReader& file) {
  int entry = file.FindInRoot("Workbook");
  if (entry >= 0) return {entry, false};
  entry = file.FindInRoot("Book");
  if (entry >= 0) return {entry, true};
  RefuseOtherDocument(file);
  entry = file.FindAnywhere("Workbook");
  if (entry >= 0) return {entry, false};
  entry = file.FindAnywhere("Book");
  if (entry >= 0) return {entry, true};
  if (file.IsDirectoryCut()) Refuse(file.CutCause());
  RefuseAs("a compound file without a workbook in it");
}

}  // namespace

template <typename Step>
void BiffWorkbook::NamingCut(Step&& step) const {
  try {
    step();
  } catch (const Error&) {
    if (!cut_.empty()) Refuse(cut_);
    throw;
  }
}

struct BiffWorkbook::Buffers : FormatBuffers {
  std::size_t MemorySize() const override { return stream.capacity(); }

  std::vector<std::byte> stream;  // the workbook stream, where that is in pieces
  CompoundBuffers compound;

  // Those of the workbook before, if that was also an .xls; else new ones.
  static Buffers& Of(ReadBuffers& all) {
    if (auto* const kept = dynamic_cast<Buffers*>(all.format.get())) return *kept;
    auto made = std::make_unique<Buffers>();
    Buffers& own = *made;
    all.format = std::move(made);
    return own;
  }
};

BiffWorkbook::BiffWorkbook(ReadBuffers& buffers) : buffers_(buffers), own_(Buffers::Of(buffers)) {
  // Decryption works in a copy of the stream, and where the stream was put together from scattered
  // sectors, that copy is there already.
  const bool is_book = LoadStream();
  stream_ = ClearStream(stream_, own_.stream);
  NamingCut([&] { globals_ = ReadBiffGlobals(stream_, is_book); });
  if (!globals_.has_end && !cut_.empty()) Refuse(cut_);
}

bool BiffWorkbook::LoadStream() {
  if (!IsCompoundFile(buffers_.file)) {
    stream_ = buffers_.file;
    return true;
  }
  CompoundFileReader file(buffers_.file, own_.compound);
  const auto [entry, is_book] = FindWorkbook(file);
  const CompoundStream stream = file.Read(entry, own_.stream);
  stream_ = stream.bytes;
  if (stream.is_cut || file.IsDirectoryCut()) {
    cut_ = file.CutCause();
    if (stream_.empty()) Refuse(cut_);
  }
  return is_book;
}

// A sheet begins with its BOF. Some writers leave it out; then it begins after the EOF of another
// one. Anywhere else the reader would begin in the middle of a sheet.
void BiffWorkbook::CheckBegin(const std::string& sheet, std::size_t offset) const {
  const auto refuse = [&](const std::string& where) {
    Refuse("is damaged: sheet \"" + sheet + "\" should begin at byte " + GroupedDigits(offset) +
           where);
  };
  if (offset >= stream_.size()) {
    refuse(" of a workbook stream of " + GroupedDigits(stream_.size()) + " bytes");
  }
  RecordReader first(stream_, offset);
  if (first.Next() && first.Number() == biff::kBof) return;
  if (offset >= biff::kRecordHeaderSize) {
    RecordReader before(stream_, offset - biff::kRecordHeaderSize);
    if (before.Next() && before.Number() == biff::kEof && before.Data().empty()) return;
  }
  refuse(" of the workbook stream, where no sheet does");
}

void BiffWorkbook::ReadSheet(std::size_t index, SheetCells& cells) {
  SharedStrings& strings = buffers_.strings;
  if (!has_strings_) {
    NamingCut([&] { ReadSharedStrings(globals_, strings); });
    has_strings_ = true;
  }
  cells.Clear(&strings.Arena());
  const SheetInfo& sheet = globals_.sheets[index];
  const std::size_t offset = globals_.sheet_offsets[index];
  SheetReader reader(globals_, strings, sheet.name, cells);
  if (sheet.kind == SheetKind::kWorksheet || sheet.kind == SheetKind::kMacro) {
    NamingCut([&] {
      CheckBegin(sheet.name, offset);
      reader.Read(stream_, offset);
    });
    bytes_read_ += reader.BytesRead();
    if (bytes_read_ > kMostReadAtLeast + kMostReadings * stream_.size()) {
      Refuse("is damaged: its sheets lie over each other");
    }
  }
  cells.Finish(ReadBudget(buffers_.file.size()));
  // What a formula gives depends on all other cells, so that it is checked at the end.
  for (const DoubtGround ground : {DoubtGround::kAsksForCalculation, DoubtGround::kEmptyText}) {
    if (cells.HasOnlyDoubts(ground) && reader.IsFalse(ground)) cells.ConfirmDoubts(ground);
  }
}

}  // namespace korvex
