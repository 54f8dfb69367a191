// Finds the tables of a registry file, also when some of what tells of them is damaged.
#pragma once

#include <string>
#include <vector>

#include "registry/format/FileLayout.h"
#include "registry/format/TableRanges.h"
#include "tools/yaxreg/image/RegistryImage.h"

namespace yaxreg {

// What a file tells of its tables it tells more than once: the header where the first ones lie,
// each table where it and its area lie and how many entries it has, and the tables that were
// appended follow each other without a gap. The reader takes what fits best and reports what does
// not.
class TableReader {
 public:
  explicit TableReader(RegistryImage& image) : image_(image) {}

  bool IsRegistry() const;
  void Run();

 private:
  using FileRange = tamu::registry::FileRange;

  // An appended table at its place in the file.
  struct Tile {
    NodeKind kind;
    unsigned int offset;
    unsigned int entries;

    FileRange table() const { return tamu::registry::TableRange(offset, entries); }
    FileRange area() const {
      return tamu::registry::AreaRange(table().end, entries, tamu::registry::RecordSizeOf(kind));
    }
  };

  void CheckHeaders();
  unsigned int GuessFirstEntries() const;
  unsigned int RateFirstEntries(unsigned int entries) const;
  void PlaceFirstTables(const tamu::registry::FileLayout& layout);
  void PlaceAppendedTables(unsigned int offset);
  unsigned int NextLinked(unsigned int offset) const;
  void ReportGrowth(unsigned int begin, unsigned int end);
  bool GuessTile(unsigned int offset, Tile* tile) const;
  unsigned int RateTile(const Tile& tile) const;
  bool IsLinked(const Tile& tile) const;
  bool IsUsed(const Tile& tile) const;
  void CheckLength(unsigned int end);
  void AddTable(const Tile& tile, unsigned long long area);
  void CheckTable(NodeKind kind, unsigned int number);
  void WalkFreeList(NodeKind kind, unsigned int number);
  void CheckEntries(NodeKind kind, unsigned int number);
  void Damage(const std::string& text) { image_.Report(Severity::kDamage, text); }

  RegistryImage& image_;
};

}  // namespace yaxreg
