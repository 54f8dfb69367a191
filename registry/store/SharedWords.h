// The words of a journal that the processes share which have it open.
#pragma once

#include "platform/PCWord.h"
#include "registry/format/JournalFormat.h"

namespace tamu::registry {

// Any process that may write the registry may have stored anything there: nothing is trusted.
class SharedWords {
 public:
  // The first bytes of the journal; null: there is none.
  void Attach(unsigned char* bytes) { bytes_ = bytes; }
  bool IsAttached() const { return bytes_ != nullptr; }

  unsigned int* At(unsigned int place) const {
    return reinterpret_cast<unsigned int*>(bytes_ + place);
  }
  unsigned int Get(unsigned int place) const { return PCWord::Load(At(place)); }
  void Set(unsigned int place, unsigned int value) { PCWord::Store(At(place), value); }
  unsigned long long GetLong(unsigned int place) const {
    return Get(place) | static_cast<unsigned long long>(Get(place + 4)) << 32;
  }
  void SetLong(unsigned int place, unsigned long long value) {
    Set(place, static_cast<unsigned int>(value));
    Set(place + 4, static_cast<unsigned int>(value >> 32));
  }

 private:
  unsigned char* bytes_ = nullptr;
};

}  // namespace tamu::registry
