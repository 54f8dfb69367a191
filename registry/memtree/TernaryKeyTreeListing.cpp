// Listing the names of keys and values.
#include "platform/PCMem.h"
#include "registry/base/RCEString.h"
#include "registry/base/Rights.h"
#include "registry/memtree/StringWalk.h"
#include "registry/memtree/TernaryKeyTree.h"

namespace tamu::registry {

namespace {

// Puts a character into the name, if it fits in.
void Put(char* name, unsigned int size, unsigned int position, signed char c) {
  if (position < size) name[position] = static_cast<char>(c);
}

}  // namespace

// The mark of a string is the place of its split char in the name. Names may be longer than the
// buffer as long as no key ends there.
unsigned int TernaryKeyTree::RecursiveListString(TernaryString* string, RecursiveArgList* arg) {
  constexpr unsigned int kSize = RecursiveArgList::kNameSize;
  StringWalk walk(kListingOrder);
  for (walk.Start(string); !walk.IsOver(); walk.Next()) {
    TernaryString& s = walk.Current();
    const TernaryString* parent = walk.Parent();
    if (walk.IsEntered()) {
      unsigned int p = parent == nullptr ? arg->position : parent->walkMark;
      const bool below = parent != nullptr && walk.Via() == NodeLink::kChild;
      if (below || (parent != nullptr && walk.Via() == NodeLink::kEqual)) {
        Put(arg->name, kSize, p++, parent->node->splitChar());
      }
      if (below) Put(arg->name, kSize, p++, '/');
      for (unsigned int k = 0; k < s.node->segmentLength(); ++k) {
        Put(arg->name, kSize, p++, s.node->segment(k));
      }
      s.walkMark = p;
      continue;
    }
    if (s.key == nullptr) continue;
    if (s.walkMark + 2 > kSize) return status::kLimit;
    Put(arg->name, kSize, s.walkMark, s.node->splitChar());
    Put(arg->name, kSize, s.walkMark + 1, 0);
    if (arg->skip > 0) {
      --arg->skip;
      continue;
    }
    const unsigned int result = arg->list->AddCopy(arg->name);
    if (result != status::kOk) return result;
  }
  return status::kOk;
}

unsigned int TernaryKeyTree::ListKeys(unsigned int, void* tree, const char* path,
                                      unsigned int index, NameList* names, unsigned int flags) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  if (names == nullptr) return status::kBadArgument;
  if (path == nullptr) path = "";
  Found found;
  const unsigned int result = FindKey(tree, path, found.string, found.key, found.owner);
  if (result != status::kOk) return result;
  RecursiveArgList arg;
  arg.list = names;
  arg.skip = index;
  if ((flags & kListWithPath) != 0) {
    arg.position = RCEString::Length(path);
    if (arg.position >= RecursiveArgList::kNameSize) return status::kLimit;
    PCMem::Copy(arg.name, path, arg.position);
  }
  return RecursiveListString(found.string->directory, &arg);
}

unsigned int TernaryKeyTree::ListValues(unsigned int user, void* tree, const char* path,
                                        unsigned int index, NameList* names) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  if (names == nullptr) return status::kBadArgument;
  Found found;
  unsigned int result = ReachKey(user, tree, path, kRightRead, &found);
  if (result != status::kOk) return result;
  if (index >= found.key->node->valueCount()) return status::kLimit;
  unsigned int skip = index;
  for (const TernaryValue* value = found.key->firstValue; value != nullptr; value = value->next) {
    if (skip > 0) {
      --skip;
      continue;
    }
    result = names->AddCopy(value->node->name(), TernaryValueNode::kNameSize);
    if (result != status::kOk) return result;
  }
  return status::kOk;
}

}  // namespace tamu::registry
