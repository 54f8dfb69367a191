#include "framework/elf/ElfReader.h"

#include <elf.h>

#include <cstring>

namespace yax_elf {

namespace {

constexpr unsigned int kIdentSize = 16;
constexpr unsigned int kHeaderSize32 = 52;
constexpr unsigned int kHeaderSize64 = 64;
constexpr unsigned int kSegmentSize32 = 32;
constexpr unsigned int kSegmentSize64 = 56;
constexpr unsigned int kMaxDynamicEntries = 4096;        // some dozen are usual
constexpr unsigned long long kFlagProgram = 0x08000000;  // in DT_FLAGS_1: a program, not a library
constexpr unsigned long long kTagMipsSymbols = 0x70000011;
constexpr char kCutOff[] = "is cut off or damaged";
constexpr char kProgram[] = "is a program, no shared object";

}  // namespace

ElfReader::ElfReader(const ElfSource& source) : source_(source) {
  problem_ = ReadHeader();
  if (IsGood()) problem_ = ProblemOfType();
  if (IsGood() && !ReadSegments()) problem_ = kCutOff;
  if (!IsGood()) return;
  ReadDynamic();
  if ((dynamic_.flags & kFlagProgram) != 0) problem_ = kProgram;
}

const char* ElfReader::ProblemOfType() const {
  if (type_ == ET_REL) return "is an object file, no shared object";
  if (type_ == ET_EXEC) return kProgram;
  if (type_ == ET_CORE) return "is a core dump, no shared object";
  return type_ == ET_DYN ? "" : "is no shared object";
}

bool ElfReader::IsInside(unsigned long long offset, unsigned long long size) const {
  return offset <= source_.length() && size <= source_.length() - offset;
}

bool ElfReader::Read(unsigned long long offset, std::size_t size, unsigned char* to) {
  if (!IsInside(offset, size)) return false;
  if (source_.Read(offset, size, to)) return true;
  hasReadFailed_ = true;
  return false;
}

unsigned long long ElfReader::Number(const unsigned char* at, unsigned int size) const {
  unsigned long long number = 0;
  for (unsigned int i = 0; i < size; ++i) {
    number = number << 8 | at[machine_.isBigEndian ? i : size - 1 - i];
  }
  return number;
}

// Answers the problem.
const char* ElfReader::ReadHeader() {
  unsigned char header[kHeaderSize64] = {};
  if (!Read(0, kIdentSize, header) || std::memcmp(header, ELFMAG, SELFMAG) != 0) {
    return "is no ELF file";
  }
  const unsigned int width = header[EI_CLASS];
  const unsigned int order = header[EI_DATA];
  if ((width != ELFCLASS32 && width != ELFCLASS64) ||
      (order != ELFDATA2LSB && order != ELFDATA2MSB)) {
    return "is an ELF file of an unknown class or byte order";
  }
  machine_.is64 = width == ELFCLASS64;
  machine_.isBigEndian = order == ELFDATA2MSB;
  if (!Read(0, machine_.is64 ? kHeaderSize64 : kHeaderSize32, header)) {
    return kCutOff;
  }
  type_ = static_cast<unsigned int>(Number(header + 16, 2));
  machine_.number = static_cast<unsigned int>(Number(header + 18, 2));
  hasMachine_ = true;
  segmentsOffset_ = Word(header + (machine_.is64 ? 32 : 28));
  sectionsOffset_ = Word(header + (machine_.is64 ? 40 : 32));
  const unsigned char* counts = header + (machine_.is64 ? 54 : 42);
  segmentSize_ = static_cast<unsigned int>(Number(counts, 2));
  segmentCount_ = static_cast<unsigned int>(Number(counts + 2, 2));
  sectionSize_ = static_cast<unsigned int>(Number(counts + 4, 2));
  sectionCount_ = static_cast<unsigned int>(Number(counts + 6, 2));
  return "";
}

bool ElfReader::ReadSegments() {
  if (segmentCount_ == 0) return true;
  if (segmentSize_ != (machine_.is64 ? kSegmentSize64 : kSegmentSize32)) return false;
  if (!IsInside(segmentsOffset_, 1ull * segmentCount_ * segmentSize_)) return false;
  for (unsigned int i = 0; i < segmentCount_; ++i) {
    Segment segment;
    if (!ReadSegment(segmentsOffset_ + 1ull * i * segmentSize_, &segment)) return false;
    if (segment.type != PT_LOAD && segment.type != PT_DYNAMIC && segment.type != PT_NOTE) continue;
    if (!IsInside(segment.part.offset, segment.part.size)) return false;
    if (keptSegments_ == kMaxSegments) return false;
    segments_[keptSegments_++] = segment;
  }
  return true;
}

bool ElfReader::ReadSegment(unsigned long long offset, Segment* segment) {
  unsigned char record[kSegmentSize64];
  if (!Read(offset, segmentSize_, record)) return false;
  segment->type = static_cast<unsigned int>(Number(record, 4));
  segment->part.offset = Word(record + (machine_.is64 ? 8 : 4));
  segment->address = Word(record + (machine_.is64 ? 16 : 8));
  segment->part.size = Word(record + (machine_.is64 ? 32 : 16));
  segment->alignment = Word(record + (machine_.is64 ? 48 : 28));
  return true;
}

void ElfReader::ReadDynamic() {
  for (unsigned int i = 0; i < keptSegments_; ++i) {
    const Segment& segment = segments_[i];
    if (segment.type != PT_DYNAMIC) continue;
    hasDynamic_ = true;
    const unsigned int word = machine_.is64 ? 8 : 4;
    unsigned char entry[16];
    for (unsigned long long at = 0, count = 0; count < kMaxDynamicEntries; at += 2 * word) {
      if (at + 2 * word > segment.part.size) return;
      if (!Read(segment.part.offset + at, 2 * word, entry) || Word(entry) == DT_NULL) return;
      TakeDynamicEntry(Word(entry), Word(entry + word));
      ++count;
    }
    return;
  }
}

void ElfReader::TakeDynamicEntry(unsigned long long tag, unsigned long long value) {
  if (tag == DT_SYMTAB) dynamic_.symbols = value;
  if (tag == DT_STRTAB) dynamic_.strings = value;
  if (tag == DT_STRSZ) dynamic_.stringsSize = value;
  if (tag == DT_HASH) dynamic_.hash = value;
  if (tag == DT_GNU_HASH) dynamic_.gnuHash = value;
  if (tag == DT_FLAGS_1) dynamic_.flags = value;
  if (tag == kTagMipsSymbols && machine_.number == EM_MIPS) dynamic_.mipsSymbols = value;
}

// The part of the file from an address on, to the end of its segment.
bool ElfReader::PartAt(unsigned long long address, Part* part) const {
  for (unsigned int i = 0; i < keptSegments_; ++i) {
    const Segment& segment = segments_[i];
    if (segment.type != PT_LOAD || address < segment.address) continue;
    const unsigned long long within = address - segment.address;
    if (within >= segment.part.size) continue;
    part->offset = segment.part.offset + within;
    part->size = segment.part.size - within;
    return true;
  }
  return false;
}

}  // namespace yax_elf
