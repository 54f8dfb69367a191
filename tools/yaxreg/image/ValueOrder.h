// The order in which values are compared and written.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tools/yaxreg/image/Content.h"

namespace yaxreg {

// The values sorted by the bytes of their names, those of one name newest first.
std::vector<const ContentValue*> ValuesByName(const std::vector<ContentValue>& values);
std::vector<const ContentValue*> ValuesByName(const ContentKey& key);

// What two lists have of one name, newest first; at least one has something.
struct NamedValues {
  std::vector<const ContentValue*> first;
  std::vector<const ContentValue*> second;

  const std::string& name() const { return (first.empty() ? second : first)[0]->name; }
  bool AreSame() const;
};

// Takes what two lists have of a name; false ends the visit.
using NamedValuesVisitor = std::function<bool(const NamedValues&)>;

// Visits the names of both lists in the order of their bytes. False when the visitor ended it.
bool VisitNames(const std::vector<ContentValue>& first, const std::vector<ContentValue>& second,
                const NamedValuesVisitor& visit);

}  // namespace yaxreg
