#include "tools/yaxreg/text/ByteText.h"

#include <algorithm>

namespace yaxreg {

namespace {

// The length of the UTF-8 sequence that begins at `i`; 0 when there is none.
size_t SequenceAt(const std::string& bytes, size_t i) {
  const auto at = [&](size_t k) {
    return k < bytes.size() ? static_cast<unsigned char>(bytes[k]) : 0u;
  };
  const auto follows = [&](size_t k) { return (at(k) & 0xC0u) == 0x80u; };
  const unsigned int first = at(i);
  if (first < 0x80) return 1;
  if (first >= 0xC2 && first < 0xE0) return follows(i + 1) ? 2 : 0;
  if (first >= 0xE0 && first < 0xF0) {
    const bool isShortest = first != 0xE0 || at(i + 1) >= 0xA0;
    const bool isSurrogate = first == 0xED && at(i + 1) >= 0xA0;
    return isShortest && !isSurrogate && follows(i + 1) && follows(i + 2) ? 3 : 0;
  }
  if (first >= 0xF0 && first < 0xF5) {
    const bool isShortest = first != 0xF0 || at(i + 1) >= 0x90;
    const bool isTooLarge = first == 0xF4 && at(i + 1) >= 0x90;
    const bool follow = follows(i + 1) && follows(i + 2) && follows(i + 3);
    return isShortest && !isTooLarge && follow ? 4 : 0;
  }
  return 0;
}

constexpr char kDigits[] = "0123456789abcdef";

}  // namespace

std::string Shown(const std::string& bytes) {
  std::string shown;
  for (size_t i = 0; i < bytes.size();) {
    const unsigned char c = static_cast<unsigned char>(bytes[i]);
    const size_t length = SequenceAt(bytes, i);
    // U+0080 to U+009F control terminals, too.
    const bool isControl =
        c < 0x20 || c == 0x7F || (c == 0xC2 && static_cast<unsigned char>(bytes[i + 1]) < 0xA0);
    if (length == 0 || isControl) {
      const size_t size = length == 0 ? 1 : length;
      for (size_t k = 0; k < size; ++k) shown += "\\x" + ToHex(bytes.substr(i + k, 1));
      i += size;
      continue;
    }
    if (c == '\\') shown += '\\';
    shown.append(bytes, i, length);
    i += length;
  }
  return shown;
}

bool IsText(const std::string& bytes) {
  for (size_t i = 0; i < bytes.size();) {
    const size_t length = SequenceAt(bytes, i);
    if (length == 0) return false;
    i += length;
  }
  return true;
}

std::string ToHex(const std::string& bytes) {
  std::string digits;
  for (const char c : bytes) {
    digits += kDigits[static_cast<unsigned char>(c) >> 4];
    digits += kDigits[static_cast<unsigned char>(c) & 0x0F];
  }
  return digits;
}

bool FromHex(const std::string& digits, std::string* bytes) {
  if (digits.size() % 2 != 0) return false;
  std::string result;
  for (size_t i = 0; i < digits.size(); i += 2) {
    const unsigned int high = DigitOf(digits[i]);
    const unsigned int low = DigitOf(digits[i + 1]);
    if (high > 15 || low > 15) return false;
    result += static_cast<char>(high << 4 | low);
  }
  *bytes = result;
  return true;
}

unsigned int DigitOf(char c) {
  if (c >= '0' && c <= '9') return static_cast<unsigned int>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<unsigned int>(c - 'a') + 10;
  if (c >= 'A' && c <= 'F') return static_cast<unsigned int>(c - 'A') + 10;
  return 16;
}

// The first byte of each character counts.
size_t WidthOf(const std::string& text) {
  const auto isFirst = [](char c) { return (static_cast<unsigned char>(c) & 0xC0u) != 0x80u; };
  return static_cast<size_t>(std::count_if(text.begin(), text.end(), isFirst));
}

std::string Padded(const std::string& text, size_t width) {
  const size_t present = WidthOf(text);
  return present < width ? text + std::string(width - present, ' ') : text;
}

}  // namespace yaxreg
