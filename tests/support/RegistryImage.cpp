#include "tests/support/RegistryImage.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace {

constexpr unsigned kHeader = 4180;          // offset of the record that names the tables
constexpr unsigned kHeaderEnd = 4220;       // first byte behind the headers
constexpr unsigned kFirstTable = 12;        // in the header: four offsets, one for each kind
constexpr unsigned kFileSize = 32;          // in the header
constexpr unsigned kTableHead = 32;         // bytes before a table's entries
constexpr unsigned kMaxTables = 21;         // of one kind
constexpr unsigned kMaxEntries = 0xFFFFFF;  // the slot number's 24 bits

const char* const kKindNames[] = {"string", "key", "value", "block"};

std::string Hex(unsigned number) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%x", number);
  return text;
}

std::string ReadWhole(const std::string& path, bool* read) {
  std::string bytes;
  std::FILE* file = std::fopen(path.c_str(), "rb");
  *read = file != nullptr;
  if (file == nullptr) return bytes;
  char chunk[65536];
  for (size_t size = 1; size > 0;) {
    size = std::fread(chunk, 1, sizeof chunk, file);
    bytes.append(chunk, size);
  }
  *read = std::ferror(file) == 0;
  std::fclose(file);
  return bytes;
}

}  // namespace

RegistryImage::RegistryImage(const std::string& path) {
  bool read = false;
  bytes_ = ReadWhole(path, &read);
  Expect(read, "the file cannot be read");
  Expect(bytes_.size() >= kHeaderEnd, "the file is shorter than its headers");
  if (!findings_.empty()) return;
  CheckFileHeader();
  CheckHeader();
  if (!findings_.empty()) return;
  usable_ = true;
  for (unsigned kind = 0; kind < kKinds; ++kind) LoadTables(static_cast<Kind>(kind));
  CheckOverlaps();
}

unsigned RegistryImage::RecordSize(Kind kind) {
  constexpr unsigned kSizes[] = {40, 24, 52, 64};
  return kSizes[kind];
}

std::string RegistryImage::Name(Kind kind, unsigned id) {
  return std::string(kKindNames[kind]) + " " + Hex(id);
}

unsigned RegistryImage::U8(unsigned offset) const {
  return offset < bytes_.size() ? static_cast<unsigned char>(bytes_[offset]) : 0;
}

unsigned long long RegistryImage::U64(unsigned offset) const {
  return U32(offset) | static_cast<unsigned long long>(U32(offset + 4)) << 32;
}

std::string RegistryImage::Bytes(unsigned offset, unsigned size) const {
  return offset < bytes_.size() ? bytes_.substr(offset, size) : std::string();
}

void RegistryImage::Expect(bool holds, const std::string& finding) {
  if (!holds) Report(finding);
}

void RegistryImage::CheckFileHeader() {
  Expect(U32(0) == 0x0FACE0FF, "file header: wrong signature");
  Expect(U32(4) == 0xDEADBEEF, "file header: wrong marker");
  Expect(U32(8) == 2, "file header: wrong version");
  Expect(U32(12) == 1, "file header: wrong revision");
  for (unsigned offset = 16; offset < 84; ++offset) {
    if (U8(offset) != 0) return Report("file header: reserved byte " + std::to_string(offset));
  }
}

void RegistryImage::CheckHeader() {
  Expect(U32(kHeader) == 0, "header: reserved word at 0");
  Expect(U32(kHeader + 4) == kHeader, "header: wrong offset of itself");
  Expect(U32(kHeader + 8) == 1, "header: wrong version");
  Expect(U32(kHeader + kFileSize) <= bytes_.size(), "header: the file is shorter than it says");
  Expect(U32(kHeader + 36) == 0, "header: reserved word at 36");
}

void RegistryImage::LoadTables(Kind kind) {
  unsigned offset = U32(kHeader + kFirstTable + 4 * kind);
  do {
    const std::string name =
        std::string(kKindNames[kind]) + " table " + std::to_string(tables_[kind].size());
    if (tables_[kind].size() == kMaxTables) return Report(name + ": more than 21 tables");
    if (!LoadTable(kind, offset, name)) return;
    offset = U32(offset);
  } while (offset != 0);
}

bool RegistryImage::LoadTable(Kind kind, unsigned offset, const std::string& name) {
  const unsigned long long end = U32(kHeader + kFileSize);
  const size_t before = findings_.size();
  const Table table = {offset, U32(offset + 8), U32(offset + 12), {}, {}};
  const unsigned freeCount = U32(offset + 28);
  Expect(offset >= kHeaderEnd && offset + 0ULL + kTableHead <= end, name + ": outside the file");
  if (findings_.size() != before) return false;
  Expect(U32(offset + 4) == offset, name + ": wrong offset of itself");
  Expect(U8(offset + 20) == tables_[kind].size(), name + ": wrong number");
  Expect(table.entries >= 1 && table.entries <= kMaxEntries, name + ": wrong count of entries");
  if (findings_.size() != before) return false;
  Expect(freeCount < table.entries, name + ": more free slots than there are");
  Expect(offset + 0ULL + kTableHead + 4ULL * table.entries <= end, name + ": ends beyond the file");
  Expect(table.area >= kHeaderEnd && table.area + 1ULL * RecordSize(kind) * table.entries <= end,
         name + ": its area is outside the file");
  if (findings_.size() != before) return false;
  Expect(U32(offset + 16) == 0 && U32(offset + 24) == 0, name + ": a reserved word is not 0");
  Expect(U8(offset + 21) == 0 && U16(offset + 22) == 0, name + ": a reserved byte is not 0");
  tables_[kind].push_back(table);
  Table& kept = tables_[kind].back();
  kept.isFree.resize(kept.entries);
  kept.isReached.resize(kept.entries);
  WalkFreeList(kind, freeCount, &kept, name);
  return true;
}

// The list ends after as many slots as the count says; what its last slot leads to does not matter.
void RegistryImage::WalkFreeList(Kind kind, unsigned freeCount, Table* table,
                                 const std::string& name) {
  const unsigned entries = table->offset + kTableHead;
  unsigned slot = U32(entries);
  for (unsigned i = 0; i < freeCount; ++i) {
    if (slot < 1 || slot >= table->entries) {
      return Report(name + ": the free list leaves the table after " + std::to_string(i) + " of " +
                    std::to_string(freeCount) + " slots");
    }
    if (table->isFree[slot]) return Report(name + ": the free list is a circle");
    table->isFree[slot] = true;
    slot = U32(entries + 4 * slot);
  }
  CheckEntries(kind, *table, name);
}

// The entry of a used slot: 0, or the next block. More used slots with an entry than that means
// that the free list is longer than the count says.
void RegistryImage::CheckEntries(Kind kind, const Table& table, const std::string& name) {
  for (unsigned slot = 1; slot < table.entries; ++slot) {
    const unsigned entry = U32(table.offset + kTableHead + 4 * slot);
    const bool fits = kind == kBlocks ? entry < table.entries : entry == 0;
    if (!table.isFree[slot] && !fits) {
      return Report(name + ": used slot " + std::to_string(slot) + " has the entry " +
                    std::to_string(entry));
    }
  }
}

void RegistryImage::CheckOverlaps() {
  std::vector<std::pair<unsigned long long, unsigned long long>> regions = {{0, kHeaderEnd}};
  for (unsigned kind = 0; kind < kKinds; ++kind) {
    for (const Table& table : tables_[kind]) {
      const unsigned size = RecordSize(static_cast<Kind>(kind)) * table.entries;
      regions.emplace_back(table.offset, table.offset + kTableHead + 4ULL * table.entries);
      regions.emplace_back(table.area, table.area + 0ULL + size);
    }
  }
  std::sort(regions.begin(), regions.end());
  for (size_t i = 1; i < regions.size(); ++i) {
    if (regions[i].first < regions[i - 1].second) {
      Report("tables or areas overlap at offset " + std::to_string(regions[i].first));
    }
  }
}

bool RegistryImage::Exists(Kind kind, unsigned id) const {
  const unsigned table = id & 0xFF;
  const unsigned slot = id >> 8;
  return table < tables_[kind].size() && slot >= 1 && slot < tables_[kind][table].entries;
}

unsigned RegistryImage::Claim(Kind kind, unsigned id) {
  if (!Exists(kind, id)) {
    Report(Name(kind, id) + ": there is no such slot");
    return 0;
  }
  Table& table = tables_[kind][id & 0xFF];
  const unsigned slot = id >> 8;
  if (table.isReached[slot]) {
    Report(Name(kind, id) + ": reached twice");
    return 0;
  }
  table.isReached[slot] = true;
  if (table.isFree[slot]) {
    Report(Name(kind, id) + ": reached but free");
    return 0;
  }
  return table.area + RecordSize(kind) * slot;
}

unsigned RegistryImage::NextBlock(unsigned id) const {
  const Table& table = tables_[kBlocks][id & 0xFF];
  const unsigned next = U32(table.offset + kTableHead + 4 * (id >> 8));
  return next == 0 ? 0 : next << 8 | (id & 0xFF);
}
