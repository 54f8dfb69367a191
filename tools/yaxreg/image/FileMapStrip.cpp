#include "tools/yaxreg/image/FileMapStrip.h"

#include <algorithm>

#include "tools/yaxreg/image/FileMapLook.h"
#include "tools/yaxreg/image/FilePieces.h"
#include "tools/yaxreg/image/Kinds.h"
#include "tools/yaxreg/image/Svg.h"
#include "tools/yaxreg/image/Wear.h"

namespace yaxreg {
namespace filemap {

using namespace draw;

namespace {

constexpr char kHeadColour[] = "#8a96a3";
constexpr char kReservedColour[] = "#eceff2";

std::string ColourOf(const FilePiece& piece) {
  switch (piece.part) {
    case FilePart::kHeader:
      return kHeadColour;
    case FilePart::kTable:
      return LookOf(piece.kind).dark;
    case FilePart::kArea:
      return LookOf(piece.kind).colour;
    default:
      return kReservedColour;
  }
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
  for (const FilePiece& piece : PiecesOf(image)) {
    const double offset = static_cast<double>(piece.offset);
    if (offset >= length) continue;
    const double size = std::min(static_cast<double>(piece.size), length - offset);
    svg += "<g><title>" + piece.name + ": " + Grouped(piece.size) + " bytes at " +
           Grouped(piece.offset) + "</title>" +
           Box(kMargin + offset / length * width, kStripTop, size / length * width, kStripHeight,
               Fill(ColourOf(piece))) +
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
