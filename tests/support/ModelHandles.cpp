#include "tests/support/ModelHandles.h"

#include <algorithm>

namespace {

constexpr size_t kSlots = 50;      // of a new table
constexpr size_t kNameLimit = 64;  // characters of a listed name, and of the path before it

// Without the "/" that may stand at each end.
std::string Normalized(const std::string& path) {
  std::string text = path.substr(model::At(path, 0) == '/' ? 1 : 0);
  if (!text.empty() && text.back() == '/') text.pop_back();
  return text;
}

bool IsBelow(const std::string& path, const std::string& ancestor) {
  if (ancestor.empty()) return !path.empty();
  return path.compare(0, ancestor.size() + 1, ancestor + '/') == 0;
}

void Add(const ModelCounts& more, ModelCounts* counts) {
  counts->strings += more.strings;
  counts->keys += more.keys;
  counts->values += more.values;
  counts->blocks += more.blocks;
}

// What leads to a key, and the keys on it, are not loaded any more.
void ForgetLoaded(ModelNode* node) {
  if (node == nullptr) return;
  if (node->key != nullptr) node->key->isLoaded = false;
  for (auto* link : {&node->lo, &node->hi, &node->equal, &node->child}) ForgetLoaded(link->get());
}

bool Contains(const ModelNode* tree, const ModelNode* node) {
  if (tree == nullptr || tree == node) return tree != nullptr;
  for (const auto* link : {&tree->lo, &tree->hi, &tree->equal, &tree->child}) {
    if (Contains(link->get(), node)) return true;
  }
  return false;
}

}  // namespace

// ---- handles

void ModelHandles::StartTable() {
  table_.assign(kSlots, Slot());
  last_ = 0;
}

void ModelHandles::Reopen() {
  DropAll();
  StartTable();
}

void ModelHandles::DropAll() {
  for (Slot& slot : table_) slot = Slot();
  last_ = 0;
  lost_ = Lost();
  orphans_.clear();
  ForgetLoaded(tree_.root_.get());
}

ModelCounts ModelHandles::Lost() const {
  ModelCounts lost = lost_;
  for (const auto& orphan : orphans_) {
    ModelCounts counts;
    model::AddTree(orphan.get(), &counts);
    Add(counts, &lost);
  }
  return lost;
}

std::vector<unsigned> ModelHandles::Open() const {
  std::vector<unsigned> open;
  for (unsigned i = 1; i < table_.size(); ++i) {
    if (table_[i].isUsed) open.push_back(i);
  }
  return open;
}

// The next free slot behind the one that was handed out last; slot 0 never.
unsigned ModelHandles::TakeSlot() {
  if (Open().size() + 1 >= table_.size()) table_.resize(2 * table_.size());
  const unsigned size = static_cast<unsigned>(table_.size());
  for (unsigned i = 1; i <= size; ++i) {
    const unsigned slot = (last_ + i) % size;
    if (slot == 0 || table_[slot].isUsed) continue;
    last_ = slot;
    table_[slot].isUsed = true;
    return slot;
  }
  return 0;
}

bool ModelHandles::IsDirect(unsigned handle, ModelNode** start) {
  *start = nullptr;
  if (handle == 0) {
    DropAll();
    return true;
  }
  if (handle < table_.size() && table_[handle].isUsed) *start = table_[handle].start;
  return false;
}

bool ModelHandles::IsInUse(const ModelNode* node) const {
  return std::any_of(table_.begin(), table_.end(),
                     [&](const Slot& slot) { return slot.isUsed && slot.start == node; });
}

bool ModelHandles::IsRoot(unsigned handle, const std::string& path) {
  if (handle == 0) return tree_.IsRoot(path);
  if (handle >= table_.size() || !table_[handle].isUsed) return false;
  const ModelRegistry::Place place = ModelRegistry::Search(table_[handle].start, path);
  return place.isFound && place.node == tree_.root_.get();
}

std::vector<std::string> ModelHandles::Names(unsigned handle) const {
  std::vector<std::string> names;
  const bool isOpen = handle < table_.size() && table_[handle].isUsed;
  if (handle != 0 && !isOpen) return names;
  const ModelNode* start = handle == 0 ? tree_.root_.get() : table_[handle].start;
  model::ListNames(start->child.get(), "", &names);
  return names;
}

// ---- what is loaded

void ModelHandles::Load(ModelKey* key) {
  if (key == nullptr || key->isLoaded) return;
  key->isLoaded = true;
  key->loadedCount = key->storedCount;
}

void ModelHandles::LoadTree(ModelNode* node) {
  if (node == nullptr) return;
  Load(node->key.get());
  for (auto* link : {&node->lo, &node->hi, &node->equal, &node->child}) LoadTree(link->get());
}

// Unloads the keys from a node on; true when nothing stays. A node at which a handle starts stays
// with all that it leads to.
bool ModelHandles::Unload(ModelNode* node) {
  if (node == nullptr) return true;
  if (IsInUse(node)) return false;
  bool goes = true;
  for (auto* link : {&node->lo, &node->hi, &node->equal, &node->child}) {
    if (!Unload(link->get())) goes = false;
  }
  if (node->key != nullptr) node->key->isLoaded = false;
  return goes;
}

// The root key stays as long as something below it does.
void ModelHandles::UnloadFrom(ModelNode* start) {
  const bool goes = Unload(start->child.get());
  if (start == tree_.root_.get() && !goes) return;
  if (start->key != nullptr) start->key->isLoaded = false;
}

unsigned ModelHandles::OpenKey(const std::string& path, unsigned* handle) {
  Load(tree_.root_->key.get());
  ModelKey* key = nullptr;
  ModelNode* node = nullptr;
  const unsigned result = Find(tree_.root_.get(), path, &key, &node);
  if (result != 0) return result;
  Load(key);
  LoadTree(node->child.get());
  *handle = TakeSlot();
  table_[*handle].start = node;
  table_[*handle].path = Normalized(path);
  table_[*handle].isOrphan = false;
  return 0;
}

unsigned ModelHandles::CloseKey(unsigned handle) {
  if (handle == 0 || handle >= table_.size() || !table_[handle].isUsed) return 22;
  const Slot closed = table_[handle];
  table_[handle] = Slot();
  if (Open().empty()) ForgetLoaded(tree_.root_.get());
  if (closed.isOrphan || IsInUse(closed.start)) return 0;
  for (const Slot& other : table_) {
    if (other.isUsed && !other.isOrphan && IsBelow(closed.path, other.path)) return 0;
  }
  UnloadFrom(closed.start);
  return 0;
}

// ---- keys

unsigned ModelHandles::Find(ModelNode* start, const std::string& path, ModelKey** key,
                            ModelNode** node) {
  if (start == nullptr) return 22;
  const ModelRegistry::Place place = ModelRegistry::Search(start, path);
  if (!place.isFound || place.node->key == nullptr) return 2;
  *key = place.node->key.get();
  if (node != nullptr) *node = place.node;
  return 0;
}

unsigned ModelHandles::Reach(ModelNode* start, unsigned user, const std::string& path, Right right,
                             ModelKey** key, ModelNode** node) {
  const unsigned result = Find(start, path, key, node);
  if (result != 0) return result;
  return ModelRegistry::MayDo(*key, user, right) ? 0 : 1;
}

unsigned ModelHandles::CreateKey(unsigned handle, unsigned user, const std::string& path,
                                 unsigned long long defaultValue, bool isDefaultSet) {
  ModelNode* start = nullptr;
  if (IsDirect(handle, &start)) return tree_.CreateKey(user, path, defaultValue, isDefaultSet);
  if (start == nullptr) return 22;
  const ModelRegistry::Place place = ModelRegistry::Search(start, path);
  const bool isStart = place.isFound && place.node == start;
  if (isStart && start->key == nullptr) return 1;
  if (place.isFound) return 17;
  const bool endsAtNode = place.cut < 0 && place.link == nullptr;
  if (endsAtNode && place.node->equal != nullptr) return 1;
  const ModelKey* parent = place.parent->key.get();
  if (!ModelRegistry::MayDo(parent, user, ModelRegistry::kCreate)) return 1;
  auto key = ModelRegistry::NewKey(*parent, user, defaultValue, isDefaultSet);
  Load(key.get());
  unsigned givenBack = 0;
  return ModelRegistry::CreateAt(place, path, std::move(key), &givenBack);
}

// Takes what was cut off apart: what no handle needs goes, the rest stays in use.
void ModelHandles::Detach(std::unique_ptr<ModelNode> node) {
  if (node == nullptr) return;
  if (!IsInUse(node.get())) {
    for (auto* link : {&node->lo, &node->hi, &node->equal, &node->child}) {
      Detach(std::move(*link));
    }
    ModelCounts gone;
    model::AddTree(node.get(), &gone);
    tree_.lostBlocks_ += gone.blocks;
    return;
  }
  for (Slot& slot : table_) {
    if (slot.isUsed && Contains(node.get(), slot.start)) slot.isOrphan = true;
  }
  orphans_.push_back(std::move(node));
}

unsigned ModelHandles::DeleteKey(unsigned handle, unsigned user, const std::string& path) {
  ModelNode* start = nullptr;
  if (IsDirect(handle, &start)) return tree_.DeleteKey(user, path);
  ModelKey* key = nullptr;
  ModelNode* node = nullptr;
  const unsigned result = Reach(start, user, path, ModelRegistry::kDelete, &key, &node);
  if (result != 0) return result;
  Detach(std::move(node->child));
  ModelCounts gone;
  model::AddKey(*key, &gone);
  tree_.lostBlocks_ += gone.blocks;
  node->key = nullptr;
  return 0;
}

// No right is needed.
unsigned ModelHandles::ListKeys(unsigned handle, unsigned user, const std::string& path,
                                unsigned first, unsigned capacity, bool withPath,
                                std::vector<std::string>* names) {
  ModelNode* start = nullptr;
  if (IsDirect(handle, &start)) {
    return tree_.ListKeys(user, path, first, capacity, withPath, names);
  }
  ModelKey* key = nullptr;
  ModelNode* node = nullptr;
  const unsigned result = Find(start, path, &key, &node);
  if (result != 0) return result;
  if (withPath && path.size() >= kNameLimit) return 75;
  std::vector<std::string> all;
  model::ListNames(node->child.get(), withPath ? path : "", &all);
  return model::HandOut(all, first, capacity, names, kNameLimit);
}

// The permission is told without any right.
unsigned ModelHandles::GetKeyInfo(unsigned handle, unsigned user, const std::string& path,
                                  ModelInfo* info) {
  ModelNode* start = nullptr;
  if (IsDirect(handle, &start)) return tree_.GetKeyInfo(user, path, info);
  ModelKey* key = nullptr;
  ModelNode* node = nullptr;
  const unsigned result = Reach(start, user, path, ModelRegistry::kRead, &key, &node);
  if (result > 1) return result;
  *info = ModelInfo();
  info->permission = key->permission;
  if (result == 1) return result;
  ModelCounts below;
  model::AddTree(node->child.get(), &below);
  info->subKeys = model::KeysBeside(node->child.get());
  info->allSubKeys = below.keys;
  info->values = static_cast<unsigned>(key->values.size());
  info->allValues = info->values + below.values;
  return 0;
}

unsigned ModelHandles::GetKeyPermission(unsigned handle, const std::string& path,
                                        unsigned* permission) {
  ModelNode* start = nullptr;
  if (IsDirect(handle, &start)) return tree_.GetKeyPermission(path, permission);
  ModelKey* key = nullptr;
  const unsigned result = Find(start, path, &key);
  if (result == 0) *permission = key->permission;
  return result;
}

unsigned ModelHandles::SetKeyPermission(unsigned handle, unsigned user, const std::string& path,
                                        unsigned permission) {
  ModelNode* start = nullptr;
  if (IsDirect(handle, &start)) return tree_.SetKeyPermission(user, path, permission);
  ModelKey* key = nullptr;
  const unsigned result = Find(start, path, &key);
  if (result != 0) return result;
  if (user != key->owner && user != model::kAdministrator) return 1;
  key->permission = permission;
  key->storedCount = key->loadedCount;
  return 0;
}

unsigned ModelHandles::SetKeyWatch(unsigned handle, unsigned user, const std::string& path,
                                   unsigned watch) {
  ModelNode* start = nullptr;
  if (IsDirect(handle, &start)) return tree_.SetKeyWatch(user, path, watch);
  ModelKey* key = nullptr;
  const unsigned result = Reach(start, user, path, ModelRegistry::kRead, &key);
  if (result != 0) return result;
  key->watch = watch & 0x3F;
  key->storedCount = key->loadedCount;
  return 0;
}

unsigned ModelHandles::BackupKey(unsigned handle, unsigned user, const std::string& path,
                                 ModelBackup* backup) {
  ModelNode* start = nullptr;
  if (IsDirect(handle, &start)) return tree_.BackupKey(user, path, backup);
  return start == nullptr ? 22 : 37;
}

unsigned ModelHandles::RestoreKey(unsigned handle, unsigned user, const std::string& path,
                                  const ModelBackup& backup) {
  ModelNode* start = nullptr;
  if (IsDirect(handle, &start)) return tree_.RestoreKey(user, path, backup);
  return start == nullptr ? 22 : 37;
}
