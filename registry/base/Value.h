// A value's type and data as passed in and out of the registry.
#pragma once

#include <cstring>

namespace tamu::registry {

// Value types. Stored, never renumber. Types 1 to 5 are byte data; the registry tells them apart
// only by their number.
//
// An integer has 64 bits in the file, but without a key handle only its low 32 bits are changed and
// read: keep larger ones as eight bytes of type 2, or as a key's default value. A string is stored
// with the size that is given, so count its terminator.
constexpr unsigned int kValueTypeInteger = 0;  // 8 bytes, held inline
constexpr unsigned int kValueTypeString = 1;
constexpr unsigned int kValueTypeOffset = 4;  // byte data; as a request: the data's file offset
constexpr unsigned int kValueTypeMax = 5;     // the last type that can be written
constexpr unsigned int kValueTypeAny = 6;     // a request only: whatever type is stored

constexpr unsigned int kValueDataMax = 1024;  // bytes of data in one value
constexpr unsigned int kValueNameMax = 31;    // characters of a value's name

struct Value {
  unsigned int type;  // 0 to 5; requests also 6
  unsigned int size;  // bytes at data, at most kValueDataMax
  void* data;  // written: the caller's bytes. Read: a new buffer, the caller's (FreeValueData)
};

// A value to write: `size` bytes at `data`, which must live until it is written and is not changed.
inline Value MakeValue(unsigned int type, const void* data, unsigned int size) {
  return {type, size, const_cast<void*>(data)};
}

// A string with its terminator, to write.
inline Value TextValue(const char* text) {
  return MakeValue(kValueTypeString, text, static_cast<unsigned int>(std::strlen(text)) + 1);
}

// Frees a buffer that GetValue handed out and forgets it.
inline void FreeValueData(Value& value) {
  delete[] static_cast<unsigned char*>(value.data);
  value.data = nullptr;
  value.size = 0;
}

// A value to read into, as often as needed: frees the buffer it was given. Without a handle, what
// is requested does not restrict what is read: look at `type`. Through a handle, a value of another
// type, or that is not set, is not read: `data` stays null. Not for kValueTypeOffset, which reads
// into the caller's own.
class ReadValue : public Value {
 public:
  // Asks for a type, or for any.
  explicit ReadValue(unsigned int requestedType = kValueTypeAny)
      : Value{requestedType, 0, nullptr}, requestedType_(requestedType) {}
  ~ReadValue() { FreeValueData(*this); }
  ReadValue(const ReadValue&) = delete;
  ReadValue& operator=(const ReadValue&) = delete;

  // Back to the request; Registry::GetValue does it before it reads.
  void Reset() {
    FreeValueData(*this);
    type = requestedType_;
  }
  // The data as bytes; null when nothing is read.
  const unsigned char* bytes() const { return static_cast<const unsigned char*>(data); }
  // The data as text; null when it does not end in a terminator.
  const char* text() const {
    const bool terminated = data != nullptr && size > 0 && bytes()[size - 1] == 0;
    return terminated ? static_cast<const char*>(data) : nullptr;
  }
  // The first min(size, 8) bytes as a little-endian number. Of a negative integer read without a
  // handle it is the low 32 bits: convert to int.
  unsigned long long number() const {
    unsigned long long result = 0;
    for (unsigned int i = 0; data != nullptr && i < size && i < 8; ++i) {
      result |= static_cast<unsigned long long>(bytes()[i]) << (8 * i);
    }
    return result;
  }

 private:
  unsigned int requestedType_;
};

}  // namespace tamu::registry
