// The data of a value on one line, for people.
#pragma once

#include <cstddef>
#include <string>

#include "tools/yaxreg/image/Content.h"

namespace yaxreg {

constexpr size_t kAnyWidth = static_cast<size_t>(-1);

// True for a value of type 1 whose data is UTF-8 with one zero byte, at its end.
bool HoldsText(const ContentValue& value);

// True for a value of type 3 whose data is a real number in text, with one zero byte at its end.
bool HoldsReal(const ContentValue& value);

// A number in decimal, a text in quotation marks, other data in hexadecimal digits; "(empty)" for
// no bytes and "(not set)" for a value that is not set. A text is what HoldsText() tells, and data
// of types 2 to 5 that has characters without any control character, and one zero byte, at its end.
//
// Holds no control characters; in a text, quotation marks and backslashes have a backslash before
// them. What would be wider than `maxWidth` characters is cut and ends in ".."; numbers and the
// words in parentheses never are.
std::string ValueText(const ContentValue& value, size_t maxWidth = kAnyWidth);

// What ValueText() does not tell, "type 5, hidden"; empty if there is nothing. The type of whatever
// is no set number and no text of type 1, what a value that is not set holds all the same, a size
// that is not that of the data. With both, values that differ never look the same.
std::string ValueNotes(const ContentValue& value, bool isHidden);

}  // namespace yaxreg
