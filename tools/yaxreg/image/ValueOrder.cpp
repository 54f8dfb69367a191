#include "tools/yaxreg/image/ValueOrder.h"

#include <algorithm>

namespace yaxreg {

std::vector<const ContentValue*> ValuesByName(const ContentKey& key) {
  std::vector<const ContentValue*> values;
  values.reserve(key.values.size());
  for (const ContentValue& value : key.values) values.push_back(&value);
  std::stable_sort(values.begin(), values.end(),
                   [](const ContentValue* a, const ContentValue* b) { return a->name < b->name; });
  return values;
}

}  // namespace yaxreg
