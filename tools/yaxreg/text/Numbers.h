// Whole numbers of 64 bits as users write and read them.
#pragma once

#include <string>

namespace yaxreg {

// Up to here doubles hold every whole number; many programs read the numbers of JSON as doubles.
constexpr unsigned long long kMaxExactNumber = 1ull << 53;

// Takes "42", "-1", "+7" or "0xFF", from -2^63 to 2^64 - 1. A negative number becomes its eight
// bytes: "-1" is 0xFFFFFFFFFFFFFFFF. False when it is none or too large; *number is as it was.
bool ParseNumber(const std::string& text, unsigned long long* number);
// The same from 0 to `limit`.
bool ParseNumberUpTo(const std::string& text, unsigned long long limit, unsigned long long* number);

// In decimal; with `isSigned` the number that the eight bytes are as a signed one.
std::string NumberText(unsigned long long number, bool isSigned = false);

// The same for JSON: in quotation marks when it is not between -2^53 and 2^53.
std::string JsonNumberText(unsigned long long number, bool isSigned = false);

// "4,812".
std::string GroupedText(unsigned long long number);

// "1 key", "2 keys".
std::string Counted(size_t count, const std::string& what);

}  // namespace yaxreg
