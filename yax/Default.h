// What a setting is at first, and of which type.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "yax/Bound.h"
#include "yax/Settings.h"

namespace yax {

// A value of one of the stored types.
class Default {
 public:
  // A truth value, an integer or an enumeration.
  template <class T, IfWhole<T> = 0>
  Default(T number)
      : type_(YAX_INTEGER),
        isTruth_(std::is_same<T, bool>::value),
        isUnsigned_(std::is_unsigned<T>::value),
        number_(Whole::Of(number)) {}
  // A real number, a text, bytes.
  Default(float real) : Default(ShortDouble(real)) {}
  Default(double real) : type_(YAX_REAL), real_(real) {}
  Default(const char* text) : type_(YAX_TEXT), text_(text) {}
  Default(std::string text) : type_(YAX_TEXT), text_(std::move(text)) {}
  Default(Bytes bytes) : type_(YAX_BYTES), bytes_(std::move(bytes)) {}

  // Its stored type: YAX_INTEGER, YAX_REAL, YAX_TEXT or YAX_BYTES.
  unsigned type() const { return type_; }
  // What a number is; none of a text and of bytes.
  std::optional<Bound> number() const {
    if (type_ == YAX_INTEGER) return Bound(number_);
    return type_ == YAX_REAL ? std::optional<Bound>(real_) : std::nullopt;
  }
  // The number that is stored there, read as one of this type.
  Result<Bound> ReadNumber(const Key& key, const std::string& name) const {
    if (type_ == YAX_REAL) return Read<double>(key, name);
    if (isTruth_) return Read<bool>(key, name);
    return isUnsigned_ ? Read<std::uint64_t>(key, name) : Read<std::int64_t>(key, name);
  }
  // Sets the value of that name to it.
  Status Write(Key& key, const std::string& name) const {
    if (type_ == YAX_INTEGER) return key.Set(name, number_.bits);
    if (type_ == YAX_REAL) return key.Set(name, real_);
    return type_ == YAX_TEXT ? key.Set(name, text_) : key.Set(name, bytes_);
  }

 private:
  template <class Number>
  static Result<Bound> Read(const Key& key, const std::string& name) {
    const Result<Number> read = key.Get<Number>(name);
    return read ? Result<Bound>(Bound(*read)) : Result<Bound>(read.status());
  }

  unsigned type_;
  bool isTruth_ = false;
  bool isUnsigned_ = false;
  Whole number_ = {false, 0};
  double real_ = 0;
  std::string text_;
  Bytes bytes_;
};

}  // namespace yax
