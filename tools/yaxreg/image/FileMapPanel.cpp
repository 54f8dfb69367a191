#include "tools/yaxreg/image/FileMapPanel.h"

#include <algorithm>
#include <cstdio>

#include "registry/format/RecordSize.h"
#include "registry/store/TernaryFile.h"
#include "tools/yaxreg/image/FileMapLook.h"
#include "tools/yaxreg/image/Svg.h"
#include "tools/yaxreg/image/Wear.h"

namespace yaxreg {
namespace filemap {

using namespace draw;
using tamu::registry::kTablesMax;
using tamu::registry::TernaryFile;
using Table = RegistryImage::Table;

namespace {

constexpr unsigned int kRowHeight = 16;
constexpr unsigned int kBarHeight = 12;
constexpr unsigned int kBarLeft = 28;  // within the panel
constexpr unsigned int kBarWidth = 530;

SlotState StateOf(const Table& table, unsigned int slot, bool isNewest) {
  if (table.isReached[slot]) return kUsed;
  if (!table.isFree[slot]) return kLeaked;
  return isNewest ? kFree : kStranded;
}

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
constexpr Column kColumns[] = {{kUsed, "in use", 40},
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
    for (unsigned int row = 0; row < kTablesMax; ++row) svg += DrawRow(row);
    return svg;
  }

 private:
  double RowTop(unsigned int row) const { return top_ + 50 + row * kRowHeight; }
  double CountRight(size_t column) const {
    return left_ + kBarLeft + kBarWidth + kColumns[column].right;
  }

  std::string DrawHeading() const {
    const Wear wear = WearOf(image_, kind_);
    const double full = 100.0 - 100.0 * wear.left / std::max(wear.ever, 1u);
    std::string svg = Box(left_, top_, 8, 18, Fill(LookOf(kind_).colour));
    svg += Label(left_ + 16, top_ + 15, "h", KindNames(kind_));
    char percent[32];
    std::snprintf(percent, sizeof percent, "%.0f %% full", full);
    svg += Label(left_ + kBarLeft + kBarWidth, top_ + 15, "m e",
                 Text(wear.tables) + " of " + Text(kTablesMax) + " tables, " + Grouped(wear.left) +
                     " slots left, " + percent);
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

}  // namespace

std::string DrawPanel(const RegistryImage& image, NodeKind kind, double left, double top) {
  return Panel(image, kind, left, top).Draw();
}

}  // namespace filemap
}  // namespace yaxreg
