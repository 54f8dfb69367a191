// Texts and whole numbers as JSON.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace yaxreg {

// A text as JSON; {"hex": DIGITS} if the bytes are no UTF-8.
nlohmann::ordered_json JsonText(const std::string& bytes);
// A whole number; its digits as a text when doubles do not hold every number of that size.
nlohmann::ordered_json JsonNumber(unsigned long long number);
// A document as it is printed, on one line or with so many blanks a level. The control characters
// U+007F to U+009F, which JSON would let through to a terminal, are written as \u007f to \u009f.
std::string JsonDump(const nlohmann::ordered_json& document, int indent = -1);
// JsonText() as it is printed: a JSON string, or {"hex":"ff00"}.
std::string TextJson(const std::string& bytes);

}  // namespace yaxreg
