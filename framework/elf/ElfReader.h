// Reads what a shared object tells of itself: its machine, the functions that it exports, its
// notes.
#pragma once

#include <cstddef>

#include "framework/elf/ElfMachine.h"

namespace yax_elf {

// The bytes of a file, of which only those are read that are needed.
class ElfSource {
 public:
  // Reads `size` bytes, which lie inside of length(). False when they cannot be read.
  virtual bool Read(unsigned long long offset, std::size_t size, unsigned char* to) const = 0;
  virtual unsigned long long length() const = 0;

 protected:
  ~ElfSource() = default;
};

// An ELF file of 32 or 64 bits, in either byte order. Whatever is in the bytes, every offset and
// count is checked before it is used. Nothing is allocated; a call needs some 10 KiB of stack at
// most.
class ElfReader {
 public:
  // Reads the headers. Not longer than `source` lives.
  explicit ElfReader(const ElfSource& source);

  // What is wrong with it as a shared object, in words: it is no ELF file, cut off, a program.
  // Empty when nothing is.
  const char* problem() const { return problem_; }
  bool IsGood() const { return problem_[0] == '\0'; }
  // True when its machine is known, whatever the problem.
  bool HasMachine() const { return hasMachine_; }
  const ElfMachine& machine() const { return machine_; }
  unsigned int type() const { return type_; }  // e_type
  // Bytes that should be there could not be read.
  bool hasReadFailed() const { return hasReadFailed_; }

  // Looks for `count` functions that it exports: defined, global or weak, of default or protected
  // visibility. found[i] tells of names[i], each at most kMaxName characters long. False when the
  // table of symbols is damaged.
  static constexpr std::size_t kMaxName = 63;
  bool FindFunctions(const char* const* names, unsigned int count, bool* found);
  // The first note of a name and type: copies `room` bytes of it at most. Answers its size, 0 when
  // there is none.
  unsigned int FindNote(const char* name, unsigned int type, unsigned char* to, unsigned int room);
  // A number of the file, in its order of bytes.
  unsigned long long Number(const unsigned char* at, unsigned int size) const;

 private:
  static constexpr unsigned int kMaxSegments = 32;  // that matter; a dozen are usual
  static constexpr unsigned int kMaxPlaces = 64;    // at which names may lie among the strings
  // A part of the file that lies inside of it.
  struct Part {
    unsigned long long offset = 0;
    unsigned long long size = 0;
  };
  struct Segment {
    unsigned int type = 0;
    unsigned long long address = 0;
    unsigned long long alignment = 0;
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
  // Where names lie in the table of strings, and which of them.
  struct Places {
    unsigned int count = 0;
    unsigned long long offsets[kMaxPlaces];
    unsigned int names[kMaxPlaces];
  };
  struct Note;

  bool Read(unsigned long long offset, std::size_t size, unsigned char* to);
  bool IsInside(unsigned long long offset, unsigned long long size) const;
  unsigned long long Word(const unsigned char* at) const {
    return Number(at, machine_.is64 ? 8 : 4);
  }
  unsigned int SymbolSize() const { return machine_.is64 ? 24 : 16; }

  const char* ReadHeader();
  const char* ProblemOfType() const;
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

  bool FindNames(const Part& strings, const char* const* names, unsigned int count, Places* places);
  bool FindSymbols(const Part& symbols, const Places& places, bool* found);
  bool IsExportedFunction(const unsigned char* symbol) const;
  bool ReadNote(const Segment& segment, unsigned long long at, Note* note);

  const ElfSource& source_;
  const char* problem_ = "";
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
  unsigned int keptSegments_ = 0;
  Segment segments_[kMaxSegments];  // those that are loaded, the dynamic one, and those of notes
  bool hasDynamic_ = false;
  Dynamic dynamic_;
};

}  // namespace yax_elf
