// Setting a value when the power goes at any byte of any write: no other value loses its data.
#include "registry/Registry.h"
#include "tests/fault/FaultFiles.h"
#include "tests/platform/TestFiles.h"
#include "tests/support/FaultCalls.h"
#include "tests/support/StructureCheck.h"

namespace tamu::registry {
namespace {

constexpr unsigned int kNumber = 0;

// What a value holds: a number, or so many bytes of data.
struct Content {
  unsigned int type;
  unsigned int size;
  unsigned long long number;
};

// The numbers are the ids of blocks of other values, or become one when a part is written over.
const Content kContents[] = {
    {kNumber, 8, 0x100}, {kNumber, 8, 0x1000300}, {1, 30, 0}, {2, 300, 0}, {3, 0, 0}};

std::string BytesOf(const Content& content, char seed) {
  std::string bytes(content.size, ' ');
  for (unsigned int i = 0; i < content.size; ++i) {
    bytes[i] = content.type == kNumber
                   ? static_cast<char>(content.number >> (8 * i))
                   : static_cast<char>(static_cast<unsigned char>(seed) + i % 19);
  }
  return bytes;
}

class CutValueWrites : public ::testing::TestWithParam<bool> {
 protected:
  void TearDown() override { faults::Disarm(); }

  static unsigned int Set(Registry& registry, unsigned int handle, const char* name,
                          const std::string& bytes, unsigned int type) {
    std::string copy = bytes;
    Value value = {type, static_cast<unsigned int>(copy.size()), &copy[0]};
    return registry.SetValue(handle, "k", name, &value);
  }
  static void Create(Registry& registry, const char* name, const std::string& bytes,
                     unsigned int type) {
    std::string copy = bytes;
    Value value = {type, static_cast<unsigned int>(copy.size()), &copy[0]};
    EXPECT_EQ(status::kOk, registry.CreateValue(0, "k", name, &value));
  }
  static std::string Get(Registry& registry, const char* name) {
    ReadValue value;
    const unsigned int result = registry.GetValue(0, "k", name, &value);
    if (result != 0) return "status " + std::to_string(result);
    return std::string(static_cast<const char*>(value.data), value.size);
  }

  // A registry whose "y" holds `before`.
  void Start(const Content& before) {
    Registry registry(path.c_str(), kAdministratorId);
    ASSERT_EQ(status::kOk, registry.Initialize());
    ASSERT_EQ(status::kOk, registry.CreateKey(0, "k"));
    Create(registry, "x", kX, 1);
    Create(registry, "y", BytesOf(before, 'A'), before.type);
    Create(registry, "z", kZ, 1);
    registry.Finalize();
    bytes_ = GetFile(path);
  }
  // Sets "y" with the power going at byte `byte` of write `number`. False when there is no such
  // write.
  bool SetUntilTheCut(const Content& after, unsigned int number, unsigned int byte) {
    PutFile(path, bytes_);
    Registry registry(path.c_str(), kAdministratorId);
    faults::WriteStraight(registry);
    EXPECT_EQ(status::kOk, registry.Initialize());
    unsigned int handle = 0;
    if (GetParam()) {
      EXPECT_EQ(status::kOk, registry.OpenKey("", &handle));
    }
    faults::ArmTear(number, byte);
    Set(registry, handle, "y", BytesOf(after, 'a'), after.type);
    const bool isCut = faults::Struck() > 0;
    registry.Finalize();
    faults::Disarm();
    return isCut;
  }
  // As it is opened again: the others are there, and whatever is done to "y" and by others they
  // stay.
  void ExpectOthersWhole() {
    Registry registry(path.c_str(), kAdministratorId);
    ASSERT_EQ(status::kOk, registry.Initialize());
    EXPECT_EQ(kX, Get(registry, "x"));
    EXPECT_EQ(kZ, Get(registry, "z"));
    const std::string again(400, 'n');
    EXPECT_EQ(0u, Set(registry, 0, "y", again, 1));
    Create(registry, "w", std::string(700, 'w'), 1);
    EXPECT_EQ(kX, Get(registry, "x"));
    EXPECT_EQ(Get(registry, "y"), again);
    EXPECT_EQ(kZ, Get(registry, "z"));
    EXPECT_EQ(std::string(700, 'w'), Get(registry, "w"));
    registry.Finalize();
  }

  const std::string kX = std::string(150, 'x');
  const std::string kZ = std::string(90, 'z');
  TempDir dir;
  const std::string path = dir / "a.rce";
  std::string bytes_;
};

TEST_P(CutValueWrites, NoValueLosesItsDataToAnother) {
  unsigned int cuts = 0;
  for (const Content& before : kContents) {
    Start(before);
    for (const Content& after : kContents) {
      for (unsigned int number = 0;; ++number) {
        unsigned int size = 1;
        bool isCut = true;
        for (unsigned int byte = 0; byte < size; ++byte) {
          isCut = SetUntilTheCut(after, number, byte);
          if (!isCut) break;
          size = faults::TornSize();
          SCOPED_TRACE("type " + std::to_string(before.type) + " to " + std::to_string(after.type) +
                       ", " + std::to_string(before.size) + " to " + std::to_string(after.size) +
                       " bytes, write " + std::to_string(number) + " cut at byte " +
                       std::to_string(byte) + " of " + std::to_string(size));
          ExpectOthersWhole();
          ++cuts;
          if (HasFailure()) return;
        }
        if (!isCut) break;
      }
      EXPECT_EQ("", StructureFindings(path)) << "set without a cut";
    }
    std::remove(path.c_str());
  }
  EXPECT_GT(cuts, 2000u);
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutAHandle, CutValueWrites, ::testing::Bool());

}  // namespace
}  // namespace tamu::registry
