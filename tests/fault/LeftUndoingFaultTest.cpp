// A change that could neither be made nor undone, while another process goes on with the file.
#include <sys/wait.h>
#include <unistd.h>

#include "registry/Registry.h"
#include "tests/platform/ChildProcess.h"
#include "tests/platform/TestFiles.h"
#include "tests/registry/Users.h"
#include "tests/support/FaultCalls.h"
#include "tests/support/PossibleModes.h"
#include "tests/support/StructureCheck.h"

namespace tamu::registry {
namespace {

using faults::Mode;

// Another process, which does what it is told by a byte, and tells by one what came of it.
class OtherProcess {
 public:
  explicit OtherProcess(const std::string& path) {
    EXPECT_EQ(0, pipe(to_));
    EXPECT_EQ(0, pipe(from_));
    child_ = fork();
    if (child_ == 0) Follow(path);
  }
  ~OtherProcess() {
    for (const int fd : {to_[0], to_[1], from_[0], from_[1]}) close(fd);
    waitpid(child_, nullptr, 0);
  }
  OtherProcess(const OtherProcess&) = delete;
  OtherProcess& operator=(const OtherProcess&) = delete;

  // The status of what it was told.
  unsigned int Tell(char order) {
    unsigned char answer = 0xFF;
    EXPECT_EQ(1, write(to_[1], &order, 1));
    EXPECT_EQ(1, read(from_[0], &answer, 1));
    return answer;
  }

 private:
  // 'b' opens the file, changes it, and keeps the lock; 'e' ends that.
  [[noreturn]] void Follow(const std::string& path) {
    close(to_[1]);
    Registry registry(path.c_str(), kAdmin);
    for (char order = 0; read(to_[0], &order, 1) == 1;) {
      const unsigned int result = order == 'b' ? Begin(registry) : registry.EndTransaction();
      const unsigned char answer = static_cast<unsigned char>(result);
      if (write(from_[1], &answer, 1) != 1) break;
    }
    registry.Finalize();
    EndChild(0);
  }
  static unsigned int Begin(Registry& registry) {
    RegistryOptions options;
    options.durability = Durability::kPower;
    unsigned int result = registry.SetOptions(options);
    if (result == status::kOk) result = registry.Initialize();
    if (result == status::kOk)
      result = registry.PutValue("a", "theirs", MakeValue(3, "theirs", 6), false);
    if (result == status::kOk) result = registry.SetDefaultValue(0, "a", 7);
    return result == status::kOk ? registry.BeginTransaction() : result;
  }

  int to_[2] = {};
  int from_[2] = {};
  pid_t child_ = -1;
};

class LeftUndoingFaultTest : public ::testing::Test {
 protected:
  void TearDown() override { faults::Disarm(); }

  void Open(Registry& registry) const {
    RegistryOptions options;
    options.durability = Durability::kPower;
    options.waitAtMost = 20;
    ASSERT_EQ(status::kOk, registry.SetOptions(options));
    ASSERT_EQ(status::kOk, registry.Initialize());
  }

  TempDir folder;
  const std::string path = folder / "registry";
};

// The other one has completed what was left, and made changes since.
TEST_F(LeftUndoingFaultTest, IsNotWrittenOverWhatOthersHaveDone) {
  if (PossibleModes().size() < 3) GTEST_SKIP() << "there are no such journals here";
  unsigned int left = 0;
  for (unsigned int number = 0; number < 4; ++number) {
    SCOPED_TRACE(number);
    std::filesystem::remove(path);
    {
      Registry registry(path.c_str(), kAdmin);
      Open(registry);
      ASSERT_EQ(status::kOk, registry.CreateKey(0, "a", 1));
    }
    OtherProcess other(path);
    Registry registry(path.c_str(), kAdmin);
    Open(registry);
    faults::ArmOn(path, Mode::kFailFrom, number);
    if (registry.PutValue("a", "ours", MakeValue(3, "ours", 4), false) != status::kOk) ++left;
    faults::Disarm();
    ASSERT_EQ(status::kOk, other.Tell('b'));
    const std::string theirs = GetFile(path);
    unsigned long long ours = 0;
    registry.GetDefaultValue(0, "a", &ours);
    registry.SetDefaultValue(0, "a", 8);
    EXPECT_TRUE(theirs == GetFile(path));
    EXPECT_EQ(status::kOk, other.Tell('e'));
    ASSERT_EQ(status::kOk, registry.GetDefaultValue(0, "a", &ours));
    EXPECT_EQ(7u, ours);
    EXPECT_EQ("", StructureFindings(path));
  }
  EXPECT_LT(0u, left);
}

}  // namespace
}  // namespace tamu::registry
