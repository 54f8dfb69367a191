// Whether all of a registry file hangs together, and what the tree leads to.
#pragma once

#include "registry/filetree/SlotLists.h"
#include "registry/store/NodeSet.h"
#include "registry/store/StoreAccess.h"

namespace tamu::registry {

// Reads every table, every free list and every record that the tree leads to.
class FileSurvey {
 public:
  // Nobody writes the file meanwhile.
  FileSurvey(const LockedAccess& access, const FileStore& store) : access_(access), store_(store) {}

  // 0: the file is sound. kInvalidFile: a table or free list is damaged, a record cannot be read,
  // is free, is met twice or makes no sense, or a name has lost its beginning (IsCutFrom); what was
  // listed before stays. kInputOutput, kNoMemory.
  Status Run();
  // What the tree leads to, in the order in which it was met: a node before those that its links
  // lead to (lo, hi, equal, child); of data the first block of each value that has any.
  Stack<unsigned int>& Met(NodeKind kind) { return met_.Of(kind); }
  // How many slots that takes.
  unsigned int CountMet(NodeKind kind) const { return counts_[static_cast<unsigned int>(kind)]; }
  // True when keys or values are in use that the tree does not lead to, other than slots of zeros
  // only: deleted while they were open, or lost. Asked of a file that is sound.
  bool HasStrays() const;

 private:
  Status SurveyFreeList(NodeKind kind, const NodeAllocationTable& table);
  Status SurveyStrings();
  Status SurveyString(StringId id);
  Status SurveyKey(KeyId id);
  Status SurveyValue(ValueId id, TernaryValueNode* value);
  Status SurveyData(DataId id, unsigned int size);
  Status Meet(NodeKind kind, unsigned int id);
  // Asks for each slot in use that was not met until one is the one that is looked for.
  bool AnyLeaked(NodeKind kind, const FunctionRef<bool(unsigned int id)>& isLookedFor) const;
  bool HasStraysOf(NodeKind kind) const;
  bool LacksItsPlace(StringId id) const;
  NodeSet& SeenOf(NodeKind kind) { return seen_[static_cast<unsigned int>(kind)]; }
  bool IsSeen(NodeKind kind, unsigned int id) const {
    return seen_[static_cast<unsigned int>(kind)].Has(id);
  }

  const LockedAccess& access_;
  const FileStore& store_;
  SlotLists met_;
  NodeSet seen_[kNodeKinds];  // free, or met
  unsigned int counts_[kNodeKinds] = {};
  Stack<unsigned int> ahead_;  // string nodes that links lead to
};

}  // namespace tamu::registry
