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

unsigned int LetGoOfBlocks(TernaryFile& file, unsigned int changes, unsigned int id,
                           TernaryValueNode* record) {
  TernaryValueNode unset = Unset(*record);
  const unsigned int result = file.WriteValueNode(changes, id, &unset, false);
  if (result == status::kOk) *record = unset;
  return result;
}

// The word of data in blocks is there before the flags tell of it: a second write changes these
// alone.
unsigned int ReplaceValueRecord(TernaryFile& file, unsigned int changes, unsigned int id,
                                const TernaryValueNode& before, const TernaryValueNode& after) {
  unsigned int result = status::kOk;
  if (after.isInBlocks() && after.dataWord() != before.dataWord()) {
    TernaryValueNode unset = Unset(after);
    result = file.WriteValueNode(changes, id, &unset, false);
  }
  TernaryValueNode record = after;
  if (result == status::kOk) result = file.WriteValueNode(changes, id, &record, false);
  if (result != status::kOk && !before.isInBlocks()) {
    record = before;
    file.WriteValueNode(changes, id, &record, false);  // what was written of it
  }
  return result;
}

}  // namespace tamu::registry
