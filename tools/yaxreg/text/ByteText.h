// Bytes as text.
#pragma once

#include <string>

namespace yaxreg {

// Bytes as they may be shown on one line: control characters, and whatever is no UTF-8, as \xHH, a
// backslash as "\\".
std::string Shown(const std::string& bytes);
// True when the bytes are UTF-8 throughout.
bool IsText(const std::string& bytes);
// Lower-case hexadecimal digits, two a byte, without blanks; and back, false when it is none.
std::string ToHex(const std::string& bytes);
bool FromHex(const std::string& digits, std::string* bytes);
// The value of a hexadecimal digit; 16 for every other character.
unsigned int DigitOf(char c);
// How many characters a text has, of UTF-8 or as Shown() makes it.
size_t WidthOf(const std::string& text);
// The text, made up to so many characters with blanks at its end.
std::string Padded(const std::string& text, size_t width);

}  // namespace yaxreg
