// Visiting everything below a key in one pass, without a handle and through one.
#include <functional>

#include "tests/registry/RegistryRig.h"

namespace tamu::registry {
namespace {

using Then = WalkVisitor::Then;

// Writes down what it is told, one line each, and answers what it was asked to.
class Diary : public WalkVisitor {
 public:
  Then VisitKey(const WalkedKey& key) override {
    EXPECT_EQ(std::strlen(key.path), key.length);
    text_ += std::string(key.depth, ' ') + "[" + key.path + "]";
    if (!key.isReadable) text_ += " closed";
    if (key.isDefaultSet) text_ += " default " + std::to_string(key.defaultValue);
    text_ += "\n";
    return Answer(key.path);
  }
  Then VisitValue(const WalkedKey& key, const WalkedValue& value) override {
    text_ += std::string(key.depth, ' ') + value.name;
    if (!value.isSet) {
      text_ += " unset";
    } else if (value.type == kValueTypeInteger) {
      unsigned long long number = 0;
      EXPECT_EQ(sizeof number, value.size);
      std::memcpy(&number, value.data, sizeof number);
      text_ += " = " + std::to_string(number);
    } else {
      text_ += " = '" + std::string(static_cast<const char*>(value.data), value.size) + "'";
    }
    text_ += "\n";
    return Answer(std::string(key.path) + "." + value.name);
  }
  void When(const std::string& what, Then then) {
    what_ = what;
    then_ = then;
  }
  void Do(std::function<void()> deed) { deed_ = std::move(deed); }
  const std::string& Text() const { return text_; }

 private:
  Then Answer(const std::string& what) {
    if (deed_) deed_();
    return what == what_ ? then_ : Then::kGoOn;
  }

  std::string text_;
  std::string what_ = "(none)";
  Then then_ = Then::kGoOn;
  std::function<void()> deed_;
};

// Walks with handle 0, or through a handle on the root.
class RegistryWalk : public ::testing::TestWithParam<bool> {
 protected:
  RegistryWalk() : registry_((dir_ / "r").c_str(), kAdmin) {
    EXPECT_EQ(status::kOk, registry_.Initialize());
    for (const char* key : {"net", "net/eth10", "net/eth1", "net/eth1/limits", "a", "net/wlan"}) {
      EXPECT_EQ(status::kOk, registry_.MakeKey(key));
    }
    EXPECT_EQ(status::kOk, registry_.SetDefaultValue(0, "net/eth1", 5));
    unsigned long long number = 0x0102030405060708ull;
    Value mtu = {kValueTypeInteger, sizeof number, &number};
    EXPECT_EQ(status::kOk, registry_.CreateValue(0, "net/eth1", "mtu", &mtu));
    ExactValue mode(kValueTypeString, "fast");
    EXPECT_EQ(status::kOk, registry_.CreateValue(0, "net/eth1", "mode", &mode));
    EXPECT_EQ(status::kOk, registry_.CreateValue(0, "net/eth1/limits", "none", nullptr));
  }
  unsigned int Handle() {
    unsigned int handle = 0;
    EXPECT_EQ(0u, GetParam() ? registry_.OpenKey("", &handle) : 0u);
    return handle;
  }
  std::string Walked(const char* path, unsigned int expected = status::kOk) {
    EXPECT_EQ(expected, registry_.Walk(Handle(), path, diary_));
    return diary_.Text();
  }

  TempDir dir_;
  Registry registry_;
  Diary diary_;
};

INSTANTIATE_TEST_SUITE_P(Trees, RegistryWalk, ::testing::Values(false, true));

TEST_P(RegistryWalk, VisitsKeysInTheOrderOfTheirNamesAndValuesNewestFirst) {
  EXPECT_EQ(
      "[]\n"
      " [a]\n"
      " [net]\n"
      "  [net/eth1] default 5\n"
      "  mode = 'fast'\n"
      "  mtu = 72623859790382856\n"
      "   [net/eth1/limits]\n"
      "   none unset\n"
      "  [net/eth10]\n"
      "  [net/wlan]\n",
      Walked(""));
}

TEST_P(RegistryWalk, BeginsWhereItIsTold) {
  EXPECT_EQ("[] default 5\nmode = 'fast'\nmtu = 72623859790382856\n [limits]\n none unset\n",
            Walked("net/eth1"));
}

TEST_P(RegistryWalk, AnswersWhatIsWrongWithThePath) {
  EXPECT_EQ("", Walked("net/eth", status::kNotFound));
  EXPECT_EQ("", Walked("nothing", status::kNotFound));
}

TEST_P(RegistryWalk, ASkippedKeyIsLeftWithAllBelow) {
  diary_.When("eth1", Then::kSkip);
  EXPECT_EQ("[]\n [eth1] default 5\n [eth10]\n [wlan]\n", Walked("net"));
}

TEST_P(RegistryWalk, AValueCanSkipTheRestOfItsKey) {
  diary_.When("eth1.mode", Then::kSkip);
  EXPECT_EQ("[]\n [eth1] default 5\n mode = 'fast'\n [eth10]\n [wlan]\n", Walked("net"));
}

TEST_P(RegistryWalk, StopsAtAKeyOrAValueWithStatus0) {
  diary_.When("eth10", Then::kStop);
  Walked("net");
  EXPECT_EQ(std::string::npos, diary_.Text().find("wlan"));
  diary_ = Diary();
  diary_.When("eth1.mode", Then::kStop);
  EXPECT_EQ("[]\n [eth1] default 5\n mode = 'fast'\n", Walked("net"));
  diary_ = Diary();
  diary_.When("", Then::kStop);
  EXPECT_EQ("[]\n", Walked("net"));
}

TEST_P(RegistryWalk, TellsNamesToAllAndValuesToThoseWhoMayReadTheKey) {
  EXPECT_EQ(status::kOk, registry_.SetKeyPermission(0, "net/eth1", kRightModify << 4));
  EXPECT_EQ("[]\n [eth1] closed\n  [eth1/limits]\n  none unset\n [eth10]\n [wlan]\n",
            Walked("net"));
}

TEST_P(RegistryWalk, NeedsTheRightThatAListingNeeds) {
  EXPECT_EQ(status::kOk, registry_.SetKeyPermission(0, "net/eth1", 0));
  NameList names(10);
  const unsigned int handle = Handle();
  const unsigned int listed = registry_.ListKeys(handle, "net/eth1", 0, 0, &names, 0);
  EXPECT_EQ(GetParam() ? status::kOk : status::kNoRight, listed);
  EXPECT_EQ(listed, registry_.Walk(handle, "net/eth1", diary_));
  EXPECT_EQ(GetParam() ? "[] closed\n [limits]\n none unset\n" : "", diary_.Text());
}

TEST_P(RegistryWalk, OperationsOfTheVisitorAreRefused) {
  unsigned int answers = 0;
  const unsigned int handle = Handle();
  diary_.Do([&] {
    ReadValue value;
    unsigned int opened = 0;
    for (const unsigned int status :
         {registry_.GetValue(0, "net/eth1", "mtu", &value), registry_.DeleteKey(0, "net"),
          registry_.DeleteKey(handle, "net"), registry_.OpenKey("a", &opened),
          registry_.Walk(handle, "", diary_)}) {
      EXPECT_EQ(status::kBusy, status);
      ++answers;
    }
    EXPECT_EQ(status::kBusy, handle != 0 ? registry_.CloseKey(handle) : status::kBusy);
    EXPECT_EQ(status::kBusy, registry_.BeginTransaction());
    EXPECT_EQ(status::kBusy, registry_.EndTransaction());
    EXPECT_EQ(status::kBusy, registry_.CancelTransaction());
    unsigned long long number = 0;
    ChangeList changes;
    EXPECT_EQ(status::kBusy, registry_.WaitForChange(number, 0));
    EXPECT_EQ(status::kBusy, registry_.ReadChanges(&number, &changes));
    RegistryInterface* tree = nullptr;
    void* treeHandle = nullptr;
    EXPECT_EQ(status::kBusy, registry_.GetKeyTree(0, tree, treeHandle));
  });
  EXPECT_EQ(status::kOk, registry_.Walk(handle, "a", diary_));
  EXPECT_EQ("[]\n", diary_.Text());
  EXPECT_EQ(5u, answers);
  EXPECT_EQ(status::kOk, registry_.DeleteKey(0, "net")) << "afterwards they work again";
}

TEST_P(RegistryWalk, GivesWhatTheListingsAndReadsGive) {
  const std::string large(1000, 'x');
  for (int i = 0; i < 300; ++i) {
    const std::string key = "net/eth1/sub" + std::to_string(i * 7919 % 1000);
    ASSERT_EQ(status::kOk, registry_.MakeKey(key.c_str()));
    ExactValue value(kValueTypeString, large.substr(0, static_cast<size_t>(1 + i * 3)));
    ASSERT_EQ(status::kOk, registry_.CreateValue(0, key.c_str(), "text", &value));
  }
  std::string last;
  unsigned int keys = 0;
  unsigned int sum = 0;
  class Counter : public WalkVisitor {
   public:
    Counter(std::string& last, unsigned int& keys, unsigned int& sum)
        : last_(last), keys_(keys), sum_(sum) {}
    Then VisitKey(const WalkedKey& key) override {
      EXPECT_TRUE(keys_ == 0 || last_ < key.path) << last_ << " " << key.path;
      last_ = key.path;
      ++keys_;
      return Then::kGoOn;
    }
    Then VisitValue(const WalkedKey&, const WalkedValue& value) override {
      sum_ += value.size;
      return Then::kGoOn;
    }

   private:
    std::string& last_;
    unsigned int& keys_;
    unsigned int& sum_;
  } counter(last, keys, sum);
  EXPECT_EQ(status::kOk, registry_.Walk(Handle(), "net/eth1", counter));
  EXPECT_EQ(302u, keys);
  EXPECT_EQ(300u + 3u * 299u * 300u / 2u + 8u + 4u, sum);
}

TEST(RegistryWalkArguments, AreChecked) {
  TempDir dir;
  Registry registry((dir / "r").c_str(), kAdmin);
  Diary diary;
  EXPECT_EQ(status::kNoRight, registry.Walk(0, "", diary));
  ASSERT_EQ(status::kOk, registry.Initialize());
  EXPECT_EQ(status::kBadArgument, registry.Walk(5, "", diary));
  EXPECT_EQ(status::kOk, registry.Walk(0, nullptr, diary));
  EXPECT_EQ("[]\n", diary.Text());
}

}  // namespace
}  // namespace tamu::registry
