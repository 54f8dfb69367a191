// Walks over the names below a key, in both trees.
#pragma once

#include <cstring>

#include "registry/base/KeyInfo.h"
#include "registry/base/NameList.h"
#include "registry/base/Status.h"
#include "registry/format/NodeLink.h"

namespace tamu::registry {

// Adds a copy of a name, of `most` bytes of it at most, to a list, unless it is one of the first
// *skip.
inline Status AddName(NameList* names, unsigned int* skip, const char* name,
                      unsigned int most = 0xFFFFFFFF) {
  if (*skip == 0) return names->AddCopy(name, most);
  --*skip;
  return status::kOk;
}

// Adds a name of which a node has the last characters: its segment begins at `begin`, before which
// the others are spelt.
template <class Name>
Status AddNodeName(NameList* names, const Name& name, unsigned int begin,
                   const TernaryStringNode& node) {
  char* place = nullptr;
  const unsigned int length = begin + node.segmentLength() + 1;
  const Status result = names->AddSpace(length, TernaryStringNode::kSegmentMax, &place);
  if (!result.IsOk()) return result;
  std::memcpy(place, name.Text(), begin);
  node.CopySegment(place + begin);
  place[length - 1] = static_cast<char>(node.splitChar());
  place[length] = 0;
  return result;
}

// Adds the names of all keys that a walk in kListingOrder leaves to a list, but for the first
// *skip. The mark of a node is the place of its split char in the name, which differs from name to
// name. `name` is where a name is spelt, behind the `start` characters that are there already:
//   Status Reserve(unsigned int length);            of what the next Puts write
//   void Put(unsigned int position, signed char c);
//   void PutSegment(unsigned int position, const TernaryStringNode& node);    any bytes behind it
//   Status End(unsigned int position);              the name has all its characters before it
//   const char* Text() const;
template <class Walk, class Name>
Status ListNames(Walk& walk, Name& name, unsigned int start, unsigned int* skip, NameList* names) {
  // The parent's character and "/", the segment, the split char and the terminator.
  constexpr unsigned int kMost = 2 + TernaryStringNode::kSegmentMax + 2;
  Status result = status::kOk;
  for (; result.IsOk() && !walk.IsOver(); result = result.IsOk() ? walk.Next() : result) {
    const TernaryStringNode& node = walk.Node();
    if (walk.IsEntered()) {
      if (!node.HasValidSegment()) return status::kInvalidFile;
      unsigned int p = walk.IsFirst() ? start : walk.ParentMark();
      result = name.Reserve(p + kMost);
      if (!result.IsOk()) return result;
      const bool below = !walk.IsFirst() && walk.Via() == NodeLink::kChild;
      if (below || (!walk.IsFirst() && walk.Via() == NodeLink::kEqual)) {
        name.Put(p++, walk.ParentNode().splitChar());
      }
      if (below) name.Put(p++, '/');
      name.PutSegment(p, node);
      walk.SetMark(p + node.segmentLength());
    } else if (walk.HasKey()) {
      const unsigned int end = walk.Mark();
      result = name.End(end + 2);
      if (result.IsOk() && *skip == 0) {
        result = AddNodeName(names, name, end - node.segmentLength(), node);
      } else if (result.IsOk()) {
        --*skip;
      }
    }
  }
  return result;
}

// Counts the keys that a walk leaves, those on the level of its first node as sub-keys when `depth`
// is 0, and their values. The mark of a node is its level. `countValues(walk, &isKey, &count)`
// tells whether the walk leaves a key, and counts its values.
template <class Walk, class CountValues>
Status CountKeys(Walk& walk, unsigned int depth, KeyInfo* info, CountValues countValues) {
  Status result = status::kOk;
  for (; result.IsOk() && !walk.IsOver(); result = result.IsOk() ? walk.Next() : result) {
    if (walk.IsEntered()) {
      const bool below = !walk.IsFirst() && walk.Via() == NodeLink::kChild;
      walk.SetMark(walk.IsFirst() ? depth : walk.ParentMark() + (below ? 1 : 0));
      continue;
    }
    bool isKey = false;
    unsigned int values = 0;
    result = countValues(walk, &isKey, &values);
    if (!result.IsOk() || !isKey) continue;
    ++info->totalKeyCount;
    if (walk.Mark() == 0) ++info->subKeyCount;
    info->totalValueCount += values;
  }
  return result;
}

}  // namespace tamu::registry
