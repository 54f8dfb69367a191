// Making and ending the framework, as programs do.
#include "framework/YAX.h"
#include "registry/Registry.h"
#include "tests/framework/ChosenDurability.h"
#include "tests/framework/PrintedMessages.h"
#include "tests/platform/ChildProcess.h"
#include "tests/platform/TestFiles.h"

namespace {

constexpr char kBegins[] = "3 *********** YAX ***********\n";
constexpr char kEnds[] = "3 *********** ~YAX ***********\n";

// A view of the framework with one reference of its own; null when there is none.
template <class Interface>
Interface* ViewOf(const YAX_GUID_ST& iid) {
  void* view = nullptr;
  return GetYAXInstance(iid, &view) == 0 ? static_cast<Interface*>(view) : nullptr;
}

IYAXRegistry* RegistryView() {
  return ViewOf<IYAXRegistry>(IID_IYAXRegistry);
}

class YAXTest : public ::testing::Test {
 protected:
  ~YAXTest() override {
    EXPECT_EQ(DestroyYAX(), 0u);
    ExpectNoFramework();
  }
  static void ExpectNoFramework() {
    void* view = nullptr;
    EXPECT_EQ(GetYAXInstance(IID_IYAX, &view), 0xE0000005u);
    EXPECT_EQ(view, nullptr);
  }
  void Create() { ASSERT_EQ(CreateYAX(path.c_str()), 0u); }

  TempDir folder;
  const std::string path = folder / "registry";
  PrintedMessages printed;
};

TEST_F(YAXTest, BeforeAndAfterThereIsNoFramework) {
  ExpectNoFramework();
  EXPECT_EQ(GetYAXInstance(IID_IYAX, nullptr), 0xE0000005u);
  EXPECT_EQ(DestroyYAX(), 0u);
  Create();
  EXPECT_EQ(DestroyYAX(), 0u);
  ExpectNoFramework();
  EXPECT_EQ(DestroyYAX(), 0u);
}

TEST_F(YAXTest, TheBeginningAndTheEndAreTold) {
  const ChosenDurability withoutJournal(YAX_DURABILITY_NONE);
  Create();
  EXPECT_EQ(printed.Take(), kBegins);
  DestroyYAX();
  EXPECT_EQ(printed.Take(), kEnds);
  DestroyYAX();
  EXPECT_EQ(printed.Take(), "");
}

TEST_F(YAXTest, MessagesNameNoSource) {
  const ChosenDurability withoutJournal(YAX_DURABILITY_NONE);
  const std::string log = folder / "log";
  EXPECT_TRUE(InChild([&] {
    CVekforTamu::SetSink(nullptr);
    if (std::freopen(log.c_str(), "w", stderr) == nullptr) return false;
    return setenv("YAX_DEBUG", "1", 1) == 0 && CreateYAX(path.c_str()) == 0 && DestroyYAX() == 0;
  }));
  EXPECT_EQ(GetFile(log),
            "YAX[3] *********** YAX ***********\nYAX[3] *********** ~YAX ***********\n");
}

TEST_F(YAXTest, ASecondFrameworkIsNotMade) {
  Create();
  IYAXRegistry* view = RegistryView();
  ASSERT_NE(view, nullptr);
  EXPECT_EQ(view->CreateKey(0, "key"), 0u);
  const std::string bytes = GetFile(path);
  printed.Take();
  const std::string other = folder / "other";
  EXPECT_EQ(CreateYAX(other.c_str()), 0u);
  EXPECT_EQ(CreateYAX(path.c_str()), 0u);
  EXPECT_EQ(CreateYAX(nullptr), 0u);
  EXPECT_EQ(CreateYAX((folder / "absent/registry").c_str()), 0u);
  EXPECT_EQ(printed.Take(), "");
  EXPECT_FALSE(std::filesystem::exists(other));
  EXPECT_EQ(GetFile(path), bytes);
  IYAXRegistry* same = RegistryView();
  ASSERT_EQ(same, view);
  EXPECT_EQ(same->Release(), 2u);  // nothing but the creation's and the view's
  EXPECT_EQ(view->Release(), 1u);
  DestroyYAX();
  EXPECT_EQ(printed.Take(), kEnds);
}

TEST_F(YAXTest, EachViewCountsOnTheOneObject) {
  Create();
  unsigned int count = 1;
  IYAXCompBase* views[5] = {ViewOf<IYAX>(IID_IYAXCompBase), ViewOf<IYAX>(IID_IYAX),
                            ViewOf<IYAXRegistry>(IID_IYAXRegistry),
                            ViewOf<IYAXInfoManager>(IID_IYAXInfoManager),
                            ViewOf<IYAXDynamicLoad>(IID_IYAXDynamicLoad)};
  EXPECT_EQ(views[0], views[1]);
  EXPECT_EQ(views[0]->AddRef(), 7u);
  count = 7;
  for (IYAXCompBase* view : views) {
    EXPECT_EQ(view->AddRef(), ++count);
    // Each leads to every other.
    void* other = nullptr;
    EXPECT_EQ(view->GetInterface(IID_IYAXDynamicLoad, &other), 0u);
    EXPECT_EQ(other, views[4]);
    EXPECT_EQ(view->GetInterface(IID_IYAXCompBase, &other), 0u);
    EXPECT_EQ(other, views[0]);
    count += 2;
  }
  for (IYAXCompBase* view : views) {
    for (int i = 0; i < 4; ++i) EXPECT_EQ(view->Release(), --count);
  }
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(views[0]->Release(), 1u);
  printed.Take();
  DestroyYAX();
  EXPECT_EQ(printed.Take(), kEnds);
}

TEST_F(YAXTest, UnknownInterfacesGiveNothing) {
  Create();
  YAX_GUID_ST nearly = IID_IYAX;
  nearly.Data1 ^= 0x80000000;
  for (const YAX_GUID_ST& iid : {IID_YAXComponentFactory, nearly, YAX_GUID_ST()}) {
    void* view = this;
    EXPECT_EQ(GetYAXInstance(iid, &view), 0xE0000007u);
    EXPECT_EQ(view, nullptr);
  }
  EXPECT_EQ(GetYAXInstance(IID_IYAX, nullptr), 0xE0000008u);
  EXPECT_EQ(GetYAXInstance(IID_YAXComponentFactory, nullptr), 0xE0000008u);
  IYAX* view = ViewOf<IYAX>(IID_IYAX);
  EXPECT_EQ(view->Release(), 1u);  // none of them added a reference
}

TEST_F(YAXTest, LivesAsLongAsAView) {
  Create();
  IYAXRegistry* view = RegistryView();
  printed.Take();
  EXPECT_EQ(DestroyYAX(), 0u);
  ExpectNoFramework();
  EXPECT_EQ(printed.Take(), "");
  EXPECT_EQ(view->CreateKey(0, "late"), 0u);
  void* other = nullptr;
  EXPECT_EQ(view->GetInterface(IID_IYAX, &other), 0u);
  EXPECT_EQ(static_cast<IYAX*>(other)->Release(), 1u);
  EXPECT_EQ(view->Release(), 0u);
  EXPECT_EQ(printed.Take(), kEnds);
  Create();
  view = RegistryView();
  EXPECT_EQ(view->CreateKey(0, "late"), 0xE000000Du);  // it is there
  view->Release();
}

TEST_F(YAXTest, AnOldFrameworkEndsBesideANewOne) {
  Create();
  IYAXRegistry* old = RegistryView();
  DestroyYAX();
  ASSERT_EQ(CreateYAX((folder / "second").c_str()), 0u);
  IYAXRegistry* young = RegistryView();
  ASSERT_NE(young, nullptr);
  EXPECT_NE(young, old);
  EXPECT_EQ(old->CreateKey(0, "old"), 0xE000000Du);  // the process works on one file
  EXPECT_EQ(young->CreateKey(0, "young"), 0u);
  printed.Take();
  EXPECT_EQ(old->Release(), 0u);
  EXPECT_EQ(printed.Take(), kEnds);
  IYAXRegistry* same = RegistryView();
  ASSERT_EQ(same, young);
  EXPECT_EQ(young->CreateKey(0, "younger"), 0u);
  same->Release();
  EXPECT_EQ(young->Release(), 1u);
  DestroyYAX();
  EXPECT_EQ(printed.Take(), kEnds);
}

// The second on a file that is in use has no operations, and disturbs nobody.
class TwoFrameworksOnOneFile : public YAXTest {
 protected:
  void SetUp() override {
    Create();
    first = RegistryView();
    ASSERT_EQ(first->CreateKey(0, "kept"), 0u);
    DestroyYAX();
    Create();
    second = RegistryView();
    ASSERT_NE(second, nullptr);
    unsigned int handle = 0;
    EXPECT_EQ(second->OpenKey("kept", &handle, 0), 0xE000000Du);
    EXPECT_EQ(second->CreateKey(0, "lost"), 0xE000000Du);
    EXPECT_EQ(second->Flush(), 1u);
    IYAXInfoManager* manager = ViewOf<IYAXInfoManager>(IID_IYAXInfoManager);
    YAX_SYSTEM_INFO_ST system = {};
    EXPECT_EQ(manager->SetSystemInfo(&system), 0xE000000Du);
    EXPECT_EQ(manager->GetSystemInfo(&system), 0xE000000Du);
    manager->Release();
    EXPECT_EQ(first->CreateKey(0, "kept/too"), 0u);
  }
  void ExpectKept() {
    Create();
    IYAXRegistry* view = RegistryView();
    EXPECT_EQ(view->CreateKey(0, "kept/too"), 0xE000000Du);
    EXPECT_EQ(view->CreateKey(0, "lost"), 0u);
    view->Release();
  }

  IYAXRegistry* first = nullptr;
  IYAXRegistry* second = nullptr;
};

TEST_F(TwoFrameworksOnOneFile, EndInTheOrderOfTheirMaking) {
  EXPECT_EQ(first->Release(), 0u);
  EXPECT_EQ(second->Release(), 1u);
  DestroyYAX();
  ExpectKept();
}

TEST_F(TwoFrameworksOnOneFile, EndInTheOtherOrder) {
  EXPECT_EQ(second->Release(), 1u);
  DestroyYAX();
  EXPECT_EQ(first->CreateKey(0, "kept/as well"), 0u);
  EXPECT_EQ(first->Release(), 0u);
  ExpectKept();
}

TEST_F(YAXTest, TheCallersTextIsNotNeededAfterwards) {
  std::string text = path;
  ASSERT_EQ(CreateYAX(text.c_str()), 0u);
  text.assign(text.size(), 'x');
  text = std::string();
  IYAXRegistry* view = RegistryView();
  EXPECT_EQ(view->CreateKey(0, "key"), 0u);
  {
    // Looks for its path among those in use.
    tamu::registry::Registry same(path.c_str(), "somebody");
    EXPECT_EQ(same.Initialize(), 0u);
    EXPECT_EQ(same.CreateKey(0, "second"), 1u);  // the framework has it open
  }
  EXPECT_EQ(view->CreateKey(0, "second"), 0u);
  view->Release();
}

TEST_F(YAXTest, WithoutAPathTheFileIsInTheWorkingFolder) {
  EXPECT_TRUE(InChild([&] {
    if (chdir((folder / ".").c_str()) != 0 || CreateYAX(nullptr) != 0) return false;
    IYAXRegistry* view = RegistryView();
    const bool works = view != nullptr && view->CreateKey(0, "key") == 0;
    if (view != nullptr) view->Release();
    return DestroyYAX() == 0 && works;
  }));
  ASSERT_EQ(CreateYAX((folder / "yax.rce").c_str()), 0u);
  IYAXRegistry* view = RegistryView();
  EXPECT_EQ(view->DeleteKey(0, "key"), 0u);
  view->Release();
}

// ---- what a file holds

TEST_F(YAXTest, NothingIsRegisteredAtTheBeginning) {
  {
    tamu::registry::Registry registry((folder / "plain").c_str(), "adminstrator");
    ASSERT_EQ(registry.Initialize(), 0u);
  }
  Create();
  IYAXInfoManager* view = ViewOf<IYAXInfoManager>(IID_IYAXInfoManager);
  YAX_SYSTEM_INFO_ST system = {};
  EXPECT_EQ(view->GetSystemInfo(&system), 0xE000000Du);
  YAX_COMPONENT_INFO_ST info = {};
  EXPECT_EQ(view->GetComponentInfo(IID_IYAX, &info), 0xE000000Du);
  view->Release();
  DestroyYAX();
  // But for four bytes without a meaning.
  const auto content = [](std::string bytes) { return bytes.replace(84, 4, 4, '\0'); };
  EXPECT_TRUE(content(GetFile(path)) == content(GetFile(folder / "plain")));
}

TEST_F(YAXTest, WhatWasStoredIsThereTheNextTime) {
  Create();
  IYAXInfoManager* view = ViewOf<IYAXInfoManager>(IID_IYAXInfoManager);
  YAX_SYSTEM_INFO_ST system = {7, "components"};
  EXPECT_EQ(view->SetSystemInfo(&system), 0u);
  view->Release();
  DestroyYAX();
  Create();
  view = ViewOf<IYAXInfoManager>(IID_IYAXInfoManager);
  YAX_SYSTEM_INFO_ST read = {};
  EXPECT_EQ(view->GetSystemInfo(&read), 0u);
  EXPECT_EQ(read.isSingleBin, 7u);
  EXPECT_STREQ(read.BinDirectory, "components");
  view->Release();
}

}  // namespace
