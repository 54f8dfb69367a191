// Reads key records with their values and data.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "registry/store/TernaryKeyNode.h"
#include "registry/store/TernaryValueNode.h"
#include "tools/yaxreg/image/RegistryImage.h"
#include "tools/yaxreg/image/SlotCounters.h"

namespace yaxreg {

class KeyReader {
 public:
  using PathMaker = std::function<std::string()>;  // the path of a key, for findings

  // `keyIds`: the key of every string node that has one, as stored. What several of them lead to is
  // noticed in advance.
  KeyReader(RegistryImage& image, const std::vector<unsigned int>& keyIds);

  // Reads the record with its values into *key; its name and depth stay. False, with a finding: it
  // cannot be read, or it belongs to another name.
  bool Read(unsigned int id, bool isRoot, const PathMaker& path, ContentKey* key);

 private:
  struct Chain {
    std::vector<unsigned int> ids;
    size_t own = 0;      // so many of them at the beginning nothing else leads to
    std::string defect;  // why it ends too early; empty: it does not
  };

  void CountValues(unsigned int keyId);
  void CountBlocks(unsigned int valueId);
  bool HasStrayValues() const;
  SlotCounters ValuesOfStrayKeys() const;
  void CheckCount(size_t counted, size_t found, const PathMaker& path);
  bool IsTaken(unsigned int id, bool isRoot, bool hasRootFlag, const PathMaker& path);
  Chain FollowValues(unsigned int first);
  void ReadValues(const tamu::registry::TernaryKeyNode& record, const PathMaker& path,
                  ContentKey* key);
  bool ReadValue(unsigned int id, const PathMaker& path, ContentValue* value);
  bool IsPossible(const tamu::registry::TernaryValueNode& record, const std::string& name,
                  const PathMaker& path);
  bool ReadData(const tamu::registry::TernaryValueNode& record, const std::string& name,
                const PathMaker& path, ContentValue* value);
  bool CollectBlocks(unsigned int first, std::vector<unsigned int>* blocks) const;

  RegistryImage& image_;
  SlotCounters keyLinks_;
  SlotCounters keysTaken_;
  SlotCounters valueLinks_;
  SlotCounters valuesTaken_;
  SlotCounters blockLinks_;
  SlotNumbers<unsigned int> metInChain_;  // the last chain in which the value was met
  unsigned int chains_ = 0;
  bool hasStrayValues_ = false;  // values in use that no key in use leads to
};

}  // namespace yaxreg
