// Listing through a handle.
#include "tests/registry/memtree/LoadedTreeRig.h"

namespace tamu::registry {
namespace {

class TernaryKeyTreeListingTest : public ::testing::Test {
 protected:
  std::string Keys(const char* key, unsigned int index = 0, unsigned int flags = 0,
                   unsigned int capacity = 1000) {
    NameList list(capacity);
    const unsigned int result = rig.loaded.ListKeys(kOther, root, key, index, &list, flags);
    return ListText(result, list);
  }
  void LoadAll() { root = rig.Load(""); }

  LoadedTreeRig rig;
  TernaryHandle* root = nullptr;
};

TEST_F(TernaryKeyTreeListingTest, GreaterNamesComeFirst) {
  rig.Create({"m", "f", "t", "mn", "m/x", "m/x/y"});
  LoadAll();
  EXPECT_EQ("0: t f mn m/x/y m/x m", Keys(""));
  EXPECT_EQ("0: x/y x", Keys("m"));
  EXPECT_EQ("0:", Keys("m/x/y"));
  EXPECT_EQ("2:", Keys("q"));
  EXPECT_EQ("0: mn m/x/y m/x m", Keys("", 2));
  EXPECT_EQ("0:", Keys("", 6));
  EXPECT_EQ("0:", Keys("", 7));
  EXPECT_EQ("75: t f mn", Keys("", 0, 0, 3));
  EXPECT_EQ("12:", Keys("", 0, 0, 0));
  EXPECT_EQ("0: m", Keys(nullptr, 5));
}

TEST_F(TernaryKeyTreeListingTest, ThePathIsPutBeforeTheNamesAsItIs) {
  rig.Create({"a", "a/b", "a/b/c"});
  LoadAll();
  EXPECT_EQ("0: ab/c ab", Keys("a", 0, 1));
  EXPECT_EQ("0: /a/b/c /a/b", Keys("/a/", 0, 1));
  EXPECT_EQ("0: b/c b", Keys("a", 0, 2));
}

TEST_F(TernaryKeyTreeListingTest, NamesHaveAtMost63Characters) {
  const std::string fits(63, 'n');
  rig.Create({"a", fits.c_str()});
  LoadAll();
  EXPECT_EQ(Keys(""), "0: " + fits + " a");
  rig.Unload(root);
  rig.loaded.UnloadKeyTree(nullptr);
  const std::string tooLong(64, 'z');
  rig.Create({tooLong.c_str()});
  LoadAll();
  EXPECT_EQ("75:", Keys(""));
  EXPECT_EQ("75:", Keys("", 5)) << "also one that is left out";
}

TEST_F(TernaryKeyTreeListingTest, ThePathAndTheSlashesCount) {
  const std::string parent(60, 'p');
  rig.Create({parent.c_str()});
  ASSERT_EQ(status::kOk, rig.file->CreateKey(kAdmin, nullptr, (parent + "/ab").c_str(), 0, false));
  LoadAll();
  EXPECT_EQ(Keys(""), "0: " + parent + "/ab " + parent);
  EXPECT_EQ(Keys(parent.c_str(), 0, 1), "0: " + parent + "ab");
  EXPECT_EQ("75:", Keys(("/" + parent + "/").c_str(), 0, 1));
  EXPECT_EQ("0: ab", Keys(parent.c_str()));
  rig.Unload(root);
  rig.loaded.UnloadKeyTree(nullptr);
  ASSERT_EQ(status::kOk, rig.file->CreateKey(kAdmin, nullptr, (parent + "/abc").c_str(), 0, false));
  LoadAll();
  EXPECT_EQ("75:", Keys(""));
  EXPECT_EQ(Keys(parent.c_str(), 0, 1), "0: " + parent + "abc " + parent + "ab");
}

TEST_F(TernaryKeyTreeListingTest, APathOf64CharactersIsTooLong) {
  const std::string name(64, 'q');
  rig.Create({name.c_str()});
  LoadAll();
  EXPECT_EQ("75:", Keys(name.c_str(), 0, 1));
  EXPECT_EQ("0:", Keys(name.c_str()));
}

// Both trees list and count the same.
TEST_F(TernaryKeyTreeListingTest, AgreesWithTheListOfTheFile) {
  unsigned int state = 1;
  std::vector<std::string> keys = {""};
  for (int i = 0; i < 200; ++i) {
    state = state * 1103515245u + 12345u;
    const std::string& parent = keys[(state >> 8) % keys.size()];
    std::string key = parent + (parent.empty() ? "" : "/");
    for (unsigned int k = 0; k <= (state >> 20) % 3; ++k) {
      key += static_cast<char>("abcz\xE4"[(state >> (3 * k)) % 5]);
    }
    if (key.size() > 60 || rig.file->CreateKey(kAdmin, nullptr, key.c_str(), 0, false) != 0) {
      continue;
    }
    keys.push_back(key);
  }
  ASSERT_GT(keys.size(), 50u);
  LoadAll();
  for (const std::string& key : keys) {
    NameList list(1000);
    const unsigned int listed = rig.file->ListKeys(kAdmin, nullptr, key.c_str(), 0, &list, 0);
    EXPECT_EQ(Keys(key.c_str()), ListText(listed, list)) << key;
    KeyInfo inFile = KeyInfo();
    KeyInfo inMemory = KeyInfo();
    EXPECT_EQ(rig.file->GetKeyInfo(kAdmin, nullptr, key.c_str(), &inFile), listed);
    EXPECT_EQ(rig.loaded.GetKeyInfo(kAdmin, root, key.c_str(), &inMemory), listed);
    EXPECT_EQ(inMemory.subKeyCount, inFile.subKeyCount) << key;
    EXPECT_EQ(inMemory.totalKeyCount, inFile.totalKeyCount) << key;
  }
}

}  // namespace
}  // namespace tamu::registry
