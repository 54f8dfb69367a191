// A top key that is open for one operation.
#include "framework/internal/TopKey.h"
#include "tests/registry/RegistryRig.h"

namespace tamu::registry {
namespace {

class TopKeyTest : public OpenRegistryTest {
 protected:
  using Missing = TopKey::Missing;

  bool IsOpen(unsigned int handle) {
    KeyInfo info = {};
    return registry.GetKeyInfo(handle, "", &info) != status::kBadArgument;
  }
  bool HasKey(const char* key) { return DecodeTree(path).count(key) != 0; }
};

TEST_F(TopKeyTest, AMissingKeyIsNotOpenedAndNotMade) {
  const std::string before = GetFile(path);
  const TopKey top(registry, "YAX_ROOT", Missing::kFail);
  EXPECT_FALSE(top.IsOpen());
  EXPECT_FALSE(top.IsNew());
  EXPECT_EQ(0u, top.Handle());
  EXPECT_EQ(GetFile(path), before);
}

TEST_F(TopKeyTest, AMissingKeyIsMadeWhenThatIsWanted) {
  for (Missing missing : {Missing::kCreate, Missing::kMakeSure}) {
    const char* key = missing == Missing::kCreate ? "YAX_ROOT" : "YAX_SYSTEM";
    const TopKey top(registry, key, missing);
    EXPECT_TRUE(top.IsOpen());
    EXPECT_TRUE(top.IsNew());
    EXPECT_TRUE(HasKey(key));
    EXPECT_EQ(0u, registry.CreateKey(top.Handle(), "below"));
  }
  EXPECT_TRUE(HasKey("YAX_ROOT/below"));
  EXPECT_TRUE(HasKey("YAX_SYSTEM/below"));
}

TEST_F(TopKeyTest, AKeyThatIsThereIsOpenedAndNotNew) {
  ASSERT_EQ(0u, registry.CreateKey(0, "YAX_ROOT"));
  for (Missing missing : {Missing::kFail, Missing::kCreate, Missing::kMakeSure}) {
    const TopKey top(registry, "YAX_ROOT", missing);
    EXPECT_TRUE(top.IsOpen());
    EXPECT_FALSE(top.IsNew());
  }
  EXPECT_EQ(2u, DecodeTree(path).size());
}

TEST_F(TopKeyTest, EveryHandleIsClosedAtTheEnd) {
  for (Missing missing : {Missing::kCreate, Missing::kMakeSure, Missing::kFail}) {
    {
      const TopKey top(registry, "YAX_ROOT", missing);
      EXPECT_TRUE(IsOpen(top.Handle()));
    }
    for (unsigned int handle = 1; handle < 10; ++handle) EXPECT_FALSE(IsOpen(handle));
  }
}

// Who asks for both at once holds the handles twice.
TEST_F(TopKeyTest, TwoMayBeOpenAtOnce) {
  const TopKey components(registry, "YAX_ROOT", Missing::kCreate);
  {
    const TopKey system(registry, "YAX_SYSTEM", Missing::kCreate);
    EXPECT_EQ(0u, registry.CreateKey(system.Handle(), "a"));
  }
  EXPECT_EQ(0u, registry.CreateKey(components.Handle(), "b"));
  EXPECT_TRUE(HasKey("YAX_SYSTEM/a"));
  EXPECT_TRUE(HasKey("YAX_ROOT/b"));
}

TEST_F(TopKeyTest, WithoutARegistryNothingIsOpen) {
  registry.Finalize();
  for (Missing missing : {Missing::kFail, Missing::kCreate, Missing::kMakeSure}) {
    const TopKey top(registry, "YAX_ROOT", missing);
    EXPECT_FALSE(top.IsOpen());
  }
}

}  // namespace
}  // namespace tamu::registry
