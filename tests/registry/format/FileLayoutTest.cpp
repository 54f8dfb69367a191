#include <gtest/gtest.h>

#include "registry/format/FileLayout.h"

namespace tamu::registry::storetests {
namespace {

struct Expected {
  unsigned int entries;
  unsigned int tables[4];
  unsigned int areas[4];
  unsigned int areasSize;
  unsigned int fileSize;
};

void ExpectLayout(unsigned int budget, const Expected& expected) {
  SCOPED_TRACE(budget);
  const FileLayout layout(budget);
  EXPECT_TRUE(layout.IsPossible());
  EXPECT_EQ(layout.entryCount(), expected.entries);
  for (unsigned int i = 0; i < 4; ++i) {
    EXPECT_EQ(layout.tableOffset(static_cast<NodeKind>(i)), expected.tables[i]) << "kind " << i;
    EXPECT_EQ(layout.areaOffset(static_cast<NodeKind>(i)), expected.areas[i]) << "kind " << i;
  }
  EXPECT_EQ(layout.areasSize(), expected.areasSize);
  EXPECT_EQ(layout.fileSize(), expected.fileSize);
}

TEST(FileLayout, OfTheUsualBudget) {
  ExpectLayout(65536, {365, {4220, 5712, 7204, 8696}, {10188, 24788, 33548, 52528}, 65700, 75888});
}

TEST(FileLayout, ABudgetBelowOneSlotOfEachKindLeavesTheHeadEntries) {
  const Expected none = {1, {4220, 4256, 4292, 4328}, {4364, 4404, 4428, 4480}, 180, 4544};
  ExpectLayout(0, none);
  ExpectLayout(179, none);
}

TEST(FileLayout, TheFirstSlotsTake180Bytes) {
  const Expected one = {2, {4220, 4260, 4300, 4340}, {4380, 4460, 4508, 4612}, 360, 4740};
  ExpectLayout(180, one);
  ExpectLayout(359, one);
}

TEST(FileLayout, StopsAtTwoGigabytes) {
  const FileLayout largest(1972174859);  // 10956527 entries of 196 bytes, and 4348
  EXPECT_TRUE(largest.IsPossible());
  EXPECT_EQ(2147483640u, largest.fileSize());
  EXPECT_FALSE(FileLayout(1972174860).IsPossible());
  EXPECT_FALSE(FileLayout(0xFFFFFFFF).IsPossible());
}

}  // namespace
}  // namespace tamu::registry::storetests
