// What GetRegistryInfo reports about a registry file.
#pragma once

namespace tamu::registry {

struct RegistryInfo {
  unsigned int infoFormat;         // always 1
  unsigned int keyCount;           // key nodes in use
  unsigned int valueCount;         // value nodes in use
  unsigned int fileSize;           // bytes
  unsigned int segmentSize;        // 16, characters of a string node's segment
  unsigned int valueNameSize;      // 32, bytes of a value name with its terminator
  unsigned int maxDataSize;        // 1024, bytes of value data
  unsigned int keyCapacity;        // key node slots in the file
  unsigned int valueCapacity;      // value node slots in the file
  unsigned int dataBlockCapacity;  // data block slots in the file
  unsigned char infoFlag;          // always 1
  unsigned char infoReserved;      // always 0
};

}  // namespace tamu::registry
