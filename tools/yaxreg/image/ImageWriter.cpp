#include "tools/yaxreg/image/ImageWriter.h"

#include <algorithm>
#include <numeric>

#include "registry/format/FileLayout.h"
#include "registry/store/TernaryFile.h"
#include "tools/yaxreg/image/KeyRecords.h"
#include "tools/yaxreg/image/Kinds.h"

namespace yaxreg {

using tamu::registry::DataBlocksFor;
using tamu::registry::FileImage;
using tamu::registry::FileLayout;
using tamu::registry::kStoredOrder;
using tamu::registry::NodeLink;
using tamu::registry::TernaryFile;
using tamu::registry::TernaryKeyNode;
using tamu::registry::TernaryStringNode;
using tamu::registry::TernaryValueNode;

ImageWriter::ImageWriter(const Content& content, unsigned int firstEntries)
    : content_(content),
      names_(content, 0),
      image_(std::max(firstEntries, FileLayout(TernaryFile::kDefaultBudget).entryCount())) {
  if (!TakeSlots()) return;
  bytes_.assign(image_.PlaceTables(), '\0');
  image_.Begin(reinterpret_cast<unsigned char*>(&bytes_[0]), nodeIds_[0]);
  WriteNames();
  WriteKeys();
}

bool ImageWriter::TakeSlots() {
  const bool fits = TakeRecords(NodeKind::kString, names_.nodes().size() + 1, &nodeIds_) &&
                    TakeRecords(NodeKind::kKey, content_.keys.size(), &keyIds_) &&
                    TakeRecords(NodeKind::kValue, content_.ValueCount(), &valueIds_);
  return fits && (TakeBlocks(false) || TakeBlocks(true));
}

bool ImageWriter::TakeRecords(NodeKind kind, size_t count, std::vector<unsigned int>* ids) {
  ids->assign(count, 0);
  return std::all_of(ids->begin(), ids->end(),
                     [&](unsigned int& id) { return image_.Take(kind, 1, &id); });
}

// All blocks of a value lie in one table. Taking the largest values first leaves less room unused;
// taking them as they come keeps what is read together side by side.
bool ImageWriter::TakeBlocks(bool largestFirst) {
  std::vector<unsigned int> counts;
  for (const ContentKey& key : content_.keys) {
    for (auto value = key.values.rbegin(); value != key.values.rend(); ++value) {
      counts.push_back(DataBlocksFor(static_cast<unsigned int>(value->data.size())));
    }
  }
  std::vector<size_t> order(counts.size());
  std::iota(order.begin(), order.end(), size_t{0});
  if (largestFirst) {
    std::stable_sort(order.begin(), order.end(),
                     [&](size_t a, size_t b) { return counts[a] > counts[b]; });
  }
  firstBlocks_.assign(counts.size(), 0);
  FileImage withBlocks = image_;
  const bool fits = std::all_of(order.begin(), order.end(), [&](size_t value) {
    return counts[value] == 0 ||
           withBlocks.Take(NodeKind::kData, counts[value], &firstBlocks_[value]);
  });
  if (fits) image_ = withBlocks;
  return fits;
}

// The root's string node is the first one, those of the names follow.
void ImageWriter::WriteNames() {
  TernaryStringNode root;
  root.setHasKey(true);
  root.setKeyNode(keyIds_[0]);
  if (!names_.nodes().empty()) root.setChild(nodeIds_[1]);
  image_.Put(NodeKind::kString, nodeIds_[0], root.bytes());
  for (size_t i = 0; i < names_.nodes().size(); ++i) {
    const NameTree::Node& node = names_.nodes()[i];
    TernaryStringNode record = NameTree::RecordOf(node);
    for (const NodeLink link : kStoredOrder) {
      const size_t target = NameTree::LinkOf(node, link);
      if (target != NameTree::kNone) SetLink(&record, link, nodeIds_[target + 1]);
    }
    if (node.key != NameTree::kNone) record.setKeyNode(keyIds_[node.key]);
    image_.Put(NodeKind::kString, nodeIds_[i + 1], record.bytes());
  }
}

// Values are written oldest first, as they would have been created.
void ImageWriter::WriteKeys() {
  size_t written = 0;
  for (size_t i = 0; i < content_.keys.size(); ++i) {
    const ContentKey& key = content_.keys[i];
    unsigned int newest = 0;
    for (auto value = key.values.rbegin(); value != key.values.rend(); ++value) {
      WriteValue(*value, written, newest);
      newest = valueIds_[written++];
    }
    TernaryKeyNode record = KeyRecordOf(key);
    record.setFirstValue(newest);
    image_.Put(NodeKind::kKey, keyIds_[i], record.bytes());
  }
}

void ImageWriter::WriteValue(const ContentValue& value, size_t index, unsigned int next) {
  TernaryValueNode record = ValueRecordOf(value);
  record.setNextValue(next);
  if (!value.isNumber()) {
    const unsigned int block = firstBlocks_[index];
    record.setDataWord(block);
    const unsigned int size = static_cast<unsigned int>(value.data.size());
    if (block != 0) image_.PutData(block, value.data.data(), size);
  }
  image_.Put(NodeKind::kValue, valueIds_[index], record.bytes());
}

}  // namespace yaxreg
