// Numbers of a schema, compared as what they are.
#pragma once

#include <cstdint>
#include <type_traits>

namespace yax {

// A whole number of up to 64 bits, with a sign or without.
struct Whole {
  bool isNegative;     // whether it is below zero
  std::uint64_t bits;  // two's complement

  // That of an integer, a truth value or an enumeration.
  template <class T>
  static Whole Of(T number) {
    static_assert(sizeof(T) <= sizeof(std::int64_t), "an integer has 64 bits at most");
    if constexpr (std::is_enum<T>::value) {
      return Of(static_cast<std::underlying_type_t<T>>(number));
    } else {
      return {number < T{}, static_cast<std::uint64_t>(number)};
    }
  }
  // The nearest real number.
  double AsReal() const {
    return isNegative ? static_cast<double>(static_cast<std::int64_t>(bits))
                      : static_cast<double>(bits);
  }
  // Whether a number is at most another one.
  friend bool operator<=(Whole a, Whole b) {
    return a.isNegative != b.isNegative ? a.isNegative : a.bits <= b.bits;
  }
};

// For templates that take integers, truth values and enumerations only.
template <class T>
using IfWhole = std::enable_if_t<std::is_integral<T>::value || std::is_enum<T>::value, int>;

// A number, or an end of a range of numbers.
class Bound {
 public:
  // An integer, a truth value or an enumeration.
  template <class T, IfWhole<T> = 0>
  Bound(T number) : whole_(Whole::Of(number)), real_(whole_.AsReal()) {}
  // A whole number.
  Bound(Whole number) : whole_(number), real_(number.AsReal()) {}
  // A real number, which integers are compared with as such.
  Bound(double real) : isWhole_(false), real_(real) {}

  // Whether the number is at most another one.
  friend bool operator<=(const Bound& a, const Bound& b) {
    return a.isWhole_ && b.isWhole_ ? a.whole_ <= b.whole_ : a.real_ <= b.real_;
  }

 private:
  bool isWhole_ = true;
  Whole whole_ = {false, 0};
  double real_;
};

}  // namespace yax
