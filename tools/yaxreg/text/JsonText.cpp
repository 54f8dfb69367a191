#include "tools/yaxreg/text/JsonText.h"

#include <nlohmann/json.hpp>

#include "tools/yaxreg/text/ByteText.h"
#include "tools/yaxreg/text/Numbers.h"

namespace yaxreg {

nlohmann::ordered_json JsonText(const std::string& bytes) {
  if (IsText(bytes)) return bytes;
  return {{"hex", ToHex(bytes)}};
}

nlohmann::ordered_json JsonNumber(unsigned long long number) {
  if (number <= kMaxExactNumber) return number;
  return NumberText(number);
}

// Those bytes are nowhere but in texts, and never within another character.
std::string JsonDump(const nlohmann::ordered_json& document, int indent) {
  const std::string plain = document.dump(indent);
  std::string dump;
  dump.reserve(plain.size());
  for (size_t i = 0; i < plain.size(); ++i) {
    const bool isControl = plain[i] == '\xC2' && static_cast<unsigned char>(plain[i + 1]) < 0xA0;
    if (isControl) ++i;
    if (isControl || plain[i] == '\x7F') {
      dump += "\\u00" + ToHex(plain.substr(i, 1));
    } else {
      dump += plain[i];
    }
  }
  return dump;
}

std::string TextJson(const std::string& bytes) {
  return JsonDump(JsonText(bytes));
}

}  // namespace yaxreg
