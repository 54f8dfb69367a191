#include <gtest/gtest.h>

#include "registry/format/TernaryHeader.h"
#include "tests/registry/store/RecordTesting.h"

namespace tamu::registry::storetests {
namespace {

TEST(TernaryHeader, IsZeroWhenMade) {
  static_assert(sizeof(TernaryHeader) == 40);
  EXPECT_EQ(
      "00000000 00000000 00000000 00000000 00000000 "
      "00000000 00000000 00000000 00000000 00000000",
      Hex(TernaryHeader()));
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
  EXPECT_EQ(
      "00000000 54100000 01000000 7C100000 50160000 "
      "241C0000 F8210000 00563412 70280100 00000000",
      Hex(header));
}

TEST(TernaryHeader, GetsEveryFieldFromItsPlace) {
  const TernaryHeader header = Numbered<TernaryHeader>();
  EXPECT_EQ(0x88878685u, header.headerOffset());
  EXPECT_EQ(0x8C8B8A89u, header.headerVersion());
  EXPECT_EQ(0x908F8E8Du, header.firstTable(NodeKind::kString));
  EXPECT_EQ(0x94939291u, header.firstTable(NodeKind::kKey));
  EXPECT_EQ(0x98979695u, header.firstTable(NodeKind::kValue));
  EXPECT_EQ(0x9C9B9A99u, header.firstTable(NodeKind::kData));
  EXPECT_EQ(0xA09F9E9Du, header.startNode());
  EXPECT_EQ(0xA4A3A2A1u, header.fileSize());
}

}  // namespace
}  // namespace tamu::registry::storetests
