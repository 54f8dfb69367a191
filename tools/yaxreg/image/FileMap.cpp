#include "tools/yaxreg/image/FileMap.h"

#include "tools/yaxreg/image/FileMapLook.h"
#include "tools/yaxreg/image/FileMapPanel.h"
#include "tools/yaxreg/image/FileMapStrip.h"
#include "tools/yaxreg/image/Kinds.h"
#include "tools/yaxreg/image/Svg.h"
#include "tools/yaxreg/image/Wear.h"

namespace yaxreg {

using namespace draw;
using namespace filemap;

namespace {

constexpr char kStyle[] =
    "<style>"
    "text{font-family:system-ui,'Segoe UI','DejaVu Sans',Helvetica,Arial,sans-serif;font-size:13px;"
    "fill:#1d2733}"
    ".t{font-size:27px;font-weight:600}.h{font-size:17px;font-weight:600}"
    ".m{fill:#5b6875}.r{font-size:16px}.n{font-size:10.5px;fill:#5b6875}.e{text-anchor:end}.c{text-"
    "anchor:middle}"
    ".w{fill:#a3271f;font-weight:600}"
    ".u{fill:#17375e}.f{fill:#dfe8f0}.s{fill:#f0b03f}.l{fill:#d2482f}"
    ".o{fill:none;stroke:#c9d2db}.g{fill:#a9b3bd}"
    "</style>\n";

// A very long name is squeezed into the width of the page.
std::string DrawTitle(const std::string& title) {
  constexpr size_t kRoom = 64;  // characters, in the broadest letters
  const std::string text = Escaped(title);
  const std::string squeezed = "\" textLength=\"1300\" lengthAdjust=\"spacingAndGlyphs";
  return "<text x=\"" + Text(kMargin) + "\" y=\"50\" class=\"t" +
         (text.size() > kRoom ? squeezed : "") + "\">" + text + "</text>\n";
}

std::string DrawLegend(const RegistryImage& image) {
  unsigned int totals[kStates] = {};
  for (const NodeKind kind : kAllKinds) {
    const Wear wear = WearOf(image, kind);
    totals[kUsed] += wear.inUse;
    totals[kFree] += wear.free;
    totals[kStranded] += wear.stranded;
    totals[kLeaked] += wear.leaked;
  }
  const double y = kHeight - 34;
  double x = kMargin;
  std::string svg;
  for (unsigned int state = 0; state < kStates; ++state) {
    const StateLook& look = kStateLooks[state];
    const std::string text = Grouped(totals[state]) + " " + look.name + look.meaning;
    svg += Box(x, y - 13, 26, 16, ClassOf(look.css)) + Label(x + 34, y, "", text);
    x += 70 + 7.2 * static_cast<double>(text.size());
  }
  svg += Box(x, y - 12.5, 26, 15, ClassOf("o")) + Label(x + 34, y, "", "table not made yet");
  return svg;
}

// Part of the drawing as an element of its own, with what people hear who do not see it.
std::string Element(const std::string& box, const std::string& label, const std::string& drawing) {
  return "<svg viewBox=\"" + box + "\" role=\"img\" aria-label=\"" + label + "\">\n" + drawing +
         "</svg>\n";
}

}  // namespace

FileMapParts DrawFileMapParts(const RegistryImage& image) {
  constexpr unsigned int kAbove = 34;  // of the strip: its heading
  constexpr unsigned int kBelow = 56;  // its scale and its legend
  FileMapParts parts;
  const std::string strip = "30 " + Text(kStripTop - kAbove) + " " + Text(kWidth - 60) + " " +
                            Text(kAbove + kStripHeight + kBelow);
  parts.strip = Element(strip, "The file to scale", DrawStrip(image));
  const std::string panel = "-2 -2 " + Text(kPanelWidth + 10) + " " + Text(kPanelHeight - 16);
  for (const NodeKind kind : kAllKinds) {
    parts.panels[static_cast<unsigned int>(kind)] =
        Element(panel, "The slots of the " + KindNames(kind), DrawPanel(image, kind, 0, 0));
  }
  return parts;
}

std::string DrawFileMap(const RegistryImage& image, const std::string& title,
                        const std::string& subtitle) {
  const std::string size = Text(kWidth) + " " + Text(kHeight);
  std::string svg =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " +
      size + "\">\n<title>" + Escaped(title) + "</title>\n" + kStyle +
      Box(0, 0, kWidth, kHeight, Fill("#ffffff")) + "\n";
  svg += DrawTitle(title);
  svg += Label(kMargin, 80, "m r", subtitle);
  if (!image.IsSound()) {
    svg += Label(kWidth - kMargin, 50, "w e", "The file is damaged");
  }
  svg += filemap::DrawStrip(image);
  for (const NodeKind kind : kAllKinds) {
    const unsigned int place = static_cast<unsigned int>(kind);
    const double left = kMargin + (place % 2) * static_cast<double>(kPanelWidth + kMargin);
    // NOLINTNEXTLINE(bugprone-integer-division): two panels a row
    const double top = kPanelsTop + (place / 2) * static_cast<double>(kPanelHeight);
    svg += filemap::DrawPanel(image, kind, left, top);
  }
  return svg + DrawLegend(image) + "</svg>\n";
}

}  // namespace yaxreg
