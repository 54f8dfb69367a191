// Making keys and putting values so that exactly what is told is there.
#pragma once

#include "registry/base/Value.h"
#include "registry/filetree/KeySearch.h"
#include "registry/store/Changes.h"

namespace tamu::registry {

// They write through a Changes of the caller's and leave it to him to end it: after an answer that
// is not 0 it must not be kept.

// Makes a key of exactly this path, and those above it where they are missing. kExists: it is
// there; kBadArgument: an empty component, or without parents a missing one; kNoRight.
Status MakeExactKey(Changes& changes, unsigned int user, const char* path, bool withParents);
// Creates or replaces a value of a key that was reached; one that holds just that is not written
// again. A number has eight bytes. Rights: create for a new value, modify for another.
Status PutValueOf(Changes& changes, unsigned int user, const char* name, const Value& value,
                  Reached* reached);
// Removes a value that was reached, by ReachValue, and gives its blocks back.
Status RemoveReached(Changes& changes, Reached* reached);
// Removes all values of a key and gives their blocks back.
Status ReleaseValues(Changes& changes, const Reached& key);
// Reads the data of a value into a new buffer, the caller's (FreeValueData); of a number all eight
// bytes if `whole`, else the lower four. kNoData: it is not set.
Status ReadRecord(const StoreAccess& access, const TernaryValueNode& record, bool whole,
                  Value* value);
// Gives a key, which was made and has nothing yet, the default value and the values of another; of
// several with one name the newest.
Status CopyContents(Changes& changes, unsigned int user, const Reached& from, const char* toPath);

}  // namespace tamu::registry
