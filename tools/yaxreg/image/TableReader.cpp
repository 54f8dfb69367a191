#include "tools/yaxreg/image/TableReader.h"

#include <algorithm>
#include <cstring>

#include "registry/format/FileHeader.h"
#include "registry/format/FileLayout.h"
#include "registry/format/TernaryHeader.h"
#include "registry/store/TernaryFile.h"
#include "tools/yaxreg/image/Kinds.h"

namespace yaxreg {

using tamu::registry::FileHeader;
using tamu::registry::FileLayout;
using tamu::registry::NodeAllocationTable;
using tamu::registry::TableRange;
using tamu::registry::TernaryFile;
using tamu::registry::TernaryHeader;

namespace {

constexpr unsigned int kHeadersEnd = FileLayout::kTablesOffset;

template <class Stored>
Stored StoredAt(const std::string& bytes, unsigned long long offset) {
  Stored record;
  if (offset + Stored::kSize <= bytes.size()) {
    std::memcpy(record.bytes(), bytes.data() + offset, Stored::kSize);
  }
  return record;
}

unsigned int IndexOf(NodeKind kind) {
  return static_cast<unsigned int>(kind);
}

std::string TableName(NodeKind kind, size_t number) {
  return "table " + std::to_string(number) + " of " + RegistryImage::KindName(kind) + "s";
}

}  // namespace

// Most of the fields that every registry has alike: one of them may be damaged.
bool TableReader::IsRegistry() const {
  const std::string& bytes = image_.bytes_;
  if (bytes.size() < FileHeader::kSize) return false;
  const FileHeader file = StoredAt<FileHeader>(bytes, FileHeader::kOffset);
  if (bytes.size() < kHeadersEnd) return file.HasMagic();
  const TernaryHeader header = StoredAt<TernaryHeader>(bytes, TernaryHeader::kFileOffset);
  FileHeader sound;
  sound.Stamp();
  unsigned int agreed = 0;
  for (unsigned int offset = 0; offset < 16; offset += 4) {
    if (std::memcmp(file.bytes() + offset, sound.bytes() + offset, 4) == 0) ++agreed;
  }
  if (header.headerOffset() == TernaryHeader::kFileOffset) ++agreed;
  if (header.headerVersion() == TernaryHeader::kVersion) ++agreed;
  if (header.firstTable(NodeKind::kString) == FileLayout::kTablesOffset) ++agreed;
  // Where even the whole header is gone with the first table, the other three still tell.
  return agreed >= 5 || RateFirstEntries(GuessFirstEntries()) >= 13;
}

void TableReader::Run() {
  CheckHeaders();
  if (image_.bytes_.size() < kHeadersEnd) {
    image_.Report(Severity::kLoss, "the file ends within its headers");
    return;
  }
  const unsigned int entries = GuessFirstEntries();
  if (entries == 0) {
    image_.Report(Severity::kLoss, "the tables cannot be made out");
    return;
  }
  const FileLayout layout = FileLayout::OfEntries(entries);
  PlaceFirstTables(layout);
  PlaceAppendedTables(layout.fileSize());
  for (const NodeKind kind : kAllKinds) {
    for (unsigned int number = 0; number < image_.Tables(kind).size(); ++number) {
      CheckTable(kind, number);
      WalkFreeList(kind, number);
    }
  }
}

void TableReader::CheckHeaders() {
  const FileHeader file = StoredAt<FileHeader>(image_.bytes_, FileHeader::kOffset);
  if (!file.HasMagic()) Damage("the signature is wrong, the library takes it for no registry");
  if (file.HasMagic() && !file.IsValid()) Damage("the format version is wrong");
  const auto isZero = [](char c) { return c == 0; };
  const auto at = [&](size_t offset) {
    return image_.bytes_.begin() +
           static_cast<std::ptrdiff_t>(std::min(offset, image_.bytes_.size()));
  };
  if (!std::all_of(at(16), at(FileHeader::kSize), isZero)) {
    Damage("reserved bytes of the file header are not 0");
  }
  // The first four bytes of the reserved area are written by the library, with no meaning.
  if (!std::all_of(at(FileHeader::kReservedArea + 4), at(TernaryHeader::kFileOffset), isZero)) {
    Damage("bytes of the reserved area are not 0");
  }
  if (image_.bytes_.size() < kHeadersEnd) return;
  const TernaryHeader header = StoredAt<TernaryHeader>(image_.bytes_, TernaryHeader::kFileOffset);
  if (header.headerOffset() != TernaryHeader::kFileOffset) Damage("the header's offset is wrong");
  if (header.headerVersion() != TernaryHeader::kVersion) Damage("the header's version is wrong");
  if (image_.Word(TernaryHeader::kFileOffset) != 0 ||
      image_.Word(TernaryHeader::kFileOffset + 36) != 0) {
    Damage("reserved bytes of the header are not 0");
  }
  image_.startNode_ = header.startNode();
}

// How many entries each of the first tables has: what the most fields agree on.
unsigned int TableReader::GuessFirstEntries() const {
  const TernaryHeader header = StoredAt<TernaryHeader>(image_.bytes_, TernaryHeader::kFileOffset);
  const NodeAllocationTable first =
      StoredAt<NodeAllocationTable>(image_.bytes_, FileLayout::kTablesOffset);
  std::vector<unsigned int> candidates = {
      FileLayout(TernaryFile::kDefaultBudget).entryCount(), first.entryCount(),
      NodeAllocationTable::EntriesIn((first.areaOffset() - kHeadersEnd) / kNodeKinds)};
  for (unsigned int i = 1; i < kNodeKinds; ++i) {
    const unsigned int distance =
        header.firstTable(kAllKinds[i]) - header.firstTable(kAllKinds[i - 1]);
    candidates.push_back(NodeAllocationTable::EntriesIn(distance));
  }
  unsigned int best = 0;
  unsigned int bestRating = 9;  // of 21 fields less than half: nothing can be relied on
  for (const unsigned int entries : candidates) {
    const unsigned int rating = RateFirstEntries(entries);
    if (rating > bestRating) {
      best = entries;
      bestRating = rating;
    }
  }
  return best;
}

unsigned int TableReader::RateFirstEntries(unsigned int entries) const {
  const FileLayout layout = FileLayout::OfEntries(entries);
  if (entries < 1 || !layout.IsPossible() || layout.fileSize() > RegistryImage::kMaxSize) return 0;
  const TernaryHeader header = StoredAt<TernaryHeader>(image_.bytes_, TernaryHeader::kFileOffset);
  unsigned int rating = layout.fileSize() <= image_.bytes_.size() ? 1 : 0;
  for (const NodeKind kind : kAllKinds) {
    const unsigned int offset = layout.tableOffset(kind);
    const NodeAllocationTable table = StoredAt<NodeAllocationTable>(image_.bytes_, offset);
    if (header.firstTable(kind) == offset) ++rating;
    if (table.tableOffset() == offset) ++rating;
    if (table.areaOffset() == layout.areaOffset(kind)) ++rating;
    if (table.entryCount() == entries) ++rating;
    if (table.tableNumber() == 0 && table.freeCount() < entries) ++rating;
  }
  return rating;
}

void TableReader::PlaceFirstTables(const FileLayout& layout) {
  const TernaryHeader header = StoredAt<TernaryHeader>(image_.bytes_, TernaryHeader::kFileOffset);
  for (const NodeKind kind : kAllKinds) {
    const unsigned int offset = layout.tableOffset(kind);
    AddTable({kind, offset, layout.entryCount()}, layout.areaOffset(kind));
    if (header.firstTable(kind) != offset) {
      Damage("the header tells a wrong place of " + TableName(kind, 0));
    }
  }
}

void TableReader::PlaceAppendedTables(unsigned int offset) {
  const unsigned int told =
      StoredAt<TernaryHeader>(image_.bytes_, TernaryHeader::kFileOffset).fileSize();
  Tile tile = {NodeKind::kString, 0, 0};
  while (offset < image_.bytes_.size()) {
    if (!GuessTile(offset, &tile)) {
      const unsigned int next = NextLinked(offset);
      if (next == 0) break;
      ReportGrowth(offset, next);
      offset = next;
      continue;
    }
    // A table that was being appended when the power went is behind the end that the header tells,
    // and nothing leads to it yet.
    if (offset == told && !IsLinked(tile)) break;
    const unsigned int end = static_cast<unsigned int>(tile.area().end);
    if (IsLinked(tile) || IsUsed(tile)) {
      AddTable(tile, tile.area().start);
    } else {
      ReportGrowth(offset, end);
    }
    offset = end;
  }
  CheckLength(offset);
}

// A table that was being appended when the power went may be zeros, while those that were appended
// behind it later are linked to. 0: no table behind the offset is.
unsigned int TableReader::NextLinked(unsigned int offset) const {
  unsigned int nearest = 0;
  for (const NodeKind kind : kAllKinds) {
    const std::vector<RegistryImage::Table>& tables = image_.Tables(kind);
    const unsigned int next = tables.empty() ? 0 : image_.Word(tables.back().offset);
    const bool isTable = next > offset && image_.Word(next + 4ULL) == next;
    if (isTable && (nearest == 0 || next < nearest)) nearest = next;
  }
  return nearest;
}

void TableReader::ReportGrowth(unsigned int begin, unsigned int end) {
  image_.Report(Severity::kNote, std::to_string(end - begin) + " bytes at " +
                                     std::to_string(begin) +
                                     " are left of a growth that was interrupted");
}

void TableReader::CheckLength(unsigned int end) {
  const unsigned int told =
      StoredAt<TernaryHeader>(image_.bytes_, TernaryHeader::kFileOffset).fileSize();
  const size_t size = image_.bytes_.size();
  if (told != end) {
    Damage("the header tells a length of " + std::to_string(told) + " bytes instead of " +
           std::to_string(end));
  }
  if (size < end) {
    Damage("the file is cut off: " + std::to_string(end - size) + " bytes are missing");
  }
  if (size > end) {
    image_.Report(Severity::kNote, std::to_string(size - end) +
                                       " bytes behind the end are left of a growth that was "
                                       "interrupted");
  }
}

// The kind of a table is told by nobody but the table before it: by the link to it, and else by
// where the next one begins.
bool TableReader::GuessTile(unsigned int offset, Tile* tile) const {
  if (offset + NodeAllocationTable::kSize > image_.bytes_.size()) return false;
  const NodeAllocationTable table = StoredAt<NodeAllocationTable>(image_.bytes_, offset);
  const unsigned int byArea = NodeAllocationTable::EntriesIn(table.areaOffset() - offset);
  unsigned int bestRating = 5;
  for (const NodeKind kind : kAllKinds) {
    for (const unsigned int entries : {table.entryCount(), byArea, TernaryFile::kExpansionSlots}) {
      const Tile guess = {kind, offset, entries};
      const unsigned int rating = RateTile(guess);
      if (rating <= bestRating) continue;
      *tile = guess;
      bestRating = rating;
    }
  }
  return bestRating > 5;
}

unsigned int TableReader::RateTile(const Tile& tile) const {
  const size_t number = image_.Tables(tile.kind).size();
  if (number >= tamu::registry::kTablesMax || tile.entries < 2) return 0;
  const unsigned long long end = tile.area().end;
  if (end > RegistryImage::kMaxSize) return 0;
  const NodeAllocationTable table = StoredAt<NodeAllocationTable>(image_.bytes_, tile.offset);
  const unsigned int told =
      StoredAt<TernaryHeader>(image_.bytes_, TernaryHeader::kFileOffset).fileSize();
  unsigned int rating = IsLinked(tile) ? 4 : 0;
  if (table.tableNumber() == number) rating += 2;
  if (table.tableOffset() == tile.offset) rating += 1;
  if (table.areaOffset() == tile.area().start) rating += 1;
  if (table.entryCount() == tile.entries) rating += 1;
  if (end == image_.bytes_.size() || end == told || image_.Word(end + 4) == end) rating += 3;
  return rating;
}

bool TableReader::IsLinked(const Tile& tile) const {
  const std::vector<RegistryImage::Table>& tables = image_.Tables(tile.kind);
  return !tables.empty() && image_.Word(tables.back().offset) == tile.offset;
}

// False for a table as it is appended. When the power goes before the link to it is written, it
// stays so, and the next one gets its number.
bool TableReader::IsUsed(const Tile& tile) const {
  const std::string& bytes = image_.bytes_;
  const FileRange area = tile.area();
  if (area.end > bytes.size()) return true;
  const NodeAllocationTable table = StoredAt<NodeAllocationTable>(bytes, tile.offset);
  if (table.freeCount() != tile.entries - 1) return true;
  for (unsigned int slot = 0; slot < tile.entries; ++slot) {
    if (image_.EntryAt(tile.offset, slot) != slot + 1) return true;
  }
  return bytes.find_first_not_of('\0', static_cast<size_t>(area.start)) < area.end;
}

void TableReader::AddTable(const Tile& tile, unsigned long long area) {
  RegistryImage::Table table;
  table.offset = tile.offset;
  table.area = static_cast<unsigned int>(area);
  table.entries = tile.entries;
  table.freeCount = StoredAt<NodeAllocationTable>(image_.bytes_, tile.offset).freeCount();
  table.isFree.resize(tile.entries);
  table.isReached.resize(tile.entries);
  image_.tables_[IndexOf(tile.kind)].push_back(table);
}

void TableReader::CheckTable(NodeKind kind, unsigned int number) {
  const std::vector<RegistryImage::Table>& tables = image_.Tables(kind);
  const RegistryImage::Table& placed = tables[number];
  const std::string name = TableName(kind, number);
  if (TableRange(placed.offset, placed.entries).end > image_.bytes_.size()) {
    return Damage(name + " is cut off");
  }
  const NodeAllocationTable stored = StoredAt<NodeAllocationTable>(image_.bytes_, placed.offset);
  const unsigned int next = number + 1 < tables.size() ? tables[number + 1].offset : 0;
  if (stored.nextTable() != next) Damage(name + " leads to a wrong next table");
  if (stored.tableOffset() != placed.offset) Damage(name + " tells a wrong place of itself");
  if (stored.areaOffset() != placed.area) Damage(name + " tells a wrong place of its area");
  if (stored.entryCount() != placed.entries) Damage(name + " tells a wrong number of entries");
  if (stored.tableNumber() != number) Damage(name + " tells a wrong number of itself");
  NodeAllocationTable cleared = stored;
  cleared.ClearReserved();
  const unsigned char* const raw = stored.bytes();
  if (std::memcmp(raw, cleared.bytes(), NodeAllocationTable::kSize) != 0 ||
      (image_.Word(placed.offset + 20) >> 8) != 0) {
    Damage("reserved bytes of " + name + " are not 0");
  }
}

// The list ends after as many slots as the count says; what its last slot leads to does not matter.
void TableReader::WalkFreeList(NodeKind kind, unsigned int number) {
  RegistryImage::Table& table = image_.tables_[IndexOf(kind)][number];
  const std::string name = "the free list of " + TableName(kind, number);
  if (TableRange(table.offset, table.entries).end > image_.bytes_.size()) return;
  if (table.freeCount >= table.entries) {
    Damage(name + " counts more slots than there are");
  }
  unsigned int slot = image_.EntryAt(table.offset, 0);
  for (unsigned int i = 0; i < table.freeCount; ++i) {
    if (slot < 1 || slot >= table.entries) {
      return Damage(name + " ends after " + std::to_string(i) + " of " +
                    std::to_string(table.freeCount) + " slots");
    }
    if (table.isFree[slot]) return Damage(name + " is a circle");
    table.isFree[slot] = true;
    slot = image_.EntryAt(table.offset, slot);
  }
  CheckEntries(kind, number);
}

// The entry of a used slot is 0, that of a data block the next block. More than that means that the
// free list is longer than its count.
void TableReader::CheckEntries(NodeKind kind, unsigned int number) {
  const RegistryImage::Table& table = image_.Tables(kind)[number];
  unsigned int wrong = 0;
  for (unsigned int slot = 1; slot < table.entries; ++slot) {
    if (table.isFree[slot]) continue;
    const unsigned int entry = image_.EntryAt(table.offset, slot);
    const bool fits = kind == NodeKind::kData ? entry < table.entries : entry == 0;
    if (!fits) ++wrong;
  }
  if (wrong == 0) return;
  Damage(TableName(kind, number) + " has " + std::to_string(wrong) +
         (wrong == 1 ? " used slot" : " used slots") +
         " with the entry of a free one: its free list is longer than it counts");
}

}  // namespace yaxreg
