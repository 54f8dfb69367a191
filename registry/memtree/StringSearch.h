// Finding strings in memory.
#pragma once

#include "registry/keytree/PathSearch.h"
#include "registry/memtree/TernaryString.h"

namespace tamu::registry {

// Where a search found a key, or where the path left what is loaded.
struct StringMatch : PathMatch {
  TernaryString* string = nullptr;    // found, or where the search stopped
  StringId nodeId = 0;                // missed: what it wanted to follow, as the record has it,
  NodeLink link = NodeLink::kChild;   // over which link
  TernaryString* previous = nullptr;  // visited before `string`
  TernaryString* owner = nullptr;     // whose directory holds the level reached
  bool isBelowHandle = false;         // a handle starts at a key that was passed
  bool isBelowComplete = false;       // all that is below such a key was loaded for it
};

// Searches from `start`, in memory alone. 0 or kNotFound. `match` must be as constructed.
Status SearchStrings(TernaryString* start, const char* path, StringMatch* match);

// Finds the key of a path, and the string whose directory holds its level; in memory alone, and
// without a walk if the path was searched lately. 0 or kNotFound.
Status ReachString(TernaryString* start, const char* path, TernaryString** string,
                   TernaryString** owner);

}  // namespace tamu::registry
