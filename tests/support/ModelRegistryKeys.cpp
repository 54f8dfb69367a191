// The model's operations on whole keys.
#include <algorithm>

#include "tests/support/ModelRegistry.h"

using model::AddKey;
using model::AddTree;
using model::kAdministrator;
using model::KeysBeside;

namespace {

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
    node->key->storedCount = static_cast<unsigned>(node->key->values.size());
  }
  return node;
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

std::vector<std::string> ModelRegistry::WrongCounts() const {
  std::vector<std::string> wrong;
  std::vector<const ModelNode*> pending = {root_.get()};
  while (!pending.empty()) {
    const ModelNode* node = pending.back();
    pending.pop_back();
    for (const auto* link : {&node->lo, &node->hi, &node->equal, &node->child}) {
      if (*link != nullptr) pending.push_back(link->get());
    }
    if (node->key == nullptr || node->key->storedCount == node->key->values.size()) continue;
    wrong.push_back("counts " + std::to_string(node->key->storedCount) + " values, has " +
                    std::to_string(node->key->values.size()));
  }
  std::sort(wrong.begin(), wrong.end());
  return wrong;
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
  model::ListNames(node->child.get(), withPath ? path : "", &all);
  return model::HandOut(all, first, capacity, names);
}

unsigned ModelRegistry::ListValues(unsigned user, const std::string& path, unsigned first,
                                   unsigned capacity, std::vector<std::string>* names) {
  ModelKey* key = nullptr;
  const unsigned result = Reach(user, path, kRead, &key);
  if (result != 0) return result;
  if (first >= key->storedCount) return 75;
  return model::HandOut(model::ValueNames(*key), first, capacity, names);
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
  node->key->storedCount = static_cast<unsigned>(node->key->values.size());
  return 0;
}
