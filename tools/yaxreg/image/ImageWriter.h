// Makes a registry file of a content, without anything that is not needed.
#pragma once

#include <string>
#include <vector>

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
  // The slots of one kind: which are used, and where their tables lie.
  struct Tables {
    std::vector<unsigned int> used;     // slots, by table
    std::vector<unsigned int> offsets;  // of the tables in the file
    std::vector<unsigned int> areas;    // of their slots 0
  };

  bool CountRecords();
  bool PlaceBlocks(bool largestFirst);
  bool PlaceValueBlocks(unsigned int count, unsigned int* id);
  bool Fill(NodeKind kind, size_t count);
  void PlaceTables();
  void WriteHeaders();
  void WriteTables(NodeKind kind);
  void WriteNames();
  void WriteKeys();
  void WriteValue(const ContentValue& value, size_t index, unsigned int next);
  void WriteData(const ContentValue& value, unsigned int id);
  unsigned int EntriesOf(size_t table) const;
  // The id of the record that is written as the i-th of its kind, 0 for kNone.
  unsigned int IdOf(size_t index) const;
  template <class Stored>
  void Put(NodeKind kind, unsigned int id, const Stored& record);
  void PutWord(unsigned long long offset, unsigned int word);
  Tables& Of(NodeKind kind) { return tables_[static_cast<unsigned int>(kind)]; }

  const Content& content_;
  NameTree names_;
  unsigned int firstEntries_;
  Tables tables_[kNodeKinds];
  std::vector<unsigned int> firstBlocks_;  // by value, in the order in which they are written
  std::string bytes_;
};

}  // namespace yaxreg
