#include "registry/memtree/TernaryValue.h"

#include <memory>
#include <new>
#include <utility>

#include "platform/PCMem.h"
#include "registry/keytree/ValueRecords.h"

namespace tamu::registry {

TernaryValue::TernaryValue(ValueId valueId, const TernaryValueNode& record)
    : id(valueId), node(record), data(node.data()) {}

TernaryValue::TernaryValue(ValueId valueId, TernaryValueNode* record)
    : TernaryValue(valueId, *std::unique_ptr<TernaryValueNode>(record)) {}

TernaryValue::TernaryValue(Value*) {}

TernaryValue::~TernaryValue() {
  DeleteData();
}

unsigned int TernaryValue::SetValue(const char* name, unsigned long long number, bool isSet) {
  FillRecord(&node, name, number, isSet);
  DeleteData();
  data = node.data();
  return status::kOk;
}

// The data may be this value's own: it is copied before that is given up.
unsigned int TernaryValue::SetValue(const char* name, const Value* v, DataId dataId) {
  if (v->type > kValueTypeMax) return status::kNoData;
  unsigned char* bytes = nullptr;
  if (v->type != kValueTypeInteger) {
    bytes = new (std::nothrow) unsigned char[v->size];
    if (bytes == nullptr) return status::kNoMemory;
    PCMem::Copy(bytes, v->data, v->size);
  }
  FillRecord(&node, name, *v, dataId);
  DeleteData();
  data = bytes != nullptr ? bytes : node.data();
  ownsData = bytes != nullptr ? 1 : 0;
  return status::kOk;
}

// A number that the file says to be longer than eight bytes has no more than these.
unsigned int TernaryValue::GetValue(Value* out) const {
  if (!node.isSet()) return status::kNoData;
  if (out->type != kValueTypeAny && out->type != node.type()) return status::kBadArgument;
  const unsigned int size = node.dataSize();
  unsigned char* copy = new (std::nothrow) unsigned char[size]();
  if (copy == nullptr) return status::kNoMemory;
  const bool isInline = data == node.data();
  const unsigned int there =
      isInline && size > TernaryValueNode::kInlineSize ? TernaryValueNode::kInlineSize : size;
  if (data != nullptr) PCMem::Copy(copy, data, there);
  out->type = node.type();
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

// Data that lies in a record goes with it.
void TernaryValue::Exchange(TernaryValue& other) {
  const bool isHere = data == node.data();
  const bool isThere = other.data == other.node.data();
  std::swap(node, other.node);
  std::swap(data, other.data);
  std::swap(ownsData, other.ownsData);
  if (isThere) data = node.data();
  if (isHere) other.data = other.node.data();
}

void TernaryValue::DeleteData() {
  if (ownsData != 0) delete[] data;
  ownsData = 0;
  data = nullptr;
}

DataId TernaryValue::GetDataId() const {
  return node.isInBlocks() ? node.dataWord() : 0;
}

}  // namespace tamu::registry
