// Makes a registry file of a content, without anything that is not needed.
#pragma once

#include <string>
#include <vector>

#include "registry/format/FileImage.h"
#include "tools/yaxreg/image/Content.h"
#include "tools/yaxreg/image/NameTree.h"
#include "tools/yaxreg/image/RegistryImage.h"

namespace yaxreg {

class ImageWriter {
 public:
  // `firstEntries`: entries of each of the first tables; 0: as in a new registry.
  explicit ImageWriter(const Content& content, unsigned int firstEntries = 0);

  // The bytes of the file. Empty when there are more records than a file can hold.
  const std::string& bytes() const { return bytes_; }

 private:
  bool TakeSlots();
  bool TakeRecords(NodeKind kind, size_t count, std::vector<unsigned int>* ids);
  bool TakeBlocks(bool largestFirst);
  void WriteNames();
  void WriteKeys();
  void WriteValue(const ContentValue& value, size_t index, unsigned int next);

  const Content& content_;
  NameTree names_;
  tamu::registry::FileImage image_;
  // In the order in which they are written: the root's node first, values oldest first.
  std::vector<unsigned int> nodeIds_;
  std::vector<unsigned int> keyIds_;
  std::vector<unsigned int> valueIds_;
  std::vector<unsigned int> firstBlocks_;  // by value
  std::string bytes_;
};

}  // namespace yaxreg
