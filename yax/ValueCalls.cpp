// Values of the C interface.
#include <cstring>

#include "registry/base/Value.h"
#include "yax/Failure.h"
#include "yax/RealText.h"

namespace yax {

namespace {

using tamu::registry::kValueDataMax;
using tamu::registry::MakeValue;
using tamu::registry::ReadValue;

constexpr char kSmallRoom[] = "the room for it is too small";

unsigned int Refused(const yax_key* key, const char* name, const char* reason) {
  return Told(key, name, status::kBadArgument, reason);
}

// Null where nothing is to be added to the status.
const char* ReasonFor(unsigned int result, const char* name) {
  if (result != status::kBadArgument) return nullptr;
  const size_t length = std::strlen(name);
  return length == 0 || length > YAX_NAME_MAX ? "a name has 1 to 31 bytes" : nullptr;
}

const char* ReasonOfType(unsigned int type) {
  constexpr const char* kReasons[] = {"it is an integer", "it is a text", "it is bytes",
                                      "it is a real number"};
  return type < 4 ? kReasons[type] : "it is of a type of its own";
}

unsigned int Put(yax_key* key, const char* name, unsigned int type, const void* data, size_t size) {
  if (key == nullptr || name == nullptr) return Refused(key, name, kNullPointer);
  if (size > kValueDataMax) return Told(key, name, status::kLimit, "more than 1024 bytes");
  const tamu::registry::Value value = MakeValue(type, data, static_cast<unsigned int>(size));
  const unsigned int result = RegistryOf(key).PutValue(PathOf(key), name, value, true);
  return Told(key, name, result, ReasonFor(result, name));
}

unsigned int Read(const yax_key* key, const char* name, bool argumentsGiven, ReadValue* value) {
  if (key == nullptr || name == nullptr || !argumentsGiven) return Refused(key, name, kNullPointer);
  const unsigned int result = RegistryOf(key).ReadWholeValue(PathOf(key), name, value);
  return Told(key, name, result, ReasonFor(result, name));
}

unsigned int ReadType(const yax_key* key, const char* name, bool argumentsGiven, unsigned int type,
                      ReadValue* value) {
  const unsigned int result = Read(key, name, argumentsGiven, value);
  if (result != status::kOk || value->type == type) return result;
  return Told(key, name, status::kWrongType, ReasonOfType(value->type));
}

unsigned int PutNumber(yax_key* key, const char* name, uint64_t number) {
  unsigned char bytes[8];
  for (unsigned int i = 0; i < 8; ++i) bytes[i] = static_cast<unsigned char>(number >> (8 * i));
  return Put(key, name, YAX_INTEGER, bytes, sizeof bytes);
}

// Hands bytes out, if there is room; *length is told in any case.
unsigned int HandOut(const void* data, size_t size, size_t ending, void* into, size_t room,
                     size_t* length) {
  if (length != nullptr) *length = size;
  if (room < size + ending) return status::kLimit;
  if (size != 0) std::memcpy(into, data, size);
  return status::kOk;
}

}  // namespace

}  // namespace yax

using namespace yax;

yax_status yax_set_int(yax_key* key, const char* name, int64_t number) {
  return PutNumber(key, name, static_cast<uint64_t>(number));
}

yax_status yax_set_uint(yax_key* key, const char* name, uint64_t number) {
  return PutNumber(key, name, number);
}

yax_status yax_set_real(yax_key* key, const char* name, double number) {
  char text[kRealTextMax];
  const size_t length = WriteReal(number, text);
  return Put(key, name, YAX_REAL, text, length + 1);
}

yax_status yax_set_text(yax_key* key, const char* name, const char* text, size_t length) {
  if (text == nullptr) return Refused(key, name, kNullPointer);
  if (length == YAX_ZERO_ENDED) length = std::strlen(text);
  if (length >= kValueDataMax) return Told(key, name, status::kLimit, "more than 1023 bytes");
  if (std::memchr(text, 0, length) != nullptr)
    return Refused(key, name, "a zero byte is in the text");
  char ended[kValueDataMax];
  std::memcpy(ended, text, length);
  ended[length] = 0;
  return Put(key, name, YAX_TEXT, ended, length + 1);
}

yax_status yax_set_bytes(yax_key* key, const char* name, const void* data, size_t size) {
  return Put(key, name, YAX_BYTES, data, size);
}

yax_status yax_set_data(yax_key* key, const char* name, unsigned type, const void* data,
                        size_t size) {
  if (type == YAX_INTEGER) return Refused(key, name, "an integer is set by yax_set_int");
  return Put(key, name, type, data, size);
}

yax_status yax_get_int(const yax_key* key, const char* name, int64_t* number) {
  uint64_t read = 0;
  const unsigned int result = yax_get_uint(key, name, number != nullptr ? &read : nullptr);
  if (result == status::kOk) *number = static_cast<int64_t>(read);
  return result;
}

yax_status yax_get_uint(const yax_key* key, const char* name, uint64_t* number) {
  ReadValue value;
  const unsigned int result = ReadType(key, name, number != nullptr, YAX_INTEGER, &value);
  if (result != status::kOk) return result;
  value.size = 8;  // all are there, whatever size was stored with them
  *number = value.number();
  return result;
}

yax_status yax_get_real(const yax_key* key, const char* name, double* number) {
  ReadValue value;
  const unsigned int result = ReadType(key, name, number != nullptr, YAX_REAL, &value);
  if (result != status::kOk) return result;
  const bool isText = value.text() != nullptr && std::strlen(value.text()) + 1 == value.size;
  if (isText && ReadReal(value.text(), number)) return result;
  return Told(key, name, status::kWrongType, "its text is no number");
}

yax_status yax_get_text(const yax_key* key, const char* name, char* text, size_t room,
                        size_t* length) {
  ReadValue value;
  const unsigned int result = ReadType(key, name, text != nullptr, YAX_TEXT, &value);
  if (result != status::kOk) return result;
  const size_t size = value.size - (value.text() != nullptr ? 1u : 0u);
  const unsigned int copied = HandOut(value.data, size, 1, text, room, length);
  if (copied == status::kOk) text[size] = 0;
  return Told(key, name, copied, kSmallRoom);
}

yax_status yax_get_bytes(const yax_key* key, const char* name, void* data, size_t room,
                         size_t* size) {
  ReadValue value;
  const unsigned int result = ReadType(key, name, data != nullptr, YAX_BYTES, &value);
  if (result != status::kOk) return result;
  return Told(key, name, HandOut(value.data, value.size, 0, data, room, size), kSmallRoom);
}

yax_status yax_get_data(const yax_key* key, const char* name, unsigned* type, void* data,
                        size_t room, size_t* size) {
  ReadValue value;
  const unsigned int result = Read(key, name, data != nullptr, &value);
  if (result != status::kOk) return result;
  const size_t stored = value.type == YAX_INTEGER ? 8 : value.size;
  if (type != nullptr) *type = value.type;
  return Told(key, name, HandOut(value.data, stored, 0, data, room, size), kSmallRoom);
}

yax_status yax_value_exists(const yax_key* key, const char* name, unsigned* type) {
  ReadValue value;
  const unsigned int result = Read(key, name, true, &value);
  if (result == status::kOk && type != nullptr) *type = value.type;
  return result;
}

yax_status yax_remove_value(yax_key* key, const char* name) {
  if (key == nullptr || name == nullptr) return Refused(key, name, kNullPointer);
  const unsigned int result = RegistryOf(key).RemoveValue(PathOf(key), name);
  return Told(key, name, result, ReasonFor(result, name));
}
