// Creating keys through a handle where one write fails.
#include <set>

#include "tests/registry/memtree/RootHandle.h"
#include "tests/support/FaultCalls.h"

namespace tamu::registry {
namespace {

using faults::Mode;

// What is there before, and the key that is created.
struct Scenario {
  std::vector<const char*> there;
  const char* path;
  bool endsAtCut = false;
};

const std::vector<Scenario> kScenarios = {
    {{}, "a"},                                         // the first of its level
    {{"a"}, "a/b"},                                    // the same, further down
    {{"a"}, "abc"},                                    // behind a key
    {{"m"}, "a"},                                      // to either side
    {{"m"}, "z"},                                      //
    {{"abc", "abc/x"}, "axyz"},                        // beside a cut of the first level
    {{"m", "m/abc"}, "m/axyz"},                        // beside one below `directory`
    {{"m", "abc"}, "axyz"},                            // below `lower`
    {{"m", "xyz"}, "xabc"},                            // below `higher`
    {{"m", "mnop"}, "mnxyz"},                          // below `equal`
    {{"m"}, "abcdefghijklmnopqrstuvwxyzabcdefghijk"},  // three nodes
    {{"mno"}, "mabcdefghijklmnopqrstuvwxyz"},          // a cut and two nodes
};

// The key ends at the cut.
const std::vector<Scenario> kCuts = {{{"abc"}, "ab", true},
                                     {{"m", "m/abc"}, "m/ab", true},
                                     {{"m", "abc"}, "ab", true},
                                     {{"m", "xyz"}, "xy", true},
                                     {{"m", "mnop"}, "mno", true}};

// The keys of a file, without the root.
std::set<std::string> KeysIn(const std::string& path) {
  std::set<std::string> keys;
  for (const auto& each : DecodeTree(path)) {
    if (!each.first.empty()) keys.insert(each.first);
  }
  return keys;
}

constexpr unsigned int kNoCall = 1000000;

class LoadedCreationFaultTest : public ::testing::Test {
 protected:
  void TearDown() override { faults::Disarm(); }

  static unsigned int Create(LoadedTreeRig& rig, TernaryHandle* root, const char* path) {
    return rig.loaded.CreateKey(kAdmin, root, path, 3, true);
  }
  // That both trees have these keys and no others, and the file is sound.
  static void ExpectKeys(LoadedTreeRig& rig, TernaryHandle* root,
                         const std::set<std::string>& keys) {
    EXPECT_EQ("", StructureFindings(rig.path));
    EXPECT_EQ(KeysIn(rig.path), keys);
    const std::string loaded = rig.Loaded();
    EXPECT_EQ(loaded.substr(loaded.find(',') + 2), std::to_string(keys.size() + 1) + " keys");
    for (const std::string& key : keys) {
      EXPECT_EQ(0u, rig.Find(root, key.c_str())) << key;
      unsigned int node = 0;
      unsigned int id = 0;
      EXPECT_EQ(status::kOk, rig.file->FindKey(nullptr, key.c_str(), &node, &id)) << key;
    }
  }
  // Nothing can be written from a call on: what was there is there, and the new key is if it was
  // told so. Returns the status.
  static unsigned int TryToTheEnd(const Scenario& scenario, Mode mode, unsigned int number) {
    SCOPED_TRACE(std::string(scenario.path) + ", " + faults::Name(mode) + " call " +
                 std::to_string(number));
    LoadedTreeRig rig;
    TernaryHandle* root = rig.Load("");
    for (const char* path : scenario.there) EXPECT_EQ(0u, Create(rig, root, path)) << path;
    faults::Arm(mode, number);
    const unsigned int result = Create(rig, root, scenario.path);
    faults::Disarm();
    EXPECT_EQ(result, number < faults::Count() ? 5u : 0u);
    for (const char* path : scenario.there) EXPECT_EQ(0u, rig.Find(root, path)) << path;
    EXPECT_EQ(rig.Find(root, scenario.path), result == 0 ? 0u : 2u);
    EXPECT_EQ(0u, root->lockedStrings);
    return result;
  }
  // Creates the key while one call fails, looks, and creates it again. Returns how many calls there
  // were; *used is what the file has taken in the end.
  static unsigned int Try(const Scenario& scenario, unsigned int number, std::string* used) {
    LoadedTreeRig rig;
    TernaryHandle* root = rig.Load("");
    for (const char* path : scenario.there) EXPECT_EQ(0u, Create(rig, root, path)) << path;
    std::set<std::string> keys = KeysIn(rig.path);
    const SlotCounts before = CountSlots(rig.path);
    faults::Arm(Mode::kFailOnce, number);
    const unsigned int result = Create(rig, root, scenario.path);
    faults::Disarm();
    const unsigned int calls = faults::Count();
    EXPECT_EQ(result, number < calls ? 5u : 0u);
    if (result != 0) {
      ExpectKeys(rig, root, keys);
      const SlotCounts after = CountSlots(rig.path);
      EXPECT_EQ(after.strings.used, after.strings.reachable) << "nothing is lost";
      EXPECT_LE(after.strings.used, before.strings.used + 1) << "a cut may stay";
      EXPECT_EQ(after.keys.used, before.keys.used);
      // A name that ends at a cut ends at a branch once the cut is there.
      const bool endsAtBranch = scenario.endsAtCut && after.strings.used > before.strings.used;
      EXPECT_EQ(Create(rig, root, scenario.path), endsAtBranch ? 1u : 0u);
      if (endsAtBranch) {
        ExpectKeys(rig, root, keys);
        EXPECT_EQ(status::kOk, rig.file->CreateKey(kAdmin, nullptr, scenario.path, 3, true));
        *used = UsedSlots(rig.path);
        return calls;
      }
    }
    keys.insert(scenario.path);
    ExpectKeys(rig, root, keys);
    EXPECT_EQ(0u, root->lockedStrings);
    *used = UsedSlots(rig.path);
    rig.Unload(root);
    rig.loaded.UnloadKeyTree(nullptr);
    ExpectKeys(rig, rig.Load(""), keys);
    return calls;
  }
  static void TryAll(const std::vector<Scenario>& scenarios) {
    for (const Scenario& scenario : scenarios) {
      std::string expected;
      const unsigned int calls = Try(scenario, kNoCall, &expected);
      ASSERT_GE(calls, 7u);  // two for each slot taken, its record, and what leads to the name
      for (unsigned int number = 0; number < calls; ++number) {
        SCOPED_TRACE(std::string(scenario.path) + ", call " + std::to_string(number) + " of " +
                     std::to_string(calls));
        std::string used;
        Try(scenario, number, &used);
        EXPECT_EQ(used, expected);
      }
    }
  }
};

TEST_F(LoadedCreationFaultTest, AKeyThatCannotBeWrittenIsNotThereAndCanBeCreatedAgain) {
  TryAll(kScenarios);
}

TEST_F(LoadedCreationFaultTest, AKeyAtACutThatCannotBeWrittenIsNotThereThoughTheCutMayBe) {
  TryAll(kCuts);
}

// Memory never tells of what is not in the file.
TEST_F(LoadedCreationFaultTest, WhereNothingCanBeWrittenAnyMoreMemoryStaysAsItWas) {
  for (const Mode mode : {Mode::kFailFrom, Mode::kTearFrom}) {
    for (const std::vector<Scenario>& scenarios : {kScenarios, kCuts}) {
      for (const Scenario& scenario : scenarios) {
        unsigned int number = 0;
        while (TryToTheEnd(scenario, mode, number) != 0) ++number;
        EXPECT_GE(number, 7u);
      }
    }
  }
}

// A missing parent inside a longer name, which is cut before.
TEST_F(LoadedCreationFaultTest, ARefusedNameLeavesTheTreeAsItWas) {
  unsigned int calls = 1;
  for (unsigned int number = 0; number < calls; ++number) {
    SCOPED_TRACE("call " + std::to_string(number));
    LoadedTreeRig rig;
    TernaryHandle* root = rig.Load("");
    ASSERT_EQ(0u, Create(rig, root, "mnop"));
    faults::Arm(Mode::kFailOnce, number);
    const unsigned int result = Create(rig, root, "mncdefghijklmnopqrstuvwxyz/x");
    faults::Disarm();
    calls = faults::Count();
    EXPECT_EQ(result, faults::Struck() > 0 ? 5u : 22u);
    ExpectKeys(rig, root, {"mnop"});
    EXPECT_EQ(0u, Create(rig, root, "as"));
    ExpectKeys(rig, root, {"as", "mnop"});
  }
  EXPECT_GE(calls, 5u);
}

TEST_F(LoadedCreationFaultTest, ARefusedNameThatCutsNothingWritesNothing) {
  LoadedTreeRig rig;
  TernaryHandle* root = rig.Load("");
  ASSERT_EQ(0u, Create(rig, root, "m"));
  faults::Arm(Mode::kFailFrom, 0);
  EXPECT_EQ(22u, Create(rig, root, "abcdefghijklmnopqrstuvwxyz/x"));
  faults::Disarm();
  EXPECT_EQ(0u, faults::Count());
}

// Two slots, two records, the header.
TEST_F(LoadedCreationFaultTest, ARootThatCannotBeWrittenCanBeMadeAgain) {
  for (unsigned int number = 0; number < 7; ++number) {
    SCOPED_TRACE("call " + std::to_string(number));
    TempDir dir;
    const std::string path = dir / "a.rce";
    TernaryKeyTree tree(nullptr);
    ASSERT_EQ(status::kOk, tree.Initialize(path.c_str()));
    faults::Arm(Mode::kFailOnce, number);
    EXPECT_EQ(status::kInputOutput, tree.CreateRootKey());
    faults::Disarm();
    EXPECT_EQ(1u, faults::Struck());
    EXPECT_EQ(status::kOk, tree.CreateRootKey()) << "a second time";
    void* root = nullptr;
    ASSERT_EQ(status::kOk, tree.LoadKeyTree("", root));
    EXPECT_EQ(status::kOk, tree.CreateKey(kAdmin, root, "a", 0, false));
    EXPECT_EQ(KeysIn(path), std::set<std::string>{"a"});
  }
}

}  // namespace
}  // namespace tamu::registry
