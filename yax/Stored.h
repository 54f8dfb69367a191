// How the types of C++ are stored.
//
//   bool, integers of every width, enumerations   YAX_INTEGER, 64 bits
//   float, double                                 YAX_REAL, the shortest text of digits
//   std::string, std::string_view, const char*    YAX_TEXT, at most 1023 bytes
//   Bytes                                         YAX_BYTES, at most 1024
//
// What was stored as another type is not read: YAX_WRONG_TYPE. A number that the asked type cannot
// hold is YAX_RANGE. (Only a negative one read as unsigned long long cannot be told from one above
// 2^63, nor the other way round.)
#pragma once

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "yax/Result.h"

namespace yax {

// Data of its own kind.
using Bytes = std::vector<unsigned char>;

// Such a name or path would be taken for its beginning.
inline bool HasZero(const std::string& text) {
  return text.find('\0') != std::string::npos;
}

// The double whose shortest text is that of a float: 0.1 for 0.1f.
inline double ShortDouble(float number) {
  for (int digits = 6; digits < 9 && std::isfinite(number); ++digits) {
    char text[32];
    std::snprintf(text, sizeof text, "%.*g", digits, static_cast<double>(number));
    const double candidate = std::strtod(text, nullptr);
    if (std::fabs(candidate) > std::numeric_limits<float>::max()) continue;
    if (!(static_cast<float>(candidate) < number) && !(static_cast<float>(candidate) > number)) {
      return candidate;
    }
  }
  return static_cast<double>(number);
}

// Read and Write of each type.
template <class T, class Enable = void>
struct Stored {
  static_assert(sizeof(T) == 0, "a value is a number, a text or bytes");
};

template <>
struct Stored<bool> {
  static Status Write(yax_key* key, const char* name, bool value) {
    return yax_set_uint(key, name, value ? 1 : 0);
  }
  static Status Read(const yax_key* key, const char* name, bool* value) {
    std::uint64_t number = 0;
    const Status status = yax_get_uint(key, name, &number);
    if (status.ok() && number > 1) return YAX_RANGE;
    if (status.ok()) *value = number == 1;
    return status;
  }
};

template <class T>
struct Stored<T, std::enable_if_t<std::is_integral<T>::value && std::is_signed<T>::value>> {
  static_assert(sizeof(T) <= sizeof(std::int64_t), "an integer has 64 bits at most");

  static Status Write(yax_key* key, const char* name, T value) {
    return yax_set_int(key, name, value);
  }
  static Status Read(const yax_key* key, const char* name, T* value) {
    std::int64_t number = 0;
    const Status status = yax_get_int(key, name, &number);
    if (!status.ok()) return status;
    if (number < std::numeric_limits<T>::min() || number > std::numeric_limits<T>::max()) {
      return YAX_RANGE;
    }
    *value = static_cast<T>(number);
    return status;
  }
};

template <class T>
struct Stored<T, std::enable_if_t<std::is_integral<T>::value && std::is_unsigned<T>::value>> {
  static_assert(sizeof(T) <= sizeof(std::uint64_t), "an integer has 64 bits at most");

  static Status Write(yax_key* key, const char* name, T value) {
    return yax_set_uint(key, name, value);
  }
  static Status Read(const yax_key* key, const char* name, T* value) {
    std::uint64_t number = 0;
    const Status status = yax_get_uint(key, name, &number);
    if (!status.ok()) return status;
    if (number > std::numeric_limits<T>::max()) return YAX_RANGE;
    *value = static_cast<T>(number);
    return status;
  }
};

template <class T>
struct Stored<T, std::enable_if_t<std::is_enum<T>::value>> {
  using Number = std::underlying_type_t<T>;

  static Status Write(yax_key* key, const char* name, T value) {
    return Stored<Number>::Write(key, name, static_cast<Number>(value));
  }
  static Status Read(const yax_key* key, const char* name, T* value) {
    Number number = 0;
    const Status status = Stored<Number>::Read(key, name, &number);
    if (status.ok()) *value = static_cast<T>(number);
    return status;
  }
};

template <>
struct Stored<double> {
  static Status Write(yax_key* key, const char* name, double value) {
    return yax_set_real(key, name, value);
  }
  static Status Read(const yax_key* key, const char* name, double* value) {
    return yax_get_real(key, name, value);
  }
};

template <>
struct Stored<float> {
  static Status Write(yax_key* key, const char* name, float value) {
    return yax_set_real(key, name, ShortDouble(value));
  }
  static Status Read(const yax_key* key, const char* name, float* value) {
    double number = 0;
    const Status status = yax_get_real(key, name, &number);
    if (!status.ok()) return status;
    if (std::isfinite(number) && std::fabs(number) > std::numeric_limits<float>::max()) {
      return YAX_RANGE;
    }
    *value = static_cast<float>(number);
    return status;
  }
};

template <>
struct Stored<std::string_view> {  // is only written
  static Status Write(yax_key* key, const char* name, std::string_view value) {
    return yax_set_text(key, name, value.empty() ? "" : value.data(), value.size());
  }
};

template <>
struct Stored<std::string> {
  static Status Write(yax_key* key, const char* name, const std::string& value) {
    return Stored<std::string_view>::Write(key, name, value);
  }
  static Status Read(const yax_key* key, const char* name, std::string* value) {
    char text[YAX_DATA_MAX + 1];
    std::size_t length = 0;
    const Status status = yax_get_text(key, name, text, sizeof text, &length);
    if (status.ok()) value->assign(text, length);
    return status;
  }
};

template <>
struct Stored<Bytes> {
  static Status Write(yax_key* key, const char* name, const Bytes& value) {
    return yax_set_bytes(key, name, value.data(), value.size());
  }
  static Status Read(const yax_key* key, const char* name, Bytes* value) {
    unsigned char data[YAX_DATA_MAX];
    std::size_t size = 0;
    const Status status = yax_get_bytes(key, name, data, sizeof data, &size);
    if (status.ok()) value->assign(data, data + size);
    return status;
  }
};

// What is stored for an argument: texts of every kind are texts.
template <class T>
using StoredAs = std::conditional_t<std::is_convertible<const T&, std::string_view>::value,
                                    std::string_view, std::decay_t<T>>;

}  // namespace yax
