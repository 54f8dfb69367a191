// What differs between two contents, or between parts of them.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tools/yaxreg/image/Content.h"

namespace yaxreg {

enum class DifferenceKind {
  kKey,      // only one content has the key
  kMissing,  // only one content has a key record; the other has just the name (isMadeUp)
  kOwner,
  kRights,
  kWatch,
  kDefault,
  kValue  // the values of one name
};

struct Difference {
  DifferenceKind kind = DifferenceKind::kKey;
  std::string path;                    // of the key, from the root of the registry
  const ContentKey* first = nullptr;   // the key in the first content, null if it is not there
  const ContentKey* second = nullptr;  // in the second one
  // Of kValue: the values of that name, newest first, none if there is none.
  std::string name;
  std::vector<const ContentValue*> firstValues;
  std::vector<const ContentValue*> secondValues;
};

// Takes a difference; false ends the comparison.
using DifferenceVisitor = std::function<bool(const Difference&)>;

// Compares the key `firstKey` and all below it with `secondKey` and all below it; Content::kNone
// stands for a key that is not there. The two need not have the same path; differences are told
// with the path of the first one, or of the second if there is no first.
//
// Differences come in the order of the keys. A key that only one content has comes with each key
// below it and all their values. For each key: the key itself, its fields in the order of
// DifferenceKind, then its values by their names. Of two keys that differ in kMissing no other
// field is compared. The order of values counts among those of the same name only.
void CompareContents(const Content& first, size_t firstKey, const Content& second, size_t secondKey,
                     const DifferenceVisitor& visit);

// Takes a key of both, null for a content that does not have it; false ends the visit.
using KeyPairVisitor = std::function<bool(const ContentKey* firstKey, const ContentKey* secondKey)>;

// Visits all keys that CompareContents compares, in that order.
void VisitKeyPairs(const Content& first, size_t firstKey, const Content& second, size_t secondKey,
                   const KeyPairVisitor& visit);

// True when CompareContents finds no difference between two keys, whatever lies below them.
bool AreSameKeys(const ContentKey& first, const ContentKey& second);

// The differences as a list. The contents must live as long as the list.
std::vector<Difference> DifferencesOf(const Content& first, size_t firstKey, const Content& second,
                                      size_t secondKey);
bool AreSame(const Content& first, size_t firstKey, const Content& second, size_t secondKey);

}  // namespace yaxreg
