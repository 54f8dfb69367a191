#include "tools/yaxreg/text/RightsText.h"

#include "registry/base/Rights.h"
#include "tools/yaxreg/text/Numbers.h"

namespace yaxreg {

namespace {

constexpr char kLetters[] = "rwcd";  // of the bits 1, 2, 4 and 8
constexpr unsigned int kRights = 4;

std::string GroupText(unsigned int rights) {
  std::string text;
  for (unsigned int bit = 0; bit < kRights; ++bit) {
    text += (rights >> bit & 1u) != 0 ? kLetters[bit] : '-';
  }
  return text;
}

bool ParseGroup(const std::string& text, unsigned char* rights) {
  unsigned int found = 0;
  for (const char c : text) {
    if (c == '-') continue;
    unsigned int bit = 0;
    while (bit < kRights && kLetters[bit] != c) ++bit;
    if (bit == kRights) return false;
    found |= 1u << bit;
  }
  *rights = static_cast<unsigned char>(found);
  return true;
}

}  // namespace

std::string RightsText(unsigned char permission) {
  return GroupText(permission & tamu::registry::kRightsAll) + ":" + GroupText(permission >> 4);
}

bool ParseRights(const std::string& text, unsigned char* permission) {
  const size_t colon = text.find(':');
  if (colon == std::string::npos) {
    unsigned long long number = 0;
    if (!ParseNumberUpTo(text, 0xFF, &number)) return false;
    *permission = static_cast<unsigned char>(number);
    return true;
  }
  unsigned char owner = 0;
  unsigned char others = 0;
  if (!ParseGroup(text.substr(0, colon), &owner)) return false;
  if (!ParseGroup(text.substr(colon + 1), &others)) return false;
  *permission = tamu::registry::MakePermission(owner, others);
  return true;
}

}  // namespace yaxreg
