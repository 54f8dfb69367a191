// Where everything lies in a new registry file.
#pragma once

#include "registry/format/NodeId.h"

namespace tamu::registry {

// The layout of a file made with a budget of `size` bytes: four allocation tables in the order of
// NodeKind, then their four areas in the same order. Offsets in bytes; computed in 64 bits, so that
// any budget can be asked about.
class FileLayout {
 public:
  static constexpr unsigned int kTablesOffset = 4220;       // of the first table
  static constexpr unsigned int kMaxFileSize = 0x7FFFFFFF;  // bytes

  explicit FileLayout(unsigned int budget);
  // The same with so many entries per table, the head entry included.
  static FileLayout OfEntries(unsigned int entries);

  // False when a file of that budget would be longer than kMaxFileSize or have more entries than a
  // node id can name.
  bool IsPossible() const;
  unsigned int entryCount() const { return entries_; }
  unsigned int tableOffset(NodeKind kind) const;
  unsigned int areaOffset(NodeKind kind) const;
  unsigned int areasSize() const;  // of the four areas together
  unsigned int fileSize() const;

 private:
  unsigned long long TableOffset(unsigned int index) const;
  unsigned long long AreaOffset(unsigned int index) const;

  unsigned int entries_;  // per table, the head entry included
};

}  // namespace tamu::registry
