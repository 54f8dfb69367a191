// What GetKeyInfo reports about a key.
#pragma once

namespace tamu::registry {

struct KeyInfo {
  unsigned int reserved;         // not set by the file-backed tree
  unsigned int subKeyCount;      // sub-keys directly below the key
  unsigned int totalKeyCount;    // keys in the whole subtree below the key
  unsigned int valueCount;       // values of the key itself
  unsigned int totalValueCount;  // values of the key and of its whole subtree
  unsigned int userId;           // the user on whose behalf the information was read
  unsigned int permission;       // the key's permission byte
};

}  // namespace tamu::registry
