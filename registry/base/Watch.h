// What the watch bits of a key ask for.
#pragma once

namespace tamu::registry {

// Each bit of Registry::SetKeyWatch asks for one kind of change (Registry::kWatchedOnly). A key
// that is deleted or restored takes its own bits and those below along: the keys above it ask for
// that.
enum WatchBit : unsigned char {
  kWatchValues = 1,     // a value of the key is created, set or deleted
  kWatchDefault = 2,    // its default value is set
  kWatchKeys = 4,       // a key directly below it is created or deleted
  kWatchRights = 8,     // its rights or its watch bits are set
  kWatchRestored = 16,  // it is restored from a backup that has this bit, too
  kWatchBelow = 32,     // what the other bits ask for, also of all keys below it
};

}  // namespace tamu::registry
