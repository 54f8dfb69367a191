#include <gtest/gtest.h>

#include "tests/platform/TestFiles.h"
#include "tools/yaxreg/selftest/TestContent.h"

namespace {

using tamu::registry::Registry;
using yaxreg::TestContent;
namespace status = tamu::registry::status;

class TestContentTest : public ::testing::Test {
 protected:
  TestContentTest() : registry_((folder_ / "registry").c_str(), tamu::registry::kAdministratorId) {
    EXPECT_EQ(status::kOk, registry_.Initialize());
  }

  TempDir folder_;
  Registry registry_;
};

TEST_F(TestContentTest, IsWholeAfterEachChange) {
  TestContent content(registry_);
  unsigned int number = 77;
  EXPECT_EQ(TestContent::State::kUnreadable, content.Read(&number));
  for (unsigned int i = 0; i < 60; ++i) {
    ASSERT_EQ(status::kOk, content.Write(i));
    ASSERT_EQ(TestContent::State::kWhole, content.Read(&number));
    ASSERT_EQ(i, number);
  }
}

TEST_F(TestContentTest, IsMixedWhenAnythingIsOfAnotherChange) {
  TestContent content(registry_);
  unsigned int number = 0;
  const auto isMixed = [&] { return content.Read(&number) == TestContent::State::kMixed; };
  unsigned char seven[8] = {7};
  ASSERT_EQ(status::kOk, content.Write(5));
  ASSERT_EQ(status::kOk,
            registry_.PutValue("clock", "number", tamu::registry::MakeValue(0, seven, 8), false));
  EXPECT_TRUE(isMixed());
  ASSERT_EQ(status::kOk, content.Write(5));
  EXPECT_FALSE(isMixed());
  ASSERT_EQ(status::kOk,
            registry_.PutValue("shop", "text", tamu::registry::TextValue("4 x"), false));
  EXPECT_TRUE(isMixed());
  ASSERT_EQ(status::kOk, content.Write(5));
  ASSERT_EQ(status::kOk, registry_.MakeKey("marks/6"));
  EXPECT_TRUE(isMixed());
  ASSERT_EQ(status::kOk, content.Write(5));
  ASSERT_EQ(status::kOk, registry_.RemoveKey("marks/5"));
  EXPECT_TRUE(isMixed());
  ASSERT_EQ(status::kOk, registry_.RemoveValue("clock", "text"));
  EXPECT_EQ(TestContent::State::kUnreadable, content.Read(&number));
}

}  // namespace
