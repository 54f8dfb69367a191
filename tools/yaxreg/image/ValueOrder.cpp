#include "tools/yaxreg/image/ValueOrder.h"

#include <algorithm>

namespace yaxreg {

namespace {

using Values = std::vector<const ContentValue*>;

// Takes the next values of one name from a list that is sorted by names.
void TakeNamed(const std::string& name, const Values& values, size_t* next, Values* run) {
  run->clear();
  while (*next < values.size() && values[*next]->name == name) run->push_back(values[(*next)++]);
}

}  // namespace

std::vector<const ContentValue*> ValuesByName(const std::vector<ContentValue>& values) {
  Values sorted;
  sorted.reserve(values.size());
  for (const ContentValue& value : values) sorted.push_back(&value);
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const ContentValue* a, const ContentValue* b) { return a->name < b->name; });
  return sorted;
}

std::vector<const ContentValue*> ValuesByName(const ContentKey& key) {
  return ValuesByName(key.values);
}

bool NamedValues::AreSame() const {
  return std::equal(first.begin(), first.end(), second.begin(), second.end(),
                    [](const ContentValue* a, const ContentValue* b) { return *a == *b; });
}

bool VisitNames(const std::vector<ContentValue>& first, const std::vector<ContentValue>& second,
                const NamedValuesVisitor& visit) {
  const Values firstValues = ValuesByName(first);
  const Values secondValues = ValuesByName(second);
  NamedValues named;
  for (size_t i = 0, k = 0; i < firstValues.size() || k < secondValues.size();) {
    const bool isFirst = k == secondValues.size() ||
                         (i < firstValues.size() && firstValues[i]->name <= secondValues[k]->name);
    const std::string& name = isFirst ? firstValues[i]->name : secondValues[k]->name;
    TakeNamed(name, firstValues, &i, &named.first);
    TakeNamed(name, secondValues, &k, &named.second);
    if (!visit(named)) return false;
  }
  return true;
}

}  // namespace yaxreg
