// What both trees ask of a key's record, and write into it.
#pragma once

#include "registry/format/TernaryKeyNode.h"
#include "registry/format/TernaryStringNode.h"

namespace tamu::registry {

// Instead of rights, which are the low four bits.
constexpr unsigned char kMustOwn = 0x10;    // for the key's owner and the administrator
constexpr unsigned char kOpenToAll = 0x20;  // for everybody

// True when `user` has at least one of the rights on the key.
inline bool IsAllowed(const TernaryKeyNode& key, unsigned int user, unsigned char rights) {
  if (rights == kOpenToAll) return true;
  if (rights == kMustOwn) return user == key.owner() || user == kAdministratorId;
  return key.IsPermissible(user, rights);
}

// The record of a key that has no values yet.
inline TernaryKeyNode NewKeyRecord(unsigned int owner, unsigned char permission,
                                   unsigned long long defaultValue, bool isSet) {
  TernaryKeyNode record;
  record.setOwner(owner);
  record.setPermission(permission);
  record.setDefaultValue(defaultValue);
  record.setDefaultSet(isSet);
  return record;
}

// The permission that a new key gets from the one above it.
inline unsigned char InheritedPermission(const TernaryKeyNode& parent) {
  return parent.isRoot() ? TernaryKeyNode::kTopPermission : parent.permission();
}

// With `clear` the default value is unset and the stored number stays.
inline void ChangeDefault(TernaryKeyNode* key, unsigned long long number, bool clear) {
  if (!clear) key->setDefaultValue(number);
  key->setDefaultSet(!clear);
}

// Lets a name end at a node, with a key unless its id is 0.
inline void EndName(TernaryStringNode* node, KeyId keyId) {
  node->setKeyNode(keyId);
  node->setHasKey(keyId != 0);
}

// The nodes of a deleted key's own name stay, as a name without a key and with nothing below it.
// Test: TernaryRegistryDeletion.TheNameOfADeletedKeyStaysAndIsUsedAgain
// Test: TernaryKeyTreeDeletionTest.TheNameStaysAndIsUsedAgain
inline TernaryStringNode WithoutKey(const TernaryStringNode& node) {
  TernaryStringNode after = node;
  EndName(&after, 0);
  after.setChild(0);
  return after;
}

}  // namespace tamu::registry
