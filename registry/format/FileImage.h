// A whole registry file in memory, as it is made from records that are known beforehand.
#pragma once

#include "registry/format/FileLayout.h"
#include "registry/format/RecordSize.h"

namespace tamu::registry {

// First slots are taken for all records and data, then the tables are laid out in a buffer of the
// caller's, then the records are put there. The lowest slots are used, and tables are appended as
// in a file that was filled slot by slot: the tables of a kind behind those of the kinds before it.
class FileImage {
 public:
  // `firstEntries`: of each kind's first table, the head entry included.
  explicit FileImage(unsigned int firstEntries) : firstEntries_(firstEntries) {}

  // Takes slots side by side: one for a record, or those of the data of a value, in the first table
  // that has as many left. False when the kind has no more tables.
  bool Take(NodeKind kind, unsigned int count, unsigned int* id);
  // Places the tables of what was taken. The result is the length of the file, in bytes.
  unsigned int PlaceTables();
  // `bytes` are zero, as many as PlaceTables has told, and stay the caller's. Writes the headers,
  // the tables and their free lists.
  void Begin(unsigned char* bytes, unsigned int startNode);
  // A record of the kind's size into a slot that was taken.
  void Put(NodeKind kind, unsigned int id, const void* record);
  // The data of a value into blocks that were taken, and what links these.
  void PutData(unsigned int id, const void* data, unsigned int size);

 private:
  struct Tables {
    unsigned int count = 1;
    unsigned int first = 0;  // the first that may have room for a record
    unsigned int used[kTablesMax] = {};
    unsigned int offsets[kTablesMax] = {};
    unsigned int areas[kTablesMax] = {};
  };
  Tables& Of(NodeKind kind) { return kinds_[static_cast<unsigned int>(kind)]; }
  unsigned int EntriesOf(unsigned int table) const {
    return table == 0 ? firstEntries_ : kExpansionSlots;
  }
  void WriteTables(NodeKind kind);

  unsigned int firstEntries_;
  Tables kinds_[kNodeKinds];
  unsigned int size_ = 0;
  unsigned char* bytes_ = nullptr;
};

}  // namespace tamu::registry
