#include "tools/yaxreg/image/FileMap.h"

#include <algorithm>
#include <cstdio>

#include "registry/store/FileHeader.h"
#include "registry/store/NodeAllocationTable.h"
#include "registry/store/TernaryFile.h"
#include "registry/store/TernaryHeader.h"
#include "tools/yaxreg/image/ByteText.h"

namespace yaxreg {

namespace {

using tamu::registry::FileHeader;
using tamu::registry::NodeAllocationTable;
using tamu::registry::TernaryFile;
using tamu::registry::TernaryHeader;
using Table = RegistryImage::Table;

// The states of a slot, in the order of the legend. Their colours differ in lightness, too.
enum SlotState : unsigned int { kUsed, kFree, kStranded, kLeaked, kStates };

struct StateLook {
  const char* name;
  const char* css;  // the class
};
constexpr StateLook kStateLooks[kStates] = {
    {"used", "u"}, {"free", "f"}, {"free, but stranded in an older table", "s"}, {"leaked", "l"}};

struct KindLook {
  const char* name;
  const char* colour;  // of the area in the strip
  const char* dark;    // of the table in the strip
};
constexpr KindLook kKindLooks[kNodeKinds] = {{"string nodes", "#56b4e9", "#1f6f9f"},
                                             {"keys", "#e3b505", "#94750a"},
                                             {"values", "#5fbf8f", "#23774c"},
                                             {"data blocks", "#cc79a7", "#85376a"}};

// The page, in its own units.
constexpr unsigned int kWidth = 1600;
constexpr unsigned int kHeight = 1140;
constexpr unsigned int kMargin = 40;
constexpr unsigned int kStripTop = 136;
constexpr unsigned int kStripHeight = 44;
constexpr unsigned int kPanelsTop = 264;
constexpr unsigned int kPanelWidth = 740;
constexpr unsigned int kPanelHeight = 410;
constexpr unsigned int kRowHeight = 16;
constexpr unsigned int kBarHeight = 12;
constexpr unsigned int kBarLeft = 28;  // within the panel
constexpr unsigned int kBarWidth = 530;

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

std::string Text(unsigned long long number) {
  return std::to_string(number);
}

// "10,332".
std::string Grouped(unsigned long long number) {
  std::string text = Text(number);
  for (size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, ",");
  return text;
}

std::string Decimal(double number) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2f", number);
  return text;
}

// U+FFFE and U+FFFF are UTF-8, but nothing that XML takes.
std::string XmlCharacters(std::string text) {
  for (const char* wrong : {"\xEF\xBF\xBE", "\xEF\xBF\xBF"}) {
    for (size_t at = text.find(wrong); at != std::string::npos; at = text.find(wrong)) {
      text.replace(at, 3, "?");
    }
  }
  return text;
}

std::string Escaped(const std::string& bytes) {
  std::string text;
  for (const char c : XmlCharacters(Shown(bytes))) {
    if (c == '&') {
      text += "&amp;";
    } else if (c == '<') {
      text += "&lt;";
    } else if (c == '>') {
      text += "&gt;";
    } else {
      text += c;
    }
  }
  return text;
}

std::string Label(double x, double y, const std::string& classes, const std::string& text) {
  return "<text x=\"" + Decimal(x) + "\" y=\"" + Decimal(y) + "\" class=\"" + classes + "\">" +
         Escaped(text) + "</text>\n";
}

// `look` is an attribute with its value.
std::string Box(double x, double y, double width, double height, const std::string& look) {
  return "<rect x=\"" + Decimal(x) + "\" y=\"" + Decimal(y) + "\" width=\"" + Decimal(width) +
         "\" height=\"" + Decimal(height) + "\" " + look + "/>";
}

std::string ClassOf(const std::string& name) {
  return "class=\"" + name + "\"";
}

std::string Fill(const std::string& colour) {
  return "fill=\"" + colour + "\"";
}

SlotState StateOf(const Table& table, unsigned int slot, bool isNewest) {
  if (table.isReached[slot]) return kUsed;
  if (!table.isFree[slot]) return kLeaked;
  return isNewest ? kFree : kStranded;
}

// ---- the strip

struct Piece {
  unsigned long long offset;
  unsigned long long size;
  std::string colour;
  std::string name;
};

std::vector<Piece> PiecesOf(const RegistryImage& image) {
  const std::string head = "#8a96a3";
  std::vector<Piece> pieces = {
      {FileHeader::kOffset, FileHeader::kSize, head, "file header"},
      {FileHeader::kReservedArea, FileHeader::kReservedSize, "#eceff2", "reserved"},
      {TernaryHeader::kFileOffset, TernaryHeader::kSize, head, "header of the tables"}};
  for (unsigned int kind = 0; kind < kNodeKinds; ++kind) {
    const KindLook& look = kKindLooks[kind];
    const std::vector<Table>& tables = image.Tables(static_cast<NodeKind>(kind));
    for (size_t i = 0; i < tables.size(); ++i) {
      const std::string number = " " + Text(i) + " of " + look.name;
      const unsigned long long entries = tables[i].entries;
      pieces.push_back({tables[i].offset, NodeAllocationTable::StoredSize(tables[i].entries),
                        look.dark, "table" + number});
      pieces.push_back({tables[i].area,
                        entries * RegistryImage::RecordSize(static_cast<NodeKind>(kind)),
                        look.colour, "area" + number});
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
  for (const KindLook& look : kKindLooks) {
    svg += Box(x, y - 11, 8, 13, Fill(look.dark)) + Box(x + 8, y - 11, 18, 13, Fill(look.colour));
    svg += Label(x + 33, y, "m", std::string("table and area of ") + look.name);
    x += 82 + 6.8 * static_cast<double>(std::string(look.name).size() + 18);
  }
  svg += Box(x, y - 11, 8, 13, Fill("#8a96a3")) + Box(x + 8, y - 11, 18, 13, Fill("#eceff2"));
  svg += Label(x + 33, y, "m", "headers and reserved");
  return svg;
}

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

// ---- the tables

struct Counts {
  unsigned int of[kStates] = {};
};

// The slots of one state as one path; its units are slots and the height of the row.
std::string RunsOf(const Table& table, SlotState state, bool isNewest, Counts* counts) {
  std::string path;
  for (unsigned int slot = 1; slot < table.entries;) {
    const unsigned int begin = slot;
    while (slot < table.entries && StateOf(table, slot, isNewest) == state) ++slot;
    if (slot > begin) {
      const std::string length = Text(slot - begin);
      path += "M" + Text(begin - 1) + " 0h" + length + "v1h-" + length + "z";
      counts->of[state] += slot - begin;
    } else {
      ++slot;
    }
  }
  return path;
}

// The heading above the columns of counts, and their order.
struct Column {
  SlotState state;
  const char* heading;
  unsigned int right;  // behind the bar
};
constexpr Column kColumns[] = {{kUsed, "used", 40},
                               {kLeaked, "leaked", 86},
                               {kFree, "free", 124},
                               {kStranded, "stranded", 182}};

class Panel {
 public:
  Panel(const RegistryImage& image, NodeKind kind, double left, double top)
      : image_(image), kind_(kind), left_(left), top_(top) {
    for (const Table& table : image.Tables(kind)) widest_ = std::max(widest_, table.entries - 1);
  }

  std::string Draw() {
    std::string svg = DrawHeading();
    for (unsigned int row = 0; row < RegistryImage::kMaxTables; ++row) svg += DrawRow(row);
    return svg;
  }

 private:
  double RowTop(unsigned int row) const { return top_ + 50 + row * kRowHeight; }
  double CountRight(size_t column) const {
    return left_ + kBarLeft + kBarWidth + kColumns[column].right;
  }

  std::string DrawHeading() const {
    const SlotUse use = image_.UseOf(kind_);
    const KindLook& look = kKindLooks[static_cast<unsigned int>(kind_)];
    const unsigned int all =
        use.slots + (RegistryImage::kMaxTables - use.tables) * (TernaryFile::kExpansionSlots - 1);
    const double full = 100.0 - 100.0 * use.remaining / std::max(all, 1u);
    std::string svg = Box(left_, top_, 8, 18, Fill(look.colour));
    svg += Label(left_ + 16, top_ + 15, "h", look.name);
    char percent[32];
    std::snprintf(percent, sizeof percent, "%.0f %% full", full);
    svg += Label(left_ + kBarLeft + kBarWidth, top_ + 15, "m e",
                 Text(use.tables) + " of " + Text(RegistryImage::kMaxTables) + " tables, " +
                     Grouped(use.remaining) + " slots left, " + percent);
    for (size_t i = 0; i < std::size(kColumns); ++i) {
      svg += Label(CountRight(i), top_ + 42, "n e", kColumns[i].heading);
    }
    return svg;
  }

  std::string DrawRow(unsigned int row) const {
    const double y = RowTop(row);
    const std::vector<Table>& tables = image_.Tables(kind_);
    const std::string look = row < tables.size() ? "n e" : "n e g";
    const std::string svg = Label(left_ + kBarLeft - 7, y + 10, look, Text(row));
    if (row < tables.size()) return svg + DrawTable(tables[row], row, row + 1 == tables.size());
    const double width = (TernaryFile::kExpansionSlots - 1) * SlotWidth();
    return svg + Box(left_ + kBarLeft + 0.5, y + 0.5, width - 1, kBarHeight - 1, ClassOf("o")) +
           "\n";
  }

  std::string DrawTable(const Table& table, unsigned int row, bool isNewest) const {
    Counts counts;
    const unsigned int slots = table.entries - 1;
    const SlotState ground = isNewest ? kFree : kStranded;
    std::string runs;
    for (unsigned int state = 0; state < kStates; ++state) {
      const std::string path = RunsOf(table, static_cast<SlotState>(state), isNewest, &counts);
      if (state == ground || path.empty()) continue;  // lies below all others
      runs += "<path " + ClassOf(kStateLooks[state].css) + " d=\"" + path + "\"/>";
    }
    std::string svg = "<g transform=\"translate(" + Decimal(left_ + kBarLeft) + " " +
                      Decimal(RowTop(row)) + ") scale(" + Scale() + " " + Text(kBarHeight) +
                      ")\"><title>table " + Text(row) + " at " + Grouped(table.offset) +
                      ", area at " + Grouped(table.area) + ", " + Grouped(slots) +
                      " slots</title>" + "<rect width=\"" + Text(slots) + "\" height=\"1\" " +
                      ClassOf(kStateLooks[ground].css) + "/>" + runs + "</g>\n";
    for (size_t i = 0; i < std::size(kColumns); ++i) {
      const unsigned int count = counts.of[kColumns[i].state];
      if (count > 0) svg += Label(CountRight(i), RowTop(row) + 10, "n e", Grouped(count));
    }
    return svg;
  }

  double SlotWidth() const { return static_cast<double>(kBarWidth) / widest_; }
  std::string Scale() const {
    char text[32];
    std::snprintf(text, sizeof text, "%.6f", SlotWidth());
    return text;
  }

  const RegistryImage& image_;
  NodeKind kind_;
  double left_;
  double top_;
  unsigned int widest_ = TernaryFile::kExpansionSlots - 1;  // slots of the largest table
};

// ---- the page

// A very long name is squeezed into the width of the page.
std::string DrawTitle(const std::string& title) {
  constexpr size_t kRoom = 64;  // characters, in the broadest letters
  const std::string text = Escaped(title);
  const std::string squeezed = "\" textLength=\"1300\" lengthAdjust=\"spacingAndGlyphs";
  return "<text x=\"" + Text(kMargin) + "\" y=\"50\" class=\"t" +
         (text.size() > kRoom ? squeezed : "") + "\">" + text + "</text>\n";
}

std::string DrawLegend(const RegistryImage& image) {
  Counts totals;
  for (unsigned int kind = 0; kind < kNodeKinds; ++kind) {
    const SlotUse use = image.UseOf(static_cast<NodeKind>(kind));
    totals.of[kUsed] += use.reached;
    totals.of[kFree] += use.free - use.stranded;
    totals.of[kStranded] += use.stranded;
    totals.of[kLeaked] += use.leaked;
  }
  const double y = kHeight - 34;
  double x = kMargin;
  std::string svg;
  for (unsigned int state = 0; state < kStates; ++state) {
    const std::string text = Grouped(totals.of[state]) + " " + kStateLooks[state].name;
    svg += Box(x, y - 13, 26, 16, ClassOf(kStateLooks[state].css)) + Label(x + 34, y, "", text);
    x += 70 + 7.2 * static_cast<double>(text.size());
  }
  svg += Box(x, y - 12.5, 26, 15, ClassOf("o")) + Label(x + 34, y, "", "table not made yet");
  return svg;
}

}  // namespace

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
  svg += DrawStrip(image);
  for (unsigned int kind = 0; kind < kNodeKinds; ++kind) {
    const double left = kMargin + (kind % 2) * static_cast<double>(kPanelWidth + kMargin);
    const double top = kPanelsTop + (kind / 2) * static_cast<double>(kPanelHeight);
    svg += Panel(image, static_cast<NodeKind>(kind), left, top).Draw();
  }
  return svg + DrawLegend(image) + "</svg>\n";
}

}  // namespace yaxreg
