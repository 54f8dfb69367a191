#include <gtest/gtest.h>

#include <functional>

#include "tests/support/StructureCheck.h"
#include "tests/tools/yaxreg/ChangeRig.h"
#include "tests/tools/yaxreg/ContentBuilder.h"
#include "tools/yaxreg/content/ContentDiff.h"
#include "tools/yaxreg/content/Importer.h"

namespace status = tamu::registry::status;

namespace yaxreg {

namespace {

class ImporterTest : public ChangeRig {
 protected:
  // Changes a copy of the content by hand, and the file until it is the same. `strays`: keys that
  // are left beside the way.
  void ExpectChange(const std::function<void(Content*)>& change, const std::string& strays = "") {
    const Content present = Decoded();
    Content wanted = present;
    change(&wanted);
    ASSERT_FALSE(AreSame(present, 0, wanted, 0));
    {
      Registry registry(file.c_str(), tamu::registry::kAdministratorId);
      ASSERT_EQ(status::kOk, registry.Initialize());
      Importer importer(registry, present, wanted, folder / "backup");
      ASSERT_EQ(0u, importer.Run()) << importer.path();
      EXPECT_EQ(Content::kNone, importer.failedRestore());
      rewritten_.clear();
      for (const size_t key : importer.rewritten()) rewritten_ += wanted.PathOf(key) + '\n';
    }
    EXPECT_EQ("", StructureFindings(file));
    EXPECT_EQ(1u, FilesInFolder());
    const Content changed = Decoded();
    std::string found;
    for (const Difference& difference : DifferencesOf(wanted, 0, changed, 0)) {
      found += difference.path + (difference.first == nullptr ? "" : " differs") + "\n";
    }
    EXPECT_EQ(strays, found);
  }

  static ContentKey& At(Content* content, const std::string& path) {
    return content->keys[content->Find(path)];
  }

  std::string rewritten_;  // the paths of the keys that the last change has restored

  unsigned int BlocksInUse() const {
    const SlotUse use = RegistryImage(GetFile(file)).UseOf(NodeKind::kData);
    return use.reached + use.leaked;
  }
};

TEST_F(ImporterTest, ChangesSingleFields) {
  MakeKeys({"net", "net/eth0"});
  ExpectChange([](Content* wanted) {
    ContentKey& key = At(wanted, "net");
    key.watch = 0x2A;
    key.hasDefault = true;
    key.defaultValue = 0xFEDCBA9876543210;
    key.permission = 0x10;
    wanted->keys[0].watch = 1;
  });
  EXPECT_EQ("", rewritten_);
}

// Rights are taken away from the administrator, too, as the owner; he can still do all of it.
TEST_F(ImporterTest, ChangesKeysWhoseRightsForbidIt) {
  MakeKeys({"net", "net/eth0"}, 1000);
  MakeValue("net/eth0", "mtu", 2, "abc");
  ExpectChange([](Content* wanted) {
    wanted->keys[0].permission = 0;
    At(wanted, "net").permission = 0;
    At(wanted, "net/eth0").permission = 0;
  });
  ExpectChange([](Content* wanted) {
    At(wanted, "net/eth0").values[0] = TextOf("mtu", "other");
    At(wanted, "net/eth0").watch = 3;
    At(wanted, "net").values.push_back(NumberOf("n", 1));
    wanted->keys.push_back(KeyOf(2, "wlan"));
    wanted->keys.push_back(KeyOf(1, "top"));
  });
  EXPECT_EQ(0, Decoded().keys[0].permission);
}

TEST_F(ImporterTest, GivesAKeyAnotherOwnerAndKeepsWhatIsBelow) {
  MakeKeys({"net", "net/eth0", "net/eth0/deep", "other"}, 1000);
  MakeValue("net/eth0", "mtu", 2, "abc");
  MakeValue("net", "mtu", 2, "def");
  ExpectChange([](Content* wanted) { At(wanted, "net").owner = 7; });
  EXPECT_EQ("net\n", rewritten_);
  EXPECT_EQ(7u, Key("net").owner);
  EXPECT_EQ(1000u, Key("net/eth0").owner);
  EXPECT_EQ("abc", Value("net/eth0", "mtu").data);
  ExpectChange([](Content* wanted) { wanted->keys[0].owner = 8; });
}

TEST_F(ImporterTest, TakesADefaultValueAway) {
  MakeKeys({"net", "net/eth0"});
  for (const bool isSet : {true, false}) {
    ExpectChange([&](Content* wanted) { At(wanted, "net").hasDefault = isSet; });
    EXPECT_EQ(isSet, Key("net").hasDefault);
  }
}

TEST_F(ImporterTest, MakesValuesThatTheLibraryHasNoOperationFor) {
  MakeKeys({"net"});
  ContentValue odd = NumberOf("odd", 0x1234);
  odd.size = 2;
  ContentValue big = NumberOf("big", 1);
  big.size = 1024;
  ExpectChange([&](Content* wanted) {
    At(wanted, "net").values = {DataOf("empty", 3, ""), odd, UnsetOf("text", 1, 0),
                                UnsetOf("number", 0, 8), big};
  });
  ExpectChange([&](Content* wanted) {
    At(wanted, "net").values = {odd, UnsetOf("empty", 5, 0), TextOf("text", "now"),
                                NumberOf("number", 5), NumberOf("big", 1)};
  });
}

// A value that is created anew loses its blocks for good.
TEST_F(ImporterTest, SetsValuesInPlace) {
  MakeKeys({"net"});
  MakeValue("net", "v", 2, std::string(200, 'x'));
  MakeValue("net", "hidden", 2, "old");
  MakeValue("net", "hidden", 2, "new");
  const unsigned int before = BlocksInUse();
  ExpectChange([](Content* wanted) {
    for (ContentValue& value : At(wanted, "net").values) {
      if (value.name == "v") value = TextOf("v", std::string(250, 'y'));
      if (value.data == "new") value = DataOf("hidden", 3, "newer");
    }
  });
  EXPECT_EQ(before, BlocksInUse());
}

TEST_F(ImporterTest, ReplacesHiddenValues) {
  MakeKeys({"net"});
  MakeValue("net", "v", 2, "one");
  MakeValue("net", "v", 2, "two");
  MakeValue("net", "w", 2, "kept");
  ExpectChange([](Content* wanted) {
    At(wanted, "net").values = {DataOf("w", 2, "kept"), DataOf("v", 2, "two"),
                                DataOf("v", 2, "other"), UnsetOf("v", 0, 8)};
  });
  ExpectChange([](Content* wanted) {
    At(wanted, "net").values = {DataOf("w", 2, "kept"), NumberOf("v", 0xFFFFFFFFFFFFFFFF)};
  });
}

TEST_F(ImporterTest, SetsAllBytesOfANumber) {
  MakeKeys({"net"});
  MakeValue("net", "n", 0, std::string(8, '\xFF'));
  ExpectChange([](Content* wanted) { At(wanted, "net").values[0].number = 0x0123456789ABCDEF; });
}

TEST_F(ImporterTest, MakesExactlyTheKeysNextToSimilarOnes) {
  MakeKeys({"display", "main", "abc"});
  ExpectChange(
      [](Content* wanted) {
        wanted->keys = {wanted->keys[0], wanted->keys[1], KeyOf(1, "ax"), KeyOf(1, "disk"),
                        wanted->keys[2], wanted->keys[3], KeyOf(1, "max")};
      },
      "ab\ndisp\nmai\n");
}

// One after the other they would take a backup each.
TEST_F(ImporterTest, MakesManyKeysAtOnce) {
  MakeKeys({"net"});
  ExpectChange([](Content* wanted) {
    for (unsigned int i = 0; i < 20; ++i) {
      wanted->keys.push_back(KeyOf(2, "k" + std::to_string(10 + i), {NumberOf("n", i)}));
    }
  });
  EXPECT_EQ(22u, Decoded().keys.size());
  EXPECT_EQ("\n", rewritten_);
}

// What is new is made, and nothing that was there is written again.
TEST_F(ImporterTest, RewritesNothingForAFewNewKeys) {
  MakeKeys({"net", "net/eth0", "other"});
  ExpectChange([](Content* wanted) {
    wanted->keys.push_back(KeyOf(2, "new", {NumberOf("n", 1)}));
    wanted->keys.push_back(KeyOf(3, "below"));
  });
  EXPECT_EQ("", rewritten_);
}

// Each name has two values: numbers of 64 bits, texts, unset ones and those that are hidden change,
// go and come, or stay as they are.
TEST_F(ImporterTest, ChangesManyValuesOfOneKey) {
  MakeKeys({"net", "net/eth0"});
  const auto fill = [](Content* wanted, unsigned long long first) {
    std::vector<ContentValue>& values = At(wanted, "net").values;
    values.clear();
    for (unsigned int i = 0; i < 1000; ++i) {
      const unsigned long long number = (i % 7 == 0 ? 1 : first) * 0x100000001 * i;
      const std::string name = "v" + std::to_string(i * 379 % 1000);
      values.push_back(i % 3 == 0   ? NumberOf(name, number)
                       : i % 3 == 1 ? TextOf(name, std::to_string(number))
                                    : UnsetOf(name, 0, 8));
      values.push_back(i % 5 == 0 ? NumberOf(name, number) : TextOf(name, "hidden"));
    }
  };
  ExpectChange([&](Content* wanted) { fill(wanted, 2); });
  ExpectChange([&](Content* wanted) { fill(wanted, 3); });
  EXPECT_EQ("", rewritten_);
  ExpectChange([](Content* wanted) {
    for (ContentValue& value : At(wanted, "net").values) {
      if (value.isNumber()) value = TextOf(value.name, "a text");
    }
  });
}

// 400 keys, each below the one before, with a number each.
TEST_F(ImporterTest, ChangesValuesAtEveryDepth) {
  ExpectChange([](Content* wanted) {
    for (unsigned int depth = 1; depth <= 400; ++depth) {
      wanted->keys.push_back(KeyOf(depth, "k", {NumberOf("n", depth)}));
    }
  });
  ExpectChange([](Content* wanted) {
    for (ContentKey& key : wanted->keys) {
      if (key.depth > 0) key.values[0].number = key.depth * 0x100000000;
    }
  });
  EXPECT_EQ("", rewritten_);
}

// Of the key that does not fit in beside itself nothing is lost.
TEST_F(ImporterTest, TellsTheKeyThatHasNoRoomToBeRestored) {
  ExpectChange([](Content* wanted) {
    for (unsigned int i = 0; i < 5200; ++i) {
      wanted->keys.push_back(KeyOf(1, "k" + std::to_string(10000 + i)));
    }
  });
  const std::string before = GetFile(file);
  const Content present = Decoded();
  Content wanted = present;
  wanted.keys[0].owner = 7;
  Registry registry(file.c_str(), tamu::registry::kAdministratorId);
  ASSERT_EQ(status::kOk, registry.Initialize());
  Importer importer(registry, present, wanted, folder / "backup");
  EXPECT_EQ(75u, importer.Run());
  EXPECT_EQ("", importer.path());
  EXPECT_EQ(0u, importer.failedRestore());
  EXPECT_TRUE(importer.rewritten().empty());
  EXPECT_TRUE(before == GetFile(file));
}

// 4,000 keys are there, 4,200 come: all of them do not fit beside those that are there.
TEST_F(ImporterTest, MakesManyKeysWhereThereIsNoRoomToReplaceAll) {
  std::vector<std::string> paths;
  for (unsigned int i = 0; i < 4000; ++i) paths.push_back("a" + std::to_string(10000 + i));
  MakeKeys(paths);
  ExpectChange([](Content* wanted) {
    for (unsigned int i = 0; i < 4200; ++i) {
      wanted->keys.push_back(KeyOf(1, "b" + std::to_string(10000 + i)));
    }
  });
  EXPECT_EQ("", rewritten_);
}

}  // namespace

}  // namespace yaxreg
