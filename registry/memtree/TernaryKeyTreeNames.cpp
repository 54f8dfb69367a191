// The strings of a new name, and where they are hung.
#include "registry/keytree/NodeNames.h"
#include "registry/memtree/NameSplit.h"
#include "registry/memtree/NewName.h"
#include "registry/memtree/TernaryKeyTree.h"
#include "registry/store/SlotBudget.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

// What creating a name, and a key if wanted, would answer, without taking anything. What only the
// taking itself can find out is not foreseen. The strings before a "/" must find room, too.
Status TernaryKeyTree::CheckName(const char* name, bool withKey) {
  unsigned int length = 0;
  while (name[length] != 0 && name[length] != '/') ++length;
  const bool isWhole = name[length] == 0;
  unsigned int strings = length / kNodeNameMax;
  if (!isWhole || length == 0 || length % kNodeNameMax != 0) ++strings;
  StoreAccess access(*file);
  SlotBudget budget(*file);
  Status result = status::kOk;
  if (withKey) result = budget.Take(NodeKind::kKey, 1);
  while (result.IsOk() && strings-- > 0) result = budget.Take(NodeKind::kString, 1);
  if (result.IsOk() && !isWhole) result = status::kBadArgument;
  if (result.IsOk()) return result;
  // A file that cannot be read is reported first, as when something is taken.
  TernaryStringNode any;
  return access.Read(0, &any) == status::kInputOutput ? Status(status::kInputOutput) : result;
}

unsigned int TernaryKeyTree::CreateStringNode(unsigned int, const char* name, TernaryString*& first,
                                              TernaryKey* key) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  if (name == nullptr) return status::kBadArgument;
  first = nullptr;
  Changes changes(*file);
  NewName made;
  Status result = CheckName(name, false);
  if (result.IsOk()) result = made.Write(changes, name, key);
  if (!result.IsOk()) return result;
  result = changes.End(result);
  if (result.IsOk()) first = made.LetGo();
  return result;
}

unsigned int TernaryKeyTree::SplitString(unsigned int, TernaryString* string, unsigned int,
                                         unsigned int cut, TernaryString* parent,
                                         TernaryString*& upper) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  if (string == nullptr) return status::kBadArgument;
  upper = string;
  Changes changes(*file);
  NameSplit split;
  const Status result = changes.End(split.Write(changes, string, cut, parent));
  if (!result.IsOk()) return result;
  upper = split.Apply();
  if (parent == nullptr) startString = upper;
  return result;
}

}  // namespace tamu::registry
