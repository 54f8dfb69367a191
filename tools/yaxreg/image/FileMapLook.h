// Where the parts of the map of a file are, and what they look like.
#pragma once

#include "tools/yaxreg/image/RegistryImage.h"

namespace yaxreg {
namespace filemap {

// The states of a slot, in the order of the legend. Their colours differ in lightness, too.
enum SlotState : unsigned int { kUsed, kFree, kStranded, kLeaked, kStates };

struct StateLook {
  const char* name;
  const char* meaning;  // behind the name in the legend
  const char* css;      // the class
};
constexpr StateLook kStateLooks[kStates] = {
    {"in use", "", "u"},
    {"free", "", "f"},
    {"stranded", " (free in an older table, never handed out again)", "s"},
    {"leaked", " (nothing leads to them)", "l"}};

struct KindLook {
  const char* colour;  // of the area in the strip
  const char* dark;    // of the table in the strip
};
constexpr KindLook kKindLooks[kNodeKinds] = {
    {"#56b4e9", "#1f6f9f"}, {"#e3b505", "#94750a"}, {"#5fbf8f", "#23774c"}, {"#cc79a7", "#85376a"}};
constexpr KindLook LookOf(NodeKind kind) {
  return kKindLooks[static_cast<unsigned int>(kind)];
}

// The page, in its own units.
constexpr unsigned int kWidth = 1600;
constexpr unsigned int kHeight = 1140;
constexpr unsigned int kMargin = 40;
constexpr unsigned int kStripTop = 136;
constexpr unsigned int kStripHeight = 44;
constexpr unsigned int kPanelsTop = 264;
constexpr unsigned int kPanelWidth = 740;
constexpr unsigned int kPanelHeight = 410;

}  // namespace filemap
}  // namespace yaxreg
