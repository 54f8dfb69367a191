// The exact operations, whose system calls fail at every place in turn: what answers a failure has
// changed nothing.
#include <functional>

#include "registry/Registry.h"
#include "tests/fault/FaultFiles.h"
#include "tests/platform/TestFiles.h"
#include "tests/support/FaultCalls.h"
#include "tests/support/StructureCheck.h"

namespace tamu::registry {
namespace {

using faults::Mode;

struct Operation {
  const char* name;
  std::function<unsigned int(Registry&)> run;
};

unsigned int Put(Registry& registry, const char* key, const char* name, size_t size) {
  const std::string data(size, 'x');
  const Value value = MakeValue(2, data.data(), static_cast<unsigned int>(size));
  return registry.PutValue(key, name, value, true);
}

const std::vector<Operation>& Operations() {
  static const std::vector<Operation> kOperations = {
      {"make beside a similar name", [](Registry& r) { return r.MakeKey("branch/max/deep"); }},
      {"make the beginning of a name", [](Registry& r) { return r.MakeKey("bra"); }},
      {"put a new value", [](Registry& r) { return Put(r, "new/key", "large", 1000); }},
      {"put another value", [](Registry& r) { return Put(r, "branch/main", "large", 700); }},
      {"remove a value", [](Registry& r) { return r.RemoveValue("branch/main", "large"); }},
      {"remove a key", [](Registry& r) { return r.RemoveKey("branch"); }},
      {"copy a key", [](Registry& r) { return r.CopyKey("branch", "copy/of/it"); }},
      {"move a key", [](Registry& r) { return r.MoveKey("branch", "bra/moved"); }}};
  return kOperations;
}

class ExactFaultTest : public ::testing::Test {
 protected:
  ExactFaultTest() {
    Registry registry(path_.c_str(), faults::kUserId);
    EXPECT_EQ(status::kOk, registry.Initialize());
    for (const char* key : {"branch/main", "branch/side/deep", "other"}) {
      EXPECT_EQ(0u, Put(registry, key, "large", 1000));
      EXPECT_EQ(0u, Put(registry, key, "small", 10));
    }
    registry.Finalize();
    start_ = GetFile(path_);
  }
  void TearDown() override { faults::Disarm(); }

  // True when the operation has fewer calls than the fault's number.
  bool RunWith(const Operation& operation, Mode mode, unsigned int number, bool isStraight) {
    PutFile(path_, start_);
    Registry registry(path_.c_str(), faults::kUserId);
    if (isStraight) faults::WriteStraight(registry);
    EXPECT_EQ(status::kOk, registry.Initialize());
    faults::Arm(mode, number);
    const unsigned int result = operation.run(registry);
    const bool isCompleted = faults::Count() <= number;
    faults::Disarm();
    // What could not be undone is, before anything is read.
    unsigned char permission = 0;
    const unsigned int after = registry.GetKeyPermission(0, "other", &permission);
    EXPECT_TRUE(after == 0 || after == status::kInputOutput) << after;
    registry.Finalize();
    EXPECT_EQ("", StructureFindings(path_));
    if (isCompleted) {
      EXPECT_EQ(0u, result);
    }
    if (result != 0) {
      EXPECT_TRUE(GetFile(path_) == start_) << "status " << result;
    }
    return isCompleted;
  }

  TempDir dir_;
  const std::string path_ = dir_ / "a.rce";
  std::string start_;
};

TEST_F(ExactFaultTest, WhatFailsHasChangedNothing) {
  for (const Operation& operation : Operations()) {
    for (const Mode mode : {Mode::kFailOnce, Mode::kFailFrom, Mode::kTearFrom}) {
      for (const bool isStraight : {false, true}) {
        for (unsigned int number = 0; !faults::TooManyFailures(); number += YAX_TEST_STRIDE) {
          SCOPED_TRACE(std::string(operation.name) + ", " + faults::Name(mode) + ", call " +
                       std::to_string(number) + (isStraight ? ", straight" : ""));
          if (RunWith(operation, mode, number, isStraight)) break;
        }
      }
    }
  }
}

}  // namespace
}  // namespace tamu::registry
