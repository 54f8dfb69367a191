#include "tests/support/ModelTree.h"

namespace model {

char At(const std::string& path, size_t p) {
  return p < path.size() ? path[p] : '\0';
}

bool IsLower(char a, char b) {
  return static_cast<signed char>(a) < static_cast<signed char>(b);
}

unsigned Word(const std::string& bytes, size_t from) {
  unsigned word = 0;
  for (size_t i = from; i < from + 4 && i < bytes.size(); ++i) {
    word |= static_cast<unsigned>(static_cast<unsigned char>(bytes[i])) << (8 * (i - from));
  }
  return word;
}

std::string Bytes(unsigned number, unsigned width) {
  std::string bytes;
  for (unsigned i = 0; i < width; ++i) bytes += static_cast<char>(number >> (8 * i) & 0xFF);
  return bytes;
}

unsigned BlocksOf(const std::string& bytes) {
  return static_cast<unsigned>((bytes.size() + 63) / 64);
}

void AddKey(const ModelKey& key, ModelCounts* counts) {
  ++counts->keys;
  counts->values += static_cast<unsigned>(key.values.size());
  for (const ModelValue& value : key.values) {
    counts->blocks += BlocksOf(value.bytes);
    counts->dataBytes += static_cast<unsigned>(value.bytes.size());
  }
}

void AddTree(const ModelNode* node, ModelCounts* counts) {
  if (node == nullptr) return;
  ++counts->strings;
  if (node->key != nullptr) AddKey(*node->key, counts);
  for (const auto* link : {&node->lo, &node->hi, &node->equal, &node->child}) {
    AddTree(link->get(), counts);
  }
}

unsigned KeysBeside(const ModelNode* node) {
  if (node == nullptr) return 0;
  return (node->key != nullptr ? 1 : 0) + KeysBeside(node->lo.get()) + KeysBeside(node->hi.get()) +
         KeysBeside(node->equal.get());
}

void ListNames(const ModelNode* node, const std::string& before, std::vector<std::string>* names) {
  if (node == nullptr) return;
  ListNames(node->hi.get(), before + node->run, names);
  ListNames(node->lo.get(), before + node->run, names);
  const std::string name = before + node->run + node->branch;
  ListNames(node->equal.get(), name, names);
  ListNames(node->child.get(), name + '/', names);
  if (node->key != nullptr) names->push_back(name);
}

std::vector<std::string> ValueNames(const ModelKey& key) {
  std::vector<std::string> names;
  for (size_t i = key.values.size(); i > 0; --i) names.push_back(key.values[i - 1].name);
  return names;
}

unsigned HandOut(const std::vector<std::string>& all, unsigned first, unsigned capacity,
                 std::vector<std::string>* names, size_t tooLong) {
  for (size_t i = 0; i < all.size(); ++i) {
    if (all[i].size() >= tooLong) return 75;
    if (i < first) continue;
    if (names->size() == capacity) return capacity == 0 ? 12 : 75;
    names->push_back(all[i]);
  }
  return 0;
}

}  // namespace model
