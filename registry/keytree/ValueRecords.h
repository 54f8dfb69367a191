// What a stored value holds, and how that is changed.
#pragma once

#include "registry/store/Changes.h"

namespace tamu::registry {

// The first bytes of a value's data as a number: as many as there are, at most `width`.
unsigned long long LeadingBytes(const Value& value, unsigned int width);

// Makes a record a number. The name is cut to 31 characters.
void FillRecord(TernaryValueNode* record, const char* name, unsigned long long number, bool isSet);
// Gives a record name, type and size of a value; `dataId` is where its data lies. Data of size 0 is
// not set. A number is taken from the first eight bytes, as far as there are any.
void FillRecord(TernaryValueNode* record, const char* name, const Value& value, DataId dataId);

// Stores the data of a new value; *dataId is 0 when there is none. With SpacePolicy::kExact the
// bytes of a number are stored too, in blocks that nothing ever frees, and need not find room.
// Test: TernaryRegistryValueWrites.ANumberCreatedFromAValueTakesBlocksThatNobodyFrees
// Test: TernaryKeyTreeValueDeletionTest.ANumberCreatedFromAValueTakesBlocksThatNobodyFrees
Status StoreNewData(Changes& changes, const Value& value, DataId* dataId);
// Puts a new value before the others of a key, which has `count` of them then: writes the value,
// then the key.
Status LinkValue(Changes& changes, ValueId valueId, TernaryValueNode* value, KeyId keyId,
                 TernaryKeyNode* key, unsigned int count);

// Gives back the slot of a value that nothing leads to any more and, with SpacePolicy::kReuse, its
// blocks; what cannot be given back stays in use.
void ReleaseValue(Changes& changes, ValueId id, const TernaryValueNode& record);

// Gives back the blocks of a value and stores its new data, so that it takes them again, or writes
// just these; *dataId is 0 for a number and without data. `record`, which is what the file has,
// lets go of its blocks first: whatever happens from then on, it never leads to blocks of another
// value.
Status ExchangeData(Changes& changes, ValueId id, TernaryValueNode* record, const Value& value,
                    DataId* dataId);

// A write may be cut short anywhere, and a record is written from its beginning on, the flags
// before the word that leads to the data. These two see to it that the record in the file never
// says that its data lies in blocks while the word is a number, or a mixture of two ids.
// Test: CutValueWrites.NoValueLosesItsDataToAnother

// Makes a value one that is not set and has no blocks: in `record`, which is what the file has, and
// in the file, where a single byte changes. The word stays. The status of the write; `record` is
// then as it was.
Status LetGoOfBlocks(Changes& changes, ValueId id, TernaryValueNode* record);

// Writes `after` over `before`, which is what the file has; the blocks of `before` were let go of,
// or could not be.
Status ReplaceValueRecord(Changes& changes, ValueId id, const TernaryValueNode& before,
                          const TernaryValueNode& after);

}  // namespace tamu::registry
