// Blocks of value data.
#pragma once

namespace tamu::registry {

constexpr unsigned int kDataBlockSize =
    64;  // bytes; raw data, the last block of a value zero-filled
constexpr unsigned int kDataBlocksMax = 16;  // of one value: 1024 bytes

// Blocks that `size` bytes take.
constexpr unsigned int DataBlocksFor(unsigned int size) {
  return size / kDataBlockSize + (size % kDataBlockSize != 0 ? 1 : 0);
}

}  // namespace tamu::registry
