#include "tools/yaxreg/image/KeyRecords.h"

namespace yaxreg {

using tamu::registry::TernaryKeyNode;
using tamu::registry::TernaryValueNode;

TernaryKeyNode KeyRecordOf(const ContentKey& key) {
  TernaryKeyNode record;
  record.setValueCount(static_cast<unsigned int>(key.values.size()));
  record.setPermission(key.permission);
  record.setWatch(key.watch);
  record.setDefaultSet(key.hasDefault);
  record.setRoot(key.depth == 0);
  record.setOwner(key.owner);
  record.setDefaultValue(key.defaultValue);
  return record;
}

TernaryValueNode ValueRecordOf(const ContentValue& value) {
  TernaryValueNode record;
  record.setName(value.name.c_str());
  record.setType(value.type);
  record.setSet(value.isSet);
  record.setInBlocks(!value.isNumber());
  record.setDataSize(value.size);
  if (value.isNumber()) record.setNumber(value.number);
  return record;
}

}  // namespace yaxreg
