#include "yax/RealText.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace yax {

namespace {

// Never empty.
const char* PointOfLocale() {
  return std::localeconv()->decimal_point;
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
  return std::memcmp(&a, &b, sizeof a) == 0 || (a != a && b != b);
}

}  // namespace

size_t WriteReal(double number, char (&text)[kRealTextMax]) {
  for (int digits = 15;; ++digits) {
    char own[kRealTextMax];
    std::snprintf(own, sizeof own, "%.*g", digits, number);
    char exchanged[64];
    Exchange(own, PointOfLocale(), ".", exchanged);
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
  const char* const point = PointOfLocale();
  if (!isBegun || (std::strcmp(point, ".") != 0 && std::strstr(text, point) != nullptr)) {
    return false;
  }
  if (!Exchange(text, ".", point, own)) return false;
  char* end = nullptr;
  const double read = std::strtod(own, &end);
  if (end == own || *end != 0) return false;
  *number = read;
  return true;
}

}  // namespace yax
