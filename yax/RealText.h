// Floating-point numbers as text, the same in every locale.
#pragma once

#include <stddef.h>

namespace yax {

constexpr size_t kRealTextMax = 32;  // bytes, the zero byte at the end included

// Writes the shortest decimal number that reads back as the same: "21.5", "1e+100", "nan". Returns
// its length.
size_t WriteReal(double number, char (&text)[kRealTextMax]);
// Reads one that ends at the zero byte. False: it is none, and *number stays.
bool ReadReal(const char* text, double* number);

}  // namespace yax
