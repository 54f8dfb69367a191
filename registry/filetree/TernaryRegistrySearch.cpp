// Finding a key by its path.
#include "registry/filetree/SubtreeNodes.h"
#include "registry/filetree/TernaryRegistry.h"

namespace tamu::registry {

// Compares the path at match->position with the node's split char and moves past what matched. The
// search is over with kOk or kNotFound, or goes on at *next, where 0 is a missing name.
TernaryRegistry::Step TernaryRegistry::Branch(const TernaryStringNode& node, const char* path,
                                              KeyMatchDescriptor* match, unsigned int* next) {
  unsigned int& p = match->position;
  const signed char c = static_cast<signed char>(path[p]);
  if (c != node.splitChar() || c == 0) {
    *next = c < node.splitChar() ? node.lo() : node.hi();
    return Step::kGoOn;
  }
  match->flags = KeyMatchDescriptor::kMatchEqual;
  ++p;
  if (path[p] == 0) {
    if (!node.hasKey()) return Step::kMissed;
    match->keyNode = node.keyNode();
    return Step::kFound;
  }
  if (path[p] != '/') {
    *next = node.equal();
    return Step::kGoOn;
  }
  ++p;
  if (path[p] == 0) {
    match->keyNode = node.keyNode();  // a name without key counts, as key 0
    return Step::kFound;
  }
  match->flags |= KeyMatchDescriptor::kMatchChild;
  match->directory = match->node;
  *next = node.child();
  return Step::kGoOn;
}

unsigned int TernaryRegistry::Search(AccessScope& access, unsigned int startNode, const char* path,
                                     KeyMatchDescriptor* match, SubtreeNodes* spare) {
  if (path == nullptr) path = "";
  match->directory = startNode;
  TernaryStringNode node;
  unsigned int result = access.Read(startNode, &node);
  if (result != status::kOk) return result;
  if (spare != nullptr) spare->SpareNode(startNode);
  match->node = startNode;
  match->position = path[0] == '/' ? 1 : 0;
  if (path[match->position] == 0) {
    match->keyNode = node.keyNode();
    return status::kOk;
  }
  if (node.child() == 0) {
    match->flags = KeyMatchDescriptor::kMatchChild;
    return status::kNotFound;
  }
  unsigned int next = node.child();
  // More steps than there are nodes: the links form a circle.
  const unsigned int limit = file->Descriptor(NodeKind::kString).totalNodes + 1;
  for (unsigned int steps = 0; next != 0; ++steps) {
    if (steps >= limit) return status::kInvalidFile;
    match->previous = match->node;
    match->node = next;
    match->flags = 0;
    if (spare != nullptr) {
      spare->SpareKey(node.keyNode());  // of the node before: the last one's key is found
      spare->SpareNode(next);
    }
    result = access.Read(next, &node);
    if (result != status::kOk) return result;
    if (!node.HasValidSegment()) return status::kInvalidFile;
    if (!node.MatchesSegment(path + match->position, &match->splitIndex)) break;
    match->position += node.segmentLength();
    const Step step = Branch(node, path, match, &next);
    if (step == Step::kFound) return status::kOk;
    if (step == Step::kMissed) break;
  }
  return status::kNotFound;
}

unsigned int TernaryRegistry::FindKey(unsigned int startNode, const char* path,
                                      KeyMatchDescriptor* match) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (match == nullptr) return status::kBadArgument;
  AccessScope access(*file);
  return Search(access, startNode, path, match);
}

// Key creation uses the same start node.
unsigned int TernaryRegistry::StartNodeOf(const void* tree) {
  return tree == nullptr ? file->GetStartNode(0) : 0;
}

unsigned int TernaryRegistry::FindKey(void* tree, const char* path, unsigned int* stringNode,
                                      unsigned int* keyNode) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (stringNode == nullptr || keyNode == nullptr) return status::kBadArgument;
  AccessScope access(*file);
  KeyMatchDescriptor match;
  const unsigned int result = Search(access, StartNodeOf(tree), path, &match);
  if (result != status::kOk) return result;
  *stringNode = match.node;
  *keyNode = match.keyNode;
  return status::kOk;
}

bool TernaryRegistry::isPermissible(const TernaryKeyNode* key, unsigned int user,
                                    unsigned char access) {
  return key->IsPermissible(user, access);
}

// Key 0, of a name without key, reads as a key that belongs to user 0 and gives nobody any right.
unsigned int TernaryRegistry::FindAndRead(AccessScope& access, const void* tree, const char* path,
                                          Reached* reached, SubtreeNodes* spare) {
  KeyMatchDescriptor match;
  const unsigned int result = Search(access, StartNodeOf(tree), path, &match, spare);
  if (result != status::kOk) return result;
  reached->nodeId = match.node;
  reached->keyId = match.keyNode;
  if (match.keyNode == 0) return result;
  return access.Read(match.keyNode, &reached->key);
}

unsigned int TernaryRegistry::ReachKey(AccessScope& access, unsigned int user, const void* tree,
                                       const char* path, unsigned char right, Reached* reached,
                                       SubtreeNodes* spare) {
  const unsigned int result = FindAndRead(access, tree, path, reached, spare);
  if (result != status::kOk) return result;
  return isPermissible(&reached->key, user, right) ? status::kOk : status::kNoRight;
}

}  // namespace tamu::registry
