#include "tools/yaxreg/image/ImageWriter.h"

#include <algorithm>
#include <cstring>
#include <numeric>

#include "registry/format/Codec.h"
#include "registry/format/DataBlock.h"
#include "registry/format/FileHeader.h"
#include "registry/format/FileLayout.h"
#include "registry/format/TableRanges.h"
#include "registry/format/TernaryHeader.h"
#include "registry/store/TernaryFile.h"
#include "tools/yaxreg/image/KeyRecords.h"
#include "tools/yaxreg/image/Kinds.h"

namespace yaxreg {

using tamu::registry::AreaRange;
using tamu::registry::DataBlocksFor;
using tamu::registry::FileHeader;
using tamu::registry::FileLayout;
using tamu::registry::FileRange;
using tamu::registry::kDataBlockSize;
using tamu::registry::kStoredOrder;
using tamu::registry::MakeNodeId;
using tamu::registry::NodeAllocationTable;
using tamu::registry::NodeLink;
using tamu::registry::RecordSizeOf;
using tamu::registry::SlotOf;
using tamu::registry::TableOf;
using tamu::registry::TableRange;
using tamu::registry::TernaryFile;
using tamu::registry::TernaryHeader;
using tamu::registry::TernaryKeyNode;
using tamu::registry::TernaryStringNode;
using tamu::registry::TernaryValueNode;

ImageWriter::ImageWriter(const Content& content, unsigned int firstEntries)
    : content_(content),
      names_(content, 0),
      firstEntries_(std::max(firstEntries, FileLayout(TernaryFile::kDefaultBudget).entryCount())) {
  if (!CountRecords()) return;
  PlaceTables();
  WriteHeaders();
  for (const NodeKind kind : kAllKinds) WriteTables(kind);
  WriteNames();
  WriteKeys();
}

bool ImageWriter::CountRecords() {
  const bool fits = Fill(NodeKind::kString, names_.nodes().size() + 1) &&
                    Fill(NodeKind::kKey, content_.keys.size()) &&
                    Fill(NodeKind::kValue, content_.ValueCount());
  return fits && (PlaceBlocks(false) || PlaceBlocks(true));
}

// Slots are taken in order, and a table is appended when the last one is full.
bool ImageWriter::Fill(NodeKind kind, size_t count) {
  Tables& tables = Of(kind);
  do {
    const size_t room = EntriesOf(tables.used.size()) - 1;
    tables.used.push_back(static_cast<unsigned int>(std::min(count, room)));
    count -= tables.used.back();
  } while (count > 0 && tables.used.size() < tamu::registry::kTablesMax);
  return count == 0;
}

// All blocks of a value lie in one table. Taking the largest values first leaves less room unused;
// taking them as they come keeps what is read together side by side.
bool ImageWriter::PlaceBlocks(bool largestFirst) {
  std::vector<unsigned int> counts;
  for (const ContentKey& key : content_.keys) {
    for (auto value = key.values.rbegin(); value != key.values.rend(); ++value) {
      counts.push_back(DataBlocksFor(static_cast<unsigned int>(value->data.size())));
    }
  }
  std::vector<size_t> order(counts.size());
  std::iota(order.begin(), order.end(), size_t{0});
  if (largestFirst) {
    std::stable_sort(order.begin(), order.end(),
                     [&](size_t a, size_t b) { return counts[a] > counts[b]; });
  }
  Of(NodeKind::kData).used.assign(1, 0);
  firstBlocks_.assign(counts.size(), 0);
  return std::all_of(order.begin(), order.end(), [&](size_t value) {
    return counts[value] == 0 || PlaceValueBlocks(counts[value], &firstBlocks_[value]);
  });
}

bool ImageWriter::PlaceValueBlocks(unsigned int count, unsigned int* id) {
  std::vector<unsigned int>& used = Of(NodeKind::kData).used;
  unsigned int table = 0;
  while (used[table] + count > EntriesOf(table) - 1) {
    if (++table == tamu::registry::kTablesMax) return false;
    if (table == used.size()) used.push_back(0);
  }
  *id = MakeNodeId(table, used[table] + 1);
  used[table] += count;
  return true;
}

unsigned int ImageWriter::EntriesOf(size_t table) const {
  return table == 0 ? firstEntries_ : TernaryFile::kExpansionSlots;
}

// The first tables, then their areas, then appended tables, each with its area behind it.
void ImageWriter::PlaceTables() {
  const FileLayout first = FileLayout::OfEntries(firstEntries_);
  unsigned int end = first.fileSize();
  for (const NodeKind kind : kAllKinds) {
    Tables& tables = Of(kind);
    tables.offsets.push_back(first.tableOffset(kind));
    tables.areas.push_back(first.areaOffset(kind));
    for (size_t table = 1; table < tables.used.size(); ++table) {
      const FileRange entries = TableRange(end, EntriesOf(table));
      const FileRange area = AreaRange(entries.end, EntriesOf(table), RecordSizeOf(kind));
      tables.offsets.push_back(end);
      tables.areas.push_back(static_cast<unsigned int>(area.start));
      end = static_cast<unsigned int>(area.end);
    }
  }
  bytes_.assign(end, '\0');
}

void ImageWriter::WriteHeaders() {
  FileHeader file;
  file.Stamp();
  std::memcpy(&bytes_[FileHeader::kOffset], file.bytes(), FileHeader::kSize);
  TernaryHeader header;
  header.setHeaderOffset(TernaryHeader::kFileOffset);
  header.setHeaderVersion(TernaryHeader::kVersion);
  for (const NodeKind kind : kAllKinds) header.setFirstTable(kind, Of(kind).offsets[0]);
  header.setStartNode(IdOf(0));
  header.setFileSize(static_cast<unsigned int>(bytes_.size()));
  std::memcpy(&bytes_[TernaryHeader::kFileOffset], header.bytes(), TernaryHeader::kSize);
}

// The lowest slots are used, and the free ones follow each other, as in a table that was filled
// slot by slot. The links of data blocks are written with the data.
void ImageWriter::WriteTables(NodeKind kind) {
  const Tables& tables = Of(kind);
  for (size_t number = 0; number < tables.used.size(); ++number) {
    const unsigned int entries = EntriesOf(number);
    const unsigned int used = tables.used[number];
    NodeAllocationTable table;
    if (number + 1 < tables.offsets.size()) table.setNextTable(tables.offsets[number + 1]);
    table.setTableOffset(tables.offsets[number]);
    table.setAreaOffset(tables.areas[number]);
    table.setEntryCount(entries);
    table.setTableNumber(static_cast<unsigned int>(number));
    table.setFreeCount(entries - 1 - used);
    std::memcpy(&bytes_[tables.offsets[number]], table.bytes(), NodeAllocationTable::kSize);
    PutWord(table.entryOffset(0), used + 1);
    for (unsigned int slot = used + 1; slot < entries; ++slot) {
      PutWord(table.entryOffset(slot), slot + 1);
    }
  }
}

// The root's string node is the first one, those of the names follow.
void ImageWriter::WriteNames() {
  TernaryStringNode root;
  root.setHasKey(true);
  root.setKeyNode(IdOf(0));
  if (!names_.nodes().empty()) root.setChild(IdOf(1));
  Put(NodeKind::kString, IdOf(0), root);
  for (size_t i = 0; i < names_.nodes().size(); ++i) {
    const NameTree::Node& node = names_.nodes()[i];
    TernaryStringNode record = NameTree::RecordOf(node);
    for (const NodeLink link : kStoredOrder) {
      const size_t target = NameTree::LinkOf(node, link);
      if (target != NameTree::kNone) SetLink(&record, link, IdOf(target + 1));
    }
    if (node.key != NameTree::kNone) record.setKeyNode(IdOf(node.key));
    Put(NodeKind::kString, IdOf(i + 1), record);
  }
}

// Values are written oldest first, as they would have been created.
void ImageWriter::WriteKeys() {
  size_t written = 0;
  for (size_t i = 0; i < content_.keys.size(); ++i) {
    const ContentKey& key = content_.keys[i];
    unsigned int newest = 0;
    for (auto value = key.values.rbegin(); value != key.values.rend(); ++value) {
      WriteValue(*value, written, newest);
      newest = IdOf(written++);
    }
    TernaryKeyNode record = KeyRecordOf(key);
    record.setFirstValue(newest);
    Put(NodeKind::kKey, IdOf(i), record);
  }
}

void ImageWriter::WriteValue(const ContentValue& value, size_t index, unsigned int next) {
  TernaryValueNode record = ValueRecordOf(value);
  record.setNextValue(next);
  if (!value.isNumber()) {
    record.setDataWord(firstBlocks_[index]);
    if (firstBlocks_[index] != 0) WriteData(value, firstBlocks_[index]);
  }
  Put(NodeKind::kValue, IdOf(index), record);
}

void ImageWriter::WriteData(const ContentValue& value, unsigned int id) {
  const Tables& tables = Of(NodeKind::kData);
  const unsigned int table = TableOf(id);
  const unsigned int first = SlotOf(id);
  std::memcpy(&bytes_[tables.areas[table] + size_t{kDataBlockSize} * first], value.data.data(),
              value.data.size());
  const unsigned int count = DataBlocksFor(static_cast<unsigned int>(value.data.size()));
  for (unsigned int i = 0; i + 1 < count; ++i) {
    PutWord(tables.offsets[table] + NodeAllocationTable::StoredSize(first + i), first + i + 1);
  }
}

unsigned int ImageWriter::IdOf(size_t index) const {
  const unsigned int room = firstEntries_ - 1;
  const unsigned int number = static_cast<unsigned int>(index);
  if (number < room) return MakeNodeId(0, number + 1);
  constexpr unsigned int kRoom = TernaryFile::kExpansionSlots - 1;
  return MakeNodeId(1 + (number - room) / kRoom, 1 + (number - room) % kRoom);
}

template <class Stored>
void ImageWriter::Put(NodeKind kind, unsigned int id, const Stored& record) {
  const size_t offset = Of(kind).areas[TableOf(id)] + size_t{Stored::kSize} * SlotOf(id);
  std::memcpy(&bytes_[offset], record.bytes(), Stored::kSize);
}

void ImageWriter::PutWord(unsigned long long offset, unsigned int word) {
  tamu::registry::PutU32(reinterpret_cast<unsigned char*>(&bytes_[static_cast<size_t>(offset)]),
                         word);
}

}  // namespace yaxreg
