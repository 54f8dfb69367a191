#include <gtest/gtest.h>

#include "registry/format/TernaryHeader.h"
#include "tests/registry/store/RecordTesting.h"

namespace tamu::registry::storetests {
namespace {

TEST(TernaryHeader, IsZeroWhenMade) {
  static_assert(sizeof(TernaryHeader) == 40);
  EXPECT_EQ(Hex(TernaryHeader()),
            "00000000 00000000 00000000 00000000 00000000 "
            "00000000 00000000 00000000 00000000 00000000");
}

TEST(TernaryHeader, PutsEveryFieldAtItsPlace) {
  TernaryHeader header;
  header.setHeaderOffset(4180);
  header.setHeaderVersion(1);
  header.setFirstTable(NodeKind::kString, 4220);
  header.setFirstTable(NodeKind::kKey, 5712);
  header.setFirstTable(NodeKind::kValue, 7204);
  header.setFirstTable(NodeKind::kData, 8696);
  header.setStartNode(0x12345600);
  header.setFileSize(75888);
  EXPECT_EQ(Hex(header),
            "00000000 54100000 01000000 7C100000 50160000 "
            "241C0000 F8210000 00563412 70280100 00000000");
}

TEST(TernaryHeader, GetsEveryFieldFromItsPlace) {
  const TernaryHeader header = Numbered<TernaryHeader>();
  EXPECT_EQ(header.headerOffset(), 0x88878685u);
  EXPECT_EQ(header.headerVersion(), 0x8C8B8A89u);
  EXPECT_EQ(header.firstTable(NodeKind::kString), 0x908F8E8Du);
  EXPECT_EQ(header.firstTable(NodeKind::kKey), 0x94939291u);
  EXPECT_EQ(header.firstTable(NodeKind::kValue), 0x98979695u);
  EXPECT_EQ(header.firstTable(NodeKind::kData), 0x9C9B9A99u);
  EXPECT_EQ(header.startNode(), 0xA09F9E9Du);
  EXPECT_EQ(header.fileSize(), 0xA4A3A2A1u);
}

}  // namespace
}  // namespace tamu::registry::storetests
