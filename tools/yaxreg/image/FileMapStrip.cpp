#include "tools/yaxreg/image/FileMapStrip.h"

#include <algorithm>

#include "registry/format/FileHeader.h"
#include "registry/format/TableRanges.h"
#include "registry/format/TernaryHeader.h"
#include "tools/yaxreg/image/FileMapLook.h"
#include "tools/yaxreg/image/Kinds.h"
#include "tools/yaxreg/image/Svg.h"
#include "tools/yaxreg/image/Wear.h"

namespace yaxreg {
namespace filemap {

using namespace draw;
using tamu::registry::AreaRange;
using tamu::registry::FileHeader;
using tamu::registry::RecordSizeOf;
using tamu::registry::TableRange;
using tamu::registry::TernaryHeader;

namespace {

constexpr char kHeadColour[] = "#8a96a3";
constexpr char kReservedColour[] = "#eceff2";

struct Piece {
  unsigned long long offset;
  unsigned long long size;
  std::string colour;
  std::string name;
};

std::vector<Piece> PiecesOf(const RegistryImage& image) {
  std::vector<Piece> pieces = {
      {FileHeader::kOffset, FileHeader::kSize, kHeadColour, "file header"},
      {FileHeader::kReservedArea, FileHeader::kReservedSize, kReservedColour, "reserved"},
      {TernaryHeader::kFileOffset, TernaryHeader::kSize, kHeadColour, "header of the tables"}};
  for (const NodeKind kind : kAllKinds) {
    const KindLook look = LookOf(kind);
    const std::vector<RegistryImage::Table>& tables = image.Tables(kind);
    for (size_t i = 0; i < tables.size(); ++i) {
      const std::string number = " " + Text(i) + " of " + KindNames(kind);
      const unsigned long long table = TableRange(tables[i].offset, tables[i].entries).size();
      const unsigned long long area =
          AreaRange(tables[i].area, tables[i].entries, RecordSizeOf(kind)).size();
      pieces.push_back({tables[i].offset, table, look.dark, "table" + number});
      pieces.push_back({tables[i].area, area, look.colour, "area" + number});
    }
  }
  std::sort(pieces.begin(), pieces.end(),
            [](const Piece& a, const Piece& b) { return a.offset < b.offset; });
  return pieces;
}

std::string DrawStripLegend() {
  double x = kMargin;
  const double y = kStripTop + kStripHeight + 38;
  std::string svg;
  for (const NodeKind kind : kAllKinds) {
    const KindLook look = LookOf(kind);
    const std::string text = "table and area of " + KindNames(kind);
    svg += Box(x, y - 11, 8, 13, Fill(look.dark)) + Box(x + 8, y - 11, 18, 13, Fill(look.colour));
    svg += Label(x + 33, y, "m", text);
    x += 82 + 6.8 * static_cast<double>(text.size());
  }
  svg +=
      Box(x, y - 11, 8, 13, Fill(kHeadColour)) + Box(x + 8, y - 11, 18, 13, Fill(kReservedColour));
  svg += Label(x + 33, y, "m", "headers and reserved");
  return svg;
}

}  // namespace

std::string DrawStrip(const RegistryImage& image) {
  const double length = static_cast<double>(std::max<size_t>(image.bytes().size(), 1));
  const double width = kWidth - 2 * kMargin;
  std::string svg = Label(kMargin, kStripTop - 12, "h", "The file");
  svg += Box(kMargin, kStripTop, width, kStripHeight, ClassOf("f")) + "\n";
  for (const Piece& piece : PiecesOf(image)) {
    const double offset = static_cast<double>(piece.offset);
    if (offset >= length) continue;
    const double size = std::min(static_cast<double>(piece.size), length - offset);
    svg += "<g><title>" + piece.name + ": " + Grouped(piece.size) + " bytes at " +
           Grouped(piece.offset) + "</title>" +
           Box(kMargin + offset / length * width, kStripTop, size / length * width, kStripHeight,
               Fill(piece.colour)) +
           "</g>\n";
  }
  svg += Box(kMargin, kStripTop, width, kStripHeight, ClassOf("o")) + "\n";
  svg += Label(kMargin, kStripTop + kStripHeight + 15, "n", "0");
  svg += Label(kWidth - kMargin, kStripTop + kStripHeight + 15, "n e",
               Grouped(image.bytes().size()) + " bytes");
  return svg + DrawStripLegend();
}

}  // namespace filemap
}  // namespace yaxreg
