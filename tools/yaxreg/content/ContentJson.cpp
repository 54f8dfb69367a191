#include "tools/yaxreg/content/ContentJson.h"

#include <nlohmann/json.hpp>
#include <ostream>

#include "tools/yaxreg/content/ValueText.h"
#include "tools/yaxreg/image/ValueOrder.h"
#include "tools/yaxreg/text/ByteText.h"
#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/text/Numbers.h"

namespace yaxreg {

namespace {

std::string DataJson(const ContentValue& value) {
  if (value.isNumber()) {
    if (!value.isSet && value.number == 0) return "";
    return ",\"number\":" + JsonNumberText(value.number);
  }
  if (!value.isSet && value.data.empty()) return "";
  if (!value.isSet || !HoldsText(value)) return ",\"hex\":\"" + ToHex(value.data) + '"';
  return ",\"text\":" + TextJson(value.data.substr(0, value.data.size() - 1));
}

bool TellsSize(const ContentValue& value) {
  if (value.isNumber()) return value.size != ContentValue::kNumberSize;
  return !value.isSet && value.data.empty() && value.size != 0;
}

std::string OwnerJson(unsigned int owner, const UserNames* users) {
  const std::string* const name = users == nullptr ? nullptr : users->NameOf(owner);
  return name == nullptr ? std::to_string(owner) : TextJson(*name);
}

}  // namespace

void WriteKeyFields(const ContentKey& key, std::ostream& out, const UserNames* users) {
  if (key.isMadeUp) {
    out << "\"missing\":true";
  } else {
    out << "\"owner\":" << OwnerJson(key.owner, users)
        << ",\"rights\":" << std::to_string(key.permission)
        << ",\"watch\":" << std::to_string(key.watch)
        << ",\"default\":" << (key.hasDefault ? JsonNumberText(key.defaultValue) : "null");
  }
  out << ",\"values\":[";
  const char* before = "\n";
  for (const ContentValue* value : ValuesByName(key)) {
    out << before << ValueJson(*value);
    before = ",\n";
  }
  out << (key.values.empty() ? "]" : "\n]");
}

std::string ValueJson(const ContentValue& value) {
  std::string json = "{\"name\":" + TextJson(value.name);
  json += ",\"type\":" + std::to_string(value.type);
  if (!value.isSet) json += ",\"set\":false";
  if (TellsSize(value)) json += ",\"size\":" + std::to_string(value.size);
  return json + DataJson(value) + '}';
}

void WriteContentJson(const Content& content, size_t key, std::ostream& out,
                      const UserNames* users) {
  out << "{\"format\":\"yax-registry\",\"version\":1,\"keys\":[";
  if (key != Content::kNone) {
    PathWalk walk(content.keys[key].depth);
    const size_t end = content.EndOf(key);
    const char* before = "\n";
    for (size_t i = key; i < end && out; ++i) {
      out << before << "{\"path\":" << TextJson(walk.Enter(content.keys[i])) << ',';
      WriteKeyFields(content.keys[i], out, users);
      out << '}';
      before = ",\n";
    }
  }
  out << "\n]}\n";
}

}  // namespace yaxreg
