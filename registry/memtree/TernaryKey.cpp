#include "registry/memtree/TernaryKey.h"

namespace tamu::registry {

unsigned int TernaryKey::GetDefaultValue(unsigned long long* out) const {
  if (!node.isDefaultSet()) return status::kNotFound;
  *out = node.defaultValue();
  return status::kOk;
}

unsigned int TernaryKey::SetDefaultValue(unsigned long long number) {
  node.setDefaultValue(number);
  node.setDefaultSet(true);
  return status::kOk;
}

unsigned int TernaryKey::DeleteDefaultValue() {
  if (!node.isDefaultSet()) return status::kNotFound;
  node.setDefaultSet(false);
  return status::kOk;
}

unsigned int TernaryKey::AddValue(TernaryValue* value) {
  value->next = firstValue;
  value->node.setNextValue(node.firstValue());
  firstValue = value;
  node.setFirstValue(value->id);
  node.setValueCount(node.valueCount() + 1u);
  return status::kOk;
}

unsigned int TernaryKey::FindValue(const char* name, TernaryValue*& out) const {
  for (TernaryValue* value = firstValue; value != nullptr; value = value->next) {
    if (!value->node.hasName(name)) continue;
    out = value;
    return status::kOk;
  }
  return status::kNotFound;
}

unsigned int TernaryKey::RemoveValue(const char* name, TernaryValue*& removed,
                                     TernaryValue*& previous) {
  TernaryValue* before = nullptr;
  TernaryValue* found = firstValue;
  while (found != nullptr && !found->node.hasName(name)) {
    before = found;
    found = found->next;
  }
  if (found == nullptr) return status::kNotFound;
  const ValueId nextId = found->next != nullptr ? found->next->id : ValueId();
  if (before != nullptr) {
    before->next = found->next;
    before->node.setNextValue(nextId);
  } else {
    firstValue = found->next;
    node.setFirstValue(nextId);
  }
  node.setValueCount(node.valueCount() - 1u);
  found->next = nullptr;
  removed = found;
  previous = before;
  return status::kOk;
}

bool TernaryKey::isPermissible(unsigned int user, unsigned char rights) const {
  return node.IsPermissible(user, rights);
}

}  // namespace tamu::registry
