// Reads what a shared object tells of itself: its machine and the functions that it exports.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tools/yaxreg/components/ElfMachine.h"

namespace yaxreg {

// The bytes of a file, of which only those are read that are needed.
struct ElfBytes {
  unsigned long long length = 0;
  // Reads `size` bytes, which lie inside of `length`. False when they cannot be read.
  std::function<bool(unsigned long long offset, size_t size, unsigned char* to)> read;
};

// An ELF file of 32 or 64 bits, in either byte order. Whatever is in the bytes, every offset and
// count is checked before it is used, and a few kilobytes are kept in memory at most.
class ElfFile {
 public:
  // Reads the headers. Not longer than `bytes` lives.
  explicit ElfFile(const ElfBytes& bytes);

  // What is wrong with it as a shared object, in words: it is no ELF file, cut off, a program.
  // Empty when nothing is.
  const std::string& problem() const { return problem_; }
  // True when its machine is known, whatever the problem.
  bool HasMachine() const { return hasMachine_; }
  const ElfMachine& machine() const { return machine_; }
  unsigned int type() const { return type_; }  // e_type
  // Bytes that should be there could not be read.
  bool hasReadFailed() const { return hasReadFailed_; }

  // Looks for functions that it exports: defined, global or weak, of default or protected
  // visibility. By name, false where there is none. Empty when the table of symbols is damaged.
  std::vector<bool> FindFunctions(const std::vector<std::string>& names);

 private:
  // A part of the file that lies inside of it.
  struct Part {
    unsigned long long offset = 0;
    unsigned long long size = 0;
  };
  struct Segment {
    unsigned int type = 0;
    unsigned long long address = 0;
    Part part;
  };
  // What the dynamic segment tells: addresses, 0 for none.
  struct Dynamic {
    unsigned long long symbols = 0;
    unsigned long long strings = 0;
    unsigned long long stringsSize = 0;
    unsigned long long hash = 0;
    unsigned long long gnuHash = 0;
    unsigned long long mipsSymbols = 0;  // their number
    unsigned long long flags = 0;
  };
  struct Tables {
    Part symbols;
    Part strings;
  };
  // Where a string lies in the table of strings, and which of the names it is.
  struct NamePlace {
    unsigned long long offset;
    size_t name;
  };

  bool Read(unsigned long long offset, size_t size, unsigned char* to);
  bool IsInside(unsigned long long offset, unsigned long long size) const;
  unsigned long long Number(const unsigned char* at, unsigned int size) const;
  unsigned long long Word(const unsigned char* at) const {
    return Number(at, machine_.is64 ? 8 : 4);
  }
  unsigned int SymbolSize() const { return machine_.is64 ? 24 : 16; }

  std::string ReadHeader();
  bool ReadSegments();
  bool ReadSegment(unsigned long long offset, Segment* segment);
  void ReadDynamic();
  void TakeDynamicEntry(unsigned long long tag, unsigned long long value);
  bool PartAt(unsigned long long address, Part* part) const;

  bool FindTables(Tables* tables);
  bool DynamicTables(Tables* tables);
  bool SectionTables(Tables* tables);
  bool ReadSection(unsigned long long index, unsigned int* type, unsigned int* link, Part* part);
  bool CountSymbols(unsigned long long* count);
  bool CountByHash(unsigned long long* count);
  bool CountByGnuHash(unsigned long long* count);
  bool LastOfBuckets(Part buckets, unsigned long long* last);

  bool FindNames(const Part& strings, const std::vector<std::string>& names,
                 std::vector<NamePlace>* places);
  bool IsExportedFunction(const unsigned char* symbol) const;

  const ElfBytes& bytes_;
  std::string problem_;
  bool hasMachine_ = false;
  bool hasReadFailed_ = false;
  ElfMachine machine_;
  unsigned int type_ = 0;
  unsigned long long segmentsOffset_ = 0;
  unsigned long long sectionsOffset_ = 0;
  unsigned int segmentSize_ = 0;
  unsigned int segmentCount_ = 0;
  unsigned int sectionSize_ = 0;
  unsigned int sectionCount_ = 0;
  std::vector<Segment> segments_;  // those that are loaded, and the dynamic one
  bool hasDynamic_ = false;
  Dynamic dynamic_;
};

}  // namespace yaxreg
