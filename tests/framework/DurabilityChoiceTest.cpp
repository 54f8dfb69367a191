// Choosing what the framework's changes survive.
#include "framework/YAXStatus.h"
#include "registry/Registry.h"
#include "tests/framework/ChosenDurability.h"
#include "tests/framework/PrintedMessages.h"
#include "tests/platform/TestFiles.h"

namespace {

constexpr char kFirstLine[] = "3 *********** YAX ***********\n";
constexpr char kVariable[] = "YAX_DURABILITY";
constexpr char kNone = '\0';
constexpr char kProcess = '\1';
constexpr char kPower = '\2';

class DurabilityChoice : public ::testing::Test {
 protected:
  ~DurabilityChoice() override {
    DestroyYAX();
    unsetenv(kVariable);
    SetYAXDurability(YAX_FRAMEWORK_DURABILITY_DEFAULT);
  }
  // The mode of the framework that is made now: its journal tells it, and kNone has none.
  char Mode() {
    status = CreateYAX(path.c_str());
    const std::string journal = path + ".journal";
    const char mode = std::filesystem::exists(journal) ? GetFile(journal).at(8) : kNone;
    DestroyYAX();
    EXPECT_FALSE(std::filesystem::exists(journal));
    return mode;
  }

  // What a registry gets that asks for nothing.
  static char Default(const std::string& path) {
    tamu::registry::Registry registry(path.c_str(), "user");
    EXPECT_EQ(0u, registry.Initialize(0));
    return static_cast<char>(registry.EffectiveDurability());
  }

  TempDir folder;
  const std::string path = folder / "registry";
  const char usual = Default(folder / "other");
  unsigned int status = 0;
};

TEST_F(DurabilityChoice, TheProgramChooses) {
  SetYAXDurability(YAX_FRAMEWORK_DURABILITY_NONE);
  EXPECT_EQ(kNone, Mode());
  EXPECT_EQ(0u, status);
  SetYAXDurability(YAX_FRAMEWORK_DURABILITY_POWER);
  EXPECT_EQ(kPower, Mode());
  EXPECT_EQ(0u, status);
  SetYAXDurability(YAX_FRAMEWORK_DURABILITY_DEFAULT);
  EXPECT_EQ(Mode(), usual);
}

TEST_F(DurabilityChoice, AModeThatCannotBeHadIsRefused) {
  SetYAXDurability(YAX_FRAMEWORK_DURABILITY_PROCESS);
  EXPECT_EQ(Mode(), usual);
  EXPECT_EQ(status, usual == kProcess ? 0u : 0xE000000Du);
  std::filesystem::create_directory(path + ".journal");
  SetYAXDurability(YAX_FRAMEWORK_DURABILITY_POWER);
  EXPECT_EQ(yax_framework::kRegistryFailed, CreateYAX(path.c_str()));
}

TEST_F(DurabilityChoice, ANumberThatIsNoModeIsRefused) {
  EXPECT_EQ(yax_framework::kOk, SetYAXDurability(YAX_FRAMEWORK_DURABILITY_POWER));
  EXPECT_EQ(yax_framework::kBadArgument, SetYAXDurability(4));
  EXPECT_EQ(yax_framework::kBadArgument, SetYAXDurability(0xFFFFFFFF));
  EXPECT_EQ(kPower, Mode());
}

TEST_F(DurabilityChoice, TheEnvironmentChoosesWhereTheProgramDoesNot) {
  setenv(kVariable, "power", 1);
  EXPECT_EQ(kPower, Mode());
  setenv(kVariable, "none", 1);
  EXPECT_EQ(kNone, Mode());
  setenv(kVariable, "process", 1);
  EXPECT_EQ(Mode(), usual);
  EXPECT_EQ(status, usual == kProcess ? 0u : 0xE000000Du);
  SetYAXDurability(YAX_FRAMEWORK_DURABILITY_POWER);
  EXPECT_EQ(kPower, Mode());
}

TEST_F(DurabilityChoice, AnotherWordIsToldAndIgnored) {
  for (const char* word : {"Power", "2", "powerful", "none "}) {
    setenv(kVariable, word, 1);
    PrintedMessages printed;
    EXPECT_EQ(Mode(), usual);
    EXPECT_EQ(0u, status);
    const std::string expected = std::string(kFirstLine) + "3 YAX_DURABILITY is \"" + word +
                                 "\", not none, process or power: ignored\n";
    EXPECT_EQ(printed.Take().substr(0, expected.size()), expected);
  }
  setenv(kVariable, "", 1);
  PrintedMessages printed;
  EXPECT_EQ(Mode(), usual);
  EXPECT_EQ(printed.Take().find("YAX_DURABILITY"), std::string::npos);
}

}  // namespace
