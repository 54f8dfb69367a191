#include "tools/yaxreg/image/RegistryImage.h"

#include <cstdio>
#include <utility>

#include "registry/store/Codec.h"
#include "registry/store/DataBlock.h"
#include "registry/store/NodeAllocationTable.h"
#include "registry/store/TernaryFile.h"
#include "tools/yaxreg/image/TableReader.h"
#include "tools/yaxreg/image/TreeReader.h"

namespace yaxreg {

using tamu::registry::NodeAllocationTable;
using tamu::registry::SlotOf;
using tamu::registry::TernaryFile;

RegistryImage::RegistryImage(std::string bytes, Orphans orphans) : bytes_(std::move(bytes)) {
  TableReader tables(*this);
  isRegistry_ = tables.IsRegistry();
  if (!isRegistry_) return;
  tables.Run();
  TreeReader(*this, orphans).Run();
}

SlotUse RegistryImage::UseOf(NodeKind kind) const {
  SlotUse use;
  use.tables = static_cast<unsigned int>(Tables(kind).size());
  unsigned int newest = 0;
  for (const Table& table : Tables(kind)) {
    newest = 0;
    for (unsigned int slot = 1; slot < table.entries; ++slot) {
      ++use.slots;
      if (table.isReached[slot]) {
        ++use.reached;
      } else if (table.isFree[slot]) {
        ++use.free;
        ++newest;
      } else {
        ++use.leaked;
      }
    }
  }
  use.stranded = use.free - newest;
  const unsigned int more = use.tables < kMaxTables ? kMaxTables - use.tables : 0;
  use.remaining = newest + more * (TernaryFile::kExpansionSlots - 1);
  return use;
}

unsigned int RegistryImage::RecordSize(NodeKind kind) {
  constexpr unsigned int kSizes[kNodeKinds] = {
      tamu::registry::TernaryStringNode::kSize, tamu::registry::TernaryKeyNode::kSize,
      tamu::registry::TernaryValueNode::kSize, tamu::registry::kDataBlockSize};
  return kSizes[static_cast<unsigned int>(kind)];
}

const char* RegistryImage::KindName(NodeKind kind) {
  constexpr const char* kNames[kNodeKinds] = {"string node", "key", "value", "data block"};
  return kNames[static_cast<unsigned int>(kind)];
}

std::string RegistryImage::NodeName(NodeKind kind, unsigned int id) {
  char text[16];
  std::snprintf(text, sizeof text, " 0x%x", id);
  return std::string(KindName(kind)) + text;
}

unsigned int RegistryImage::Word(unsigned long long offset) const {
  if (offset + 4 > bytes_.size()) return 0;
  return tamu::registry::GetU32(reinterpret_cast<const unsigned char*>(bytes_.data()) + offset);
}

bool RegistryImage::HasSlot(NodeKind kind, unsigned int id) const {
  const unsigned int table = tamu::registry::TableOf(id);
  return table < Tables(kind).size() && SlotOf(id) > 0 && SlotOf(id) < Tables(kind)[table].entries;
}

const unsigned char* RegistryImage::Record(NodeKind kind, unsigned int id) const {
  if (!HasSlot(kind, id)) return nullptr;
  const unsigned long long size = RecordSize(kind);
  const unsigned long long offset = TableOf(kind, id).area + size * SlotOf(id);
  if (offset + size > bytes_.size()) return nullptr;
  return reinterpret_cast<const unsigned char*>(bytes_.data()) + offset;
}

unsigned int RegistryImage::Entry(NodeKind kind, unsigned int id) const {
  return Word(TableOf(kind, id).offset + NodeAllocationTable::StoredSize(SlotOf(id)));
}

bool RegistryImage::IsFree(NodeKind kind, unsigned int id) const {
  return TableOf(kind, id).isFree[SlotOf(id)];
}

bool RegistryImage::IsReached(NodeKind kind, unsigned int id) const {
  return TableOf(kind, id).isReached[SlotOf(id)];
}

void RegistryImage::MarkReached(NodeKind kind, unsigned int id) {
  Table& table = tables_[static_cast<unsigned int>(kind)][tamu::registry::TableOf(id)];
  table.isReached[SlotOf(id)] = true;
}

void RegistryImage::Report(Severity severity, const std::string& text) {
  Add({severity, text, "", false});
}

void RegistryImage::Report(Severity severity, const std::string& text, const std::string& path) {
  Add({severity, text, path, true});
}

void RegistryImage::Add(Finding finding) {
  if (finding.severity > worst_) worst_ = finding.severity;
  if (findings_.size() < kMaxFindings) {
    findings_.push_back(std::move(finding));
  } else {
    ++moreFindings_;
  }
}

}  // namespace yaxreg
