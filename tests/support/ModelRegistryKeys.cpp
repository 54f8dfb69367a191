// The model's operations on whole keys.
#include <algorithm>

#include "tests/support/ModelRegistry.h"

namespace {

constexpr unsigned kAdministrator = 65535;

unsigned BlocksOf(const ModelKey& key) {
  size_t blocks = 0;
  for (const ModelValue& value : key.values) blocks += (value.bytes.size() + 63) / 64;
  return static_cast<unsigned>(blocks);
}

void AddKey(const ModelKey& key, ModelCounts* counts) {
  ++counts->keys;
  counts->values += static_cast<unsigned>(key.values.size());
  counts->blocks += BlocksOf(key);
  for (const ModelValue& value : key.values) {
    counts->dataBytes += static_cast<unsigned>(value.bytes.size());
  }
}

// The node, all that its links lead to, and the keys on them.
void AddTree(const ModelNode* node, ModelCounts* counts) {
  if (node == nullptr) return;
  ++counts->strings;
  if (node->key != nullptr) AddKey(*node->key, counts);
  for (const auto* link : {&node->lo, &node->hi, &node->equal, &node->child}) {
    AddTree(link->get(), counts);
  }
}

// The keys on one level: what the child links lead to lies below.
unsigned KeysBeside(const ModelNode* node) {
  if (node == nullptr) return 0;
  return (node->key != nullptr ? 1 : 0) + KeysBeside(node->lo.get()) + KeysBeside(node->hi.get()) +
         KeysBeside(node->equal.get());
}

std::unique_ptr<ModelNode> Copy(const std::unique_ptr<ModelNode>& from) {
  if (from == nullptr) return nullptr;
  auto node = std::make_unique<ModelNode>();
  node->run = from->run;
  node->branch = from->branch;
  node->lo = Copy(from->lo);
  node->hi = Copy(from->hi);
  node->equal = Copy(from->equal);
  node->child = Copy(from->child);
  if (from->key != nullptr) {
    node->key = std::make_unique<ModelKey>(*from->key);
    node->key->isRoot = false;
  }
  return node;
}

// Greater names first, and a key behind the longer names and the sub-keys.
void List(const ModelNode* node, const std::string& before, std::vector<std::string>* names) {
  if (node == nullptr) return;
  List(node->hi.get(), before + node->run, names);
  List(node->lo.get(), before + node->run, names);
  const std::string name = before + node->run + node->branch;
  List(node->equal.get(), name, names);
  List(node->child.get(), name + '/', names);
  if (node->key != nullptr) names->push_back(name);
}

// Hands the names out from `first` on, as many as there is room for.
unsigned HandOut(const std::vector<std::string>& all, unsigned first, unsigned capacity,
                 std::vector<std::string>* names) {
  for (size_t i = first; i < all.size(); ++i) {
    if (names->size() == capacity) return capacity == 0 ? 12 : 75;
    names->push_back(all[i]);
  }
  return 0;
}

}  // namespace

ModelCounts ModelBackup::Counts() const {
  ModelCounts counts;
  AddTree(subKeys.get(), &counts);
  AddKey(*key, &counts);
  return counts;
}

size_t ModelBackup::FileSize() const {
  const ModelCounts counts = Counts();
  return 1 + 40 * counts.strings + 24 * counts.keys + 52 * counts.values + counts.dataBytes;
}

ModelCounts ModelRegistry::Counts() const {
  ModelCounts counts;
  AddTree(root_.get(), &counts);
  return counts;
}

bool ModelRegistry::IsRoot(const std::string& path) {
  const Place place = Search(path);
  return place.isFound && place.node == root_.get();
}

// Takes the key and all below it away; the node stays as a name.
void ModelRegistry::Remove(ModelNode* node) {
  ModelCounts gone;
  AddTree(node->child.get(), &gone);
  if (node->key != nullptr) AddKey(*node->key, &gone);
  lostBlocks_ += gone.blocks;
  node->child = nullptr;
  node->key = nullptr;
}

unsigned ModelRegistry::DeleteKey(unsigned user, const std::string& path) {
  ModelKey* key = nullptr;
  ModelNode* node = nullptr;
  const unsigned result = Reach(user, path, kDelete, &key, &node);
  if (result == 0) Remove(node);
  return result;
}

unsigned ModelRegistry::ListKeys(unsigned user, const std::string& path, unsigned first,
                                 unsigned capacity, bool withPath,
                                 std::vector<std::string>* names) {
  ModelKey* key = nullptr;
  ModelNode* node = nullptr;
  const unsigned result = Reach(user, path, kRead, &key, &node);
  if (result != 0) return result;
  std::vector<std::string> all;
  List(node->child.get(), withPath ? path : "", &all);
  return HandOut(all, first, capacity, names);
}

unsigned ModelRegistry::ListValues(unsigned user, const std::string& path, unsigned first,
                                   unsigned capacity, std::vector<std::string>* names) {
  ModelKey* key = nullptr;
  const unsigned result = Reach(user, path, kRead, &key);
  if (result != 0) return result;
  if (first >= key->values.size()) return 75;
  std::vector<std::string> all;
  for (size_t i = key->values.size(); i > 0; --i) all.push_back(key->values[i - 1].name);
  return HandOut(all, first, capacity, names);
}

unsigned ModelRegistry::GetKeyInfo(unsigned user, const std::string& path, ModelInfo* info) {
  ModelKey* key = nullptr;
  ModelNode* node = nullptr;
  const unsigned result = Reach(user, path, kRead, &key, &node);
  if (result != 0) return result;
  ModelCounts below;
  AddTree(node->child.get(), &below);
  info->subKeys = KeysBeside(node->child.get());
  info->allSubKeys = below.keys;
  info->values = static_cast<unsigned>(key->values.size());
  info->allValues = info->values + below.values;
  info->permission = key->permission;
  return 0;
}

// A name without a key has permission 0 and belongs to user 0.
unsigned ModelRegistry::GetKeyPermission(const std::string& path, unsigned* permission) {
  const Place place = Search(path);
  if (!place.isFound) return 2;
  *permission = place.node->key != nullptr ? place.node->key->permission : 0;
  return 0;
}

unsigned ModelRegistry::SetKeyPermission(unsigned user, const std::string& path,
                                         unsigned permission) {
  const Place place = Search(path);
  if (!place.isFound) return 2;
  ModelKey* key = place.node->key.get();
  const unsigned owner = key != nullptr ? key->owner : 0;
  if (user != owner && user != kAdministrator) return 1;
  if (key == nullptr) return 2;
  key->permission = permission;
  return 0;
}

unsigned ModelRegistry::SetKeyWatch(unsigned user, const std::string& path, unsigned watch) {
  ModelKey* key = nullptr;
  const unsigned result = Reach(user, path, kRead, &key);
  if (result == 0) key->watch = watch & 0x3F;
  return result;
}

unsigned ModelRegistry::BackupKey(unsigned user, const std::string& path, ModelBackup* backup) {
  ModelKey* key = nullptr;
  ModelNode* node = nullptr;
  const unsigned result = Reach(user, path, kRead, &key, &node);
  if (result != 0) return result;
  backup->key = std::make_unique<ModelKey>(*key);
  backup->subKeys = Copy(node->child);
  return 0;
}

unsigned ModelRegistry::RestoreKey(unsigned user, const std::string& path,
                                   const ModelBackup& backup) {
  ModelKey* key = nullptr;
  ModelNode* node = nullptr;
  const unsigned result = Reach(user, path, kCreate, &key, &node);
  if (result != 0) return result;
  if (backup.key == nullptr) return 5;
  Remove(node);
  node->child = Copy(backup.subKeys);
  node->key = std::make_unique<ModelKey>(*backup.key);
  node->key->isRoot = node == root_.get();
  return 0;
}
