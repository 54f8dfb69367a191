// What is easily done wrong with handles: each sequence leaves a file that is sound and holds what
// was written, also when it is opened anew.
#include "tests/registry/RegistryRig.h"

namespace tamu::registry {

namespace {

class RegistryScenarios : public OpenRegistryTest {
 protected:
  unsigned int Open(const char* key) {
    unsigned int handle = 0;
    EXPECT_EQ(status::kOk, registry.OpenKey(key, &handle)) << key;
    return handle;
  }
  void Create(std::initializer_list<const char*> keys) {
    for (const char* key : keys) ASSERT_EQ(status::kOk, registry.CreateKey(0, key, 7)) << key;
  }
  void CreateText(unsigned int handle, const char* key, const char* name, const char* text) {
    ExactValue value(1, text);
    EXPECT_EQ(status::kOk, registry.CreateValue(handle, key, name, &value)) << key << " " << name;
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
      EXPECT_EQ("", StructureFindings(path));
      EXPECT_EQ(Keys(), keys);
      const SlotCounts counts = CountSlots(path);
      EXPECT_EQ(counts.strings.used, counts.strings.reachable);
      EXPECT_EQ(counts.keys.used, counts.keys.reachable);
      EXPECT_EQ(counts.values.used, counts.values.reachable);
      registry.Finalize();
      ASSERT_EQ(status::kOk, registry.Initialize());
    }
  }
};

TEST_F(RegistryScenarios, AWriteWithoutAHandleRightAfterOpeningClosesTheKey) {
  Create({"a", "a/b"});
  const unsigned int a = Open("a");
  ASSERT_EQ(status::kOk, registry.CreateKey(0, "a/c", 8));
  EXPECT_EQ(status::kBadArgument, registry.CreateKey(a, "d"));
  EXPECT_EQ(status::kBadArgument, registry.CloseKey(a));
  EXPECT_EQ(status::kOk, registry.CreateKey(Open("a"), "d"));
  ExpectKeys("a a/b a/c a/d");
}

TEST_F(RegistryScenarios, AKeyThatWasNotThereIsMadeAndOpened) {
  unsigned int handle = 0;
  EXPECT_EQ(status::kNotFound, registry.OpenKey("x", &handle));
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "x"));
  EXPECT_EQ(status::kOk, registry.OpenKey("x", &handle));
  EXPECT_EQ(status::kOk, registry.CreateKey(handle, "y"));
  ExpectKeys("x x/y");
}

TEST_F(RegistryScenarios, AKeyThatWasOpenedAndClosedIsChangedWithoutAHandle) {
  Create({"a"});
  EXPECT_EQ(status::kOk, registry.CloseKey(Open("a")));
  ASSERT_EQ(status::kOk, registry.CreateKey(0, "a/b"));
  ASSERT_EQ(status::kOk, registry.CreateKey(0, "other"));
  EXPECT_EQ(status::kOk, registry.CreateKey(Open("a"), "c"));
  ExpectKeys("a a/b a/c other");
}

// Somebody else opens the root, registers what is his, and closes it, as often as he likes.
TEST_F(RegistryScenarios, AnOpenKeyStaysWhileTheRootIsOpenedChangedAndClosed) {
  Create({"app", "app/old"});
  const unsigned int app = Open("app");
  for (const char* his : {"his1", "his2"}) {
    const unsigned int root = Open("");
    EXPECT_EQ(status::kOk, registry.CreateKey(root, his));
    CreateText(root, his, "path", "library");
    EXPECT_EQ(status::kOk, registry.CreateKey(root, (std::string("app/") + his).c_str()));
    EXPECT_EQ(status::kOk, registry.CloseKey(root));
    EXPECT_EQ(status::kOk, registry.CreateKey(app, (std::string(his) + "/mine").c_str()));
    CreateText(app, his, "mine", "text");
  }
  EXPECT_EQ(status::kOk, registry.CreateKey(app, "new"));
  EXPECT_EQ(status::kOk, registry.DeleteKey(app, "old"));
  const unsigned int root = Open("");
  EXPECT_EQ("type 1: text", ReadThrough(root, "app/his2", "mine"));
  EXPECT_EQ(status::kOk, registry.CloseKey(app));
  EXPECT_EQ(status::kOk, registry.CreateKey(root, "app/his1/last"));
  ExpectKeys("app app/his1 app/his1/last app/his1/mine app/his2 app/his2/mine app/new his1 his2");
  EXPECT_EQ("type 1: text", Read(registry, "app/his2", "mine"));
}

TEST_F(RegistryScenarios, OfTwoHandlesOnAKeyEitherMayBeClosedFirst) {
  Create({"a", "a/b"});
  for (const char* key : {"a", ""}) {
    for (const bool olderFirst : {true, false}) {
      const std::string below = *key == 0 ? "a/" : "";
      const unsigned int first = Open(key), second = Open(key);
      const unsigned int stays = olderFirst ? second : first;
      EXPECT_EQ(0u, registry.CloseKey(olderFirst ? first : second));
      unsigned long long number = 0;
      EXPECT_EQ(status::kOk, registry.GetDefaultValue(stays, (below + "b").c_str(), &number));
      EXPECT_EQ(status::kExists, registry.CreateKey(stays, (below + "b").c_str()));
      EXPECT_EQ(status::kOk, registry.CreateKey(stays, (below + "c").c_str()));
      EXPECT_EQ(status::kOk, registry.DeleteKey(stays, (below + "c").c_str()));
      EXPECT_EQ(status::kOk, registry.CloseKey(stays));
    }
  }
  EXPECT_EQ("a a/b", Keys());
}

TEST_F(RegistryScenarios, AnInnerHandleThatIsClosedLeavesItsKeyToTheOuterOne) {
  Create({"a", "a/b"});
  CreateText(0, "a", "name", "text");
  const unsigned int root = Open(""), a = Open("a");
  EXPECT_EQ(status::kOk, registry.CloseKey(a));
  EXPECT_EQ("type 1: text", ReadThrough(root, "a", "name"));
  EXPECT_EQ(status::kExists, registry.CreateKey(root, "a"));
  EXPECT_EQ(status::kExists, registry.CreateKey(root, "a/b"));
  EXPECT_EQ(status::kOk, registry.CreateKey(root, "a/c"));
  ExpectKeys("a a/b a/c");
  EXPECT_EQ("type 1: text", Read(registry, "a", "name"));
}

TEST_F(RegistryScenarios, AnOuterHandleThatIsClosedLeavesTheKeyToTheInnerOne) {
  Create({"a", "a/b", "z"});
  const unsigned int root = Open(""), b = Open("a/b");
  EXPECT_EQ(status::kOk, registry.CreateKey(root, "a/b/first"));
  EXPECT_EQ(status::kOk, registry.CloseKey(root));
  EXPECT_EQ(status::kOk, registry.CreateKey(b, "second"));
  const unsigned int again = Open("");
  EXPECT_EQ(status::kOk, registry.CreateKey(again, "a/b/third"));
  EXPECT_EQ(status::kExists, registry.CreateKey(b, "third"));
  EXPECT_EQ(status::kOk, registry.CloseKey(b));
  EXPECT_EQ(status::kOk, registry.CreateKey(again, "z/last"));
  ExpectKeys("a a/b a/b/first a/b/second a/b/third z z/last");
}

TEST_F(RegistryScenarios, AHandlesOwnKeyIsDeletedWithItsSubKeys) {
  Create({"a"});
  const std::string before = UsedSlots(path);
  Create({"a/b", "a/b/c", "a/d"});
  EXPECT_EQ(status::kOk, registry.CreateValue(0, "a/b", "unset", nullptr));
  EXPECT_EQ(status::kOk, registry.CreateValue(0, "a", "unset", nullptr));
  const unsigned int a = Open("a");
  EXPECT_EQ(status::kOk, registry.DeleteKey(a, ""));
  EXPECT_EQ("2 2 0 0", before);
  EXPECT_EQ("2 1 0 0", UsedSlots(path)) << "the name stays, the key does not";
  unsigned long long number = 0;
  EXPECT_EQ(status::kNotFound, registry.GetDefaultValue(a, "", &number));
  EXPECT_EQ(status::kNotFound, registry.GetDefaultValue(a, "b", &number));
  EXPECT_EQ(status::kNoRight, registry.CreateKey(a, "b"));
  EXPECT_EQ(status::kNoRight, registry.CreateKey(a, ""));
  EXPECT_EQ(status::kOk, registry.CloseKey(a));
  const unsigned int root = Open("");
  EXPECT_EQ(status::kOk, registry.CreateKey(root, "a", 9));
  EXPECT_EQ(status::kNotFound, registry.GetDefaultValue(root, "a/b", &number));
  EXPECT_EQ(status::kOk, registry.GetDefaultValue(root, "a", &number));
  EXPECT_EQ(9u, number);
  ExpectKeys("a");
}

TEST_F(RegistryScenarios, AKeyThatIsDeletedWhileItIsOpenBelowStaysUsableThere) {
  Create({"a", "a/b", "a/b/c", "z"});
  const unsigned int root = Open(""), b = Open("a/b");
  EXPECT_EQ(status::kOk, registry.DeleteKey(root, "a"));
  EXPECT_EQ("z", Keys());
  EXPECT_EQ(status::kExists, registry.CreateKey(b, "c"));
  EXPECT_EQ(status::kOk, registry.CreateKey(b, "d"));
  CreateText(b, "d", "name", "text");
  EXPECT_EQ("type 1: text", ReadThrough(b, "d", "name"));
  EXPECT_EQ(status::kOk, registry.CreateKey(root, "a"));
  EXPECT_EQ(status::kOk, registry.CreateKey(root, "a/b"));
  EXPECT_EQ(status::kOk, registry.DeleteKey(b, ""));
  EXPECT_EQ(status::kOk, registry.CloseKey(b));
  EXPECT_EQ(status::kOk, registry.CreateKey(root, "a/b/new"));
  EXPECT_EQ("a a/b a/b/new z", Keys());
  const SlotCounts counts = CountSlots(path);
  EXPECT_EQ(counts.strings.used, counts.strings.reachable + 1) << "the string of the open key";
  EXPECT_EQ(counts.keys.used, counts.keys.reachable);
}

TEST_F(RegistryScenarios, AnotherTypeThanAskedForIsNotHandedOut) {
  Create({"a"});
  CreateText(0, "a", "text", "ab");
  ExactValue number(0, Little(5, 8));
  ASSERT_EQ(status::kOk, registry.CreateValue(0, "a", "number", &number));
  const unsigned int a = Open("a");
  EXPECT_EQ("type 0: (none)", ReadThrough(a, "", "text", kValueTypeInteger));
  EXPECT_EQ("type 1: (none)", ReadThrough(a, "", "number", kValueTypeString));
  EXPECT_EQ("type 1: ab", ReadThrough(a, "", "text", kValueTypeString));
  EXPECT_EQ(ReadThrough(a, "", "number", kValueTypeInteger), "type 0: " + Little(5, 8));
  EXPECT_EQ("type 1: ab", ReadThrough(a, "", "text"));
  ReadValue two;
  ASSERT_EQ(status::kOk, registry.GetValue(a, "", "text", &two));
  EXPECT_EQ(0x6261u, two.number());
}

TEST_F(RegistryScenarios, AValueOfNoKnownTypeChangesNothing) {
  Create({"a"});
  CreateText(0, "a", "text", "some text");
  const unsigned int a = Open("a");
  const std::string before = GetFile(path);
  ExactValue unknown(6, std::string(200, 'x'));
  EXPECT_EQ(status::kOk, registry.SetValue(a, "", "text", &unknown));
  EXPECT_EQ("type 1: some text", ReadThrough(a, "", "text"));
  EXPECT_TRUE(GetFile(path) == before);
  EXPECT_EQ(status::kNoData, registry.CreateValue(a, "", "new", &unknown));
  EXPECT_EQ("", StructureFindings(path));
  EXPECT_EQ("2 2 1 1", UsedSlots(path));
}

TEST_F(RegistryScenarios, ANumberThatIsSaidToBeLongIsReadThroughAHandle) {
  Create({"a"});
  ExactValue number(0, Little(5, 8));
  ASSERT_EQ(status::kOk, registry.CreateValue(0, "a", "number", &number));
  ExactValue longer(0,
                    std::string("\x01\x02\x03\x04\x05\x06\x07\x08\x09", 9) + std::string(991, 'x'));
  EXPECT_EQ(status::kOk, registry.SetValue(0, "a", "number", &longer));
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
      ASSERT_EQ(status::kOk, registry.CreateValue(writer, "a", "data", &other));
      ASSERT_EQ(status::kOk, registry.SetValue(writer, "a", "data", &value));
      EXPECT_EQ(ReadThrough(Open("a"), "", "data"), "type 3: " + bytes);
      EXPECT_EQ(Read(registry, "a", "data"), "type 3: " + bytes);
      ASSERT_EQ(0u, registry.DeleteValue(writtenThrough ? Open("") : 0, "a", "data"));
    }
  }
}

TEST_F(RegistryScenarios, AnEmptyValueIsFilledLater) {
  Create({"a"});
  for (const bool through : {false, true}) {
    const auto handle = [&] { return through ? Open("") : 0; };
    ExactValue empty(1, ""), text(1, "text");
    const char* name = through ? "through" : "without";
    ASSERT_EQ(status::kOk, registry.CreateValue(handle(), "a", name, &empty));
    EXPECT_EQ("status 53", Read(registry, "a", name));
    EXPECT_EQ("type 6: (none)", ReadThrough(Open("a"), "", name));
    ASSERT_EQ(status::kOk, registry.SetValue(handle(), "a", name, &empty));
    EXPECT_EQ(ReadThrough(Open("a"), "", name), through ? "type 6: (none)" : "type 1: ");
    ASSERT_EQ(status::kOk, registry.SetValue(handle(), "a", name, &text));
    EXPECT_EQ("type 1: text", Read(registry, "a", name));
    EXPECT_EQ("type 1: text", ReadThrough(Open("a"), "", name));
  }
  ExpectKeys("a");
}

TEST_F(RegistryScenarios, AKeylessNameIsNoParentWithOrWithoutAHandle) {
  Create({"a", "m", "m/n"});
  ASSERT_EQ(status::kOk, registry.DeleteKey(0, "a"));
  EXPECT_EQ(status::kNoRight, registry.CreateKey(0, "a/b"));
  const unsigned int root = Open("");
  unsigned long long number = 0;
  EXPECT_EQ(status::kNoRight, registry.CreateKey(root, "a/b"));
  EXPECT_EQ(status::kExists, registry.CreateKey(root, "a/"));
  EXPECT_EQ(status::kNotFound, registry.GetDefaultValue(root, "a/", &number));
  EXPECT_EQ(status::kNoRight, registry.GetDefaultValue(0, "a/", &number));
  unsigned int handle = 0;
  EXPECT_EQ(status::kNotFound, registry.OpenKey("a", &handle));
  EXPECT_EQ(status::kNotFound, registry.OpenKey("a/", &handle));
  ExpectKeys("m m/n");
}

// The key is made one character off, as without a handle.
TEST_F(RegistryScenarios, NamesThatEndAtACutAreTakenForItThroughAHandleToo) {
  Create({"abcd"});
  const unsigned int root = Open("");
  EXPECT_EQ(status::kOk, registry.CreateKey(root, "x"));
  EXPECT_EQ("a abcd", Keys());
  EXPECT_EQ(status::kOk, registry.CreateKey(root, "x"));
  EXPECT_EQ(status::kExists, registry.CreateKey(root, "x"));
  EXPECT_EQ(status::kOk, registry.CreateKey(root, "x/bcd"));
  EXPECT_EQ(status::kOk, registry.CreateKey(root, "x//"));
  ExpectKeys("a abcd x x/b x/bcd");
}

// "abc" next to "abcx" and "abdz" ends at a branch. Without a handle it is made there.
TEST_F(RegistryScenarios, ANameThatEndsAtABranchIsMadeWithoutAHandleOnly) {
  const unsigned int root = Open("");
  EXPECT_EQ(status::kOk, registry.CreateKey(root, "abcx"));
  EXPECT_EQ(status::kOk, registry.CreateKey(root, "abdz"));
  EXPECT_EQ(status::kNoRight, registry.CreateKey(root, "abc"));
  EXPECT_EQ("abcx abdz", Keys());
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "abc"));
  EXPECT_EQ(status::kExists, registry.CreateKey(Open(""), "abc"));
  ExpectKeys("abc abcx abdz");
}

TEST_F(RegistryScenarios, FiftyHandlesAreOpenAndClosed) {
  Create({"a"});
  for (unsigned int i = 1; i <= 49; ++i) ASSERT_EQ(Open("a"), i);
  EXPECT_EQ(status::kOk, registry.CloseKey(49));
  EXPECT_EQ(49u, Open("a"));
  for (unsigned int i = 50; i <= 120; ++i) ASSERT_EQ(Open("a"), i);
  for (unsigned int i = 1; i <= 120; ++i) EXPECT_EQ(status::kOk, registry.CloseKey(i));
  EXPECT_EQ(status::kOk, registry.CreateKey(Open("a"), "b"));
  ExpectKeys("a a/b");
}

TEST_F(RegistryScenarios, BytesAbove127AreNamesThroughAHandle) {
  const unsigned int root = Open("");
  for (const char* key : {"a", "\x80", "\xFF", "a\xE9", "a\x80", "\xFF/\x80\xFF"}) {
    EXPECT_EQ(status::kOk, registry.CreateKey(root, key, 7)) << key;
  }
  NameList names(10);
  EXPECT_EQ(status::kOk, registry.ListKeys(root, "", 0, 0, &names, 0));
  std::string text;
  for (unsigned int i = 0; i < names.Count(); ++i)
    text += names.GetName(i, nullptr) + std::string(" ");
  EXPECT_EQ("\xFF/\x80\xFF \xFF \x80 a\x80 a\xE9 a ", text);
  unsigned long long number = 0;
  EXPECT_EQ(status::kOk, registry.GetDefaultValue(0, "\xFF/\x80\xFF", &number));
}

// A client that forgets to close, and one that ends with keys open.
TEST_F(RegistryScenarios, ARegistryIsClosedWithKeysOpen) {
  Create({"a", "a/b", "z"});
  const unsigned int root = Open(""), a = Open("a"), b = Open("a/b");
  EXPECT_EQ(status::kOk, registry.CreateKey(b, "c"));
  EXPECT_EQ(status::kOk, registry.DeleteKey(root, "z"));
  registry.Finalize();
  EXPECT_EQ(status::kNoRight, registry.CloseKey(a));
  ASSERT_EQ(status::kOk, registry.Initialize());
  EXPECT_EQ(status::kBadArgument, registry.CloseKey(a));
  ExpectKeys("a a/b a/b/c");
}

}  // namespace

}  // namespace tamu::registry
