#include "tools/yaxreg/text/Numbers.h"

#include "tools/yaxreg/text/ByteText.h"

namespace yaxreg {

namespace {

constexpr unsigned long long kMaxNumber = ~0ull;
constexpr unsigned long long kSign = 1ull << 63;

struct Parsed {
  bool isNegative = false;
  unsigned long long magnitude = 0;
};

bool Parse(const std::string& text, Parsed* parsed) {
  size_t i = 0;
  if (!text.empty() && (text[0] == '-' || text[0] == '+')) ++i;
  parsed->isNegative = i == 1 && text[0] == '-';
  const bool isHex = text.compare(i, 2, "0x") == 0 || text.compare(i, 2, "0X") == 0;
  const unsigned int base = isHex ? 16 : 10;
  if (isHex) i += 2;
  if (i == text.size()) return false;
  unsigned long long magnitude = 0;
  for (; i < text.size(); ++i) {
    const unsigned int digit = DigitOf(text[i]);
    if (digit >= base || magnitude > (kMaxNumber - digit) / base) return false;
    magnitude = magnitude * base + digit;
  }
  parsed->magnitude = magnitude;
  return !parsed->isNegative || magnitude <= kSign;
}

}  // namespace

bool ParseNumber(const std::string& text, unsigned long long* number) {
  Parsed parsed;
  if (!Parse(text, &parsed)) return false;
  *number = parsed.isNegative ? 0 - parsed.magnitude : parsed.magnitude;
  return true;
}

bool ParseNumberUpTo(const std::string& text, unsigned long long limit,
                     unsigned long long* number) {
  Parsed parsed;
  if (!Parse(text, &parsed) || parsed.magnitude > limit) return false;
  if (parsed.isNegative && parsed.magnitude != 0) return false;
  *number = parsed.magnitude;
  return true;
}

std::string NumberText(unsigned long long number, bool isSigned) {
  if (!isSigned || number < kSign) return std::to_string(number);
  return "-" + std::to_string(0 - number);
}

std::string JsonNumberText(unsigned long long number, bool isSigned) {
  const bool isExact = number <= kMaxExactNumber || (isSigned && number >= 0 - kMaxExactNumber);
  const std::string text = NumberText(number, isSigned);
  return isExact ? text : '"' + text + '"';
}

std::string GroupedText(unsigned long long number) {
  constexpr size_t kGroup = 3;
  std::string text = std::to_string(number);
  for (size_t i = text.size(); i > kGroup; i -= kGroup) text.insert(i - kGroup, ",");
  return text;
}

std::string Counted(size_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace yaxreg
