// Calls beside a program that keeps the registry.
#include <unistd.h>

#include <string>
#include <vector>

#include "tests/processes/Worker.h"
#include "tests/tools/yaxreg/ChangeRig.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace {

using processes::Worker;
using tamu::registry::Durability;

// Another process opens the registry, begins a transaction, and keeps both.
class WaitingTest : public ChangeRig {
 protected:
  void Keep(Durability durability) {
    int told[2] = {-1, -1};
    ASSERT_EQ(0, pipe(told));
    keeper_ = std::make_unique<Worker>([&]() -> std::string {
      Registry registry(file.c_str(), tamu::registry::kAdministratorId);
      tamu::registry::RegistryOptions options;
      options.durability = durability;
      if (registry.SetOptions(options) != 0 || registry.Initialize() != 0) return "no registry";
      if (registry.BeginTransaction() != 0) return "no transaction";
      if (write(told[1], "b", 1) != 1) return "no word";
      for (;;) pause();
    });
    char letter = 0;
    ASSERT_EQ(1, read(told[0], &letter, 1));
    for (const int end : told) close(end);
  }
  void LetGo() { EXPECT_TRUE(keeper_->Kill()); }
  bool IsShared() const {
    Registry registry(file.c_str(), tamu::registry::kAdministratorId);
    EXPECT_EQ(status::kOk, registry.Initialize());
    return registry.EffectiveDurability() != Durability::kNone;
  }

  // Each kind of call that changes something.
  std::vector<std::vector<std::string>> Calls() const {
    return {{"put", file, "net:mtu", "--int", "1"}, {"compact", file}, {"repair", file, "-i"}};
  }

 private:
  std::unique_ptr<Worker> keeper_;
};

TEST_F(WaitingTest, EndsWhenItsTimeIsOverAndTellsWhoHasTheFile) {
  if (!IsShared()) return;
  MakeKeys({"net"});
  // Without it there is nothing to compact.
  ASSERT_EQ(0, Yaxreg({"rmkey", file, "net"}).code);
  for (const Durability durability : {Durability::kProcess, Durability::kNone}) {
    Keep(durability);
    for (std::vector<std::string> call : Calls()) {
      call.insert(call.end(), {"--timeout", "0"});
      ExpectFailure(4, ": another program keeps the registry, waited for 0 seconds", call);
    }
    EXPECT_NE(std::string::npos, Yaxreg({"put", file, "net:mtu", "--int", "1", "--timeout", "0"})
                                     .err.find(") has it open\n"));
    EXPECT_EQ(0, Yaxreg({"tree", file}).code);
    LetGo();
  }
  ASSERT_EQ(0, Yaxreg({"put", file, "net:mtu", "--int", "1", "--timeout", "0"}).code);
}

TEST_F(WaitingTest, TakesOnlyANumberOfSeconds) {
  MakeKeys({"net"});
  for (std::vector<std::string> call : Calls()) {
    for (const char* const seconds : {"", "x", "-1", "1.5", "1000001"}) {
      std::vector<std::string> words = call;
      words.insert(words.end(), {"--timeout", seconds});
      ExpectFailure(2, " is no number of seconds\n", words);
    }
    call.insert(call.end(), {"--timeout", "1000000"});
    EXPECT_EQ(0, Yaxreg(call).code);
  }
}

}  // namespace
