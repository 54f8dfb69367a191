// Keys and values made by hand, for the tests of what works on contents.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tools/yaxreg/image/Content.h"

inline yaxreg::ContentValue NumberOf(const std::string& name, unsigned long long number) {
  yaxreg::ContentValue value;
  value.name = name;
  value.isSet = true;
  value.size = 8;
  value.number = number;
  return value;
}

inline yaxreg::ContentValue DataOf(const std::string& name, unsigned int type,
                                   const std::string& data) {
  yaxreg::ContentValue value;
  value.name = name;
  value.type = type;
  value.isSet = true;
  value.size = static_cast<unsigned int>(data.size());
  value.data = data;
  return value;
}

// A text with its zero byte.
inline yaxreg::ContentValue TextOf(const std::string& name, const std::string& text) {
  return DataOf(name, 1, text + '\0');
}

inline yaxreg::ContentValue UnsetOf(const std::string& name, unsigned int type, unsigned int size) {
  yaxreg::ContentValue value;
  value.name = name;
  value.type = type;
  value.size = size;
  return value;
}

inline yaxreg::ContentKey KeyOf(unsigned int depth, const std::string& name,
                                std::vector<yaxreg::ContentValue> values = {}) {
  yaxreg::ContentKey key;
  key.depth = depth;
  key.name = name;
  key.owner = 1000;
  key.permission = 0x0F;
  key.values = std::move(values);
  return key;
}

inline yaxreg::Content ContentOf(std::vector<yaxreg::ContentKey> keys) {
  yaxreg::Content content;
  content.keys = std::move(keys);
  return content;
}
