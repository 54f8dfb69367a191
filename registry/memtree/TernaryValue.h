// A loaded value.
#pragma once

#include "registry/base/RegistryStatus.h"
#include "registry/base/Value.h"
#include "registry/format/TernaryValueNode.h"

namespace tamu::registry {

// Owns a copy of the value's record, and its data when that lies in blocks. Changes are made to the
// copy alone; who makes them writes it to the file.
class TernaryValue {
 public:
  // Data in blocks is not there yet (CreateData).
  TernaryValue(ValueId valueId, const TernaryValueNode& record);
  // The same; the record was made by new, and is deleted.
  TernaryValue(ValueId valueId, TernaryValueNode* record);
  // Without a record: nothing but destroying it is of use.
  explicit TernaryValue(Value* unused);
  ~TernaryValue();
  TernaryValue(const TernaryValue&) = delete;
  TernaryValue& operator=(const TernaryValue&) = delete;

  // Makes it a number, held in the record. The name is cut to 31 characters. Returns 0.
  unsigned int SetValue(const char* name, unsigned long long number, bool isSet);
  // Takes over type, size and a copy of the data; `dataId` is where it lies in the file. A number
  // is taken from the first eight bytes, as far as there are any. kNoData for a type above 5,
  // kNoMemory; nothing is changed then. v->data may lie in this value.
  unsigned int SetValue(const char* name, const Value* v, DataId dataId);
  // Hands out a new copy of the data, the caller's. kNoData: not set; kBadArgument: out->type is
  // neither kValueTypeAny nor the stored type; kNoMemory.
  unsigned int GetValue(Value* out) const;
  // Makes room for `size` bytes of data, zeroed, in place of what there was. kNoMemory with nothing
  // changed.
  unsigned int CreateData(unsigned int size);
  // Exchanges record and data with another value's.
  void Exchange(TernaryValue& other);
  // Frees the data, if it is this object's own.
  void DeleteData();
  // The id of the first data block; 0 when the data is not in blocks.
  DataId GetDataId() const;

  TernaryValue* next = nullptr;  // the key's next older value
  ValueId id = 0;
  // Not used; all values have the same, which takes no room.
  static constexpr Value value = {kValueTypeAny, 0, nullptr};
  TernaryValueNode node;
  unsigned char* data = nullptr;  // in the record, or an array
  unsigned int ownsData = 0;      // 1: the array is this object's
};

}  // namespace tamu::registry
