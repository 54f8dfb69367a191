// What lies where in a file.
#pragma once

#include <string>
#include <vector>

#include "tools/yaxreg/image/RegistryImage.h"

namespace yaxreg {

enum class FilePart {
  kHeader,    // of the file, or of the tables
  kReserved,  // nothing is kept there
  kTable,     // which slots are free, and the chains of blocks
  kArea       // the records of a table
};

struct FilePiece {
  unsigned long long offset;
  unsigned long long size;
  FilePart part;
  NodeKind kind;     // of tables and areas
  std::string name;  // "area 0 of data blocks"
};

// In the order of their offsets. Those of a damaged file may overlap, or lie behind its end.
std::vector<FilePiece> PiecesOf(const RegistryImage& image);

}  // namespace yaxreg
