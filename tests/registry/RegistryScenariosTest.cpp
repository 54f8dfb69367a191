// What is easily done wrong with handles: each sequence leaves a file that is sound and holds what
// was written, also when it is opened anew.
#include "tests/registry/RegistryRig.h"

namespace tamu::registry {

namespace {

class RegistryScenarios : public OpenRegistryTest {
 protected:
  unsigned int Open(const char* key) {
    unsigned int handle = 0;
    EXPECT_EQ(registry.OpenKey(key, &handle), 0u) << key;
    return handle;
  }
  void Create(std::initializer_list<const char*> keys) {
    for (const char* key : keys) ASSERT_EQ(registry.CreateKey(0, key, 7), 0u) << key;
  }
  void CreateText(unsigned int handle, const char* key, const char* name, const char* text) {
    ExactValue value(1, text);
    EXPECT_EQ(registry.CreateValue(handle, key, name, &value), 0u) << key << " " << name;
  }
  // What GetValue gives through a handle, as Read does without one.
  std::string ReadThrough(unsigned int handle, const char* key, const char* name,
                          unsigned int type = kValueTypeAny) {
    ReadValue value(type);
    const unsigned int result = registry.GetValue(handle, key, name, &value);
    if (result != 0) return "status " + std::to_string(result);
    return "type " + std::to_string(value.type) + ": " + BytesOf(value);
  }
  // The keys in the file but for the root, in the order of their bytes: "a a/b".
  std::string Keys() const {
    std::string text;
    for (const auto& [key, decoded] : DecodeTree(path)) {
      if (!key.empty()) text += (text.empty() ? "" : " ") + key;
    }
    return text;
  }
  // The file holds these keys and nothing else, now and when it is opened anew.
  void ExpectKeys(const std::string& keys) {
    for (int time = 0; time < 2; ++time) {
      EXPECT_EQ(StructureFindings(path), "");
      EXPECT_EQ(Keys(), keys);
      const SlotCounts counts = CountSlots(path);
      EXPECT_EQ(counts.strings.used, counts.strings.reachable);
      EXPECT_EQ(counts.keys.used, counts.keys.reachable);
      EXPECT_EQ(counts.values.used, counts.values.reachable);
      registry.Finalize();
      ASSERT_EQ(registry.Initialize(), 0u);
    }
  }
};

TEST_F(RegistryScenarios, AWriteWithoutAHandleRightAfterOpeningClosesTheKey) {
  Create({"a", "a/b"});
  const unsigned int a = Open("a");
  ASSERT_EQ(registry.CreateKey(0, "a/c", 8), 0u);
  EXPECT_EQ(registry.CreateKey(a, "d"), 22u);
  EXPECT_EQ(registry.CloseKey(a), 22u);
  EXPECT_EQ(registry.CreateKey(Open("a"), "d"), 0u);
  ExpectKeys("a a/b a/c a/d");
}

TEST_F(RegistryScenarios, AKeyThatWasNotThereIsMadeAndOpened) {
  unsigned int handle = 0;
  EXPECT_EQ(registry.OpenKey("x", &handle), 2u);
  EXPECT_EQ(registry.CreateKey(0, "x"), 0u);
  EXPECT_EQ(registry.OpenKey("x", &handle), 0u);
  EXPECT_EQ(registry.CreateKey(handle, "y"), 0u);
  ExpectKeys("x x/y");
}

TEST_F(RegistryScenarios, AKeyThatWasOpenedAndClosedIsChangedWithoutAHandle) {
  Create({"a"});
  EXPECT_EQ(registry.CloseKey(Open("a")), 0u);
  ASSERT_EQ(registry.CreateKey(0, "a/b"), 0u);
  ASSERT_EQ(registry.CreateKey(0, "other"), 0u);
  EXPECT_EQ(registry.CreateKey(Open("a"), "c"), 0u);
  ExpectKeys("a a/b a/c other");
}

// Somebody else opens the root, registers what is his, and closes it, as often as he likes.
TEST_F(RegistryScenarios, AnOpenKeyStaysWhileTheRootIsOpenedChangedAndClosed) {
  Create({"app", "app/old"});
  const unsigned int app = Open("app");
  for (const char* his : {"his1", "his2"}) {
    const unsigned int root = Open("");
    EXPECT_EQ(registry.CreateKey(root, his), 0u);
    CreateText(root, his, "path", "library");
    EXPECT_EQ(registry.CreateKey(root, (std::string("app/") + his).c_str()), 0u);
    EXPECT_EQ(registry.CloseKey(root), 0u);
    EXPECT_EQ(registry.CreateKey(app, (std::string(his) + "/mine").c_str()), 0u);
    CreateText(app, his, "mine", "text");
  }
  EXPECT_EQ(registry.CreateKey(app, "new"), 0u);
  EXPECT_EQ(registry.DeleteKey(app, "old"), 0u);
  const unsigned int root = Open("");
  EXPECT_EQ(ReadThrough(root, "app/his2", "mine"), "type 1: text");
  EXPECT_EQ(registry.CloseKey(app), 0u);
  EXPECT_EQ(registry.CreateKey(root, "app/his1/last"), 0u);
  ExpectKeys("app app/his1 app/his1/last app/his1/mine app/his2 app/his2/mine app/new his1 his2");
  EXPECT_EQ(Read(registry, "app/his2", "mine"), "type 1: text");
}

TEST_F(RegistryScenarios, OfTwoHandlesOnAKeyEitherMayBeClosedFirst) {
  Create({"a", "a/b"});
  for (const char* key : {"a", ""}) {
    for (const bool olderFirst : {true, false}) {
      const std::string below = *key == 0 ? "a/" : "";
      const unsigned int first = Open(key), second = Open(key);
      const unsigned int stays = olderFirst ? second : first;
      EXPECT_EQ(registry.CloseKey(olderFirst ? first : second), 0u);
      unsigned long long number = 0;
      EXPECT_EQ(registry.GetDefaultValue(stays, (below + "b").c_str(), &number), 0u);
      EXPECT_EQ(registry.CreateKey(stays, (below + "b").c_str()), 17u);
      EXPECT_EQ(registry.CreateKey(stays, (below + "c").c_str()), 0u);
      EXPECT_EQ(registry.DeleteKey(stays, (below + "c").c_str()), 0u);
      EXPECT_EQ(registry.CloseKey(stays), 0u);
    }
  }
  EXPECT_EQ(Keys(), "a a/b");
}

TEST_F(RegistryScenarios, AnInnerHandleThatIsClosedLeavesItsKeyToTheOuterOne) {
  Create({"a", "a/b"});
  CreateText(0, "a", "name", "text");
  const unsigned int root = Open(""), a = Open("a");
  EXPECT_EQ(registry.CloseKey(a), 0u);
  EXPECT_EQ(ReadThrough(root, "a", "name"), "type 1: text");
  EXPECT_EQ(registry.CreateKey(root, "a"), 17u);
  EXPECT_EQ(registry.CreateKey(root, "a/b"), 17u);
  EXPECT_EQ(registry.CreateKey(root, "a/c"), 0u);
  ExpectKeys("a a/b a/c");
  EXPECT_EQ(Read(registry, "a", "name"), "type 1: text");
}

TEST_F(RegistryScenarios, AnOuterHandleThatIsClosedLeavesTheKeyToTheInnerOne) {
  Create({"a", "a/b", "z"});
  const unsigned int root = Open(""), b = Open("a/b");
  EXPECT_EQ(registry.CreateKey(root, "a/b/first"), 0u);
  EXPECT_EQ(registry.CloseKey(root), 0u);
  EXPECT_EQ(registry.CreateKey(b, "second"), 0u);
  const unsigned int again = Open("");
  EXPECT_EQ(registry.CreateKey(again, "a/b/third"), 0u);
  EXPECT_EQ(registry.CreateKey(b, "third"), 17u);
  EXPECT_EQ(registry.CloseKey(b), 0u);
  EXPECT_EQ(registry.CreateKey(again, "z/last"), 0u);
  ExpectKeys("a a/b a/b/first a/b/second a/b/third z z/last");
}

TEST_F(RegistryScenarios, AHandlesOwnKeyIsDeletedWithItsSubKeys) {
  Create({"a"});
  const std::string before = UsedSlots(path);
  Create({"a/b", "a/b/c", "a/d"});
  EXPECT_EQ(registry.CreateValue(0, "a/b", "unset", nullptr), 0u);
  EXPECT_EQ(registry.CreateValue(0, "a", "unset", nullptr), 0u);
  const unsigned int a = Open("a");
  EXPECT_EQ(registry.DeleteKey(a, ""), 0u);
  EXPECT_EQ(before, "2 2 0 0");
  EXPECT_EQ(UsedSlots(path), "2 1 0 0") << "the name stays, the key does not";
  unsigned long long number = 0;
  EXPECT_EQ(registry.GetDefaultValue(a, "", &number), 2u);
  EXPECT_EQ(registry.GetDefaultValue(a, "b", &number), 2u);
  EXPECT_EQ(registry.CreateKey(a, "b"), 1u);
  EXPECT_EQ(registry.CreateKey(a, ""), 1u);
  EXPECT_EQ(registry.CloseKey(a), 0u);
  const unsigned int root = Open("");
  EXPECT_EQ(registry.CreateKey(root, "a", 9), 0u);
  EXPECT_EQ(registry.GetDefaultValue(root, "a/b", &number), 2u);
  EXPECT_EQ(registry.GetDefaultValue(root, "a", &number), 0u);
  EXPECT_EQ(number, 9u);
  ExpectKeys("a");
}

TEST_F(RegistryScenarios, AKeyThatIsDeletedWhileItIsOpenBelowStaysUsableThere) {
  Create({"a", "a/b", "a/b/c", "z"});
  const unsigned int root = Open(""), b = Open("a/b");
  EXPECT_EQ(registry.DeleteKey(root, "a"), 0u);
  EXPECT_EQ(Keys(), "z");
  EXPECT_EQ(registry.CreateKey(b, "c"), 17u);
  EXPECT_EQ(registry.CreateKey(b, "d"), 0u);
  CreateText(b, "d", "name", "text");
  EXPECT_EQ(ReadThrough(b, "d", "name"), "type 1: text");
  EXPECT_EQ(registry.CreateKey(root, "a"), 0u);
  EXPECT_EQ(registry.CreateKey(root, "a/b"), 0u);
  EXPECT_EQ(registry.DeleteKey(b, ""), 0u);
  EXPECT_EQ(registry.CloseKey(b), 0u);
  EXPECT_EQ(registry.CreateKey(root, "a/b/new"), 0u);
  EXPECT_EQ(Keys(), "a a/b a/b/new z");
  const SlotCounts counts = CountSlots(path);
  EXPECT_EQ(counts.strings.used, counts.strings.reachable + 1) << "the string of the open key";
  EXPECT_EQ(counts.keys.used, counts.keys.reachable);
}

TEST_F(RegistryScenarios, AnotherTypeThanAskedForIsNotHandedOut) {
  Create({"a"});
  CreateText(0, "a", "text", "ab");
  ExactValue number(0, Little(5, 8));
  ASSERT_EQ(registry.CreateValue(0, "a", "number", &number), 0u);
  const unsigned int a = Open("a");
  EXPECT_EQ(ReadThrough(a, "", "text", kValueTypeInteger), "type 0: (none)");
  EXPECT_EQ(ReadThrough(a, "", "number", kValueTypeString), "type 1: (none)");
  EXPECT_EQ(ReadThrough(a, "", "text", kValueTypeString), "type 1: ab");
  EXPECT_EQ(ReadThrough(a, "", "number", kValueTypeInteger), "type 0: " + Little(5, 8));
  EXPECT_EQ(ReadThrough(a, "", "text"), "type 1: ab");
  ReadValue two;
  ASSERT_EQ(registry.GetValue(a, "", "text", &two), 0u);
  EXPECT_EQ(two.number(), 0x6261u);
}

TEST_F(RegistryScenarios, AValueOfNoKnownTypeChangesNothing) {
  Create({"a"});
  CreateText(0, "a", "text", "some text");
  const unsigned int a = Open("a");
  const std::string before = GetFile(path);
  ExactValue unknown(6, std::string(200, 'x'));
  EXPECT_EQ(registry.SetValue(a, "", "text", &unknown), 0u);
  EXPECT_EQ(ReadThrough(a, "", "text"), "type 1: some text");
  EXPECT_TRUE(GetFile(path) == before);
  EXPECT_EQ(registry.CreateValue(a, "", "new", &unknown), 53u);
  EXPECT_EQ(StructureFindings(path), "");
  EXPECT_EQ(UsedSlots(path), "2 2 1 1");
}

TEST_F(RegistryScenarios, ANumberThatIsSaidToBeLongIsReadThroughAHandle) {
  Create({"a"});
  ExactValue number(0, Little(5, 8));
  ASSERT_EQ(registry.CreateValue(0, "a", "number", &number), 0u);
  ExactValue longer(0,
                    std::string("\x01\x02\x03\x04\x05\x06\x07\x08\x09", 9) + std::string(991, 'x'));
  EXPECT_EQ(registry.SetValue(0, "a", "number", &longer), 0u);
  const std::string read = ReadThrough(Open("a"), "", "number");
  // Without a handle only four bytes are set; the upper half was zero.
  EXPECT_TRUE(read == std::string("type 0: \x01\x02\x03\x04", 12) + std::string(996, '\0'));
}

TEST_F(RegistryScenarios, DataOfEverySizeIsWrittenAndReadBothWays) {
  Create({"a"});
  for (const unsigned int size : {1u, 63u, 64u, 65u, 1023u, 1024u}) {
    const std::string bytes(size, static_cast<char>('a' + size % 26));
    for (const bool writtenThrough : {false, true}) {
      ExactValue value(3, bytes), other(3, std::string(1025 - size, 'o'));
      const unsigned int writer = writtenThrough ? Open("") : 0;
      ASSERT_EQ(registry.CreateValue(writer, "a", "data", &other), 0u);
      ASSERT_EQ(registry.SetValue(writer, "a", "data", &value), 0u);
      EXPECT_EQ(ReadThrough(Open("a"), "", "data"), "type 3: " + bytes);
      EXPECT_EQ(Read(registry, "a", "data"), "type 3: " + bytes);
      ASSERT_EQ(registry.DeleteValue(writtenThrough ? Open("") : 0, "a", "data"), 0u);
    }
  }
}

TEST_F(RegistryScenarios, AnEmptyValueIsFilledLater) {
  Create({"a"});
  for (const bool through : {false, true}) {
    const auto handle = [&] { return through ? Open("") : 0; };
    ExactValue empty(1, ""), text(1, "text");
    const char* name = through ? "through" : "without";
    ASSERT_EQ(registry.CreateValue(handle(), "a", name, &empty), 0u);
    EXPECT_EQ(Read(registry, "a", name), "status 53");
    EXPECT_EQ(ReadThrough(Open("a"), "", name), "type 6: (none)");
    ASSERT_EQ(registry.SetValue(handle(), "a", name, &empty), 0u);
    EXPECT_EQ(ReadThrough(Open("a"), "", name), through ? "type 6: (none)" : "type 1: ");
    ASSERT_EQ(registry.SetValue(handle(), "a", name, &text), 0u);
    EXPECT_EQ(Read(registry, "a", name), "type 1: text");
    EXPECT_EQ(ReadThrough(Open("a"), "", name), "type 1: text");
  }
  ExpectKeys("a");
}

TEST_F(RegistryScenarios, AKeylessNameIsNoParentWithOrWithoutAHandle) {
  Create({"a", "m", "m/n"});
  ASSERT_EQ(registry.DeleteKey(0, "a"), 0u);
  EXPECT_EQ(registry.CreateKey(0, "a/b"), 1u);
  const unsigned int root = Open("");
  unsigned long long number = 0;
  EXPECT_EQ(registry.CreateKey(root, "a/b"), 1u);
  EXPECT_EQ(registry.CreateKey(root, "a/"), 17u);
  EXPECT_EQ(registry.GetDefaultValue(root, "a/", &number), 2u);
  EXPECT_EQ(registry.GetDefaultValue(0, "a/", &number), 1u);
  unsigned int handle = 0;
  EXPECT_EQ(registry.OpenKey("a", &handle), 2u);
  EXPECT_EQ(registry.OpenKey("a/", &handle), 2u);
  ExpectKeys("m m/n");
}

// The key is made one character off, as without a handle.
TEST_F(RegistryScenarios, NamesThatEndAtACutAreTakenForItThroughAHandleToo) {
  Create({"abcd"});
  const unsigned int root = Open("");
  EXPECT_EQ(registry.CreateKey(root, "x"), 0u);
  EXPECT_EQ(Keys(), "a abcd");
  EXPECT_EQ(registry.CreateKey(root, "x"), 0u);
  EXPECT_EQ(registry.CreateKey(root, "x"), 17u);
  EXPECT_EQ(registry.CreateKey(root, "x/bcd"), 0u);
  EXPECT_EQ(registry.CreateKey(root, "x//"), 0u);
  ExpectKeys("a abcd x x/b x/bcd");
}

// "abc" next to "abcx" and "abdz" ends at a branch. Without a handle it is made there.
TEST_F(RegistryScenarios, ANameThatEndsAtABranchIsMadeWithoutAHandleOnly) {
  const unsigned int root = Open("");
  EXPECT_EQ(registry.CreateKey(root, "abcx"), 0u);
  EXPECT_EQ(registry.CreateKey(root, "abdz"), 0u);
  EXPECT_EQ(registry.CreateKey(root, "abc"), 1u);
  EXPECT_EQ(Keys(), "abcx abdz");
  EXPECT_EQ(registry.CreateKey(0, "abc"), 0u);
  EXPECT_EQ(registry.CreateKey(Open(""), "abc"), 17u);
  ExpectKeys("abc abcx abdz");
}

TEST_F(RegistryScenarios, FiftyHandlesAreOpenAndClosed) {
  Create({"a"});
  for (unsigned int i = 1; i <= 49; ++i) ASSERT_EQ(Open("a"), i);
  EXPECT_EQ(registry.CloseKey(49), 0u);
  EXPECT_EQ(Open("a"), 49u);
  for (unsigned int i = 50; i <= 120; ++i) ASSERT_EQ(Open("a"), i);
  for (unsigned int i = 1; i <= 120; ++i) EXPECT_EQ(registry.CloseKey(i), 0u);
  EXPECT_EQ(registry.CreateKey(Open("a"), "b"), 0u);
  ExpectKeys("a a/b");
}

TEST_F(RegistryScenarios, BytesAbove127AreNamesThroughAHandle) {
  const unsigned int root = Open("");
  for (const char* key : {"a", "\x80", "\xFF", "a\xE9", "a\x80", "\xFF/\x80\xFF"}) {
    EXPECT_EQ(registry.CreateKey(root, key, 7), 0u) << key;
  }
  NameList names(10);
  EXPECT_EQ(registry.ListKeys(root, "", 0, 0, &names, 0), 0u);
  std::string text;
  for (unsigned int i = 0; i < names.Count(); ++i)
    text += names.GetName(i, nullptr) + std::string(" ");
  EXPECT_EQ(text, "\xFF/\x80\xFF \xFF \x80 a\x80 a\xE9 a ");
  unsigned long long number = 0;
  EXPECT_EQ(registry.GetDefaultValue(0, "\xFF/\x80\xFF", &number), 0u);
}

// A client that forgets to close, and one that ends with keys open.
TEST_F(RegistryScenarios, ARegistryIsClosedWithKeysOpen) {
  Create({"a", "a/b", "z"});
  const unsigned int root = Open(""), a = Open("a"), b = Open("a/b");
  EXPECT_EQ(registry.CreateKey(b, "c"), 0u);
  EXPECT_EQ(registry.DeleteKey(root, "z"), 0u);
  registry.Finalize();
  EXPECT_EQ(registry.CloseKey(a), 1u);
  ASSERT_EQ(registry.Initialize(), 0u);
  EXPECT_EQ(registry.CloseKey(a), 22u);
  ExpectKeys("a a/b a/b/c");
}

}  // namespace

}  // namespace tamu::registry
