// What both key trees do alike: each test runs on the file's tree and through a handle on the root.
#include "tests/registry/memtree/LoadedTreeRig.h"

namespace tamu::registry {
namespace {

struct FileTree {
  static constexpr bool kIsLoaded = false;
};
struct LoadedTree {
  static constexpr bool kIsLoaded = true;
};
struct TreeNames {
  template <class Kind>
  static std::string GetName(int) {
    return Kind::kIsLoaded ? "LoadedTree" : "FileTree";
  }
};

// 31 bytes of a name field behind its first byte.
const std::string kNoMoreName(2 * 31, '0');

template <class Kind>
class KeyTreeTest : public ::testing::Test {
 protected:
  // The file is sound, and what it holds is found in both trees.
  void TearDown() override {
    EXPECT_EQ("", StructureFindings(rig.path));
    for (const auto& each : DecodeTree(rig.path)) {
      unsigned int node = 0;
      unsigned int key = 0;
      EXPECT_EQ(status::kOk, rig.file->FindKey(nullptr, each.first.c_str(), &node, &key));
      if (root == nullptr) continue;
      EXPECT_EQ(status::kOk, rig.Find(root, each.first.c_str())) << each.first;
    }
    EXPECT_FALSE(root != nullptr && root->start->isLocked());
  }
  RegistryInterface& Tree() {
    if (Kind::kIsLoaded) return rig.loaded;
    return *rig.file;
  }
  // Forgets what is loaded and loads all of it again.
  void Reload() {
    if (!Kind::kIsLoaded) return;
    EXPECT_EQ(status::kOk, rig.Unload(root));
    EXPECT_EQ(status::kOk, rig.loaded.UnloadKeyTree(nullptr));
    root = rig.Load("");
  }

  // ---- keys

  unsigned int Create(const char* path, unsigned int user = kAdmin) {
    return Tree().CreateKey(user, root, path, 0, false);
  }
  void CreateAll(std::initializer_list<const char*> paths) {
    for (const char* path : paths) ASSERT_EQ(status::kOk, Create(path)) << path;
  }
  unsigned int SetPermission(const char* path, unsigned int permission,
                             unsigned int user = kAdmin) {
    return Tree().SetKeyPermission(user, root, path, static_cast<unsigned char>(permission));
  }
  unsigned int SetWatch(const char* path, unsigned char watch, unsigned int user = kAdmin) {
    return Tree().SetKeyWatch(user, root, path, watch);
  }
  unsigned int SetDefault(const char* path, unsigned long long number, bool clear = false) {
    return Tree().SetDefaultValue(kAdmin, root, path, number, clear);
  }
  // The default value: a number, or "53".
  std::string Default(const char* path) {
    std::string texts[3];
    for (std::string& text : texts) {
      const bool inFile = &text == &texts[1];
      RegistryInterface& tree = inFile ? *rig.file : Tree();
      unsigned long long number = 0;
      const unsigned int result =
          tree.GetDefaultValue(kAdmin, inFile ? nullptr : root, path, &number);
      text = std::to_string(result == 0 ? number : result);
      if (inFile) Reload();
    }
    EXPECT_EQ(texts[0], texts[1]) << "the file's";
    EXPECT_EQ(texts[0], texts[2]) << "loaded anew";
    return texts[0];
  }
  // The status and the names, "0: b a/c a".
  std::string Keys(const char* path, unsigned int index = 0, unsigned int flags = 0,
                   unsigned int capacity = 1000) {
    NameList list(capacity);
    return ListText(Tree().ListKeys(kAdmin, root, path, index, &list, flags), list);
  }
  std::string Values(const char* path, unsigned int index = 0, unsigned int capacity = 1000) {
    NameList list(capacity);
    return ListText(Tree().ListValues(kAdmin, root, path, index, &list), list);
  }
  // All fields of a KeyInfo that were 99 before.
  std::string Counted(const char* path) {
    KeyInfo info = {99, 99, 99, 99, 99, 99, 99};
    std::string text = std::to_string(Tree().GetKeyInfo(kAdmin, root, path, &info)) + ":";
    for (unsigned int field : {info.reserved, info.subKeyCount, info.totalKeyCount, info.valueCount,
                               info.totalValueCount, info.userId, info.permission}) {
      text += " " + std::to_string(field);
    }
    return text;
  }

  // ---- values, as the administrator

  unsigned int CreateNumber(const char* path, const char* name, unsigned long long number,
                            bool isSet = true) {
    return Tree().CreateValue(kAdmin, root, path, name, number, isSet);
  }
  // The bytes lie in a heap buffer of exactly their size.
  unsigned int CreateData(const char* path, const char* name, unsigned int type,
                          const std::string& bytes) {
    std::vector<unsigned char> buffer(bytes.begin(), bytes.end());
    Value value = {type, static_cast<unsigned int>(buffer.size()), buffer.data()};
    return Tree().CreateValue(kAdmin, root, path, name, &value);
  }
  unsigned int SetData(const char* path, const char* name, unsigned int type,
                       const std::string& bytes) {
    std::vector<unsigned char> buffer(bytes.begin(), bytes.end());
    Value value = {type, static_cast<unsigned int>(buffer.size()), buffer.data()};
    return Tree().SetValue(kAdmin, root, path, name, &value);
  }
  unsigned int DeleteValue(const char* path, const char* name) {
    return Tree().DeleteValue(kAdmin, root, path, name);
  }
  static std::string GetFrom(RegistryInterface& tree, void* handle, const char* path,
                             const char* name) {
    ReadValue value;
    const unsigned int result = tree.GetValue(kAdmin, handle, path, name, &value);
    if (result == status::kNoData || (result == 0 && value.data == nullptr)) return "nothing";
    if (result != 0) return std::to_string(result);
    const std::string bytes(static_cast<const char*>(value.data), value.size);
    return "type " + std::to_string(value.type) + ": " + HexOf(bytes);
  }
  // "type 1: 616263", "nothing" of a value that is not set, else the status; the same loaded anew,
  // and from the file, where a number has its lower four bytes alone.
  std::string Get(const char* path, const char* name) {
    const std::string text = GetFrom(Tree(), root, path, name);
    const bool isNumber = text.compare(0, 8, "type 0: ") == 0;
    EXPECT_EQ(isNumber ? text.substr(0, 16) + "00000000" : text,
              GetFrom(*rig.file, nullptr, path, name));
    Reload();
    EXPECT_EQ(text, GetFrom(Tree(), root, path, name));
    return text;
  }
  // A number of eight bytes in hex, as the tree reads it, and sets it in place of data.
  static std::string Number(const char* hex) {
    return Kind::kIsLoaded ? hex : std::string(hex, 8) + "00000000";
  }

  // ---- the file

  std::string Hex(unsigned int offset, unsigned int count) const {
    return HexOf(FileBytes(rig.path, offset, count));
  }
  std::string KeyNode(unsigned int slot) const { return rig.KeyNode(slot); }
  std::string KeyFlags(unsigned int slot) const { return Hex(InKey(slot, 7), 1); }
  std::string ValueNode(unsigned int slot) const { return Hex(InValue(slot, 0), 52); }
  std::string DataBlock(unsigned int slot) const { return Hex(kDataArea + 64 * slot, 64); }
  // The entries of the first data blocks, in hex.
  std::string BlockEntries(unsigned int count) const { return Hex(kDataTable + 32 + 4, 4 * count); }
  // How many slots are free, "strings keys values blocks".
  std::string FreeSlots() const {
    std::string text;
    for (unsigned int table : {kStringTable, kKeyTable, kValueTable, kDataTable}) {
      const unsigned int free = storetests::U32At(FileBytes(rig.path, table + 28, 4), 0);
      text += (text.empty() ? "" : " ") + std::to_string(free);
    }
    return text;
  }
  // The paths of the keys, in order, separated by blanks; without the root.
  std::string Stored() const {
    std::string text;
    for (const auto& each : DecodeTree(rig.path)) {
      if (!each.first.empty()) text += (text.empty() ? "" : " ") + each.first;
    }
    return text;
  }

  LoadedTreeRig rig;
  TernaryHandle* root = Kind::kIsLoaded ? rig.Load("") : nullptr;
};

using Trees = ::testing::Types<FileTree, LoadedTree>;
TYPED_TEST_SUITE(KeyTreeTest, Trees, TreeNames);

TYPED_TEST(KeyTreeTest, AKeyWithoutDefaultValueKeepsItsNumber) {
  EXPECT_EQ(status::kOk, this->Tree().CreateKey(kUser, this->root, "a", 7, false));
  EXPECT_EQ(
      "0000000000000f00"
      "e803000000000000"
      "0700000000000000",
      this->KeyNode(2));
}

TYPED_TEST(KeyTreeTest, ADeeperKeyInheritsItsParentsPermission) {
  ASSERT_EQ(status::kOk, this->Create("a", kUser));
  ASSERT_EQ(status::kOk, this->SetPermission("a", 0x7D));
  EXPECT_EQ(status::kOk, this->Create("a/b", kOther));
  EXPECT_EQ(
      "0000000000007d00"
      "d007000000000000"
      "0000000000000000",
      this->KeyNode(3));
  EXPECT_EQ(status::kOk, this->Create("a/b/c", kUser));
  EXPECT_EQ(
      "0000000000007d00"
      "e803000000000000"
      "0000000000000000",
      this->KeyNode(4));
}

TYPED_TEST(KeyTreeTest, CreatingNeedsTheRightToCreateOnTheParent) {
  ASSERT_EQ(status::kOk, this->Create("a", kUser));  // 0F: nothing for others
  std::string before = this->rig.Contents();
  EXPECT_EQ(status::kNoRight, this->Create("a/b", kOther));
  EXPECT_TRUE(this->rig.Contents() == before);
  EXPECT_EQ(status::kOk, this->Create("a/b", kAdmin));
  ASSERT_EQ(status::kOk,
            this->SetPermission("a", 0xFB));  // the owner may do all but create, others all
  before = this->rig.Contents();
  EXPECT_EQ(status::kNoRight, this->Create("a/c", kUser));
  EXPECT_EQ(status::kNoRight, this->Create("a/c", kAdmin));
  EXPECT_TRUE(this->rig.Contents() == before);
  EXPECT_EQ(status::kOk, this->Create("a/c", kOther));
  ASSERT_EQ(status::kOk, this->SetPermission("a", 0x04));
  EXPECT_EQ(status::kOk, this->Create("a/d", kUser));
  EXPECT_EQ(status::kOk, this->Create("a/e", kAdmin));
  EXPECT_EQ(status::kNoRight, this->Create("a/f", kOther));
  ASSERT_EQ(status::kOk, this->SetPermission("", 0xBF));  // the root without the right for others
  EXPECT_EQ(status::kNoRight, this->Create("z", kUser));
  EXPECT_EQ(status::kOk, this->Create("z", kAdmin));
}

TYPED_TEST(KeyTreeTest, AKeyIsCreatedOnce) {
  this->CreateAll({"a", "a/b"});
  const std::string before = this->rig.Contents();
  for (const char* path : {"a", "/a", "a/", "a/b", "a/b/", "", "/"}) {
    EXPECT_EQ(status::kExists, this->Create(path)) << path;
  }
  EXPECT_EQ(status::kExists, this->Create(nullptr));
  EXPECT_EQ(status::kExists, this->Create("a/b", kOther)) << "also for whom may not create there";
  EXPECT_TRUE(this->rig.Contents() == before);
}

TYPED_TEST(KeyTreeTest, TheSecondTryMakesTheNameThatTheFirstMissed) {
  this->CreateAll({"abcd", "x"});
  EXPECT_EQ("a abcd", this->Stored());
  this->CreateAll({"x"});
  EXPECT_EQ("a abcd x", this->Stored());
  EXPECT_EQ(status::kExists, this->Create("x"));
}

TYPED_TEST(KeyTreeTest, APermissionIsForTheOwnerAndTheAdministrator) {
  ASSERT_EQ(status::kOk, this->Create("a", kUser));
  for (unsigned int rights : {0x00u, 0x0Fu, 0xF0u, 0xFFu}) {
    SCOPED_TRACE(rights);
    for (unsigned int user : {kUser, kAdmin}) {
      ASSERT_EQ(status::kOk, this->SetPermission("a", rights));
      EXPECT_EQ(status::kOk, this->SetPermission("a", 0x35, user));
      EXPECT_EQ("35", this->Hex(InKey(2, 6), 1));
    }
    ASSERT_EQ(status::kOk, this->SetPermission("a", rights));
    const std::string before = this->rig.Contents();
    for (unsigned int user : {kOther, 0u, kAdmin - 1}) {
      EXPECT_EQ(status::kNoRight, this->SetPermission("a", 0x35, user)) << user;
    }
    EXPECT_TRUE(this->rig.Contents() == before);
  }
}

TYPED_TEST(KeyTreeTest, OfAWatchSixBitsAreKeptBesideTheOtherFlags) {
  ASSERT_EQ(status::kOk, this->Create("a", kUser));
  const struct {
    unsigned char watch;
    const char* stored;
    const char* withDefault;
    const char* ofRoot;
  } kCases[] = {{0x00, "00", "01", "02"}, {0x01, "04", "05", "06"}, {0x15, "54", "55", "56"},
                {0x20, "80", "81", "82"}, {0x3F, "fc", "fd", "fe"}, {0x40, "00", "01", "02"},
                {0xFF, "fc", "fd", "fe"}, {0xC1, "04", "05", "06"}, {0xC2, "08", "09", "0a"},
                {0x00, "00", "01", "02"}};
  for (const auto& each : kCases) {
    SCOPED_TRACE(static_cast<unsigned int>(each.watch));
    ASSERT_EQ(status::kOk, this->SetWatch("a", each.watch));
    EXPECT_EQ(each.stored, this->KeyFlags(2));
    ASSERT_EQ(status::kOk, this->SetDefault("a", 1));
    EXPECT_EQ(each.withDefault, this->KeyFlags(2));
    ASSERT_EQ(status::kOk, this->SetWatch("a", each.watch, kUser));
    EXPECT_EQ(each.withDefault, this->KeyFlags(2));
    ASSERT_EQ(status::kOk, this->SetDefault("a", 1, true));
    EXPECT_EQ(each.stored, this->KeyFlags(2));
    ASSERT_EQ(status::kOk, this->SetWatch("", each.watch, kOther));
    EXPECT_EQ(std::string("0000000000005f") + each.ofRoot + "ffff0000000000000000000000000000",
              this->KeyNode(1));
    this->Reload();
  }
}

TYPED_TEST(KeyTreeTest, ADefaultValueIsStoredInTheKey) {
  this->CreateAll({"a"});
  ASSERT_EQ(status::kOk, this->SetDefault("a", 0x1122334455667788));
  EXPECT_EQ(
      "0000000000000f01"
      "ffff000000000000"
      "8877665544332211",
      this->KeyNode(2));
  EXPECT_EQ("1234605616436508552", this->Default("a"));
  ASSERT_EQ(status::kOk, this->SetDefault("a", 0));
  EXPECT_EQ(
      "0000000000000f01"
      "ffff000000000000"
      "0000000000000000",
      this->KeyNode(2));
  EXPECT_EQ("0", this->Default("a"));
}

TYPED_TEST(KeyTreeTest, AClearedDefaultKeepsItsNumberInTheFile) {
  this->CreateAll({"a"});
  for (const char* path : {"a", ""}) {
    ASSERT_EQ(status::kOk, this->SetDefault(path, 0x0102));
    ASSERT_EQ(status::kOk, this->SetDefault(path, 0x0304, true));
    EXPECT_EQ("53", this->Default(path));
    const std::string before = this->rig.Contents();
    EXPECT_EQ(status::kOk, this->SetDefault(path, 9, true)) << "none, and not reported";
    EXPECT_TRUE(this->rig.Contents() == before);
  }
  EXPECT_EQ(
      "0000000000000f00"
      "ffff000000000000"
      "0201000000000000",
      this->KeyNode(2));
  EXPECT_EQ(
      "0000000000005f02"  // still the root
      "ffff000000000000"
      "0201000000000000",
      this->KeyNode(1));
}

TYPED_TEST(KeyTreeTest, TheFirstNamesAreSkipped) {
  this->CreateAll({"m", "f", "t", "mn", "m/x"});
  EXPECT_EQ("0: f mn m/x m", this->Keys("", 1));
  EXPECT_EQ("0: mn m/x m", this->Keys("", 2));
  EXPECT_EQ("0: m", this->Keys("", 4));
  EXPECT_EQ("0:", this->Keys("", 5));
  EXPECT_EQ("0:", this->Keys("", 0xFFFFFFFF));
  EXPECT_EQ("0: m", this->Keys("", 4, 1));
  EXPECT_EQ("0: m", this->Keys(nullptr, 4));
}

TYPED_TEST(KeyTreeTest, AListOfCapacityZeroTakesNoName) {
  this->CreateAll({"m", "f", "t", "mn", "m/x"});
  EXPECT_EQ("12:", this->Keys("", 0, 0, 0));
  EXPECT_EQ("12:", this->Keys("", 4, 1, 0));
  EXPECT_EQ("0:", this->Keys("", 5, 0, 0));
}

TYPED_TEST(KeyTreeTest, ValuesAreListedNewestFirst) {
  this->CreateAll({"a", "b"});
  for (const char* name : {"1", "2", "3"}) {
    ASSERT_EQ(status::kOk, this->CreateNumber("a", name, 1));
  }
  EXPECT_EQ("0: 3 2 1", this->Values("a"));
  EXPECT_EQ("0: 1", this->Values("a", 2));
  EXPECT_EQ("75:", this->Values("a", 3));
  EXPECT_EQ("75: 3 2", this->Values("a", 0, 2));
  EXPECT_EQ("75:", this->Values("b"));
  EXPECT_EQ("2:", this->Values("c"));
  EXPECT_EQ(status::kBadArgument, this->Tree().ListValues(kAdmin, this->root, "a", 0, nullptr));
  EXPECT_EQ(status::kBadArgument, this->Tree().ListKeys(kAdmin, this->root, "a", 0, nullptr, 0));
}

TYPED_TEST(KeyTreeTest, KeysAndValuesAreCounted) {
  this->CreateAll({"m", "f", "t", "mn", "m/x", "m/x/y"});
  for (const char* key : {"m", "m/x", "m/x/y", "f"}) {
    ASSERT_EQ(status::kOk, this->CreateNumber(key, "1", 1));
    ASSERT_EQ(status::kOk, this->CreateNumber(key, "2", 2));
  }
  EXPECT_EQ("0: 99 4 6 0 8 65535 95", this->Counted(""));
  EXPECT_EQ("0: 99 1 2 2 6 65535 15", this->Counted("m"));
  EXPECT_EQ("0: 99 0 0 2 2 65535 15", this->Counted("m/x/y"));
  EXPECT_EQ("0: 99 0 0 0 0 65535 15", this->Counted("mn"));
  EXPECT_EQ("2: 99 99 99 99 99 99 99", this->Counted("x"));
}

TYPED_TEST(KeyTreeTest, ANumberIsStoredInItsRecord) {
  this->CreateAll({"a"});
  ASSERT_EQ(status::kOk, this->CreateNumber("a", "n", 0x1122334455667788));
  EXPECT_EQ(
      "0000000000000000"
      "08000040"  // type 0, set
      "6e" +
          kNoMoreName + "8877665544332211",
      this->ValueNode(1));
  EXPECT_EQ(
      "0001000001000f00"
      "ffff000000000000"
      "0000000000000000",
      this->KeyNode(2));
  EXPECT_EQ("362 362 363 364", this->FreeSlots());
  EXPECT_EQ("type 0: " + this->Number("8877665544332211"), this->Get("a", "n"));
}

TYPED_TEST(KeyTreeTest, ANumberThatIsNotSetIsStoredAllTheSame) {
  this->CreateAll({"a"});
  ASSERT_EQ(status::kOk, this->CreateNumber("a", "n", 0x0102, false));
  EXPECT_EQ(
      "0000000000000000"
      "08000000"
      "6e" +
          kNoMoreName + "0201000000000000",
      this->ValueNode(1));
  EXPECT_EQ("nothing", this->Get("a", "n"));
}

TYPED_TEST(KeyTreeTest, DataIsStoredInBlocks) {
  this->CreateAll({"a"});
  ASSERT_EQ(status::kOk, this->CreateData("a", "n", 1, Pattern(65)));
  EXPECT_EQ(
      "0000000000000000"
      "41000061"  // 65 bytes of type 1, in blocks, set
      "6e" +
          kNoMoreName + "0001000000000000",
      this->ValueNode(1));
  EXPECT_EQ(HexOf(Pattern(64)), this->DataBlock(1));
  EXPECT_EQ(HexOf(Pattern(65).substr(64)) + std::string(2 * 63, '0'), this->DataBlock(2));
  EXPECT_EQ("0200000000000000", this->BlockEntries(2));  // block 1, then 2, the last
  EXPECT_EQ("000100000100", this->KeyNode(2).substr(0, 12));
  EXPECT_EQ("type 1: " + HexOf(Pattern(65)), this->Get("a", "n"));
}

TYPED_TEST(KeyTreeTest, MoreThan1024BytesAreRefusedBeforeTheKeyIsLookedFor) {
  this->CreateAll({"a"});
  ASSERT_EQ(status::kOk, this->CreateData("a", "n", 1, Pattern(1024)));
  const std::string before = this->rig.Contents();
  for (const char* key : {"a", "missing"}) {
    for (unsigned int type : {0u, 1u, 6u}) {
      EXPECT_EQ(status::kLimit, this->CreateData(key, "m", type, Pattern(1025)));
      EXPECT_EQ(status::kLimit, this->SetData(key, "n", type, Pattern(1025)));
    }
  }
  EXPECT_TRUE(this->rig.Contents() == before);
  EXPECT_EQ("type 1: " + HexOf(Pattern(1024)), this->Get("a", "n"));
}

TYPED_TEST(KeyTreeTest, NewDataTakesTheBlocksOfTheOldAgain) {
  this->CreateAll({"a"});
  ASSERT_EQ(status::kOk, this->CreateData("a", "n", 1, Pattern(100)));  // blocks 1 and 2
  ASSERT_EQ(status::kOk, this->CreateData("a", "m", 1, "x"));           // block 3
  ASSERT_EQ(status::kOk, this->SetData("a", "n", 1, Pattern(65)));
  EXPECT_EQ("00010000", this->Hex(InValue(1, 44), 4));
  EXPECT_EQ("0200000000000000", this->BlockEntries(2));
  ASSERT_EQ(status::kOk, this->SetData("a", "n", 1, Pattern(150)));  // and block 4
  EXPECT_EQ("02000000040000000000000000000000", this->BlockEntries(4));
  EXPECT_EQ("type 1: " + HexOf(Pattern(150)), this->Get("a", "n"));
  EXPECT_EQ("362 362 362 360", this->FreeSlots());
  ASSERT_EQ(status::kOk, this->SetData("a", "n", 1, "y"));
  EXPECT_EQ("02000000", this->Hex(kDataTable + 32, 4)) << "the first free one";
  EXPECT_EQ("0000000004000000000000000500000006000000", this->BlockEntries(5));
  EXPECT_EQ("362 362 362 362", this->FreeSlots());
  EXPECT_EQ("type 1: 79", this->Get("a", "n"));
  EXPECT_EQ("type 1: 78", this->Get("a", "m"));
}

TYPED_TEST(KeyTreeTest, ANumberInPlaceOfDataGivesTheBlocksBack) {
  this->CreateAll({"a"});
  ASSERT_EQ(status::kOk, this->CreateData("a", "n", 1, Pattern(1024)));
  EXPECT_EQ("362 362 363 348", this->FreeSlots());
  ASSERT_EQ(status::kOk, this->SetData("a", "n", 0, "\x09\x08\x07\x06\x05\x04\x03\x02"));
  EXPECT_EQ("362 362 363 364", this->FreeSlots());
  EXPECT_EQ(
      "0000000000000000"
      "08000040"
      "6e" +
          kNoMoreName + this->Number("0908070605040302"),
      this->ValueNode(1));
  EXPECT_EQ("type 0: " + this->Number("0908070605040302"), this->Get("a", "n"));
  ASSERT_EQ(status::kOk, this->SetData("a", "n", 4, "abc"));
  EXPECT_EQ("03000064", this->Hex(InValue(1, 8), 4));
  EXPECT_EQ("type 4: 616263", this->Get("a", "n"));
  EXPECT_EQ("", storetests::FreeListFindings(this->rig.Contents()));
}

TYPED_TEST(KeyTreeTest, AValueSlotIsFreshWhenItIsTakenAgain) {
  this->CreateAll({"k"});
  ASSERT_EQ(status::kOk, this->CreateData("k", "a long name that fills it all up", 5, "x"));
  ASSERT_EQ(status::kOk, this->DeleteValue("k", "a long name that fills it all u"));
  ASSERT_EQ(status::kOk, this->CreateNumber("k", "n", 1));
  EXPECT_EQ(
      "0000000000000000"
      "08000040"
      "6e" +
          kNoMoreName + "0100000000000000",
      this->ValueNode(1));
}

}  // namespace
}  // namespace tamu::registry
