// Cutting a loaded string in two.
#pragma once

#include <memory>

#include "registry/format/NodeLink.h"
#include "registry/memtree/TernaryString.h"
#include "registry/store/Changes.h"

namespace tamu::registry {

// Written first; in memory once what was written is kept. The tree's lock is held.
class NameSplit {
 public:
  // Writes a new string with what is before character `cut` of the segment, in the place of
  // `string` at `parent` (null: as the root), and what is behind it. kNoData: the segment is
  // shorter; kBadArgument, kInvalidFile: `string` does not hang on `parent`.
  Status Write(Changes& changes, TernaryString* string, unsigned int cut, TernaryString* parent);
  // The new string; null before Write.
  TernaryString* Upper() const { return upper_.get(); }
  // What was written is kept: memory follows. The result is the new string.
  TernaryString* Apply();

 private:
  std::unique_ptr<TernaryString> upper_;
  TernaryString* string_ = nullptr;
  TernaryString* parent_ = nullptr;
  NodeLink link_ = NodeLink::kEqual;
  TernaryStringNode lower_;
  TernaryStringNode relinked_;  // the parent's record
};

// Hangs a string on a link in memory; the record leads there already.
void LinkString(TernaryString* parent, NodeLink link, TernaryString* string);

}  // namespace tamu::registry
