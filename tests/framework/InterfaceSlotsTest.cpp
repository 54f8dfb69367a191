// Every slot of every interface, called through declarations of the test's own. What a call does
// tells which operation stands there.
#include <dlfcn.h>

#include <cstring>

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
    ASSERT_EQ(independent::CreateYAX((folder / "registry").c_str()), 0u);
  }
  ~InterfaceSlots() override { independent::DestroyYAX(); }

  template <class Interface>
  static Interface& View(const Guid& iid) {
    void* view = nullptr;
    EXPECT_EQ(independent::GetYAXInstance(iid, &view), 0u);
    return *static_cast<Interface*>(view);
  }
  // The framework object's own table.
  static independent::Object& Table() {
    return View<independent::Object>(independent::kFrameworkInterface);
  }
  void RegisterComponents() {
    independent::Info& info = View<independent::Info>(independent::kInfoInterface);
    const independent::ComponentInfo inProgram = Describe(kInProgram, "in program");
    EXPECT_EQ(info.RegisterComponent(kInProgram, &inProgram), 0u);
    independent::ComponentInfo adder = Describe(kAdder, "adder");
    adder.type = 1;
    std::strncpy(adder.path, YAX_INDEPENDENT_COMPONENT, sizeof adder.path - 1);
    EXPECT_EQ(info.RegisterComponent(kAdder, &adder), 0u);
    info.Release();
  }

  template <class Slots>
  void CheckRootSlots(Slots& view) {
    void* out = this;
    EXPECT_EQ(view.GetInterface(kUnknown, &out), 0xE0000007u);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(view.AddRef(), 3u);
    EXPECT_EQ(view.Release(), 2u);
    EXPECT_EQ(view.GetInterface(independent::kRootInterface, &out), 0u);
    EXPECT_EQ(static_cast<independent::Root*>(out)->Release(), 2u);
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
  EXPECT_EQ(view.GetComponentFactory(kInProgram, &made), 0u);
  EXPECT_EQ(made, &gFactory);
  EXPECT_EQ(gFactory.references, 1u);
  made = nullptr;
  EXPECT_EQ(view.GetComponentInstance(kInProgram, kObjectInterface, &made), 0x55u);
  EXPECT_EQ(made, &gFactory);
  EXPECT_TRUE(Same(gFactory.wanted, kObjectInterface));
  EXPECT_EQ(gFactory.references, 1u);
}

template <class Slots>
void InterfaceSlots::CheckKeySlots(Slots& view) {
  EXPECT_EQ(view.CreateKey(0, "key"), 0u);
  EXPECT_EQ(view.CreateKey(0, "key"), kFailed);
  for (const char* key : {"key/a1", "key/b2", "key/b2/c3"}) EXPECT_EQ(view.CreateKey(0, key), 0u);
  Word first = 9, keys = 0, allKeys = 0, values = 9, allValues = 9;
  EXPECT_EQ(view.GetKeyInfo(0, "key", &first, &keys, &allKeys, &values, &allValues), 0u);
  EXPECT_EQ(first, 0u);
  EXPECT_EQ(keys, 2u);
  EXPECT_EQ(allKeys, 3u);
  EXPECT_EQ(values, 0u);
  EXPECT_EQ(allValues, 0u);
  PCList list;
  ASSERT_EQ(list.Create(), 1);
  EXPECT_EQ(view.ListKeys(0, "key", 0, 0, &list, 0), 0u);
  EXPECT_EQ(list.Count(), 3u);
  EXPECT_EQ(view.DeleteKey(0, "key/b2"), 0u);
  EXPECT_EQ(view.DeleteKey(0, "key/b2"), kFailed);
  Word handle = 0;
  EXPECT_EQ(view.OpenKey("key", &handle, 0), 0u);
  EXPECT_EQ(handle, 1u);
  EXPECT_EQ(view.CloseKey(handle), 0u);
  EXPECT_EQ(view.CloseKey(handle), kFailed);
}

template <class Slots>
void InterfaceSlots::CheckValueSlots(Slots& view) {
  unsigned long long number = 11;
  EXPECT_EQ(view.SetValue(0, "key", "n", 0, &number), kFailed);
  EXPECT_EQ(view.CreateValue(0, "key", "n", 0, &number), 0u);
  number = 12;
  EXPECT_EQ(view.SetValue(0, "key", "n", 0, &number), 0u);
  EXPECT_EQ(view.CreateValue(0, "key", "text", 1, "some"), 0u);
  PCList list;
  ASSERT_EQ(list.Create(), 1);
  EXPECT_EQ(view.ListValues(0, "key", 0, 0, &list), 0u);
  EXPECT_EQ(list.Count(), 2u);
  Word word = 0, size = 8;
  EXPECT_EQ(view.GetValue(0, "key", "n", 0, &word, &size), 0u);
  EXPECT_EQ(word, 12u);
  EXPECT_EQ(size, 8u);
  char text[8] = {};
  EXPECT_EQ(view.GetValue(0, "key", "text", 1, text, &size), 0u);
  EXPECT_EQ(size, 5u);
  EXPECT_STREQ(text, "some");
  EXPECT_EQ(view.DeleteValue(0, "key", "n"), 0u);
  EXPECT_EQ(view.DeleteValue(0, "key", "n"), kFailed);
}

template <class Slots>
void InterfaceSlots::CheckWholeKeySlots(Slots& view) {
  const std::string file = folder / "backup";
  EXPECT_EQ(view.Flush(), 0u);
  EXPECT_EQ(view.BackupKey(0, "absent", file.c_str()), 2u);
  EXPECT_EQ(view.BackupKey(0, "key", file.c_str()), 0u);
  EXPECT_TRUE(std::filesystem::exists(file));
  EXPECT_EQ(view.DeleteValue(0, "key", "text"), 0u);
  EXPECT_EQ(view.RestoreKey(0, "key", file.c_str()), 0u);
  EXPECT_EQ(view.DeleteValue(0, "key", "text"), 0u);  // it was there again
}

template <class Slots>
void InterfaceSlots::CheckInfoSlots(Slots& view) {
  independent::SystemInfo read = {};
  EXPECT_EQ(view.GetSystemInfo(&read), kFailed);
  independent::SystemInfo system = {2, "somewhere"};
  EXPECT_EQ(view.SetSystemInfo(&system), 0u);
  EXPECT_EQ(view.GetSystemInfo(&read), 0u);
  EXPECT_EQ(read.isSingleBinary, 2u);
  EXPECT_STREQ(read.folder, "somewhere");

  independent::ComponentInfo first = Describe(kInProgram, "first");
  independent::ComponentInfo* all[] = {&first, nullptr};
  printed.Take();
  EXPECT_EQ(view.RegisterAllComponent(all), 0u);
  EXPECT_EQ(printed.Take(), "3 Count = 1\n");
  EXPECT_EQ(view.RegisterComponent(kInProgram, &first), kFailed);
  const independent::ComponentInfo second = Describe(kUnknown, "second");
  EXPECT_EQ(view.SetComponentInfo(kUnknown, &second), kFailed);
  EXPECT_EQ(view.RegisterComponent(kUnknown, &second), 0u);
  EXPECT_EQ(printed.Take(), "");
  const independent::ComponentInfo third = Describe(kUnknown, "third");
  EXPECT_EQ(view.SetComponentInfo(kUnknown, &third), 0u);
  independent::ComponentInfo info = {};
  EXPECT_EQ(view.GetComponentInfo(kUnknown, &info), 0u);
  EXPECT_STREQ(info.name, "third");
  EXPECT_EQ(view.UnregisterComponent(kUnknown), 0u);
  EXPECT_EQ(view.GetComponentInfo(kUnknown, &info), kFailed);
  EXPECT_EQ(view.UnregisterComponent(kInProgram), 0u);
}

template <class Slots>
void InterfaceSlots::CheckLoadSlots(Slots& view) {
  void* handle = nullptr;
  EXPECT_EQ(view.LoadComponent(kAdder, &handle), 0u);
  void* same = dlopen(YAX_INDEPENDENT_COMPONENT, RTLD_NOW | RTLD_NOLOAD);
  EXPECT_NE(same, nullptr);
  EXPECT_EQ(handle, same);
  if (same != nullptr) dlclose(same);
  EXPECT_EQ(view.LockComponent(kInProgram, 5), 0x66u);
  EXPECT_EQ(gFactory.locked, 5u);
  EXPECT_EQ(view.UnloadComponent(kAdder), 0u);
  EXPECT_EQ(dlopen(YAX_INDEPENDENT_COMPONENT, RTLD_NOW | RTLD_NOLOAD), nullptr);
}

TEST_F(InterfaceSlots, OfTheRoot) {
  independent::Root& view = View<independent::Root>(independent::kRootInterface);
  CheckRootSlots(view);
  EXPECT_EQ(view.Release(), 1u);
}

TEST_F(InterfaceSlots, OfTheFramework) {
  RegisterComponents();
  independent::Framework& view = View<independent::Framework>(independent::kFrameworkInterface);
  CheckRootSlots(view);
  CheckFrameworkSlots(view);
  EXPECT_EQ(view.Release(), 1u);
}

TEST_F(InterfaceSlots, OfTheRegistry) {
  independent::Registry& view = View<independent::Registry>(independent::kRegistryInterface);
  CheckRootSlots(view);
  CheckKeySlots(view);
  CheckValueSlots(view);
  CheckWholeKeySlots(view);
  EXPECT_EQ(view.Release(), 1u);
}

TEST_F(InterfaceSlots, OfTheInformation) {
  independent::Info& view = View<independent::Info>(independent::kInfoInterface);
  CheckRootSlots(view);
  CheckInfoSlots(view);
  EXPECT_EQ(view.Release(), 1u);
}

TEST_F(InterfaceSlots, OfTheLoading) {
  RegisterComponents();
  independent::Load& view = View<independent::Load>(independent::kLoadInterface);
  CheckRootSlots(view);
  CheckLoadSlots(view);
  EXPECT_EQ(view.Release(), 1u);
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
  EXPECT_EQ(printed.Take(), "3 *********** ~YAX ***********\n");
  void* view = nullptr;
  EXPECT_EQ(independent::GetYAXInstance(independent::kRootInterface, &view), 0xE0000005u);
}

TEST_F(InterfaceSlots, AnotherIdentifierOfTheFrameworkIsThatOfItsRoot) {
  independent::Root& root = View<independent::Root>(independent::kRootInterface);
  independent::Object& object = Table();
  EXPECT_EQ(static_cast<void*>(&root), static_cast<void*>(&object));
  void* view = this;
  EXPECT_EQ(independent::GetYAXInstance(independent::kFactoryInterface, &view), 0xE0000007u);
  EXPECT_EQ(view, nullptr);
  EXPECT_EQ(root.Release(), 2u);
  EXPECT_EQ(object.Release(), 1u);
}

}  // namespace
