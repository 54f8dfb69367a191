// Reads key records with their values and data.
#pragma once

#include <string>
#include <vector>

#include "registry/format/TernaryKeyNode.h"
#include "registry/format/TernaryValueNode.h"
#include "tools/yaxreg/image/RegistryImage.h"
#include "tools/yaxreg/image/SlotCounters.h"

namespace yaxreg {

class KeyReader {
 public:
  explicit KeyReader(RegistryImage& image);

  // Tells what leads to keys, one id a link, before they are read: so it is noticed where several
  // links lead to the same record.
  void Claim(const std::vector<unsigned int>& keyIds);

  // Reads the record with its values into *key; its name and depth stay. False, with a finding: it
  // cannot be read, or it belongs to another name.
  bool Read(unsigned int id, bool isRoot, const PathMaker& path, ContentKey* key);

  // True when there is a record, but all of it that means something is 0.
  bool IsEmpty(unsigned int id) const;

  // KeyReaderStrays.cpp. Records in use that nothing claimed leads to: keys, and the first values
  // of chains; none that are empty.
  bool HasStrays() const;
  std::vector<unsigned int> StrayKeys() const;
  std::vector<unsigned int> StrayValues() const;
  // The one stray key that is marked as the root key, 0 if there is none or more than one.
  unsigned int StrayRootKey() const;
  // Reads a chain of stray values into *key.
  void ReadStrayValues(unsigned int first, const PathMaker& path, ContentKey* key);

 private:
  // A record that several links lead to is read for two of them at most, so that a file cannot tell
  // of more than twice what fits in it.
  static constexpr unsigned int kMostCopies = 2;

  struct Chain {
    std::vector<unsigned int> ids;
    size_t own = 0;         // so many of them at the beginning nothing else leads to
    bool isShared = false;  // it leads to values that something else leads to
    std::string defect;     // why it ends too early; empty: it does not
  };

  void CountValues(unsigned int first);
  void CountBlocks(unsigned int first);
  std::vector<unsigned int> StraysOf(NodeKind kind) const;
  SlotCounters ValuesOfStrayKeys() const;
  bool HasStrayValues();
  bool IsTaken(unsigned int id, bool isRoot, bool hasRootFlag, const PathMaker& path);
  void CheckRecord(unsigned int id, const tamu::registry::TernaryKeyNode& record, bool isRoot,
                   const PathMaker& path);

  // KeyReaderValues.cpp
  Chain FollowValues(unsigned int first);
  void ReadValues(const tamu::registry::TernaryKeyNode& record, const PathMaker& path,
                  ContentKey* key);
  void TakeValues(const std::vector<unsigned int>& ids, const PathMaker& path, ContentKey* key);
  void CheckCount(size_t counted, size_t found, const PathMaker& path);
  bool ReadValue(unsigned int id, const PathMaker& path, ContentValue* value);
  bool IsPossible(const tamu::registry::TernaryValueNode& record, const std::string& name,
                  const PathMaker& path);
  bool ReadData(const tamu::registry::TernaryValueNode& record, const std::string& name,
                const PathMaker& path, ContentValue* value);
  std::vector<unsigned int> BlocksOf(const tamu::registry::TernaryValueNode& record,
                                     const std::string& name, const PathMaker& path);
  bool CollectBlocks(unsigned int first, std::vector<unsigned int>* blocks) const;

  RegistryImage& image_;
  SlotCounters keyLinks_;
  SlotCounters keysTaken_;
  SlotCounters valueLinks_;
  SlotCounters valuesTaken_;
  SlotCounters valuesMet_;  // in chains that lead to them beside another one
  SlotCounters blockLinks_;
  SlotNumbers<unsigned int> metInChain_;  // the last chain in which the value was met
  unsigned int chains_ = 0;
  enum class Known { kNot, kNo, kYes };
  Known hasStrayValues_ = Known::kNot;  // values in use that no key in use leads to
};

}  // namespace yaxreg
