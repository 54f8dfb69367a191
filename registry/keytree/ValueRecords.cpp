#include "registry/keytree/ValueRecords.h"

namespace tamu::registry {

namespace {

// As long as it is written, it is a number that is not set, whatever it holds.
TernaryValueNode Unset(const TernaryValueNode& record) {
  TernaryValueNode unset = record;
  unset.setType(kValueTypeInteger);
  unset.setInBlocks(false);
  unset.setSet(false);
  return unset;
}

}  // namespace

Status LetGoOfBlocks(Changes& changes, unsigned int id, TernaryValueNode* record) {
  const TernaryValueNode unset = Unset(*record);
  const Status result = changes.Write(id, unset);
  if (result.IsOk()) *record = unset;
  return result;
}

// The word of data in blocks is there before the flags tell of it: a second write changes these
// alone.
Status ReplaceValueRecord(Changes& changes, unsigned int id, const TernaryValueNode& before,
                          const TernaryValueNode& after) {
  Status result = status::kOk;
  if (after.isInBlocks() && after.dataWord() != before.dataWord()) {
    result = changes.Write(id, Unset(after));
  }
  return result.IsOk() ? changes.Write(id, after) : result;
}

}  // namespace tamu::registry
