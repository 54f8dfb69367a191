#include "yax/RealText.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace yax {

namespace {

// What stands between the digits of a half. Never empty.
std::string PointOfLocale() {
  char half[16];
  std::snprintf(half, sizeof half, "%.1f", 0.5);
  return std::string(half + 1, std::strlen(half) - 2);
}

// Copies a text with one piece of it exchanged for another. False: it is too long.
bool Exchange(const char* text, const char* piece, const char* other, char (&into)[64]) {
  const char* const found = std::strstr(text, piece);
  if (found == nullptr) return std::snprintf(into, sizeof into, "%s", text) < 64;
  const int before = static_cast<int>(found - text);
  const char* const behind = found + std::strlen(piece);
  return std::snprintf(into, sizeof into, "%.*s%s%s", before, text, other, behind) < 64;
}

bool IsSame(double a, double b) {
  return (a == b && std::signbit(a) == std::signbit(b)) || (std::isnan(a) && std::isnan(b));
}

}  // namespace

size_t WriteReal(double number, char (&text)[kRealTextMax]) {
  for (int digits = 15;; ++digits) {
    char own[kRealTextMax];
    std::snprintf(own, sizeof own, "%.*g", digits, number);
    char exchanged[64];
    Exchange(own, PointOfLocale().c_str(), ".", exchanged);
    std::snprintf(text, sizeof text, "%.31s", exchanged);
    double again = 0;
    if (digits >= 17 || (ReadReal(text, &again) && IsSame(again, number))) {
      return std::strlen(text);
    }
  }
}

bool ReadReal(const char* text, double* number) {
  char own[64];
  // strtod would take blanks, and the point of the locale.
  const bool isBegun = text[0] != 0 && std::strchr("+-.0123456789in", text[0]) != nullptr;
  const std::string point = PointOfLocale();
  if (!isBegun || (point != "." && std::strstr(text, point.c_str()) != nullptr)) {
    return false;
  }
  if (!Exchange(text, ".", point.c_str(), own)) return false;
  char* end = nullptr;
  const double read = std::strtod(own, &end);
  if (end == own || *end != 0) return false;
  *number = read;
  return true;
}

}  // namespace yax
