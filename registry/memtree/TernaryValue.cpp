#include "registry/memtree/TernaryValue.h"

#include <new>
#include <utility>

#include "platform/PCMem.h"

namespace tamu::registry {

TernaryValue::TernaryValue(unsigned int valueId, TernaryValueNode* record)
    : id(valueId), node(record), data(record->data()) {}

TernaryValue::TernaryValue(Value*) {}

TernaryValue::~TernaryValue() {
  DeleteData();
  delete node;
}

unsigned int TernaryValue::SetValue(const char* name, unsigned long long number, bool isSet) {
  node->setName(name);
  DeleteData();
  node->setInBlocks(false);
  node->setSet(isSet);
  node->setDataSize(TernaryValueNode::kInlineSize);
  node->setType(kValueTypeInteger);
  node->setNumber(number);
  data = node->data();
  return status::kOk;
}

// The copy is made before anything is given up: it may be of this value's own bytes.
unsigned int TernaryValue::SetValue(const char* name, const Value* v, unsigned int dataId) {
  if (v->type > kValueTypeMax) return status::kNoData;
  const bool isNumber = v->type == kValueTypeInteger;
  unsigned char number[TernaryValueNode::kInlineSize] = {};
  unsigned char* bytes = nullptr;
  if (isNumber) {
    PCMem::Copy(number, v->data, v->size < sizeof number ? v->size : sizeof number);
  } else {
    bytes = new (std::nothrow) unsigned char[v->size];
    if (bytes == nullptr) return status::kNoMemory;
    PCMem::Copy(bytes, v->data, v->size);
  }
  node->setName(name);
  DeleteData();
  node->setType(v->type);
  node->setSet(v->size != 0);
  node->setInBlocks(!isNumber);
  if (isNumber) {
    node->setDataSize(TernaryValueNode::kInlineSize);
    node->setNumber(GetU64(number));
    data = node->data();
  } else {
    node->setDataSize(v->size);
    node->setDataWord(dataId);
    data = bytes;
    ownsData = 1;
  }
  return status::kOk;
}

// A number that the file says to be longer than eight bytes has no more than these.
unsigned int TernaryValue::GetValue(Value* out) const {
  if (!node->isSet()) return status::kNoData;
  if (out->type != kValueTypeAny && out->type != node->type()) return status::kBadArgument;
  const unsigned int size = node->dataSize();
  unsigned char* copy = new (std::nothrow) unsigned char[size]();
  if (copy == nullptr) return status::kNoMemory;
  const bool isInline = data == node->data();
  const unsigned int there =
      isInline && size > TernaryValueNode::kInlineSize ? TernaryValueNode::kInlineSize : size;
  if (data != nullptr) PCMem::Copy(copy, data, there);
  out->type = node->type();
  out->size = size;
  out->data = copy;
  return status::kOk;
}

unsigned int TernaryValue::CreateData(unsigned int size) {
  unsigned char* bytes = new (std::nothrow) unsigned char[size]();
  if (bytes == nullptr) return status::kNoMemory;
  DeleteData();
  data = bytes;
  ownsData = 1;
  return status::kOk;
}

void TernaryValue::Exchange(TernaryValue& other) {
  std::swap(node, other.node);
  std::swap(data, other.data);
  std::swap(ownsData, other.ownsData);
}

void TernaryValue::DeleteData() {
  if (ownsData != 0) delete[] data;
  ownsData = 0;
  data = nullptr;
}

unsigned int TernaryValue::GetDataId() const {
  return node->isInBlocks() ? node->dataWord() : 0;
}

}  // namespace tamu::registry
