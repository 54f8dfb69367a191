// Who may do what, in one place: the rule that tests of rights compare the answers with.
#pragma once

namespace rights_rule {

constexpr unsigned int kOwner = 1000;
constexpr unsigned int kOther = 2000;
constexpr unsigned int kAdministrator = 65535;

// What an operation needs on the key that it concerns.
enum Need : unsigned int {
  kNothing = 0,
  kRead = 1,
  kModify = 2,
  kCreate = 4,
  kDelete = 8,
  kToOwn = 16,            // the owner or the administrator, whatever the byte says
  kToAdminister = 32,     // the administrator, whatever the byte says
  kCreateTwice = 64 | 4,  // on the key, and on one that is made below it
  kNotSupported = 128,    // nobody can do it in this way
};

inline bool MayDo(unsigned int user, unsigned char permission, unsigned int need) {
  if (need == kNothing) return true;
  if (need == kToAdminister) return user == kAdministrator;
  const bool isOwners = user == kOwner || user == kAdministrator;
  if (need == kToOwn) return isOwners;
  // A new key has the permission of the one above, and belongs to who makes it.
  if (need == kCreateTwice && (permission & 4) == 0) return false;
  return ((isOwners ? permission & 15u : permission >> 4u) & need & 15u) != 0;
}

}  // namespace rights_rule
