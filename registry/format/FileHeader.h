// The first 84 bytes of a registry file.
#pragma once

#include "registry/format/Codec.h"

namespace tamu::registry {

// | offset | width | field                   |
// |      0 |   u32 | signature, 0x0FACE0FF   |
// |      4 |   u32 | marker, 0xDEADBEEF      |
// |      8 |   u32 | formatVersion, 2        |
// |     12 |   u32 | formatRevision, 1       |
// |     16 |    68 | reserved, zero          |
class FileHeader {
 public:
  static constexpr unsigned int kSize = 84;          // bytes
  static constexpr unsigned int kOffset = 0;         // in the file
  static constexpr unsigned int kReservedArea = 84;  // file offset of the area behind the header
  static constexpr unsigned int kReservedSize = 4096;

  unsigned char* bytes() { return bytes_; }
  const unsigned char* bytes() const { return bytes_; }

  // The magic words are right; the version may be any.
  bool HasMagic() const {
    return GetU32(bytes_ + kOffSignature) == kSignature && GetU32(bytes_ + kOffMarker) == kMarker;
  }
  // All four fields are those of a file that this library can use.
  bool IsValid() const {
    return HasMagic() && GetU32(bytes_ + kOffVersion) == kVersion &&
           GetU32(bytes_ + kOffRevision) == kRevision;
  }
  // Writes the four fields; the rest stays.
  void Stamp() {
    PutU32(bytes_ + kOffSignature, kSignature);
    PutU32(bytes_ + kOffMarker, kMarker);
    PutU32(bytes_ + kOffVersion, kVersion);
    PutU32(bytes_ + kOffRevision, kRevision);
  }

 private:
  static constexpr unsigned int kSignature = 0x0FACE0FF;  // stored, never change
  static constexpr unsigned int kMarker = 0xDEADBEEF;     // stored, never change
  static constexpr unsigned int kVersion = 2;             // stored
  static constexpr unsigned int kRevision = 1;            // stored
  static constexpr unsigned int kOffSignature = 0;
  static constexpr unsigned int kOffMarker = 4;
  static constexpr unsigned int kOffVersion = 8;
  static constexpr unsigned int kOffRevision = 12;

  unsigned char bytes_[kSize] = {};
};
static_assert(sizeof(FileHeader) == FileHeader::kSize, "the stored form");

}  // namespace tamu::registry
