// The walk down the names of a tree, along a path.
#pragma once

#include "registry/base/Status.h"
#include "registry/format/NodeLink.h"

namespace tamu::registry {

// How far a path has led.
struct PathMatch {
  static constexpr unsigned char kMatchChild = 0x01;  // on to the names below the node
  static constexpr unsigned char kMatchEqual = 0x02;  // the node's split char matched

  unsigned int position = 0;  // missed: first character of the path not yet placed
  int splitIndex = -1;        // >= 0: the node's segment must be cut there; position is its start
  unsigned char flags = 0;    // with neither flag and splitIndex -1: to the node's lo or hi link

  bool matchChild() const { return (flags & kMatchChild) != 0; }
  bool matchEqual() const { return (flags & kMatchEqual) != 0; }
};

// Follows the characters at match->position, of which there is one at least, from node to node; the
// first is reached over `link`. kNotFound where the path leaves the tree. The cursor stands on a
// node:
//   const TernaryStringNode& Node() const;
//   Status Follow(NodeLink link);    goes on to the next node; kNotFound: the link is empty
//   Status Arrive(bool withSlash);   the path ends at the node. kNotFound: no key does
//   void Pass();                     the path goes on below the node
template <class Cursor>
Status FollowPath(Cursor& cursor, const char* path, PathMatch* match, NodeLink link) {
  unsigned int& p = match->position;
  for (;;) {
    const Status result = cursor.Follow(link);
    if (!result.IsOk()) return result;
    match->flags = 0;
    const TernaryStringNode& node = cursor.Node();
    if (!node.MatchesSegment(path + p, &match->splitIndex)) return status::kNotFound;
    p += node.segmentLength();
    const signed char c = static_cast<signed char>(path[p]);  // never the path's end
    if (c != node.splitChar()) {
      link = c < node.splitChar() ? NodeLink::kLo : NodeLink::kHi;
      continue;
    }
    match->flags = PathMatch::kMatchEqual;
    ++p;
    if (path[p] == 0) return cursor.Arrive(false);
    link = NodeLink::kEqual;
    if (path[p] != '/') continue;
    ++p;
    if (path[p] == 0) return cursor.Arrive(true);
    match->flags |= PathMatch::kMatchChild;
    cursor.Pass();
    link = NodeLink::kChild;
  }
}

// The same for a whole path, from a start node whose names lie below it. The empty path arrives at
// the start node, as with a slash.
template <class Cursor>
Status SearchPath(Cursor& cursor, const char* path, PathMatch* match) {
  match->position = path[0] == '/' ? 1 : 0;
  if (path[match->position] == 0) return cursor.Arrive(true);
  match->flags = PathMatch::kMatchChild;
  cursor.Pass();
  return FollowPath(cursor, path, match, NodeLink::kChild);
}

}  // namespace tamu::registry
