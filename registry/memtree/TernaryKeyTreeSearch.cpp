// Finding keys in memory.
#include "registry/memtree/TernaryKeyTree.h"

namespace tamu::registry {

namespace {

signed char At(const char* path, unsigned int i) {
  return static_cast<signed char>(path[i]);
}

// Notes what a key that the search passes through tells of those below it.
void Pass(const TernaryString& string, TernaryKeyTree::KeyMatchDescriptor* match) {
  if (string.loadCount == 0) return;
  match->isBelowHandle = true;
  if (string.isComplete) match->isBelowComplete = true;
}

}  // namespace

unsigned int TernaryKeyTree::FindKey(TernaryString* start, const char* path,
                                     KeyMatchDescriptor* match) {
  if (start == nullptr || match == nullptr) return status::kBadArgument;
  if (path == nullptr) path = "";
  unsigned int& i = match->position;
  i = path[0] == '/' ? 1 : 0;
  match->string = start;
  match->previous = start;
  match->owner = start;
  if (path[i] == 0) return start->key != nullptr ? status::kOk : status::kNotFound;
  Pass(*start, match);
  match->flags = KeyMatchDescriptor::kMatchChild;
  match->nodeId = start->node->child();
  TernaryString* next = start->directory;
  if (next == nullptr) match->previous = nullptr;
  while (next != nullptr) {
    match->previous = match->string;
    match->string = next;
    match->flags = 0;
    const TernaryStringNode& node = *next->node;
    if (!node.MatchesSegment(path + i, &match->splitIndex)) {
      match->nodeId = 0;
      return status::kNotFound;
    }
    i += node.segmentLength();
    const signed char c = At(path, i);
    if (c != node.splitChar()) {
      const bool less = c < node.splitChar();
      match->nodeId = less ? node.lo() : node.hi();
      next = less ? next->lower : next->higher;
      continue;
    }
    match->flags = KeyMatchDescriptor::kMatchEqual;
    ++i;
    if (path[i] != '/') {
      if (path[i] == 0 && next->key != nullptr) return status::kOk;
      match->nodeId = node.equal();
      if (path[i] == 0) return status::kNotFound;
      next = next->equal;
      continue;
    }
    ++i;
    if (path[i] == 0) return status::kOk;  // also where the name has no key
    match->flags |= KeyMatchDescriptor::kMatchChild;
    match->owner = next;
    Pass(*next, match);
    match->nodeId = node.child();
    next = next->directory;
  }
  return status::kNotFound;
}

unsigned int TernaryKeyTree::FindKey(void* tree, const char* path, TernaryString*& string,
                                     TernaryKey*& key, TernaryString*& owner) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  TernaryString* start =
      tree != nullptr ? static_cast<TernaryHandle*>(tree)->start : GetStartString(0);
  if (start == nullptr) return status::kNotFound;
  KeyMatchDescriptor match;
  const unsigned int result = FindKey(start, path, &match);
  if (result != status::kOk) return result;
  if (match.string->key == nullptr) return status::kNotFound;
  string = match.string;
  key = match.string->key;
  owner = match.owner;
  return status::kOk;
}

}  // namespace tamu::registry
