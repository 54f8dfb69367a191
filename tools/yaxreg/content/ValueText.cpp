#include "tools/yaxreg/content/ValueText.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

#include "tools/yaxreg/text/ByteText.h"

namespace yaxreg {

namespace {

constexpr char kCut[] = "..";
constexpr size_t kCutWidth = sizeof kCut - 1;

// The length of the UTF-8 sequence with that first byte.
size_t SequenceLength(char first) {
  const unsigned char byte = static_cast<unsigned char>(first);
  if (byte < 0x80) return 1;
  if (byte < 0xE0) return 2;
  return byte < 0xF0 ? 3 : 4;
}

// One character as it is shown, and how wide that is.
std::string ShownCharacter(const std::string& character, size_t* width) {
  if (character == "\"") {
    *width = 2;
    return "\\\"";
  }
  std::string shown = Shown(character);
  *width = shown == character ? 1 : shown.size();
  return shown;
}

std::string QuotedText(const std::string& text, size_t maxWidth) {
  std::string shown = "\"";
  size_t width = 2;               // so far, both quotation marks included
  size_t fitting = shown.size();  // bytes of `shown` that leave room for the ".."
  for (size_t i = 0; i < text.size();) {
    const size_t length = SequenceLength(text[i]);
    size_t added = 0;
    shown += ShownCharacter(text.substr(i, length), &added);
    width += added;
    if (width > maxWidth) return shown.substr(0, fitting) + '"' + kCut;
    if (maxWidth - width >= kCutWidth) fitting = shown.size();
    i += length;
  }
  return shown + '"';
}

std::string HexText(const std::string& data, size_t maxWidth) {
  if (data.size() <= maxWidth / 2) return ToHex(data);
  const size_t room = maxWidth > kCutWidth ? maxWidth - kCutWidth : 0;
  return ToHex(data.substr(0, room / 2)) + kCut;
}

// UTF-8 with one zero byte, at its end.
bool IsEndedText(const std::string& data) {
  return !data.empty() && data.find('\0') == data.size() - 1 && IsText(data);
}

// Few bytes that are no text look like one by chance: a small number with its bytes in order would,
// if control characters were taken.
bool LooksLikeText(const std::string& data) {
  if (data.size() < 2 || !IsEndedText(data)) return false;
  const std::string text = data.substr(0, data.size() - 1);
  const std::string shown = Shown(text);
  const size_t backslashes = static_cast<size_t>(std::count(text.begin(), text.end(), '\\'));
  return shown.size() == text.size() + backslashes;
}

}  // namespace

bool HoldsText(const ContentValue& value) {
  return value.type == 1 && IsEndedText(value.data);
}

bool HoldsReal(const ContentValue& value) {
  if (value.type != 3 || value.data.size() < 2 || !IsEndedText(value.data)) return false;
  if (std::isspace(static_cast<unsigned char>(value.data[0])) != 0) return false;
  const char* const text = value.data.c_str();
  char* end = nullptr;
  std::strtod(text, &end);
  return end == text + value.data.size() - 1;
}

std::string ValueText(const ContentValue& value, size_t maxWidth) {
  if (!value.isSet) return "(not set)";
  if (value.isNumber()) return std::to_string(value.number);
  if (value.data.empty()) return "(empty)";
  if (!HoldsText(value) && !LooksLikeText(value.data)) return HexText(value.data, maxWidth);
  return QuotedText(value.data.substr(0, value.data.size() - 1), maxWidth);
}

std::string ValueNotes(const ContentValue& value, bool isHidden) {
  std::string notes;
  const auto add = [&](const std::string& note) { notes += (notes.empty() ? "" : ", ") + note; };
  const bool showsType = value.isNumber() ? value.isSet : value.isSet && HoldsText(value);
  if (!showsType) add("type " + std::to_string(value.type));
  if (!value.isSet && value.number != 0) add("number " + std::to_string(value.number));
  if (!value.isSet && !value.data.empty()) add("data " + ToHex(value.data));
  const size_t usual = value.isNumber() ? ContentValue::kNumberSize : value.data.size();
  if (value.size != usual) add("size " + std::to_string(value.size));
  if (isHidden) add("hidden");
  return notes;
}

}  // namespace yaxreg
