// How many slots of a kind are left, and how many are lost until the file is compacted.
#pragma once

#include <string>

#include "tools/yaxreg/image/RegistryImage.h"

namespace yaxreg {

// The slots of one kind in the words of all verbs. Those that the file has are in use, leaked, free
// or stranded.
struct Wear {
  NodeKind kind = NodeKind::kString;
  unsigned int slots = 0;       // that the file has
  unsigned int inUse = 0;       // the tree leads to them
  unsigned int withoutKey = 0;  // of those in use: string nodes that only spell names without a key
  unsigned int leaked = 0;      // marked as in use, but nothing leads to them
  unsigned int free = 0;        // in the newest table
  unsigned int stranded = 0;    // free in an older table: handed out with kReuse alone
  unsigned int left = 0;        // that can be handed out until changes are refused with status 75
  unsigned int tables = 0;      // of at most kTablesMax
  unsigned int ever = 0;        // slots with all tables, 10344

  // What rewriting the file wins back.
  unsigned int lost() const { return leaked + stranded + withoutKey; }
  double lostPercent() const { return ever == 0 ? 0 : 100.0 * lost() / ever; }
  bool isNearlyFull() const { return left < ever / 20.0; }  // 5 %
  bool isLossNotable() const { return lost() >= ever / 100.0; }
  // "3 data blocks".
  std::string LeftText() const;
};

Wear WearOf(const RegistryImage& image, NodeKind kind);

// "data blocks".
std::string KindNames(NodeKind kind);

}  // namespace yaxreg
