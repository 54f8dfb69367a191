// The framework object from within.
#include "framework/YAX.h"
#include "framework/YAXInterfaceIds.h"
#include "framework/internal/CYAX.h"
#include "tests/framework/PrintedMessages.h"
#include "tests/registry/RegistryRig.h"

namespace {

using tamu::registry::Registry;

constexpr char kEnds[] = "3 *********** ~YAX ***********\n";

class CYAXTest : public ::testing::Test {
 protected:
  ~CYAXTest() override { EXPECT_EQ(CYAX::mspCYAX, nullptr); }

  TempDir folder;
  const std::string path = folder / "registry";
};

TEST_F(CYAXTest, AnObjectWithoutParts) {
  PrintedMessages printed;
  CYAX* made = new CYAX;
  EXPECT_EQ(printed.Take(), "");
  EXPECT_EQ(made->Flush(), 0xE0000005u);  // no registry yet
  EXPECT_EQ(made->AddRef(), 2u);
  EXPECT_EQ(made->Release(), 1u);
  EXPECT_EQ(made->Release(), 0u);
  EXPECT_EQ(printed.Take(), kEnds);
}

TEST_F(CYAXTest, IsNotFoundUntilItIsMadeWhole) {
  CYAX* made = new CYAX;
  EXPECT_EQ(made->Initialize(path.c_str()), 0u);
  EXPECT_EQ(CYAX::mspCYAX, nullptr);
  EXPECT_EQ(made->Flush(), 0u);
  EXPECT_EQ(made->Release(), 0u);
  EXPECT_EQ(CreateYAX(path.c_str()), 0u);
  EXPECT_NE(CYAX::mspCYAX, nullptr);
  DestroyYAX();
  EXPECT_EQ(CYAX::mspCYAX, nullptr);
}

TEST_F(CYAXTest, GivesItsPartsBackOnceOnly) {
  CYAX* made = new CYAX;
  EXPECT_EQ(made->Initialize(path.c_str()), 0u);
  void* handle = nullptr;
  EXPECT_EQ(made->LoadComponent(IID_IYAX, &handle), 0xE000000Du);
  for (int i = 0; i < 2; ++i) {
    made->Deinitialize();
    EXPECT_EQ(made->Flush(), 0xE0000005u);
  }
  EXPECT_EQ(tamu::registry::RegistryInstance::sFirstInstance, nullptr);
  // Everything can be made anew.
  EXPECT_EQ(made->Initialize(path.c_str()), 0u);
  EXPECT_EQ(made->CreateKey(0, "key"), 0u);
  EXPECT_EQ(made->Release(), 0u);
  EXPECT_EQ(tamu::registry::RegistryInstance::sFirstInstance, nullptr);
}

TEST_F(CYAXTest, ShowsEachViewOfTheOneObject) {
  CYAX* made = new CYAX;
  const struct {
    YAX_GUID_ST iid;
    void* view;
  } views[] = {{IID_IYAXCompBase, static_cast<IYAX*>(made)},
               {IID_IYAX, static_cast<IYAX*>(made)},
               {IID_IYAXRegistry, static_cast<IYAXRegistry*>(made)},
               {IID_IYAXInfoManager, static_cast<IYAXInfoManager*>(made)},
               {IID_IYAXDynamicLoad, static_cast<IYAXDynamicLoad*>(made)}};
  unsigned int count = 1;
  for (const auto& each : views) {
    void* view = nullptr;
    EXPECT_EQ(made->GetInterface(each.iid, &view), 0u);
    EXPECT_EQ(view, each.view);
    EXPECT_EQ(static_cast<IYAXCompBase*>(view)->AddRef(), ++count + 1);
    EXPECT_EQ(static_cast<IYAXCompBase*>(view)->Release(), count);
  }
  for (const auto& each : views) {
    EXPECT_EQ(static_cast<IYAXCompBase*>(each.view)->Release(), --count);
  }
  EXPECT_EQ(made->Release(), 0u);
}

TEST_F(CYAXTest, BeginsWithTheViewOfTheFramework) {
  CYAX* made = new CYAX;
  const char* start = reinterpret_cast<char*>(made);
  const auto offset = [start](auto* part) { return reinterpret_cast<char*>(part) - start; };
  constexpr std::ptrdiff_t kTable = sizeof(void*);
  EXPECT_EQ(offset(static_cast<IYAX*>(made)), 0);
  EXPECT_EQ(offset(static_cast<IYAXRegistry*>(made)), kTable);
  EXPECT_EQ(offset(static_cast<IYAXInfoManager*>(made)), 2 * kTable);
  EXPECT_EQ(offset(static_cast<IYAXDynamicLoad*>(made)), 3 * kTable);
  EXPECT_EQ(offset(static_cast<CYAXCompBase*>(made)), 4 * kTable);
  EXPECT_EQ(made->Release(), 0u);
}

TEST_F(CYAXTest, EndsThroughItsCountedBaseToo) {
  PrintedMessages printed;
  CYAX* made = new CYAX;
  EXPECT_EQ(static_cast<CYAXCompBase*>(made)->AddRef(), 2u);
  void* view = nullptr;
  EXPECT_EQ(static_cast<CYAXCompBase*>(made)->GetInterface(IID_IYAXRegistry, &view), 0u);
  EXPECT_EQ(view, static_cast<IYAXRegistry*>(made));
  EXPECT_EQ(made->Release(), 2u);
  EXPECT_EQ(made->Release(), 1u);
  EXPECT_EQ(static_cast<CYAXCompBase*>(made)->Release(), 0u);
  EXPECT_EQ(printed.Take(), kEnds);
}

// The framework is an ordinary user, whose name has the number 0xAC295ADD.
class FrameworkUser : public CYAXTest {
 protected:
  FrameworkUser() {
    Registry registry(path.c_str(), tamu::registry::kAdmin);
    EXPECT_EQ(registry.Initialize(), 0u);
    EXPECT_EQ(registry.CreateKey(0, "others"), 0u);
    unsigned long long number = 5;
    tamu::registry::Value value =
        tamu::registry::MakeValue(tamu::registry::kValueTypeInteger, &number, sizeof number);
    EXPECT_EQ(registry.CreateValue(0, "", "number", &value), 0u);
    EXPECT_EQ(registry.CreateValue(0, "others", "number", &value), 0u);
  }
  void SetUp() override { ASSERT_EQ(framework->Initialize(path.c_str()), 0u); }
  ~FrameworkUser() override { framework->Release(); }

  CYAX* framework = new CYAX;
  unsigned long long nine = 9;
};

TEST_F(FrameworkUser, OwnsTheKeysThatTheFrameworkCreates) {
  EXPECT_EQ(framework->CreateKey(0, "own"), 0u);
  std::map<std::string, DecodedKey> tree = DecodeTree(path);
  EXPECT_EQ(tree["own"].owner, 0xAC295ADDu);
  EXPECT_EQ(tree["others"].owner, 65535u);
  EXPECT_EQ(framework->CreateValue(0, "own", "n", YAX_REG_DATA_TYPE_INTEGER, &nine), 0u);
  EXPECT_EQ(framework->SetValue(0, "own", "n", YAX_REG_DATA_TYPE_INTEGER, &nine), 0u);
  EXPECT_EQ(framework->DeleteValue(0, "own", "n"), 0u);
  EXPECT_EQ(framework->DeleteKey(0, "own"), 0u);
}

TEST_F(FrameworkUser, MayReadTheRootAndCreateBelowIt) {
  const DecodedKey root = DecodeTree(path)[""];
  EXPECT_EQ(root.owner, 65535u);
  EXPECT_EQ(root.permission >> 4, 5u);
  unsigned int word = 0;
  unsigned int size = 8;
  EXPECT_EQ(framework->GetValue(0, "", "number", YAX_REG_DATA_TYPE_INTEGER, &word, &size), 0u);
  EXPECT_EQ(word, 5u);
  EXPECT_EQ(framework->CreateKey(0, "new"), 0u);
  EXPECT_EQ(framework->CreateValue(0, "", "new", YAX_REG_DATA_TYPE_INTEGER, &nine), 0u);
}

TEST_F(FrameworkUser, MayNotChangeTheRoot) {
  EXPECT_EQ(framework->SetValue(0, "", "number", YAX_REG_DATA_TYPE_INTEGER, &nine), 0xE000000Du);
  EXPECT_EQ(framework->DeleteValue(0, "", "number"), 0xE000000Du);
  EXPECT_EQ(framework->DeleteKey(0, ""), 0xE000000Du);
  EXPECT_EQ(DecodeTree(path)[""].values.at(0).number, 5u);
}

TEST_F(FrameworkUser, MayNotDeleteOrChangeAnotherUsersKey) {
  EXPECT_EQ(framework->DeleteKey(0, "others"), 0xE000000Du);
  EXPECT_EQ(framework->SetValue(0, "others", "number", YAX_REG_DATA_TYPE_INTEGER, &nine),
            0xE000000Du);
  EXPECT_EQ(DecodeTree(path)["others"].values.at(0).number, 5u);
}

}  // namespace
