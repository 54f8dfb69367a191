#include <gtest/gtest.h>

#include <cstring>

#include "framework/YAXInterfaceIds.h"

namespace {

// The bytes as they lie in memory.
bool Lies(const YAX_GUID_ST& id, const char (&bytes)[17]) {
  return std::memcmp(&id, bytes, 16) == 0;
}

TEST(YAXInterfaceIds, HaveTheirSixteenBytes) {
  EXPECT_TRUE(
      Lies(IID_IYAXCompBase, "\xFC\x55\xBF\x1F\x15\x0F\xCC\x45\x8F\x3F\xDE\x86\xA5\x64\x0C\xB5"));
  EXPECT_TRUE(Lies(IID_IYAX, "\x15\x9D\x84\xEF\x0C\xF0\xDC\x45\xBF\xD8\xF8\x56\x25\xA9\x34\xE6"));
  EXPECT_TRUE(
      Lies(IID_IYAXRegistry, "\x2F\x4E\xE8\xC4\x99\xB1\x24\x46\xB6\x64\x2E\x05\xBE\x2A\xE2\xCB"));
  EXPECT_TRUE(Lies(IID_IYAXInfoManager,
                   "\x45\xA4\xB7\x6E\xB8\xDB\x80\x4B\x86\x80\x88\xD1\x14\xEB\x5C\x1A"));
  EXPECT_TRUE(Lies(IID_IYAXDynamicLoad,
                   "\x5C\x21\x5E\x6F\x47\xC2\x7C\x40\x82\x15\x52\x04\x5D\xE0\xBC\xFC"));
  EXPECT_TRUE(Lies(IID_YAXComponentFactory,
                   "\xF3\x67\xBE\xB1\x5B\xF7\x42\x40\xA4\xC8\x4C\x25\xE1\x36\x56\xDD"));
}

TEST(YAXInterfaceIds, AreEqualInAllTheirBytesOnly) {
  const YAX_GUID_ST same = IID_IYAX;
  EXPECT_TRUE(same == IID_IYAX);
  EXPECT_FALSE(same != IID_IYAX);
  for (unsigned int i = 0; i < sizeof(YAX_GUID_ST); ++i) {
    unsigned char bytes[sizeof(YAX_GUID_ST)];
    std::memcpy(bytes, &IID_IYAX, sizeof bytes);
    bytes[i] = static_cast<unsigned char>(bytes[i] ^ 0x80);
    YAX_GUID_ST other = {};
    std::memcpy(&other, bytes, sizeof bytes);
    EXPECT_FALSE(other == IID_IYAX) << "byte " << i;
    EXPECT_TRUE(other != IID_IYAX) << "byte " << i;
  }
}

TEST(YAXInterfaceIds, AreAllDifferent) {
  const YAX_GUID_ST all[] = {IID_IYAXCompBase,    IID_IYAX,
                             IID_IYAXRegistry,    IID_IYAXInfoManager,
                             IID_IYAXDynamicLoad, IID_YAXComponentFactory};
  for (const YAX_GUID_ST& a : all) {
    for (const YAX_GUID_ST& b : all) EXPECT_EQ(a == b, &a == &b);
  }
}

}  // namespace
