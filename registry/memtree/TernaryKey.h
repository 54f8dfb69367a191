// A loaded key with its values.
#pragma once

#include <memory>

#include "registry/base/RegistryStatus.h"
#include "registry/format/TernaryKeyNode.h"
#include "registry/memtree/TernaryValue.h"

namespace tamu::registry {

// Owns a copy of the key's record, not the values. Changes are made to the copies alone; who makes
// them writes them to the file.
class TernaryKey {
 public:
  TernaryKey(KeyId keyId, const TernaryKeyNode& record) : id(keyId), node(record) {}
  // The same; the record was made by new, and is deleted.
  TernaryKey(KeyId keyId, TernaryKeyNode* record)
      : TernaryKey(keyId, *std::unique_ptr<TernaryKeyNode>(record)) {}
  TernaryKey(const TernaryKey&) = delete;
  TernaryKey& operator=(const TernaryKey&) = delete;

  bool isDefaultValueSet() const { return node.isDefaultSet(); }
  // kNotFound: no default value is set.
  unsigned int GetDefaultValue(unsigned long long* out) const;
  unsigned int SetDefaultValue(unsigned long long number);  // 0
  // The stored number stays. kNotFound as above.
  unsigned int DeleteDefaultValue();
  // Puts a value before the others, and counts it (modulo 65536). Returns 0.
  unsigned int AddValue(TernaryValue* value);
  // The newest value of the name. kNotFound.
  unsigned int FindValue(const char* name, TernaryValue*& out) const;
  // Takes the newest value of the name out of the list; it is then the caller's. `previous` is the
  // value before it, whose record now leads to the next one; null when that is the key's record.
  // kNotFound.
  unsigned int RemoveValue(const char* name, TernaryValue*& removed, TernaryValue*& previous);
  // True when `user` has at least one of the rights: the owner and the administrator those of the
  // low nibble, everybody else those of the high one.
  bool isPermissible(unsigned int user, unsigned char rights) const;

  KeyId id;
  TernaryKeyNode node;
  TernaryValue* firstValue = nullptr;  // the newest
};

}  // namespace tamu::registry
