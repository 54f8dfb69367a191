// Changing what a stored value holds.
#pragma once

#include "registry/store/Changes.h"

namespace tamu::registry {

// A write may be cut short anywhere, and a record is written from its beginning on, the flags
// before the word that leads to the data. These two see to it that the record in the file never
// says that its data lies in blocks while the word is a number, or a mixture of two ids.
// Test: CutValueWrites.NoValueLosesItsDataToAnother

// Makes a value one that is not set and has no blocks: in `record`, which is what the file has, and
// in the file, where a single byte changes. The word stays. The status of the write; `record` is
// then as it was.
Status LetGoOfBlocks(Changes& changes, unsigned int id, TernaryValueNode* record);

// Writes `after` over `before`, which is what the file has; the blocks of `before` were let go of,
// or could not be.
Status ReplaceValueRecord(Changes& changes, unsigned int id, const TernaryValueNode& before,
                          const TernaryValueNode& after);

}  // namespace tamu::registry
