// Every slot of every interface, called through declarations of the test's own. What a call does
// tells which operation stands there.
#include <dlfcn.h>

#include <cstring>

#include "framework/YAXStatus.h"
#include "platform/PCList.h"
#include "tests/framework/IndependentYAX.h"
#include "tests/framework/PrintedMessages.h"
#include "tests/platform/TestFiles.h"

namespace {

using independent::Guid;
using independent::Word;

constexpr Word kFailed = 0xE000000D;

constexpr Guid kInProgram = {{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}};
constexpr Guid kObjectInterface = {{2, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}};
constexpr Guid kUnknown = {{3, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}};
// Of the component in YAX_INDEPENDENT_COMPONENT.
constexpr Guid kAdder = {{0xAD, 0xDE, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}};

bool Same(const Guid& a, const Guid& b) {
  return std::memcmp(a.bytes, b.bytes, sizeof a.bytes) == 0;
}

// The factory of a component in this program; tells what was asked of it.
class ToldFactory : public independent::Factory {
 public:
  Word GetInterface(const Guid&, void**) override { return 0xE0000007; }
  Word AddRef() override { return ++references; }
  Word Release() override { return --references; }
  Word CreateObject(const Guid& iid, void** made) override {
    wanted = iid;
    *made = this;
    return 0x55;
  }
  Word LockBinary(Word lock) override {
    locked = lock;
    return 0x66;
  }
  static Word Give(const Guid& component, const Guid& iid, void** factory);

  Word references = 0;
  Guid wanted = {};
  Word locked = 0x77;
};

ToldFactory gFactory;

Word ToldFactory::Give(const Guid& component, const Guid& iid, void** factory) {
  EXPECT_TRUE(Same(component, kInProgram));
  EXPECT_TRUE(Same(iid, independent::kFactoryInterface));
  *factory = static_cast<independent::Factory*>(&gFactory);
  gFactory.AddRef();
  return 0;
}

independent::ComponentInfo Describe(const Guid& component, const char* name) {
  independent::ComponentInfo info = {};
  info.component = &component;
  std::strcpy(info.name, name);
  info.function = ToldFactory::Give;
  return info;
}

class InterfaceSlots : public ::testing::Test {
 protected:
  void SetUp() override {
    gFactory = ToldFactory();
    ASSERT_EQ(yax_framework::kOk, independent::CreateYAX((folder / "registry").c_str()));
  }
  ~InterfaceSlots() override { independent::DestroyYAX(); }

  template <class Interface>
  static Interface& View(const Guid& iid) {
    void* view = nullptr;
    EXPECT_EQ(yax_framework::kOk, independent::GetYAXInstance(iid, &view));
    return *static_cast<Interface*>(view);
  }
  // The framework object's own table.
  static independent::Object& Table() {
    return View<independent::Object>(independent::kFrameworkInterface);
  }
  void RegisterComponents() {
    independent::Info& info = View<independent::Info>(independent::kInfoInterface);
    const independent::ComponentInfo inProgram = Describe(kInProgram, "in program");
    EXPECT_EQ(yax_framework::kOk, info.RegisterComponent(kInProgram, &inProgram));
    independent::ComponentInfo adder = Describe(kAdder, "adder");
    adder.type = 1;
    std::strncpy(adder.path, YAX_INDEPENDENT_COMPONENT, sizeof adder.path - 1);
    EXPECT_EQ(yax_framework::kOk, info.RegisterComponent(kAdder, &adder));
    info.Release();
  }

  template <class Slots>
  void CheckRootSlots(Slots& view) {
    void* out = this;
    EXPECT_EQ(yax_framework::kNoInterface, view.GetInterface(kUnknown, &out));
    EXPECT_EQ(nullptr, out);
    EXPECT_EQ(3u, view.AddRef());
    EXPECT_EQ(2u, view.Release());
    EXPECT_EQ(yax_framework::kOk, view.GetInterface(independent::kRootInterface, &out));
    EXPECT_EQ(2u, static_cast<independent::Root*>(out)->Release());
  }
  template <class Slots>
  void CheckFrameworkSlots(Slots& view);
  template <class Slots>
  void CheckKeySlots(Slots& view);
  template <class Slots>
  void CheckValueSlots(Slots& view);
  template <class Slots>
  void CheckWholeKeySlots(Slots& view);
  template <class Slots>
  void CheckInfoSlots(Slots& view);
  template <class Slots>
  void CheckLoadSlots(Slots& view);

  TempDir folder;
  PrintedMessages printed;
};

template <class Slots>
void InterfaceSlots::CheckFrameworkSlots(Slots& view) {
  void* made = nullptr;
  EXPECT_EQ(yax_framework::kOk, view.GetComponentFactory(kInProgram, &made));
  EXPECT_EQ(made, &gFactory);
  EXPECT_EQ(1u, gFactory.references);
  made = nullptr;
  EXPECT_EQ(0x55u, view.GetComponentInstance(kInProgram, kObjectInterface, &made));
  EXPECT_EQ(made, &gFactory);
  EXPECT_TRUE(Same(gFactory.wanted, kObjectInterface));
  EXPECT_EQ(1u, gFactory.references);
}

template <class Slots>
void InterfaceSlots::CheckKeySlots(Slots& view) {
  EXPECT_EQ(0u, view.CreateKey(0, "key"));
  EXPECT_EQ(kFailed, view.CreateKey(0, "key"));
  for (const char* key : {"key/a1", "key/b2", "key/b2/c3"}) EXPECT_EQ(0u, view.CreateKey(0, key));
  Word first = 9, keys = 0, allKeys = 0, values = 9, allValues = 9;
  EXPECT_EQ(0u, view.GetKeyInfo(0, "key", &first, &keys, &allKeys, &values, &allValues));
  EXPECT_EQ(0u, first);
  EXPECT_EQ(2u, keys);
  EXPECT_EQ(3u, allKeys);
  EXPECT_EQ(0u, values);
  EXPECT_EQ(0u, allValues);
  PCList list;
  ASSERT_EQ(1, list.Create());
  EXPECT_EQ(0u, view.ListKeys(0, "key", 0, 0, &list, 0));
  EXPECT_EQ(3u, list.Count());
  EXPECT_EQ(0u, view.DeleteKey(0, "key/b2"));
  EXPECT_EQ(kFailed, view.DeleteKey(0, "key/b2"));
  Word handle = 0;
  EXPECT_EQ(0u, view.OpenKey("key", &handle, 0));
  EXPECT_EQ(1u, handle);
  EXPECT_EQ(0u, view.CloseKey(handle));
  EXPECT_EQ(kFailed, view.CloseKey(handle));
}

template <class Slots>
void InterfaceSlots::CheckValueSlots(Slots& view) {
  unsigned long long number = 11;
  EXPECT_EQ(kFailed, view.SetValue(0, "key", "n", 0, &number));
  EXPECT_EQ(0u, view.CreateValue(0, "key", "n", 0, &number));
  number = 12;
  EXPECT_EQ(0u, view.SetValue(0, "key", "n", 0, &number));
  EXPECT_EQ(0u, view.CreateValue(0, "key", "text", 1, "some"));
  PCList list;
  ASSERT_EQ(1, list.Create());
  EXPECT_EQ(0u, view.ListValues(0, "key", 0, 0, &list));
  EXPECT_EQ(2u, list.Count());
  Word word = 0, size = 8;
  EXPECT_EQ(0u, view.GetValue(0, "key", "n", 0, &word, &size));
  EXPECT_EQ(12u, word);
  EXPECT_EQ(8u, size);
  char text[8] = {};
  EXPECT_EQ(0u, view.GetValue(0, "key", "text", 1, text, &size));
  EXPECT_EQ(5u, size);
  EXPECT_STREQ(text, "some");
  EXPECT_EQ(0u, view.DeleteValue(0, "key", "n"));
  EXPECT_EQ(kFailed, view.DeleteValue(0, "key", "n"));
}

template <class Slots>
void InterfaceSlots::CheckWholeKeySlots(Slots& view) {
  const std::string file = folder / "backup";
  EXPECT_EQ(0u, view.Flush());
  EXPECT_EQ(2u, view.BackupKey(0, "absent", file.c_str()));
  EXPECT_EQ(0u, view.BackupKey(0, "key", file.c_str()));
  EXPECT_TRUE(std::filesystem::exists(file));
  EXPECT_EQ(0u, view.DeleteValue(0, "key", "text"));
  EXPECT_EQ(0u, view.RestoreKey(0, "key", file.c_str()));
  EXPECT_EQ(0u, view.DeleteValue(0, "key", "text"));  // it was there again
}

template <class Slots>
void InterfaceSlots::CheckInfoSlots(Slots& view) {
  independent::SystemInfo read = {};
  EXPECT_EQ(kFailed, view.GetSystemInfo(&read));
  independent::SystemInfo system = {2, "somewhere"};
  EXPECT_EQ(yax_framework::kOk, view.SetSystemInfo(&system));
  EXPECT_EQ(yax_framework::kOk, view.GetSystemInfo(&read));
  EXPECT_EQ(2u, read.isSingleBinary);
  EXPECT_STREQ(read.folder, "somewhere");

  independent::ComponentInfo first = Describe(kInProgram, "first");
  independent::ComponentInfo* all[] = {&first, nullptr};
  printed.Take();
  EXPECT_EQ(yax_framework::kOk, view.RegisterAllComponent(all));
  EXPECT_EQ("3 Count = 1\n", printed.Take());
  EXPECT_EQ(kFailed, view.RegisterComponent(kInProgram, &first));
  const independent::ComponentInfo second = Describe(kUnknown, "second");
  EXPECT_EQ(kFailed, view.SetComponentInfo(kUnknown, &second));
  EXPECT_EQ(yax_framework::kOk, view.RegisterComponent(kUnknown, &second));
  EXPECT_EQ("", printed.Take());
  const independent::ComponentInfo third = Describe(kUnknown, "third");
  EXPECT_EQ(yax_framework::kOk, view.SetComponentInfo(kUnknown, &third));
  independent::ComponentInfo info = {};
  EXPECT_EQ(yax_framework::kOk, view.GetComponentInfo(kUnknown, &info));
  EXPECT_STREQ(info.name, "third");
  EXPECT_EQ(yax_framework::kOk, view.UnregisterComponent(kUnknown));
  EXPECT_EQ(kFailed, view.GetComponentInfo(kUnknown, &info));
  EXPECT_EQ(yax_framework::kOk, view.UnregisterComponent(kInProgram));
}

template <class Slots>
void InterfaceSlots::CheckLoadSlots(Slots& view) {
  void* handle = nullptr;
  EXPECT_EQ(yax_framework::kOk, view.LoadComponent(kAdder, &handle));
  void* same = dlopen(YAX_INDEPENDENT_COMPONENT, RTLD_NOW | RTLD_NOLOAD);
  EXPECT_NE(nullptr, same);
  EXPECT_EQ(handle, same);
  if (same != nullptr) dlclose(same);
  EXPECT_EQ(0x66u, view.LockComponent(kInProgram, 5));
  EXPECT_EQ(5u, gFactory.locked);
  EXPECT_EQ(yax_framework::kOk, view.UnloadComponent(kAdder));
  EXPECT_EQ(nullptr, dlopen(YAX_INDEPENDENT_COMPONENT, RTLD_NOW | RTLD_NOLOAD));
}

TEST_F(InterfaceSlots, OfTheRoot) {
  independent::Root& view = View<independent::Root>(independent::kRootInterface);
  CheckRootSlots(view);
  EXPECT_EQ(1u, view.Release());
}

TEST_F(InterfaceSlots, OfTheFramework) {
  RegisterComponents();
  independent::Framework& view = View<independent::Framework>(independent::kFrameworkInterface);
  CheckRootSlots(view);
  CheckFrameworkSlots(view);
  EXPECT_EQ(1u, view.Release());
}

TEST_F(InterfaceSlots, OfTheRegistry) {
  independent::Registry& view = View<independent::Registry>(independent::kRegistryInterface);
  CheckRootSlots(view);
  CheckKeySlots(view);
  CheckValueSlots(view);
  CheckWholeKeySlots(view);
  EXPECT_EQ(1u, view.Release());
}

TEST_F(InterfaceSlots, OfTheInformation) {
  independent::Info& view = View<independent::Info>(independent::kInfoInterface);
  CheckRootSlots(view);
  CheckInfoSlots(view);
  EXPECT_EQ(1u, view.Release());
}

TEST_F(InterfaceSlots, OfTheLoading) {
  RegisterComponents();
  independent::Load& view = View<independent::Load>(independent::kLoadInterface);
  CheckRootSlots(view);
  CheckLoadSlots(view);
  EXPECT_EQ(1u, view.Release());
}

TEST_F(InterfaceSlots, OfTheObjectItselfAreAllOfThemAndTheDestructor) {
  independent::Object& object = Table();
  CheckRootSlots(object);
  CheckInfoSlots(object);
  RegisterComponents();
  CheckFrameworkSlots(object);
  CheckKeySlots(object);
  CheckValueSlots(object);
  CheckWholeKeySlots(object);
  CheckLoadSlots(object);
  printed.Take();
  delete &object;
  EXPECT_EQ("3 *********** ~YAX ***********\n", printed.Take());
  void* view = nullptr;
  EXPECT_EQ(yax_framework::kNoFramework,
            independent::GetYAXInstance(independent::kRootInterface, &view));
}

TEST_F(InterfaceSlots, AnotherIdentifierOfTheFrameworkIsThatOfItsRoot) {
  independent::Root& root = View<independent::Root>(independent::kRootInterface);
  independent::Object& object = Table();
  EXPECT_EQ(static_cast<void*>(&root), static_cast<void*>(&object));
  void* view = this;
  EXPECT_EQ(yax_framework::kNoInterface,
            independent::GetYAXInstance(independent::kFactoryInterface, &view));
  EXPECT_EQ(nullptr, view);
  EXPECT_EQ(2u, root.Release());
  EXPECT_EQ(1u, object.Release());
}

}  // namespace
