#include "tools/yaxreg/image/RegistryImage.h"

#include <cstdio>
#include <utility>

#include "registry/format/Codec.h"
#include "registry/format/TableRanges.h"
#include "registry/store/TernaryFile.h"
#include "tools/yaxreg/image/TableReader.h"
#include "tools/yaxreg/image/TreeReader.h"

namespace yaxreg {

using tamu::registry::kTablesMax;
using tamu::registry::NodeAllocationTable;
using tamu::registry::SlotOf;
using tamu::registry::TernaryFile;

RegistryImage::RegistryImage(std::string bytes, Orphans orphans, bool isCompleted)
    : bytes_(std::move(bytes)), isCompleted_(isCompleted) {
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
  for (unsigned int table = 0; table < use.tables; ++table) {
    newest = 0;
    for (unsigned int slot = 1; slot < Tables(kind)[table].entries; ++slot) {
      const unsigned int id = tamu::registry::MakeNodeId(table, slot);
      ++use.slots;
      if (IsReached(kind, id)) {
        ++use.reached;
      } else if (IsInUse(kind, id)) {
        ++use.leaked;
      } else {
        ++use.free;
        ++newest;
      }
    }
  }
  use.stranded = use.free - newest;
  if (use.tables == 0) return use;  // not even the first one can be made out
  const unsigned int more = use.tables < kTablesMax ? kTablesMax - use.tables : 0;
  use.remaining = newest + more * (TernaryFile::kExpansionSlots - 1);
  return use;
}

const char* RegistryImage::KindName(NodeKind kind) {
  constexpr const char* kNames[kNodeKinds] = {"string node", "key", "value", "data block"};
  return kNames[static_cast<unsigned int>(kind)];
}

std::string RegistryImage::NodeName(NodeKind kind, unsigned int id) {
  return KindName(kind) + (' ' + IdText(id));
}

std::string RegistryImage::IdText(unsigned int id) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%x", id);
  return text;
}

std::string RegistryImage::ShortPath(const std::string& path) {
  if (path.size() <= kMaxPath) return path;
  const size_t half = (kMaxPath - 5) / 2;
  return path.substr(0, half) + "/.../" + path.substr(path.size() - half);
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
  const unsigned long long size = tamu::registry::RecordSizeOf(kind);
  const unsigned long long offset = TableOf(kind, id).area + size * SlotOf(id);
  if (offset + size > bytes_.size()) return nullptr;
  return reinterpret_cast<const unsigned char*>(bytes_.data()) + offset;
}

unsigned int RegistryImage::EntryAt(unsigned int table, unsigned int slot) const {
  return Word(table + NodeAllocationTable::StoredSize(slot));
}

unsigned int RegistryImage::Entry(NodeKind kind, unsigned int id) const {
  return EntryAt(TableOf(kind, id).offset, SlotOf(id));
}

bool RegistryImage::IsFree(NodeKind kind, unsigned int id) const {
  return TableOf(kind, id).isFree[SlotOf(id)];
}

bool RegistryImage::IsInUse(NodeKind kind, unsigned int id) const {
  return !IsFree(kind, id) && (kind == NodeKind::kData || Entry(kind, id) == 0);
}

bool RegistryImage::IsReached(NodeKind kind, unsigned int id) const {
  return TableOf(kind, id).isReached[SlotOf(id)];
}

void RegistryImage::MarkReached(NodeKind kind, unsigned int id) {
  Table& table = tables_[static_cast<unsigned int>(kind)][tamu::registry::TableOf(id)];
  table.isReached[SlotOf(id)] = true;
}

void RegistryImage::Report(Severity severity, const std::string& text) {
  if (Count(severity)) findings_.push_back({severity, text, "", false});
}

void RegistryImage::Report(Severity severity, const std::string& text, const PathMaker& path) {
  if (Count(severity)) findings_.push_back({severity, text, ShortPath(path()), true});
}

bool RegistryImage::Count(Severity severity) {
  if (severity > worst_) worst_ = severity;
  if (findings_.size() < kMaxFindings) return true;
  ++moreFindings_;
  return false;
}

}  // namespace yaxreg
