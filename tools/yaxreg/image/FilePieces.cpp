#include "tools/yaxreg/image/FilePieces.h"

#include <algorithm>

#include "registry/format/FileHeader.h"
#include "registry/format/TableRanges.h"
#include "registry/format/TernaryHeader.h"
#include "tools/yaxreg/image/Kinds.h"
#include "tools/yaxreg/image/Wear.h"

namespace yaxreg {

using tamu::registry::AreaRange;
using tamu::registry::FileHeader;
using tamu::registry::RecordSizeOf;
using tamu::registry::TableRange;
using tamu::registry::TernaryHeader;

std::vector<FilePiece> PiecesOf(const RegistryImage& image) {
  constexpr NodeKind kNone = NodeKind::kString;
  std::vector<FilePiece> pieces = {
      {FileHeader::kOffset, FileHeader::kSize, FilePart::kHeader, kNone, "file header"},
      {FileHeader::kReservedArea, FileHeader::kReservedSize, FilePart::kReserved, kNone,
       "reserved"},
      {TernaryHeader::kFileOffset, TernaryHeader::kSize, FilePart::kHeader, kNone,
       "header of the tables"}};
  for (const NodeKind kind : kAllKinds) {
    const std::vector<RegistryImage::Table>& tables = image.Tables(kind);
    for (size_t i = 0; i < tables.size(); ++i) {
      const std::string number = " " + std::to_string(i) + " of " + KindNames(kind);
      const unsigned long long table = TableRange(tables[i].offset, tables[i].entries).size();
      const unsigned long long area =
          AreaRange(tables[i].area, tables[i].entries, RecordSizeOf(kind)).size();
      pieces.push_back({tables[i].offset, table, FilePart::kTable, kind, "table" + number});
      pieces.push_back({tables[i].area, area, FilePart::kArea, kind, "area" + number});
    }
  }
  std::sort(pieces.begin(), pieces.end(),
            [](const FilePiece& a, const FilePiece& b) { return a.offset < b.offset; });
  return pieces;
}

}  // namespace yaxreg
