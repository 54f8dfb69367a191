// Transactions where calls fail: all of it, or nothing.
#include "registry/Transaction.h"
#include "tests/fault/FaultFiles.h"
#include "tests/registry/RegistryRig.h"
#include "tests/support/FaultCalls.h"
#include "tests/support/PossibleModes.h"

namespace tamu::registry {
namespace {

using faults::Mode;

class TransactionFaultTest : public ::testing::TestWithParam<Durability> {
 protected:
  TransactionFaultTest() {
    Open();
    for (const char* key : {"a", "a/b", "zoo"})
      EXPECT_EQ(status::kOk, registry->CreateKey(0, key, 1));
    EXPECT_EQ(0u, Put(0, "a/b", 100));
    registry->Finalize();
    start = GetFile(path);
  }
  ~TransactionFaultTest() override { faults::Disarm(); }

  void Open() {
    registry = std::make_unique<Registry>(path.c_str(), kAdmin);
    RegistryOptions options;
    options.durability = GetParam();
    EXPECT_EQ(status::kOk, registry->SetOptions(options));
    EXPECT_EQ(status::kOk, registry->Initialize());
  }
  unsigned int Put(unsigned int handle, const char* key, unsigned int size) {
    ExactValue value(1, std::string(size, 'v'));
    return registry->CreateValue(handle, key, "text", &value);
  }
  // Changes everywhere, with and without the handle of "a"; with `isGrowing` the file grows.
  unsigned int Work(unsigned int handle, bool isGrowing) {
    unsigned int result = 0;
    const auto add = [&](unsigned int answer) {
      if (result == 0) result = answer;
    };
    add(Put(handle, "b", 700));
    add(registry->CreateKey(handle, "new", 5));
    add(registry->SetDefaultValue(0, "zoo", 9));
    add(registry->DeleteKey(handle, "b"));
    for (unsigned int i = 0; isGrowing && i < 25; ++i) add(Put(0, "zoo", 1000));
    return result;
  }
  // What can be told apart: the handle's view, and the file's.
  std::string Seen(unsigned int handle, const std::string& base) {
    const auto at = [&](const char* key) { return base + key; };
    unsigned long long number = 0;
    unsigned char rights = 0;
    std::string text;
    for (const char* key : {"b", "new"}) {
      text += std::to_string(registry->GetKeyPermission(handle, at(key).c_str(), &rights)) + " ";
      text += std::to_string(registry->GetDefaultValue(handle, at(key).c_str(), &number)) + " ";
      ReadValue value;
      text += std::to_string(registry->GetValue(handle, at(key).c_str(), "text", &value)) + " " +
              std::to_string(value.size) + "; ";
    }
    return text;
  }
  unsigned long long Zoo() {
    unsigned long long number = 0;
    EXPECT_EQ(status::kOk, registry->GetDefaultValue(0, "zoo", &number));
    return number;
  }

  // Returns the calls of one round, in which the call `number` fails.
  unsigned int Round(Mode mode, unsigned int number, bool isGrowing) {
    registry.reset();
    PutFile(path, start);
    Open();
    unsigned int handle = 0;
    EXPECT_EQ(status::kOk, registry->OpenKey("a", &handle));
    const std::string before = Seen(handle, "");
    faults::Arm(mode, number);
    unsigned int result = registry->BeginTransaction();
    if (result == 0) {
      result = Work(handle, isGrowing);
      if (result == 0) {
        result = registry->EndTransaction();
      } else {
        EXPECT_EQ(status::kOk, registry->CancelTransaction());
      }
    }
    const unsigned int calls = faults::Count();
    const bool hasStruck = faults::Struck() > 0;
    faults::Disarm();
    if (!hasStruck) {
      EXPECT_EQ(0u, result);
    }
    // A file that was closed by what has failed is to be opened again, and what was not
    // acknowledged with kPower is there whole then or not at all.
    const std::string now = Seen(handle, "");
    unsigned long long zoo = 0;
    if (registry->GetDefaultValue(0, "zoo", &zoo) == 0) {
      EXPECT_EQ(now == before, result != 0) << now;
      EXPECT_EQ(Seen(0, "a/"), now);
      EXPECT_EQ(zoo, result == 0 ? 9u : 1u);
    } else {
      EXPECT_EQ(5u, result);
    }
    registry.reset();
    Open();
    EXPECT_EQ("", StructureFindings(path));
    const bool isDone = Zoo() == 9;
    EXPECT_EQ(Seen(0, "a/") != before, isDone);
    if (result == 0 || GetParam() != Durability::kPower) {
      EXPECT_EQ(isDone, result == 0);
    }
    return calls;
  }

  TempDir folder;
  const std::string path = folder / "registry";
  std::string start;
  std::unique_ptr<Registry> registry;
};

TEST_P(TransactionFaultTest, LeaveAllOfItOrNothing) {
  for (const bool isGrowing : {false, true}) {
    const unsigned int calls = Round(Mode::kNone, 0, isGrowing);
    ASSERT_GT(calls, 0u);
    for (const Mode mode : {Mode::kFailOnce, Mode::kFailFrom, Mode::kShortOnce, Mode::kTearFrom}) {
      for (unsigned int number = 0; number < calls && !HasFailure(); ++number) {
        SCOPED_TRACE(std::string(faults::Name(mode)) + " call " + std::to_string(number) + " of " +
                     std::to_string(calls) + (isGrowing ? ", growing" : ""));
        Round(mode, number, isGrowing);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(EveryMode, TransactionFaultTest, ::testing::ValuesIn(PossibleModes()));

}  // namespace
}  // namespace tamu::registry
