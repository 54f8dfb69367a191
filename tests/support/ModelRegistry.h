// A registry in memory that answers as the one in the file does, so that random operations on both
// can be compared. It keeps the names in the same kind of tree, since the answers depend on how the
// names lie in it, but shares no code with the library.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/StructureCheck.h"

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
  bool isRoot = false;
  bool isDefaultSet = false;
  unsigned long long defaultValue = 0;
  std::vector<ModelValue> values;  // oldest first
};

class ModelRegistry {
 public:
  ModelRegistry();
  ModelRegistry(const ModelRegistry&) = delete;
  ModelRegistry& operator=(const ModelRegistry&) = delete;

  // Each answers the status of the operation without a handle.
  unsigned CreateKey(unsigned user, const std::string& path, unsigned long long defaultValue,
                     bool isDefaultSet);
  unsigned GetDefaultValue(unsigned user, const std::string& path, unsigned long long* number);
  unsigned SetDefaultValue(unsigned user, const std::string& path, unsigned long long number);
  // `data` null: a value without data.
  unsigned CreateValue(unsigned user, const std::string& path, const std::string& name,
                       unsigned type, const std::string* data);
  unsigned SetValue(unsigned user, const std::string& path, const std::string& name, unsigned type,
                    const std::string& data);
  // Type and the bytes that are handed out.
  unsigned GetValue(unsigned user, const std::string& path, const std::string& name, unsigned* type,
                    std::string* bytes);
  unsigned DeleteValue(unsigned user, const std::string& path, const std::string& name);

  // What the file must hold now.
  std::map<std::string, DecodedKey> Tree() const;
  unsigned stringNodes() const { return static_cast<unsigned>(nodes_.size()); }
  unsigned keyCount() const { return keyCount_; }
  unsigned valueCount() const { return valueCount_; }
  unsigned blockCount() const { return blockCount_; }
  unsigned lostStringNodes() const { return lostStringNodes_; }
  unsigned lostBlocks() const { return lostBlocks_; }

 private:
  struct Node {
    std::string run;  // characters that must all match before the branching one
    char branch = 0;
    Node* lo = nullptr;
    Node* hi = nullptr;
    Node* equal = nullptr;
    Node* child = nullptr;
    std::unique_ptr<ModelKey> key;
  };

  // Where a search ended: at a node that was found, or at the link where a name is to be hung, or
  // at the place in a run where it is to be cut.
  struct Place {
    bool isFound = false;
    Node* node = nullptr;
    Node* parent = nullptr;   // where the parent key of the last component ends
    Node** link = nullptr;    // the empty link for the rest of the path
    Node** toNode = nullptr;  // the link that led to the node
    int cut = -1;
    size_t position = 0;  // first character without a place
  };

  Place Search(const std::string& path);
  bool SearchNode(const std::string& path, Place* place);
  unsigned Reach(unsigned user, const std::string& path, unsigned right, ModelKey** key);
  static bool MayDo(const ModelKey* key, unsigned user, unsigned right);
  Node* NewNode();
  Node* Cut(const Place& place);
  Node* NewName(const std::string& name, std::unique_ptr<ModelKey>* key);
  static ModelValue* Find(ModelKey* key, const std::string& name);

  std::vector<std::unique_ptr<Node>> nodes_;
  Node* root_;
  unsigned keyCount_ = 1;
  unsigned valueCount_ = 0;
  unsigned blockCount_ = 0;
  unsigned lostStringNodes_ = 0;  // taken for names that were refused
  unsigned lostBlocks_ = 0;       // of deleted values
};
