// A registry file as bytes: its header, its allocation tables and its free lists, decoded without
// the library, so that the library can be checked against it.
#pragma once

#include <string>
#include <vector>

class RegistryImage {
 public:
  enum Kind { kStrings, kKeys, kValues, kBlocks };
  static constexpr unsigned kKinds = 4;

  struct Table {
    unsigned offset;              // of the table in the file
    unsigned area;                // of slot 0 of its area
    unsigned entries;             // slot 0 included
    std::vector<bool> isFree;     // by slot
    std::vector<bool> isReached;  // by slot, set by Claim
  };

  // Reads the file and decodes the tables; what is wrong is in findings().
  explicit RegistryImage(const std::string& path);

  // False when the headers cannot be trusted: nothing else of the file is then decoded.
  bool isUsable() const { return usable_; }
  unsigned StartNode() const { return U32(4180 + 28); }
  const std::vector<Table>& Tables(Kind kind) const { return tables_[kind]; }
  static unsigned RecordSize(Kind kind);

  // Little-endian numbers at a file offset; 0 beyond the end of the file.
  unsigned U8(unsigned offset) const;
  unsigned U16(unsigned offset) const { return U8(offset) | U8(offset + 1) << 8; }
  unsigned U32(unsigned offset) const { return U16(offset) | U16(offset + 2) << 16; }
  unsigned long long U64(unsigned offset) const;
  std::string Bytes(unsigned offset, unsigned size) const;

  // The file offset of the record that `id` names, which counts as reached from now on. 0 with a
  // finding when there is no such slot, or it is free, or it was reached before.
  unsigned Claim(Kind kind, unsigned id);
  // The next block behind `id` in its chain; 0 at the chain's end.
  unsigned NextBlock(unsigned id) const;
  // Whether the slot exists.
  bool Exists(Kind kind, unsigned id) const;

  void Report(const std::string& finding) { findings_.push_back(finding); }
  const std::vector<std::string>& findings() const { return findings_; }

  // "key node 0x100"
  static std::string Name(Kind kind, unsigned id);

 private:
  void CheckFileHeader();
  void CheckHeader();
  void LoadTables(Kind kind);
  bool LoadTable(Kind kind, unsigned offset, const std::string& name);
  void WalkFreeList(Kind kind, unsigned freeCount, Table* table, const std::string& name);
  void CheckEntries(Kind kind, const Table& table, const std::string& name);
  void CheckOverlaps();
  void Expect(bool holds, const std::string& finding);

  std::string bytes_;
  bool usable_ = false;
  std::vector<Table> tables_[kKinds];
  std::vector<std::string> findings_;
};
