// Values in a store that is full or cannot be written.
#include "tests/platform/ChildProcess.h"
#include "tests/registry/filetree/SharedStore.h"

namespace tamu::registry {

namespace {

// A store whose data kind can grow no more and has a few blocks left.
class FullDataRig {
 public:
  FullDataRig() : path(dir / "a.rce"), tree(&store, nullptr) {
    tree.ShareStore();
    EXPECT_EQ(status::kOk, store.CreateRegistryFile(path.c_str(), 65536));
    EXPECT_EQ(status::kOk, store.Initialize(path.c_str()));
    EXPECT_EQ(status::kOk, tree.Initialize(nullptr));
    TernaryNodeDescriptor& data = store.Descriptor(NodeKind::kData);
    while (data.tableCount < 20) EXPECT_EQ(status::kOk, store.ExpandFile(&data, 64, 2));
    EXPECT_EQ(status::kOk, store.ExpandFile(&data, 64, 5));  // four blocks
  }
  ~FullDataRig() {
    tree.Finalize();
    store.Finalize();
  }

  unsigned int Blocks() { return store.Descriptor(NodeKind::kData).lastTable->freeCount(); }
  unsigned int Values() { return store.Descriptor(NodeKind::kValue).lastTable->freeCount(); }
  unsigned int Write(bool create, const char* name, unsigned int type, unsigned int size) {
    std::string bytes = Pattern(size);
    Value value = {type, size, bytes.data()};
    return create ? tree.CreateValue(kAdmin, nullptr, "", name, &value)
                  : tree.SetValue(kAdmin, nullptr, "", name, &value);
  }
  std::string Get(const char* name) {
    ReadValue value;
    const unsigned int result = tree.GetValue(kAdmin, nullptr, "", name, &value);
    if (result != 0) return std::to_string(result);
    return HexOf(std::string(static_cast<const char*>(value.data), value.size));
  }

  TempDir dir;
  std::string path;
  TernaryFile store;
  TernaryRegistry tree;
};

TEST(TernaryRegistryValueFailures, CreatingAtAFullStoreChangesNothing) {
  FullDataRig rig;
  ASSERT_EQ(0u, rig.Write(true, "old", 1, 64 * 3));
  const unsigned int values = rig.Values();
  const std::string key = HexOf(FileBytes(rig.path, kKeyArea + 24, 24));
  EXPECT_EQ(75u, rig.Write(true, "new", 1, 65));
  EXPECT_EQ(rig.Values(), values);
  EXPECT_EQ(1u, rig.Blocks());
  EXPECT_EQ(HexOf(FileBytes(rig.path, kKeyArea + 24, 24)), key);
  EXPECT_EQ("2", rig.Get("new"));
  EXPECT_EQ(rig.Get("old"), HexOf(Pattern(64 * 3)));
  EXPECT_EQ(0u, rig.Write(true, "new", 1, 64));
  EXPECT_EQ(rig.Get("new"), HexOf(Pattern(64)));
}

// Of a number the blocks are of no use, and no failure.
TEST(TernaryRegistryValueFailures, ANumberIsCreatedAtAFullStoreAllTheSame) {
  FullDataRig rig;
  ASSERT_EQ(0u, rig.Write(true, "old", 1, 64 * 4));
  EXPECT_EQ(0u, rig.Write(true, "n", 0, 8));
  EXPECT_EQ(rig.Get("n"), HexOf(Pattern(4)) + "00000000");
}

TEST(TernaryRegistryValueFailures, SettingAtAFullStoreKeepsTheOldValue) {
  FullDataRig rig;
  ASSERT_EQ(0u, rig.Write(true, "big", 1, 64 * 2));
  ASSERT_EQ(0u, rig.Write(true, "other", 1, 64));
  const std::string before = GetFile(rig.path);
  EXPECT_EQ(75u, rig.Write(false, "big", 3, 64 * 4));  // two were its own, one is free
  EXPECT_TRUE(GetFile(rig.path) == before);
  EXPECT_EQ(rig.Get("big"), HexOf(Pattern(64 * 2)));
  EXPECT_EQ(rig.Get("other"), HexOf(Pattern(64)));
  EXPECT_EQ(1u, rig.Blocks());
  // Nothing is freed twice, nothing is shared.
  EXPECT_EQ(0u, rig.Write(false, "big", 3, 64 * 3));
  EXPECT_EQ(0u, rig.Blocks());
  EXPECT_EQ(rig.Get("big"), HexOf(Pattern(64 * 3)));
  EXPECT_EQ(rig.Get("other"), HexOf(Pattern(64)));
  EXPECT_EQ(75u, rig.Write(false, "other", 1, 65));
  EXPECT_EQ(rig.Get("big"), HexOf(Pattern(64 * 3)));
  EXPECT_EQ(rig.Get("other"), HexOf(Pattern(64)));
  EXPECT_EQ(0u, rig.Blocks());
}

TEST(TernaryRegistryValueFailures, WithoutRoomForAValueNothingIsChanged) {
  SharedStore shared;
  TernaryFile& store = shared.store;
  TernaryRegistry& tree = shared.tree;
  const std::string& path = shared.path;
  TernaryNodeDescriptor& values = store.Descriptor(NodeKind::kValue);
  while (values.tableCount < 21) ASSERT_EQ(status::kOk, store.ExpandFile(&values, 52, 2));
  ASSERT_EQ(status::kOk, tree.CreateValue(kAdmin, nullptr, "", "n", 1, true));
  const std::string before = GetFile(path);
  char bytes[] = "12345678";
  Value value = {1, 8, bytes};
  EXPECT_EQ(status::kLimit, tree.CreateValue(kAdmin, nullptr, "", "m", 1, true));
  EXPECT_EQ(status::kLimit, tree.CreateValue(kAdmin, nullptr, "", "m", &value));
  value.type = 0;
  EXPECT_EQ(status::kLimit, tree.CreateValue(kAdmin, nullptr, "", "m", &value));
  EXPECT_EQ(GetFile(path), before);
}

// The values before it stay.
TEST(TernaryRegistryValueFailures, AValueThatCannotBeWrittenIsNotLinked) {
  EXPECT_TRUE(InChild([] {
    FileTreeRig rig;
    if (rig.CreateNumber("", "old", 5) != 0) return false;
    LimitFileSize(kValueArea + 52 * 2);
    return rig.CreateNumber("", "new", 6) == 5 && rig.Get("", "new") == "2" &&
           rig.Get("", "old") == "0 type 0: 0500000000000000";
  }));
}

TEST(TernaryRegistryValueFailures, ADefaultValueThatCannotBeWrittenIsReported) {
  EXPECT_TRUE(InChild([] {
    FileTreeRig rig;
    LimitFileSize(kKeyArea);
    unsigned long long number = 0;
    return rig.tree.SetDefaultValue(kAdmin, nullptr, "", 1, false) == 5 &&
           rig.tree.GetDefaultValue(kAdmin, nullptr, "", &number) == 53;
  }));
}

}  // namespace

}  // namespace tamu::registry
