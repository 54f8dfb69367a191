#include "registry/format/FileLayout.h"

#include "registry/format/TableRanges.h"

namespace tamu::registry {

namespace {

// One slot of each kind.
unsigned int SlotsSize() {
  return RecordSizeOf(NodeKind::kString) + RecordSizeOf(NodeKind::kKey) +
         RecordSizeOf(NodeKind::kValue) + RecordSizeOf(NodeKind::kData);
}

}  // namespace

FileLayout::FileLayout(unsigned int budget) : entries_(budget / SlotsSize() + 1) {}

FileLayout FileLayout::OfEntries(unsigned int entries) {
  FileLayout layout(0);
  layout.entries_ = entries;
  return layout;
}

bool FileLayout::IsPossible() const {
  return entries_ <= NodeAllocationTable::kMaxEntries && AreaOffset(kNodeKinds) <= kMaxFileSize;
}

unsigned int FileLayout::tableOffset(NodeKind kind) const {
  return static_cast<unsigned int>(TableOffset(static_cast<unsigned int>(kind)));
}

unsigned int FileLayout::areaOffset(NodeKind kind) const {
  return static_cast<unsigned int>(AreaOffset(static_cast<unsigned int>(kind)));
}

unsigned int FileLayout::areasSize() const {
  return static_cast<unsigned int>(AreaOffset(kNodeKinds) - AreaOffset(0));
}

unsigned int FileLayout::fileSize() const {
  return static_cast<unsigned int>(AreaOffset(kNodeKinds));
}

unsigned long long FileLayout::TableOffset(unsigned int index) const {
  return kTablesOffset + index * NodeAllocationTable::StoredSize(entries_);
}

unsigned long long FileLayout::AreaOffset(unsigned int index) const {
  unsigned long long offset = TableOffset(kNodeKinds);
  for (unsigned int i = 0; i < index; ++i) {
    offset = AreaRange(offset, entries_, RecordSizeOf(static_cast<NodeKind>(i))).end;
  }
  return offset;
}

}  // namespace tamu::registry
