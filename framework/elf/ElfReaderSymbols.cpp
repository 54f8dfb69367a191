#include <elf.h>

#include <algorithm>
#include <cstring>

#include "framework/elf/ElfReader.h"

namespace yax_elf {

namespace {

// Bytes of a table. Larger ones than any shared object has are not read: a sparse file can claim
// terabytes.
constexpr unsigned long long kMaxTable = 64u << 20;
constexpr std::size_t kPiece = 3072;  // bytes read at once: whole symbols of either size
constexpr unsigned int kMachineAlpha = 0x9026;
constexpr unsigned int kSectionSize32 = 40;
constexpr unsigned int kSectionSize64 = 64;

}  // namespace

// The strings are searched for the names first, so that only numbers have to be compared for each
// symbol. Compilers let a name share the end of a longer one; of a damaged file that has it more
// often than kMaxPlaces, the others are not seen.
bool ElfReader::FindFunctions(const char* const* names, unsigned int count, bool* found) {
  for (unsigned int i = 0; i < count; ++i) found[i] = false;
  Tables tables;
  Places places;
  return FindTables(&tables) && tables.symbols.size <= kMaxTable &&
         tables.strings.size <= kMaxTable && FindNames(tables.strings, names, count, &places) &&
         FindSymbols(tables.symbols, places, found);
}

bool ElfReader::FindSymbols(const Part& symbols, const Places& places, bool* found) {
  static_assert(kPiece % 24 == 0 && kPiece % 16 == 0, "whole symbols");
  unsigned char piece[kPiece];
  const unsigned long long end = symbols.size / SymbolSize() * SymbolSize();
  for (unsigned long long at = 0; at < end; at += kPiece) {
    const std::size_t size =
        static_cast<std::size_t>(std::min<unsigned long long>(kPiece, end - at));
    if (!Read(symbols.offset + at, size, piece)) return false;
    for (std::size_t i = 0; i < size; i += SymbolSize()) {
      if (!IsExportedFunction(&piece[i])) continue;
      const unsigned long long name = Number(&piece[i], 4);
      for (unsigned int place = 0; place < places.count; ++place) {
        if (places.offsets[place] == name) found[places.names[place]] = true;
      }
    }
  }
  return true;
}

bool ElfReader::IsExportedFunction(const unsigned char* symbol) const {
  const unsigned int info = symbol[machine_.is64 ? 4 : 12];
  const unsigned int visibility = symbol[machine_.is64 ? 5 : 13] & 0x03u;
  const unsigned int section =
      static_cast<unsigned int>(Number(symbol + (machine_.is64 ? 6 : 14), 2));
  const unsigned int binding = info >> 4;
  const unsigned int type = info & 0x0Fu;
  return section != SHN_UNDEF && (binding == STB_GLOBAL || binding == STB_WEAK) &&
         (type == STT_NOTYPE || type == STT_FUNC || type == STT_GNU_IFUNC) &&
         (visibility == STV_DEFAULT || visibility == STV_PROTECTED);
}

// Each piece is read with the beginning of the next one, in which a name may end.
bool ElfReader::FindNames(const Part& strings, const char* const* names, unsigned int count,
                          Places* places) {
  char piece[kPiece + kMaxName];
  for (unsigned long long at = 0; at < strings.size; at += kPiece) {
    const std::size_t size =
        static_cast<std::size_t>(std::min<unsigned long long>(sizeof piece, strings.size - at));
    if (!Read(strings.offset + at, size, reinterpret_cast<unsigned char*>(piece))) return false;
    for (unsigned int i = 0; i < count; ++i) {
      const std::size_t length = std::strlen(names[i]) + 1;
      for (std::size_t from = 0; from < size && places->count < kMaxPlaces; ++from) {
        const void* where = memmem(piece + from, size - from, names[i], length);
        if (where == nullptr) break;
        from = static_cast<std::size_t>(static_cast<const char*>(where) - piece);
        if (from >= kPiece) break;
        places->offsets[places->count] = at + from;
        places->names[places->count++] = i;
      }
    }
  }
  return true;
}

// What a loader uses comes first; section headers may have been stripped.
bool ElfReader::FindTables(Tables* tables) {
  return (hasDynamic_ && DynamicTables(tables)) || SectionTables(tables);
}

bool ElfReader::DynamicTables(Tables* tables) {
  unsigned long long count = 0;
  if (!PartAt(dynamic_.symbols, &tables->symbols) || !PartAt(dynamic_.strings, &tables->strings) ||
      !CountSymbols(&count)) {
    return false;
  }
  if (count > tables->symbols.size / SymbolSize()) return false;
  if (dynamic_.stringsSize > tables->strings.size) return false;
  tables->symbols.size = count * SymbolSize();
  tables->strings.size = dynamic_.stringsSize;
  return true;
}

bool ElfReader::CountSymbols(unsigned long long* count) {
  if (dynamic_.gnuHash != 0) return CountByGnuHash(count);
  if (dynamic_.hash != 0) return CountByHash(count);
  *count = dynamic_.mipsSymbols;
  return dynamic_.mipsSymbols != 0;
}

// The table's second number; two machines have numbers of 64 bits there.
bool ElfReader::CountByHash(unsigned long long* count) {
  const bool isWide =
      machine_.is64 && (machine_.number == EM_S390 || machine_.number == kMachineAlpha);
  const unsigned int size = isWide ? 8 : 4;
  Part table;
  unsigned char numbers[16];
  if (!PartAt(dynamic_.hash, &table) || table.size < 2 * size) return false;
  if (!Read(table.offset, 2 * size, numbers)) return false;
  *count = Number(numbers + size, size);
  return true;
}

// This table does not tell the count: the symbols end with the last one of the last bucket.
bool ElfReader::CountByGnuHash(unsigned long long* count) {
  Part table;
  unsigned char head[16];
  if (!PartAt(dynamic_.gnuHash, &table) || table.size < sizeof head) return false;
  if (!Read(table.offset, sizeof head, head)) return false;
  const unsigned long long buckets = Number(head, 4);
  const unsigned long long first = Number(head + 4, 4);  // symbols that are not in the table
  const unsigned long long before = sizeof head + Number(head + 8, 4) * (machine_.is64 ? 8 : 4);
  table.size = std::min(table.size, kMaxTable);
  if (before > table.size || buckets * 4 > table.size - before) return false;
  unsigned long long last = 0;
  if (!LastOfBuckets({table.offset + before, buckets * 4}, &last)) return false;
  if (last < first) {
    *count = first;
    return true;
  }
  unsigned char piece[1024];
  for (unsigned long long at = before + (buckets + last - first) * 4; at < table.size;) {
    const std::size_t size = static_cast<std::size_t>(
        std::min<unsigned long long>(sizeof piece, (table.size - at) / 4 * 4));
    if (size == 0 || !Read(table.offset + at, size, piece)) return false;
    for (std::size_t i = 0; i < size; i += 4, ++last) {
      if ((Number(piece + i, 4) & 1) == 0) continue;
      *count = last + 1;
      return true;
    }
    at += size;
  }
  return false;
}

bool ElfReader::LastOfBuckets(Part buckets, unsigned long long* last) {
  unsigned char piece[4096];
  for (unsigned long long at = 0; at < buckets.size; at += sizeof piece) {
    const std::size_t size =
        static_cast<std::size_t>(std::min<unsigned long long>(sizeof piece, buckets.size - at));
    if (!Read(buckets.offset + at, size, piece)) return false;
    for (std::size_t i = 0; i + 4 <= size; i += 4) *last = std::max(*last, Number(piece + i, 4));
  }
  return true;
}

bool ElfReader::SectionTables(Tables* tables) {
  if (sectionSize_ != (machine_.is64 ? kSectionSize64 : kSectionSize32)) return false;
  for (unsigned int i = 0; i < sectionCount_; ++i) {
    unsigned int type = 0;
    unsigned int link = 0;
    if (!ReadSection(i, &type, &link, &tables->symbols)) return false;
    if (type != SHT_DYNSYM) continue;
    unsigned int unused = 0;
    return link < sectionCount_ && ReadSection(link, &type, &unused, &tables->strings) &&
           type == SHT_STRTAB && IsInside(tables->symbols.offset, tables->symbols.size) &&
           IsInside(tables->strings.offset, tables->strings.size);
  }
  return false;
}

bool ElfReader::ReadSection(unsigned long long index, unsigned int* type, unsigned int* link,
                            Part* part) {
  unsigned char record[kSectionSize64];
  const unsigned long long within = index * sectionSize_;
  if (!IsInside(sectionsOffset_, within) || !Read(sectionsOffset_ + within, sectionSize_, record)) {
    return false;
  }
  *type = static_cast<unsigned int>(Number(record + 4, 4));
  part->offset = Word(record + (machine_.is64 ? 24 : 16));
  part->size = Word(record + (machine_.is64 ? 32 : 20));
  *link = static_cast<unsigned int>(Number(record + (machine_.is64 ? 40 : 24), 4));
  return true;
}

}  // namespace yax_elf
