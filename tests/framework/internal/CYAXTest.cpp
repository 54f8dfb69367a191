// The framework object from within.
#include "framework/YAX.h"
#include "framework/YAXInterfaceIds.h"
#include "framework/YAXStatus.h"
#include "framework/internal/CYAX.h"
#include "tests/framework/PrintedMessages.h"
#include "tests/registry/RegistryRig.h"

namespace {

using tamu::registry::Registry;

constexpr char kEnds[] = "3 *********** ~YAX ***********\n";

class CYAXTest : public ::testing::Test {
 protected:
  ~CYAXTest() override { EXPECT_EQ(nullptr, CYAX::mspCYAX); }

  TempDir folder;
  const std::string path = folder / "registry";
};

TEST_F(CYAXTest, AnObjectWithoutParts) {
  PrintedMessages printed;
  CYAX* made = new CYAX;
  EXPECT_EQ("", printed.Take());
  EXPECT_EQ(yax_framework::kNoFramework, made->Flush());  // no registry yet
  EXPECT_EQ(2u, made->AddRef());
  EXPECT_EQ(1u, made->Release());
  EXPECT_EQ(0u, made->Release());
  EXPECT_EQ(kEnds, printed.Take());
}

TEST_F(CYAXTest, IsNotFoundUntilItIsMadeWhole) {
  CYAX* made = new CYAX;
  EXPECT_EQ(0u, made->Initialize(path.c_str()));
  EXPECT_EQ(nullptr, CYAX::mspCYAX);
  EXPECT_EQ(0u, made->Flush());
  EXPECT_EQ(0u, made->Release());
  EXPECT_EQ(yax_framework::kOk, CreateYAX(path.c_str()));
  EXPECT_NE(nullptr, CYAX::mspCYAX);
  DestroyYAX();
  EXPECT_EQ(nullptr, CYAX::mspCYAX);
}

TEST_F(CYAXTest, GivesItsPartsBackOnceOnly) {
  CYAX* made = new CYAX;
  EXPECT_EQ(0u, made->Initialize(path.c_str()));
  void* handle = nullptr;
  EXPECT_EQ(yax_framework::kRegistryFailed, made->LoadComponent(IID_IYAX, &handle));
  for (int i = 0; i < 2; ++i) {
    made->Deinitialize();
    EXPECT_EQ(yax_framework::kNoFramework, made->Flush());
  }
  EXPECT_EQ(nullptr, tamu::registry::RegistryInstance::sFirstInstance);
  // Everything can be made anew.
  EXPECT_EQ(0u, made->Initialize(path.c_str()));
  EXPECT_EQ(0u, made->CreateKey(0, "key"));
  EXPECT_EQ(0u, made->Release());
  EXPECT_EQ(nullptr, tamu::registry::RegistryInstance::sFirstInstance);
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
    EXPECT_EQ(yax_framework::kOk, made->GetInterface(each.iid, &view));
    EXPECT_EQ(view, each.view);
    EXPECT_EQ(static_cast<IYAXCompBase*>(view)->AddRef(), ++count + 1);
    EXPECT_EQ(static_cast<IYAXCompBase*>(view)->Release(), count);
  }
  for (const auto& each : views) {
    EXPECT_EQ(static_cast<IYAXCompBase*>(each.view)->Release(), --count);
  }
  EXPECT_EQ(0u, made->Release());
}

TEST_F(CYAXTest, BeginsWithTheViewOfTheFramework) {
  CYAX* made = new CYAX;
  const char* start = reinterpret_cast<char*>(made);
  const auto offset = [start](auto* part) { return reinterpret_cast<char*>(part) - start; };
  constexpr std::ptrdiff_t kTable = sizeof(void*);
  EXPECT_EQ(0, offset(static_cast<IYAX*>(made)));
  EXPECT_EQ(kTable, offset(static_cast<IYAXRegistry*>(made)));
  EXPECT_EQ(offset(static_cast<IYAXInfoManager*>(made)), 2 * kTable);
  EXPECT_EQ(offset(static_cast<IYAXDynamicLoad*>(made)), 3 * kTable);
  EXPECT_EQ(offset(static_cast<CYAXCompBase*>(made)), 4 * kTable);
  EXPECT_EQ(0u, made->Release());
}

TEST_F(CYAXTest, EndsThroughItsCountedBaseToo) {
  PrintedMessages printed;
  CYAX* made = new CYAX;
  EXPECT_EQ(2u, static_cast<CYAXCompBase*>(made)->AddRef());
  void* view = nullptr;
  EXPECT_EQ(yax_framework::kOk,
            static_cast<CYAXCompBase*>(made)->GetInterface(IID_IYAXRegistry, &view));
  EXPECT_EQ(view, static_cast<IYAXRegistry*>(made));
  EXPECT_EQ(2u, made->Release());
  EXPECT_EQ(1u, made->Release());
  EXPECT_EQ(0u, static_cast<CYAXCompBase*>(made)->Release());
  EXPECT_EQ(kEnds, printed.Take());
}

// The framework is an ordinary user, whose name has the number 0xAC295ADD.
class FrameworkUser : public CYAXTest {
 protected:
  FrameworkUser() {
    Registry registry(path.c_str(), tamu::registry::kAdmin);
    EXPECT_EQ(0u, registry.Initialize());
    EXPECT_EQ(0u, registry.CreateKey(0, "others"));
    unsigned long long number = 5;
    tamu::registry::Value value =
        tamu::registry::MakeValue(tamu::registry::kValueTypeInteger, &number, sizeof number);
    EXPECT_EQ(0u, registry.CreateValue(0, "", "number", &value));
    EXPECT_EQ(0u, registry.CreateValue(0, "others", "number", &value));
  }
  void SetUp() override { ASSERT_EQ(0u, framework->Initialize(path.c_str())); }
  ~FrameworkUser() override { framework->Release(); }

  CYAX* framework = new CYAX;
  unsigned long long nine = 9;
};

TEST_F(FrameworkUser, OwnsTheKeysThatTheFrameworkCreates) {
  EXPECT_EQ(0u, framework->CreateKey(0, "own"));
  std::map<std::string, DecodedKey> tree = DecodeTree(path);
  EXPECT_EQ(0xAC295ADDu, tree["own"].owner);
  EXPECT_EQ(65535u, tree["others"].owner);
  EXPECT_EQ(0u, framework->CreateValue(0, "own", "n", YAX_REG_DATA_TYPE_INTEGER, &nine));
  EXPECT_EQ(0u, framework->SetValue(0, "own", "n", YAX_REG_DATA_TYPE_INTEGER, &nine));
  EXPECT_EQ(0u, framework->DeleteValue(0, "own", "n"));
  EXPECT_EQ(0u, framework->DeleteKey(0, "own"));
}

TEST_F(FrameworkUser, MayReadTheRootAndCreateBelowIt) {
  const DecodedKey root = DecodeTree(path)[""];
  EXPECT_EQ(65535u, root.owner);
  EXPECT_EQ(5u, root.permission >> 4);
  unsigned int word = 0;
  unsigned int size = 8;
  EXPECT_EQ(0u, framework->GetValue(0, "", "number", YAX_REG_DATA_TYPE_INTEGER, &word, &size));
  EXPECT_EQ(5u, word);
  EXPECT_EQ(0u, framework->CreateKey(0, "new"));
  EXPECT_EQ(0u, framework->CreateValue(0, "", "new", YAX_REG_DATA_TYPE_INTEGER, &nine));
}

TEST_F(FrameworkUser, MayNotChangeTheRoot) {
  EXPECT_EQ(yax_framework::kRegistryFailed,
            framework->SetValue(0, "", "number", YAX_REG_DATA_TYPE_INTEGER, &nine));
  EXPECT_EQ(yax_framework::kRegistryFailed, framework->DeleteValue(0, "", "number"));
  EXPECT_EQ(yax_framework::kRegistryFailed, framework->DeleteKey(0, ""));
  EXPECT_EQ(5u, DecodeTree(path)[""].values.at(0).number);
}

TEST_F(FrameworkUser, MayNotDeleteOrChangeAnotherUsersKey) {
  EXPECT_EQ(yax_framework::kRegistryFailed, framework->DeleteKey(0, "others"));
  EXPECT_EQ(yax_framework::kRegistryFailed,
            framework->SetValue(0, "others", "number", YAX_REG_DATA_TYPE_INTEGER, &nine));
  EXPECT_EQ(5u, DecodeTree(path)["others"].values.at(0).number);
}

}  // namespace
