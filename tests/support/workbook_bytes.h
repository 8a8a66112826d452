// Builds .xls workbooks in memory: records, workbook streams and compound files, sound ones from
// which a test makes a damaged one by a single edit.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::test {

using Bytes = std::string;

// A file of tests/data, whose README says what made it.
Bytes DataFile(const std::string& name);

Bytes U8(unsigned value);
Bytes U16(unsigned value);
Bytes U32(std::uint32_t value);
Bytes F64(double value);
void PutU16(Bytes& bytes, std::size_t offset, unsigned value);
void PutU32(Bytes& bytes, std::size_t offset, std::uint32_t value);

Bytes Record(unsigned number, const Bytes& data = {});
// BIFF8 texts behind a 16-bit length: 8-bit characters, and 16-bit ones.
Bytes NarrowText(std::string_view latin1);
Bytes WideText(std::u16string_view text);
Bytes ByteText(std::string_view text);  // up to BIFF7
// Row, column and XF index, all zero-based: the beginning of every cell record.
Bytes CellHead(unsigned row, unsigned column, unsigned xf = 0);
Bytes NumberCell(unsigned row, unsigned column, double value, unsigned xf = 0);
// An SST record of texts that are laid out already.
Bytes StringTable(const std::vector<Bytes>& texts);

struct SheetBytes {
  std::string name = "data";
  Bytes records = {};  // between BOF and EOF
  unsigned state = 0;
  unsigned kind = 0;
};

struct StreamBytes {
  unsigned version = 0x0600;
  Bytes globals;  // between BOF and the BOUNDSHEET records
  std::vector<SheetBytes> sheets;

  Bytes Build() const;
};

// A stream of one sheet "data".
Bytes OneSheet(const Bytes& sheet_records, const Bytes& globals = {}, unsigned version = 0x0600);

// A compound file of one stream with a FAT of up to 109 sectors. Sectors: FAT, directory (one),
// mini-FAT (one) for a short stream, the stream itself.
struct CompoundBytes {
  Bytes stream;
  std::string stream_name = "Workbook";
  unsigned sector_shift = 9;
  bool is_scattered = false;  // the stream's sectors lie in reverse order

  Bytes Build() const;
};

// The file that most tests want: one sheet "data", padded so that it is no mini-stream.
CompoundBytes LargeWorkbook(const Bytes& sheet_records, const Bytes& globals = {});

}  // namespace korvex::test
