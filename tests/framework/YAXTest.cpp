// Making and ending the framework, as programs do.
#include "framework/YAX.h"
#include "framework/YAXStatus.h"
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
    EXPECT_EQ(yax_framework::kOk, DestroyYAX());
    ExpectNoFramework();
  }
  static void ExpectNoFramework() {
    void* view = nullptr;
    EXPECT_EQ(yax_framework::kNoFramework, GetYAXInstance(IID_IYAX, &view));
    EXPECT_EQ(nullptr, view);
  }
  void Create() { ASSERT_EQ(yax_framework::kOk, CreateYAX(path.c_str())); }

  TempDir folder;
  const std::string path = folder / "registry";
  PrintedMessages printed;
};

TEST_F(YAXTest, BeforeAndAfterThereIsNoFramework) {
  ExpectNoFramework();
  EXPECT_EQ(yax_framework::kNoFramework, GetYAXInstance(IID_IYAX, nullptr));
  EXPECT_EQ(yax_framework::kOk, DestroyYAX());
  Create();
  EXPECT_EQ(yax_framework::kOk, DestroyYAX());
  ExpectNoFramework();
  EXPECT_EQ(yax_framework::kOk, DestroyYAX());
}

TEST_F(YAXTest, TheBeginningAndTheEndAreTold) {
  const ChosenDurability withoutJournal(YAX_FRAMEWORK_DURABILITY_NONE);
  Create();
  EXPECT_EQ(kBegins, printed.Take());
  DestroyYAX();
  EXPECT_EQ(kEnds, printed.Take());
  DestroyYAX();
  EXPECT_EQ("", printed.Take());
}

TEST_F(YAXTest, MessagesNameNoSource) {
  const ChosenDurability withoutJournal(YAX_FRAMEWORK_DURABILITY_NONE);
  const std::string log = folder / "log";
  EXPECT_TRUE(InChild([&] {
    CVekforTamu::SetSink(nullptr);
    if (std::freopen(log.c_str(), "w", stderr) == nullptr) return false;
    return setenv("YAX_DEBUG", "1", 1) == 0 && CreateYAX(path.c_str()) == 0 && DestroyYAX() == 0;
  }));
  EXPECT_EQ("YAX[3] *********** YAX ***********\nYAX[3] *********** ~YAX ***********\n",
            GetFile(log));
}

TEST_F(YAXTest, ASecondFrameworkIsNotMade) {
  Create();
  IYAXRegistry* view = RegistryView();
  ASSERT_NE(nullptr, view);
  EXPECT_EQ(0u, view->CreateKey(0, "key"));
  const std::string bytes = GetFile(path);
  printed.Take();
  const std::string other = folder / "other";
  EXPECT_EQ(yax_framework::kOk, CreateYAX(other.c_str()));
  EXPECT_EQ(yax_framework::kOk, CreateYAX(path.c_str()));
  EXPECT_EQ(yax_framework::kOk, CreateYAX(nullptr));
  EXPECT_EQ(yax_framework::kOk, CreateYAX((folder / "absent/registry").c_str()));
  EXPECT_EQ("", printed.Take());
  EXPECT_FALSE(std::filesystem::exists(other));
  EXPECT_EQ(GetFile(path), bytes);
  IYAXRegistry* same = RegistryView();
  ASSERT_EQ(same, view);
  EXPECT_EQ(2u, same->Release());  // nothing but the creation's and the view's
  EXPECT_EQ(1u, view->Release());
  DestroyYAX();
  EXPECT_EQ(kEnds, printed.Take());
}

TEST_F(YAXTest, EachViewCountsOnTheOneObject) {
  Create();
  unsigned int count = 1;
  IYAXCompBase* views[5] = {ViewOf<IYAX>(IID_IYAXCompBase), ViewOf<IYAX>(IID_IYAX),
                            ViewOf<IYAXRegistry>(IID_IYAXRegistry),
                            ViewOf<IYAXInfoManager>(IID_IYAXInfoManager),
                            ViewOf<IYAXDynamicLoad>(IID_IYAXDynamicLoad)};
  EXPECT_EQ(views[0], views[1]);
  EXPECT_EQ(7u, views[0]->AddRef());
  count = 7;
  for (IYAXCompBase* view : views) {
    EXPECT_EQ(view->AddRef(), ++count);
    // Each leads to every other.
    void* other = nullptr;
    EXPECT_EQ(yax_framework::kOk, view->GetInterface(IID_IYAXDynamicLoad, &other));
    EXPECT_EQ(other, views[4]);
    EXPECT_EQ(yax_framework::kOk, view->GetInterface(IID_IYAXCompBase, &other));
    EXPECT_EQ(other, views[0]);
    count += 2;
  }
  for (IYAXCompBase* view : views) {
    for (int i = 0; i < 4; ++i) EXPECT_EQ(view->Release(), --count);
  }
  EXPECT_EQ(2u, count);
  EXPECT_EQ(1u, views[0]->Release());
  printed.Take();
  DestroyYAX();
  EXPECT_EQ(kEnds, printed.Take());
}

TEST_F(YAXTest, UnknownInterfacesGiveNothing) {
  Create();
  YAX_GUID_ST nearly = IID_IYAX;
  nearly.Data1 ^= 0x80000000;
  for (const YAX_GUID_ST& iid : {IID_YAXComponentFactory, nearly, YAX_GUID_ST()}) {
    void* view = this;
    EXPECT_EQ(yax_framework::kNoInterface, GetYAXInstance(iid, &view));
    EXPECT_EQ(nullptr, view);
  }
  EXPECT_EQ(yax_framework::kBadArgument, GetYAXInstance(IID_IYAX, nullptr));
  EXPECT_EQ(yax_framework::kBadArgument, GetYAXInstance(IID_YAXComponentFactory, nullptr));
  IYAX* view = ViewOf<IYAX>(IID_IYAX);
  EXPECT_EQ(1u, view->Release());  // none of them added a reference
}

TEST_F(YAXTest, LivesAsLongAsAView) {
  Create();
  IYAXRegistry* view = RegistryView();
  printed.Take();
  EXPECT_EQ(yax_framework::kOk, DestroyYAX());
  ExpectNoFramework();
  EXPECT_EQ("", printed.Take());
  EXPECT_EQ(0u, view->CreateKey(0, "late"));
  void* other = nullptr;
  EXPECT_EQ(yax_framework::kOk, view->GetInterface(IID_IYAX, &other));
  EXPECT_EQ(1u, static_cast<IYAX*>(other)->Release());
  EXPECT_EQ(0u, view->Release());
  EXPECT_EQ(kEnds, printed.Take());
  Create();
  view = RegistryView();
  EXPECT_EQ(yax_framework::kRegistryFailed, view->CreateKey(0, "late"));  // it is there
  view->Release();
}

TEST_F(YAXTest, AnOldFrameworkEndsBesideANewOne) {
  Create();
  IYAXRegistry* old = RegistryView();
  DestroyYAX();
  ASSERT_EQ(yax_framework::kOk, CreateYAX((folder / "second").c_str()));
  IYAXRegistry* young = RegistryView();
  ASSERT_NE(nullptr, young);
  EXPECT_NE(young, old);
  EXPECT_EQ(yax_framework::kRegistryFailed,
            old->CreateKey(0, "old"));  // the process works on one file
  EXPECT_EQ(0u, young->CreateKey(0, "young"));
  printed.Take();
  EXPECT_EQ(0u, old->Release());
  EXPECT_EQ(kEnds, printed.Take());
  IYAXRegistry* same = RegistryView();
  ASSERT_EQ(same, young);
  EXPECT_EQ(0u, young->CreateKey(0, "younger"));
  same->Release();
  EXPECT_EQ(1u, young->Release());
  DestroyYAX();
  EXPECT_EQ(kEnds, printed.Take());
}

// The second on a file that is in use has no operations, and disturbs nobody.
class TwoFrameworksOnOneFile : public YAXTest {
 protected:
  void SetUp() override {
    Create();
    first = RegistryView();
    ASSERT_EQ(0u, first->CreateKey(0, "kept"));
    DestroyYAX();
    Create();
    second = RegistryView();
    ASSERT_NE(nullptr, second);
    unsigned int handle = 0;
    EXPECT_EQ(yax_framework::kRegistryFailed, second->OpenKey("kept", &handle, 0));
    EXPECT_EQ(yax_framework::kRegistryFailed, second->CreateKey(0, "lost"));
    EXPECT_EQ(1u, second->Flush());
    IYAXInfoManager* manager = ViewOf<IYAXInfoManager>(IID_IYAXInfoManager);
    YAX_SYSTEM_INFO_ST system = {};
    EXPECT_EQ(yax_framework::kRegistryFailed, manager->SetSystemInfo(&system));
    EXPECT_EQ(yax_framework::kRegistryFailed, manager->GetSystemInfo(&system));
    manager->Release();
    EXPECT_EQ(0u, first->CreateKey(0, "kept/too"));
  }
  void ExpectKept() {
    Create();
    IYAXRegistry* view = RegistryView();
    EXPECT_EQ(yax_framework::kRegistryFailed, view->CreateKey(0, "kept/too"));
    EXPECT_EQ(0u, view->CreateKey(0, "lost"));
    view->Release();
  }

  IYAXRegistry* first = nullptr;
  IYAXRegistry* second = nullptr;
};

TEST_F(TwoFrameworksOnOneFile, EndInTheOrderOfTheirMaking) {
  EXPECT_EQ(0u, first->Release());
  EXPECT_EQ(1u, second->Release());
  DestroyYAX();
  ExpectKept();
}

TEST_F(TwoFrameworksOnOneFile, EndInTheOtherOrder) {
  EXPECT_EQ(1u, second->Release());
  DestroyYAX();
  EXPECT_EQ(0u, first->CreateKey(0, "kept/as well"));
  EXPECT_EQ(0u, first->Release());
  ExpectKept();
}

TEST_F(YAXTest, TheCallersTextIsNotNeededAfterwards) {
  std::string text = path;
  ASSERT_EQ(yax_framework::kOk, CreateYAX(text.c_str()));
  text.assign(text.size(), 'x');
  text = std::string();
  IYAXRegistry* view = RegistryView();
  EXPECT_EQ(0u, view->CreateKey(0, "key"));
  {
    // Looks for its path among those in use.
    tamu::registry::Registry same(path.c_str(), "somebody");
    EXPECT_EQ(0u, same.Initialize());
    EXPECT_EQ(1u, same.CreateKey(0, "second"));  // the framework has it open
  }
  EXPECT_EQ(0u, view->CreateKey(0, "second"));
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
  ASSERT_EQ(yax_framework::kOk, CreateYAX((folder / "yax.rce").c_str()));
  IYAXRegistry* view = RegistryView();
  EXPECT_EQ(0u, view->DeleteKey(0, "key"));
  view->Release();
}

// ---- what a file holds

TEST_F(YAXTest, NothingIsRegisteredAtTheBeginning) {
  {
    tamu::registry::Registry registry((folder / "plain").c_str(), "adminstrator");
    ASSERT_EQ(0u, registry.Initialize());
  }
  Create();
  IYAXInfoManager* view = ViewOf<IYAXInfoManager>(IID_IYAXInfoManager);
  YAX_SYSTEM_INFO_ST system = {};
  EXPECT_EQ(yax_framework::kRegistryFailed, view->GetSystemInfo(&system));
  YAX_COMPONENT_INFO_ST info = {};
  EXPECT_EQ(yax_framework::kRegistryFailed, view->GetComponentInfo(IID_IYAX, &info));
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
  EXPECT_EQ(yax_framework::kOk, view->SetSystemInfo(&system));
  view->Release();
  DestroyYAX();
  Create();
  view = ViewOf<IYAXInfoManager>(IID_IYAXInfoManager);
  YAX_SYSTEM_INFO_ST read = {};
  EXPECT_EQ(yax_framework::kOk, view->GetSystemInfo(&read));
  EXPECT_EQ(7u, read.isSingleBin);
  EXPECT_STREQ(read.BinDirectory, "components");
  view->Release();
}

}  // namespace
