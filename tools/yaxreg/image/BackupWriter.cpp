#include "tools/yaxreg/image/BackupWriter.h"

#include <vector>

#include "tools/yaxreg/image/KeyRecords.h"
#include "tools/yaxreg/image/NameTree.h"

namespace yaxreg {

using tamu::registry::kNodeLinks;
using tamu::registry::kStoredOrder;
using tamu::registry::NodeLink;
using tamu::registry::TernaryKeyNode;
using tamu::registry::TernaryStringNode;
using tamu::registry::TernaryValueNode;

namespace {

constexpr char kComplete = 1;            // the first byte
constexpr unsigned int kSomeId = 0x100;  // ids in a stream only tell that something follows

template <class Stored>
void Append(const Stored& record, std::string* stream) {
  stream->append(reinterpret_cast<const char*>(record.bytes()), Stored::kSize);
}

void AppendKey(const ContentKey& key, std::string* stream) {
  TernaryKeyNode record = KeyRecordOf(key);
  if (!key.values.empty()) record.setFirstValue(kSomeId);
  Append(record, stream);
  for (size_t i = 0; i < key.values.size(); ++i) {
    const ContentValue& value = key.values[i];
    TernaryValueNode stored = ValueRecordOf(value);
    if (i + 1 < key.values.size()) stored.setNextValue(kSomeId);
    if (!value.data.empty()) stored.setDataWord(kSomeId);
    Append(stored, stream);
    if (!value.isNumber()) stream->append(value.data);
  }
}

void AppendNode(const NameTree::Node& node, std::string* stream) {
  TernaryStringNode record = NameTree::RecordOf(node);
  for (const NodeLink link : kStoredOrder) {
    if (NameTree::LinkOf(node, link) != NameTree::kNone) SetLink(&record, link, kSomeId);
  }
  if (node.key != NameTree::kNone) record.setKeyNode(kSomeId);
  Append(record, stream);
}

}  // namespace

std::string BackupOf(const Content& content, size_t key) {
  // A node is followed by what its links lead to, and then by its key.
  struct Step {
    size_t node;
    unsigned int nextLink;  // index in kStoredOrder
  };
  const NameTree names(content, key);
  std::string stream(1, kComplete);
  std::vector<Step> steps;
  if (!names.nodes().empty()) {
    AppendNode(names.nodes()[0], &stream);
    steps.push_back({0, 0});
  }
  while (!steps.empty()) {
    Step& step = steps.back();
    const NameTree::Node& node = names.nodes()[step.node];
    if (step.nextLink < kNodeLinks) {
      const size_t target = NameTree::LinkOf(node, kStoredOrder[step.nextLink++]);
      if (target == NameTree::kNone) continue;
      AppendNode(names.nodes()[target], &stream);
      steps.push_back({target, 0});
      continue;
    }
    if (node.key != NameTree::kNone) AppendKey(content.keys[node.key], &stream);
    steps.pop_back();
  }
  AppendKey(content.keys[key], &stream);
  return stream;
}

}  // namespace yaxreg
