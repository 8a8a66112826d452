#include "spreadsheet/xls/compound_file_reader.h"

#include <algorithm>
#include <cstring>

#include "spreadsheet/bytes/little_endian.h"
#include "spreadsheet/bytes/refusal.h"
#include "spreadsheet/xls/compound_file.h"
#include "text/text.h"

namespace korvex {

using namespace compound;

namespace {

constexpr std::size_t kMiniSectorSize = 64;

std::size_t SectorSize(std::span<const std::byte> file) {
  if (file.size() < kHeaderSize) {
    Refuse("ends after " + GroupedDigits(file.size()) + " bytes, within its header");
  }
  const int shift = LoadU16(file.data() + header::kSectorShift);
  if (shift != 9 && shift != 12) {
    Refuse("is damaged: its header gives a sector size of 2^" + std::to_string(shift) +
           " bytes, where 2^9 and 2^12 are possible");
  }
  return std::size_t{1} << shift;
}

char LowerAscii(std::uint32_t unit) {
  if (unit >= 'A' && unit <= 'Z') return static_cast<char>(unit + ('a' - 'A'));
  return unit < 0x80 ? static_cast<char>(unit) : '\x7F';
}

}  // namespace

bool IsCompoundFile(std::span<const std::byte> bytes) {
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  return text.starts_with(kSignature);
}

CompoundFileReader::CompoundFileReader(std::vector<std::byte>& file, CompoundBuffers& buffers)
    : file_size_(file.size()), sector_size_(SectorSize(file)), buffers_(buffers) {
  // Padded, every sector is whole and needs no check of its end; PresentSize knows what was there.
  file.resize((file.size() + sector_size_ - 1) / sector_size_ * sector_size_);
  const std::span<const std::byte> bytes(file);
  header_ = bytes.first(kHeaderSize);
  sectors_ = bytes.subspan(sector_size_);
  sector_count_ = sectors_.size() / sector_size_;
  LoadFat();
  LoadDirectory();
}

// The count of FAT sectors in the header may be wrong, so that all places of the DIFAT are looked
// at.
void CompoundFileReader::LoadFat() {
  buffers_.fat.clear();
  for (std::size_t i = 0; i < kHeaderDifatEntries; ++i) {
    LoadFatSector(LoadU32(header_.data() + header::kDifat + 4 * i));
  }
  std::uint32_t difat = LoadU32(header_.data() + header::kFirstDifatSector);
  std::size_t visited = 0;
  while (difat < sector_count_ && buffers_.fat.size() < sector_count_) {
    if (++visited > sector_count_) Refuse("is damaged: its DIFAT chain runs in a circle");
    const std::byte* sector = sectors_.data() + difat * sector_size_;
    const std::size_t last = sector_size_ - 4;
    for (std::size_t at = 0; at < last; at += 4) LoadFatSector(LoadU32(sector + at));
    difat = LoadU32(sector + last);
  }
}

// Unused places of the DIFAT can stand between used ones. A FAT sector that the file does not hold
// leaves a gap in the table, so that the sectors after it keep their place.
void CompoundFileReader::LoadFatSector(std::uint32_t id) {
  std::vector<std::uint32_t>& fat = buffers_.fat;
  if (id >= kDifatSector) return;
  fat_capacity_ += sector_size_ / 4;
  last_fat_sector_ = std::max(last_fat_sector_, id);
  is_fat_cut_ |= fat.size() >= sector_count_ || PresentSize(id) < sector_size_;
  if (fat.size() >= sector_count_) return;
  const std::size_t old_size = fat.size();
  fat.resize(old_size + sector_size_ / 4, kFreeSector);
  if (id >= sector_count_) return;
  const std::byte* sector = sectors_.data() + id * sector_size_;
  const std::size_t present = PresentSize(id) / 4;
  for (std::size_t i = 0; i < present; ++i) fat[old_size + i] = LoadU32(sector + 4 * i);
}

// How much of a sector the file holds; the rest is padding.
std::size_t CompoundFileReader::PresentSize(std::size_t id) const {
  const std::size_t begin = (id + 1) * sector_size_;
  return std::min(file_size_ - std::min(begin, file_size_), sector_size_);
}

// The size of the file before it was cut: up to the last sector that the FAT calls used, or that
// the header names.
std::uint64_t CompoundFileReader::CompleteSize() const {
  const std::vector<std::uint32_t>& fat = buffers_.fat;
  std::uint64_t used = fat.size();
  while (used > 0 && fat[static_cast<std::size_t>(used - 1)] == kFreeSector) --used;
  for (const std::uint64_t id :
       {last_fat_sector_, LoadU32(header_.data() + header::kFirstDirectorySector),
        LoadU32(header_.data() + header::kFirstMiniFatSector)}) {
    if (id < fat_capacity_) used = std::max(used, id + 1);
  }
  // What the missing end of the FAT said is lost, but writers make it no longer than it must be: at
  // least one sector after its last but one sector was used.
  if (is_fat_cut_) used = std::max(used, fat_capacity_ - sector_size_ / 4 + 1);
  return (used + 1) * sector_size_;
}

std::string CompoundFileReader::CutCause() const {
  const std::uint64_t complete_size = CompleteSize();
  const std::string cause = "ends after " + GroupedDigits(file_size_);
  if (complete_size <= file_size_) return cause + " bytes, before the end of its workbook";
  const bool is_estimate = is_fat_cut_ && fat_capacity_ > sector_size_ / 4;
  return cause + (is_estimate ? " of at least " : " of ") + GroupedDigits(complete_size) + " bytes";
}

void CompoundFileReader::LoadDirectory() {
  const std::uint32_t first = LoadU32(header_.data() + header::kFirstDirectorySector);
  const Chain chain = Follow(first, buffers_.fat, sector_count_, "directory");
  directory_ = Join(chain.ids, sectors_, sector_size_, buffers_.directory);
  if (!directory_.empty()) {
    is_directory_cut_ = (!chain.is_complete && CompleteSize() > file_size_) ||
                        ReachesPadding(chain, directory_.size());
    // Where a copy broke off, the system may have reserved the space already: the file has its full
    // size, and zeros after the place.
    const bool has_entries = std::any_of(directory_.begin(), directory_.end(),
                                         [](std::byte b) { return b != std::byte{0}; });
    if (!has_entries && !is_directory_cut_) {
      Refuse("is damaged: its directory holds nothing but zero bytes");
    }
    root_children_ = RootChildren();
    return;
  }
  if (first < kDifatSector && first >= sector_count_) Refuse(CutCause());
  Refuse("is damaged: its directory cannot be found");
}

void CompoundFileReader::LoadMiniStream() {
  if (has_mini_stream_) return;
  has_mini_stream_ = true;
  const Chain stream = Follow(LoadU32(Entry(0).data() + entry::kFirstSector), buffers_.fat,
                              sector_count_, "mini-stream");
  mini_stream_ = Join(stream.ids, sectors_, sector_size_, buffers_.mini_stream);
  is_mini_stream_cut_ = ReachesPadding(stream, mini_stream_.size());
  const Chain table = Follow(LoadU32(header_.data() + header::kFirstMiniFatSector), buffers_.fat,
                             sector_count_, "mini-FAT");
  std::vector<std::uint32_t>& mini_fat = buffers_.mini_fat;
  mini_fat.clear();
  for (const std::uint32_t id : table.ids) {
    const std::byte* sector = sectors_.data() + id * sector_size_;
    for (std::size_t at = 0; at < sector_size_; at += 4) mini_fat.push_back(LoadU32(sector + at));
  }
}

// A chain with more members than there are sectors (`limit`) runs in a circle.
CompoundFileReader::Chain CompoundFileReader::Follow(std::uint32_t first,
                                                     const std::vector<std::uint32_t>& table,
                                                     std::size_t limit, const char* what) {
  std::vector<std::uint32_t>& ids = buffers_.chain;
  ids.clear();
  std::uint32_t id = first;
  while (id < limit) {
    if (ids.size() == limit) {
      Refuse(std::string("is damaged: the sector chain of its ") + what + " runs in a circle");
    }
    ids.push_back(id);
    id = id < table.size() ? table[id] : kFreeSector;
  }
  return {ids, id == kEndOfChain};
}

// The bytes of a chain of sectors, or mini-sectors, of size `unit` in `area`. Most streams lie in
// sequence and are not copied.
std::span<const std::byte> CompoundFileReader::Join(std::span<const std::uint32_t> ids,
                                                    std::span<const std::byte> area,
                                                    std::size_t unit,
                                                    std::vector<std::byte>& storage) const {
  if (ids.empty()) return {};
  bool in_sequence = true;
  for (std::size_t i = 1; i < ids.size(); ++i) in_sequence &= ids[i] == ids[i - 1] + 1;
  if (in_sequence) return area.subspan(ids[0] * unit, ids.size() * unit);
  storage.resize(ids.size() * unit);
  std::byte* out = storage.data();
  for (const std::uint32_t id : ids) {
    std::memcpy(out, area.data() + id * unit, unit);
    out += unit;
  }
  return storage;
}

std::span<const std::byte> CompoundFileReader::Entry(int index) const {
  return directory_.subspan(static_cast<std::size_t>(index) * kDirectoryEntrySize,
                            kDirectoryEntrySize);
}

int CompoundFileReader::EntryCount() const {
  return static_cast<int>(directory_.size() / kDirectoryEntrySize);
}

// Names are compared up to their closing zero; their length field is not used.
bool CompoundFileReader::HasName(int index, std::string_view name) const {
  const std::byte* data = Entry(index).data();
  const std::uint8_t type = LoadU8(data + entry::kType);
  if (type != kStreamEntry && type != kStorageEntry) return false;
  if (name.size() > 31 || LoadU16(data + entry::kName + 2 * name.size()) != 0) return false;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const std::uint32_t unit = LoadU16(data + entry::kName + 2 * i);
    if (LowerAscii(unit) != LowerAscii(static_cast<unsigned char>(name[i]))) return false;
  }
  return true;
}

// The children of the root storage form a tree of left and right siblings. Damage can make a circle
// of it, so that each entry is visited once.
std::vector<int> CompoundFileReader::RootChildren() const {
  std::vector<int> children;
  std::vector<bool> seen(static_cast<std::size_t>(EntryCount()));
  std::vector<std::uint32_t> waiting = {LoadU32(Entry(0).data() + entry::kChild)};
  while (!waiting.empty()) {
    const std::uint32_t id = waiting.back();
    waiting.pop_back();
    if (id >= seen.size() || seen[id]) continue;
    seen[id] = true;
    children.push_back(static_cast<int>(id));
    waiting.push_back(LoadU32(Entry(static_cast<int>(id)).data() + entry::kRight));
    waiting.push_back(LoadU32(Entry(static_cast<int>(id)).data() + entry::kLeft));
  }
  return children;
}

int CompoundFileReader::FindInRoot(std::string_view name) const {
  for (const int index : root_children_) {
    if (HasName(index, name)) return index;
  }
  return -1;
}

int CompoundFileReader::FindAnywhere(std::string_view name) const {
  for (int index = 0; index < EntryCount(); ++index) {
    if (HasName(index, name)) return index;
  }
  return -1;
}

CompoundStream CompoundFileReader::Read(int index, std::vector<std::byte>& storage) {
  const std::byte* data = Entry(index).data();
  const std::uint32_t first = LoadU32(data + entry::kFirstSector);
  const bool has_long_sizes = sector_size_ > kHeaderSize;
  const std::uint64_t size =
      has_long_sizes ? LoadU64(data + entry::kSize) : LoadU32(data + entry::kSize);

  // Writers of version 3 leave the upper half of the size as it happened to be. The cutoff in the
  // header is always 4096.
  const bool is_mini = size < kMiniStreamCutoff;
  if (is_mini) LoadMiniStream();
  const std::span<const std::byte> area = is_mini ? mini_stream_ : sectors_;
  const std::size_t unit = is_mini ? kMiniSectorSize : sector_size_;
  const Chain chain =
      Follow(first, is_mini ? buffers_.mini_fat : buffers_.fat, area.size() / unit, "workbook");
  if (!is_mini) RefuseIfEntered(chain);
  CompoundStream stream = {Join(chain.ids, area, unit, storage), false};
  if (stream.bytes.size() > size) stream.bytes = stream.bytes.first(static_cast<std::size_t>(size));
  stream.is_cut = (!chain.is_complete && stream.bytes.size() < size) ||
                  (is_mini ? is_mini_stream_cut_ : ReachesPadding(chain, stream.bytes.size()));
  return stream;
}

// Refuses a chain if two entries of the FAT lead to one of its sectors. One of the two is damaged:
// the chain continues in another stream, or leaves out sectors of its own.
void CompoundFileReader::RefuseIfEntered(const Chain& chain) const {
  std::vector<std::uint8_t> entries(sector_count_);
  for (const std::uint32_t next : buffers_.fat) {
    if (next < entries.size() && entries[next] < 2) ++entries[next];
  }
  for (const std::uint32_t id : chain.ids) {
    if (entries[id] > 1) {
      Refuse("is damaged: two entries of its sector table lead to sector " + GroupedDigits(id) +
             " of the workbook");
    }
  }
}

// Whether the first `size` bytes of a chain reach into the zeros that fill up the last sector.
bool CompoundFileReader::ReachesPadding(const Chain& chain, std::size_t size) const {
  const std::size_t present = file_size_ % sector_size_;
  if (present == 0 || size == 0) return false;
  const std::size_t last = (size - 1) / sector_size_;
  for (std::size_t i = 0; i <= last; ++i) {
    if (chain.ids[i] + 1 == sector_count_) return i < last || (size - 1) % sector_size_ >= present;
  }
  return false;
}

}  // namespace korvex
