// Walks over the names alone.
#include <initializer_list>

#include "registry/base/Stack.h"
#include "registry/filetree/TernaryRegistry.h"
#include "registry/store/NodeSet.h"

namespace tamu::registry {

unsigned int TernaryRegistry::ReadNodeTree(unsigned int node, unsigned int* ids,
                                           unsigned int* count, unsigned int capacity) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (ids == nullptr || count == nullptr) return status::kBadArgument;
  AccessScope access(*file);
  NodeSet met;
  Stack<unsigned int> open;
  unsigned int result = met.Prepare(file->Descriptor(NodeKind::kString));
  if (result != status::kOk) return result;
  if (node != 0) result = open.Push(node);
  while (result == status::kOk && !open.IsEmpty()) {
    const unsigned int id = open.Pop();
    if (!met.Add(id)) return status::kInvalidFile;  // the links form a circle
    result = access.Read(id, &nodeBuffer);
    if (result != status::kOk) return result;
    if (*count > capacity || capacity - *count < 3) return status::kLimit;
    const unsigned int equal = nodeBuffer.hasKey() ? 0 : nodeBuffer.equal();
    const unsigned int hi = nodeBuffer.hi();
    const unsigned int lo = nodeBuffer.lo();
    if (equal == 0 && hi == 0 && lo == 0) continue;
    ids[(*count)++] = equal;
    ids[(*count)++] = hi;
    ids[(*count)++] = lo;
    for (const unsigned int next : {lo, hi, equal}) {
      if (next != 0 && result == status::kOk) result = open.Push(next);
    }
  }
  return result;
}

unsigned int TernaryRegistry::FindSuffix(const char* path, unsigned int* lastBranch,
                                         unsigned int* next) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (path == nullptr || lastBranch == nullptr || next == nullptr) return status::kBadArgument;
  AccessScope access(*file);
  unsigned int id = file->GetStartNode(0);
  unsigned int branch = 0;
  unsigned int behindBranch = 0;
  const unsigned int limit = file->Descriptor(NodeKind::kString).totalNodes + 1;
  for (unsigned int steps = 0; id != 0 && steps < limit; ++steps) {
    TernaryStringNode node;
    const unsigned int result = access.Read(id, &node);
    if (result != status::kOk) return result;
    if (!node.HasValidSegment()) return status::kInvalidFile;
    for (unsigned int k = 0; k < node.segmentLength(); ++k, ++path) {
      if (*path != 0 && static_cast<signed char>(*path) == node.segment(k)) continue;
      return *path == 0 && node.segment(k) == '/' ? status::kOk : status::kNotFound;
    }
    if (behindBranch == 0 && branch != 0) behindBranch = id;
    if (node.lo() != 0 || node.hi() != 0) {
      branch = id;
      behindBranch = 0;
    }
    const signed char c = static_cast<signed char>(*path);
    if (node.splitChar() == 0 && node.equal() != 0) {
      *lastBranch = branch;
      *next = behindBranch != 0 ? behindBranch : node.equal();
      return status::kOk;
    }
    if (c == node.splitChar() && c != 0) {
      ++path;
      id = node.equal();
    } else {
      id = c < node.splitChar() ? node.lo() : node.hi();
    }
  }
  return id == 0 ? status::kNotFound : status::kInvalidFile;
}

}  // namespace tamu::registry
