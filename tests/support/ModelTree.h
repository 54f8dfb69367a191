// The tree that a model of a registry keeps its names in, and what can be told of it.
#pragma once

#include <memory>
#include <string>
#include <vector>

struct ModelValue {
  std::string name;  // at most 31 characters
  unsigned type = 0;
  bool isSet = false;
  unsigned size = 0;  // as stored
  std::string bytes;  // of types 1 to 5
  unsigned low = 0;   // of a number
  unsigned high = 0;  // the upper half stays when the value is set anew
};

struct ModelKey {
  unsigned owner = 0;
  unsigned permission = 0;
  unsigned watch = 0;  // six bits
  bool isRoot = false;
  bool isDefaultSet = false;
  unsigned long long defaultValue = 0;
  std::vector<ModelValue> values;  // oldest first
  unsigned storedCount = 0;        // of values, as the file's record tells

  // As it is loaded, see ModelHandles.
  bool isLoaded = false;
  unsigned loadedCount = 0;
};

struct ModelNode {
  std::string run;  // characters that must all match before the branching one
  char branch = 0;
  std::unique_ptr<ModelNode> lo;
  std::unique_ptr<ModelNode> hi;
  std::unique_ptr<ModelNode> equal;
  std::unique_ptr<ModelNode> child;
  std::unique_ptr<ModelKey> key;
};

// How much a tree takes.
struct ModelCounts {
  unsigned strings = 0;
  unsigned keys = 0;
  unsigned values = 0;
  unsigned blocks = 0;
  unsigned dataBytes = 0;  // in the blocks
};

namespace model {

constexpr unsigned kAdministrator = 65535;
constexpr size_t kRunMax = 16;  // characters in a run

// The character at `p`, or the terminator.
char At(const std::string& path, size_t p);
bool IsLower(char a, char b);
// Up to four bytes from `from` on as a number, the first one lowest.
unsigned Word(const std::string& bytes, size_t from);
// The low `width` bytes of a number.
std::string Bytes(unsigned number, unsigned width = 4);
unsigned BlocksOf(const std::string& bytes);

void AddKey(const ModelKey& key, ModelCounts* counts);
// The node, all that its links lead to, and the keys on them.
void AddTree(const ModelNode* node, ModelCounts* counts);
// The keys on one level: what the child links lead to lies below.
unsigned KeysBeside(const ModelNode* node);
// Greater names first, and a key behind the longer names and the sub-keys.
void ListNames(const ModelNode* node, const std::string& before, std::vector<std::string>* names);
// The newest first.
std::vector<std::string> ValueNames(const ModelKey& key);
// Hands the names out from `first` on, as many as there is room for, up to the first of `tooLong`
// characters: 0, 12 or 75.
unsigned HandOut(const std::vector<std::string>& all, unsigned first, unsigned capacity,
                 std::vector<std::string>* names, size_t tooLong = std::string::npos);

}  // namespace model
