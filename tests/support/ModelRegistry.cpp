#include "tests/support/ModelRegistry.h"

#include <algorithm>

using model::At;
using model::BlocksOf;
using model::IsLower;
using model::kAdministrator;
using model::kRunMax;
using model::Word;

ModelRegistry::ModelRegistry() : root_(std::make_unique<ModelNode>()) {
  root_->key = std::make_unique<ModelKey>();
  root_->key->owner = kAdministrator;
  root_->key->permission = 0x5F;
  root_->key->isRoot = true;
}

ModelRegistry::Place ModelRegistry::Search(ModelNode* start, const std::string& path) {
  Place place;
  place.node = start;
  place.parent = start;
  place.position = At(path, 0) == '/' ? 1 : 0;
  place.link = &start->child;
  if (At(path, place.position) == 0) {
    place.isFound = true;
    return place;
  }
  while (*place.link != nullptr) {
    place.toNode = place.link;
    place.node = place.link->get();
    place.link = nullptr;
    if (SearchNode(path, &place)) break;
  }
  return place;
}

// Goes through one node. True when the search ends there; otherwise `link` is where it goes on.
bool ModelRegistry::SearchNode(const std::string& path, Place* place) {
  ModelNode* node = place->node;
  for (size_t k = 0; k < node->run.size(); ++k) {
    const size_t p = place->position + k;
    if (At(path, p) == node->run[k] && At(path, p + 1) != 0) continue;
    place->cut = static_cast<int>(k);
    return true;
  }
  place->position += node->run.size();
  const char c = At(path, place->position);
  if (c != node->branch) {
    place->link = IsLower(c, node->branch) ? &node->lo : &node->hi;
    return false;
  }
  const char next = At(path, ++place->position);
  if (next == 0) {
    place->isFound = node->key != nullptr;
    return true;
  }
  if (next != '/') {
    place->link = &node->equal;
    return false;
  }
  if (At(path, ++place->position) == 0) {
    place->isFound = true;  // with or without a key
    return true;
  }
  place->parent = node;
  place->link = &node->child;
  return false;
}

bool ModelRegistry::MayDo(const ModelKey* key, unsigned user, Right right) {
  if (key == nullptr) return false;
  const bool isOwner = user == kAdministrator || user == key->owner;
  return ((isOwner ? key->permission : key->permission >> 4) & right) != 0;
}

unsigned ModelRegistry::Reach(unsigned user, const std::string& path, Right right, ModelKey** key,
                              ModelNode** node) {
  const Place place = Search(path);
  if (!place.isFound) return 2;
  if (node != nullptr) *node = place.node;
  *key = place.node->key.get();
  return MayDo(*key, user, right) ? 0 : 1;
}

// Puts a new node with the run up to the cut above the node.
ModelNode* ModelRegistry::Cut(const Place& place) {
  const size_t cut = static_cast<size_t>(place.cut);
  auto upper = std::make_unique<ModelNode>();
  upper->run = place.node->run.substr(0, cut);
  upper->branch = place.node->run[cut];
  place.node->run.erase(0, cut + 1);
  upper->equal = std::move(*place.toNode);
  *place.toNode = std::move(upper);
  return place.toNode->get();
}

// The chain of nodes for a name of one component, seventeen characters a node.
std::unique_ptr<ModelNode> ModelRegistry::NewName(const std::string& name,
                                                  std::unique_ptr<ModelKey>* key) {
  std::unique_ptr<ModelNode> first;
  std::unique_ptr<ModelNode>* link = &first;
  for (size_t p = 0; p < name.size();) {
    const size_t length = std::min(kRunMax, name.size() - p - 1);
    auto node = std::make_unique<ModelNode>();
    node->run = name.substr(p, length);
    node->branch = name[p + length];
    p += length + 1;
    if (p == name.size()) node->key = std::move(*key);
    *link = std::move(node);
    link = &(*link)->equal;
  }
  return first;
}

std::unique_ptr<ModelKey> ModelRegistry::NewKey(const ModelKey& parent, unsigned user,
                                                unsigned long long defaultValue,
                                                bool isDefaultSet) {
  auto key = std::make_unique<ModelKey>();
  key->owner = user;
  key->permission = parent.isRoot ? 0x0F : parent.permission;
  key->isDefaultSet = isDefaultSet;
  key->defaultValue = defaultValue;
  return key;
}

unsigned ModelRegistry::CreateAt(const Place& place, const std::string& path,
                                 std::unique_ptr<ModelKey> key, unsigned* lost) {
  ModelNode* target = place.node;
  std::unique_ptr<ModelNode>* link = place.link;
  size_t position = place.position;
  if (place.cut >= 0) {
    target = Cut(place);
    position += static_cast<size_t>(place.cut);
    link = IsLower(At(path, position), target->branch) ? &target->lo : &target->hi;
    // A path whose last character stands at the cut ends there, whatever that character is.
    if (position + 1 == path.size()) ++position;
  }
  const std::string rest = path.substr(position);
  if (const size_t slash = rest.find('/'); slash != std::string::npos) {
    *lost = static_cast<unsigned>(1 + slash / (kRunMax + 1));
    return 22;
  }
  if (rest.empty()) {
    target->key = std::move(key);
  } else {
    *link = NewName(rest, &key);
  }
  return 0;
}

unsigned ModelRegistry::CreateKey(unsigned user, const std::string& path,
                                  unsigned long long defaultValue, bool isDefaultSet) {
  const Place place = Search(path);
  if (place.isFound) return 17;
  const ModelKey* parent = place.parent->key.get();
  if (!MayDo(parent, user, kCreate)) return 1;
  unsigned lost = 0;
  const unsigned result =
      CreateAt(place, path, NewKey(*parent, user, defaultValue, isDefaultSet), &lost);
  lostStringNodes_ += lost;
  return result;
}

unsigned ModelRegistry::GetDefaultValue(unsigned user, const std::string& path,
                                        unsigned long long* number) {
  ModelKey* key = nullptr;
  const unsigned result = Reach(user, path, kRead, &key);
  if (result != 0) return result;
  if (!key->isDefaultSet) return 53;
  *number = key->defaultValue;
  return 0;
}

unsigned ModelRegistry::SetDefaultValue(unsigned user, const std::string& path,
                                        unsigned long long number) {
  ModelKey* key = nullptr;
  const unsigned result = Reach(user, path, kModify, &key);
  if (result != 0) return result;
  key->isDefaultSet = true;
  key->defaultValue = number;
  return 0;
}

// The newest value of the name; null when there is none.
ModelValue* ModelRegistry::Find(ModelKey* key, const std::string& name) {
  for (size_t i = key->values.size(); i > 0; --i) {
    if (key->values[i - 1].name == name) return &key->values[i - 1];
  }
  return nullptr;
}

ModelValue ModelRegistry::NewValue(const std::string& name, unsigned type,
                                   const std::string* data) {
  const bool isNumber = data == nullptr || type == 0;
  ModelValue value;
  value.name = name.substr(0, 31);
  if (isNumber) {
    value.size = 8;
    value.isSet = data != nullptr;
    if (data != nullptr) value.low = Word(*data, 0);
    if (data != nullptr) value.high = Word(*data, 4);
  } else {
    value.type = type;
    value.size = static_cast<unsigned>(data->size());
    value.isSet = !data->empty();
    value.bytes = *data;
  }
  return value;
}

unsigned ModelRegistry::CreateValue(unsigned user, const std::string& path, const std::string& name,
                                    unsigned type, const std::string* data) {
  if (name.empty()) return 22;
  const bool isNumber = data == nullptr || type == 0;
  if (!isNumber && data->size() > 1024) return 75;
  ModelKey* key = nullptr;
  const unsigned result = Reach(user, path, kCreate, &key);
  if (result != 0) return result;
  if (!isNumber && type > 5) return 53;
  key->values.push_back(NewValue(name, type, data));
  ++key->storedCount;
  return 0;
}

unsigned ModelRegistry::SetValue(unsigned user, const std::string& path, const std::string& name,
                                 unsigned type, const std::string& data) {
  if (data.size() > 1024) return 75;
  ModelKey* key = nullptr;
  const unsigned result = Reach(user, path, kModify, &key);
  if (result != 0) return result;
  if (type > 5) return 53;
  ModelValue* value = Find(key, name);
  if (value == nullptr) return 2;
  value->type = type;
  value->size = static_cast<unsigned>(data.size());
  value->isSet = true;
  value->bytes = type == 0 ? std::string() : data;
  if (type == 0) value->low = Word(data, 0);
  return 0;
}

unsigned ModelRegistry::GetValue(unsigned user, const std::string& path, const std::string& name,
                                 unsigned* type, std::string* bytes) {
  ModelKey* key = nullptr;
  const unsigned result = Reach(user, path, kRead, &key);
  if (result != 0) return result;
  const ModelValue* value = Find(key, name);
  if (value == nullptr) return 2;
  if (!value->isSet) return 53;
  *type = value->type;
  *bytes = value->bytes;
  if (value->type == 0) {
    *bytes = model::Bytes(value->low);
    bytes->resize(value->size);
  }
  return 0;
}

unsigned ModelRegistry::DeleteValue(unsigned user, const std::string& path,
                                    const std::string& name) {
  ModelKey* key = nullptr;
  const unsigned result = Reach(user, path, kDelete, &key);
  if (result != 0) return result;
  const ModelValue* value = Find(key, name);
  if (value == nullptr) return 2;
  lostBlocks_ += BlocksOf(value->bytes);
  key->values.erase(key->values.begin() + (value - key->values.data()));
  --key->storedCount;
  return 0;
}

std::map<std::string, DecodedKey> ModelRegistry::Tree() const {
  std::map<std::string, DecodedKey> tree;
  std::vector<std::pair<const ModelNode*, std::string>> pending = {{root_.get(), ""}};
  const auto visit = [&](const std::unique_ptr<ModelNode>& node, const std::string& prefix) {
    if (node != nullptr) pending.emplace_back(node.get(), prefix);
  };
  while (!pending.empty()) {
    const auto [node, prefix] = pending.back();
    pending.pop_back();
    const bool isRoot = node == root_.get();
    const std::string name = isRoot ? "" : prefix + node->run + node->branch;
    visit(node->lo, prefix + node->run);
    visit(node->hi, prefix + node->run);
    visit(node->equal, name);
    visit(node->child, isRoot ? "" : name + "/");
    if (node->key == nullptr) continue;
    const ModelKey& key = *node->key;
    DecodedKey decoded = {key.owner,
                          key.permission,
                          (key.isDefaultSet ? 1u : 0u) | (key.isRoot ? 2u : 0u) | key.watch << 2,
                          key.defaultValue,
                          {}};
    for (size_t i = key.values.size(); i > 0; --i) {
      const ModelValue& value = key.values[i - 1];
      const unsigned long long high = value.high;
      decoded.values.push_back({value.name, value.type, value.isSet, value.size, value.bytes,
                                value.type == 0 ? high << 32 | value.low : 0});
    }
    tree.emplace(name, decoded);
  }
  return tree;
}
