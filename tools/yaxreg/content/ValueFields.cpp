#include "tools/yaxreg/content/ValueFields.h"

#include "registry/base/Value.h"

namespace yaxreg {

std::string ValueFields::MakeValue(ContentValue* value) const {
  if (!name.has_value()) return "the name is left out";
  if (number.has_value() + text.has_value() + bytes.has_value() > 1) {
    return "only one of number, text and hex is possible";
  }
  value->name = *name;
  value->isSet = isSet.value_or(true);
  if (type.has_value()) {
    value->type = *type;
  } else if (text.has_value()) {
    value->type = 1;
  } else if (bytes.has_value()) {
    value->type = 2;
  } else if (!number.has_value()) {
    return "type and data are left out";
  }
  return value->isNumber() ? MakeNumber(value) : MakeData(value);
}

std::string ValueFields::MakeNumber(ContentValue* value) const {
  if (text.has_value() || bytes.has_value()) return "type 0 has a number, neither text nor hex";
  if (value->isSet && !number.has_value()) return "the number is left out";
  value->number = number.value_or(0);
  value->size = size.value_or(ContentValue::kNumberSize);
  return "";
}

std::string ValueFields::MakeData(ContentValue* value) const {
  if (number.has_value()) return "only type 0 has a number";
  const bool hasData = text.has_value() || bytes.has_value();
  if (value->isSet && !hasData) return "text or hex is left out";
  if (text.has_value()) {
    if (text->find('\0') != std::string::npos) return "the text holds a zero byte, write it as hex";
    value->data = *text + '\0';
  } else if (bytes.has_value()) {
    value->data = *bytes;
  }
  if (value->data.size() > tamu::registry::kValueDataMax) {
    return "has " + std::to_string(value->data.size()) + " bytes of data" +
           (text.has_value() ? " with the zero byte at its end" : "") + ", 1024 are possible";
  }
  const unsigned int dataSize = static_cast<unsigned int>(value->data.size());
  value->size = size.value_or(dataSize);
  if ((value->isSet || dataSize != 0) && value->size != dataSize) {
    return "the size is not that of the data, which has " + std::to_string(dataSize) + " bytes";
  }
  return "";
}

}  // namespace yaxreg
