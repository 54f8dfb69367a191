// Changes that another process makes, as they are printed.
#include <gtest/gtest.h>

#include <sstream>

#include "tests/processes/Worker.h"
#include "tests/tools/yaxreg/ChangeRig.h"

namespace {

using processes::Worker;
using tamu::registry::Durability;

class MonitorVerb : public ChangeRig {
 protected:
  void SetUp() override {
    ChangeRig::SetUp();
    MakeKeys({"net", "net/eth0", "other"});
    Registry registry(file.c_str(), tamu::registry::kAdministratorId);
    ASSERT_EQ(status::kOk, registry.Initialize());
    if (registry.EffectiveDurability() == Durability::kNone) {
      GTEST_SKIP() << "no journal can be had";
    }
  }

  // A process that calls change(registry, i) for i = 1, 2, ... until it is killed.
  template <class Change>
  Worker Changing(Change change) {
    return Worker([=] {
      Registry registry(file.c_str(), tamu::registry::kAdministratorId);
      if (registry.Initialize() != status::kOk) return std::string("no registry");
      for (unsigned int i = 1;; ++i) {
        change(registry, i);
        usleep(500);
      }
    });
  }
  static void Put(Registry& registry, const char* key, const std::string& name,
                  unsigned long long number) {
    registry.PutValue(key, name.c_str(), tamu::registry::MakeValue(0, &number, sizeof number),
                      true);
  }
};

// The lines of a text.
std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

TEST_F(MonitorVerb, PrintsEveryChangeOnceAndInOrder) {
  Worker writer = Changing([](Registry& registry, unsigned int i) {
    Put(registry, "net/eth0", "n" + std::to_string(i % 50), i);
    Put(registry, "other", "name", i);
  });
  const Answer answer = Yaxreg({"monitor", file, "/net/", "--count", "40", "--timeout", "100"});
  EXPECT_TRUE(writer.Kill());
  EXPECT_EQ(0, answer.code) << answer.err;
  const std::vector<std::string> lines = LinesOf(answer.out);
  ASSERT_EQ(40u, lines.size());
  unsigned int number = 0;
  for (const std::string& line : lines) {
    unsigned int name = 0;
    unsigned int value = 0;
    ASSERT_EQ(2, std::sscanf(line.c_str(), "net/eth0 n%u = %u", &name, &value)) << line;
    ASSERT_EQ(name, value % 50) << line;
    if (number != 0) {
      ASSERT_EQ(number + 1, value) << line;
    }
    number = value;
  }
}

TEST_F(MonitorVerb, PrintsTheValuesOfOneName) {
  Worker writer = Changing([](Registry& registry, unsigned int) {
    Put(registry, "net/eth0", "other", 5);
    Put(registry, "net/eth0", "mtu", 1400);
    registry.RemoveValue("net/eth0", "mtu");
  });
  const Answer answer =
      Yaxreg({"monitor", file, "net/eth0", "--value", "mtu", "--count", "6", "--timeout", "100"});
  EXPECT_TRUE(writer.Kill());
  EXPECT_EQ(0, answer.code) << answer.err;
  for (const std::string& line : LinesOf(answer.out)) {
    EXPECT_TRUE(line == "net/eth0 mtu = 1400" || line == "net/eth0 mtu = (gone)" ||
                line == "net/eth0 mtu deleted")
        << line;
  }
}

TEST_F(MonitorVerb, PrintsWhatIsDoneToKeys) {
  Worker writer = Changing([](Registry& registry, unsigned int i) {
    if (i % 6 == 0) registry.MakeKey("net/new");
    if (i % 6 == 1) registry.SetDefaultValue(0, "net", i);
    if (i % 6 == 2)
      registry.SetKeyPermission(0, "net", static_cast<unsigned char>(i % 12 < 6 ? 0x1F : 0x0F));
    if (i % 6 == 3) registry.SetKeyWatch(0, "net", static_cast<unsigned char>(i / 6 % 64));
    if (i % 6 == 4) registry.RemoveKey("net/new");
  });
  const Answer answer = Yaxreg({"monitor", file, "--count", "20", "--timeout", "100"});
  EXPECT_TRUE(writer.Kill());
  EXPECT_EQ(0, answer.code) << answer.err;
  for (const char* const line :
       {"net/new/ created\n", "net/ default = ", "net/ watch bits set\n", "net/new/ deleted\n"}) {
    EXPECT_NE(std::string::npos, answer.out.find(line)) << answer.out;
  }
}

TEST_F(MonitorVerb, TellsProgramsMore) {
  Worker writer =
      Changing([](Registry& registry, unsigned int i) { Put(registry, "net", "mtu", i % 2); });
  const Answer answer =
      Yaxreg({"monitor", file, "--count", "1", "--timeout", "100", "--value", "mtu", "--json"});
  EXPECT_TRUE(writer.Kill());
  EXPECT_EQ(0, answer.code) << answer.err;
  const std::string begin =
      R"(","path":"net","name":"mtu","value":{"name":"mtu","type":0,"number":)";
  EXPECT_TRUE(answer.out == R"({"change":"value set)" + begin + "0}}\n" ||
              answer.out == R"({"change":"value set)" + begin + "1}}\n" ||
              answer.out == R"({"change":"value created)" + begin + "1}}\n" ||
              answer.out == R"({"change":"value created)" + begin + "0}}\n")
      << answer.out;
}

TEST_F(MonitorVerb, GoesOnWithAFileThatTakesThePlace) {
  const std::string other = file + ".new";
  PutFile(other, GetFile(file));
  Worker program([&] {
    usleep(300000);
    return rename(other.c_str(), file.c_str()) == 0 ? "" : std::string("it cannot be renamed");
  });
  const Answer answer = Yaxreg({"monitor", file, "--count", "1", "--timeout", "100"});
  EXPECT_TRUE(program.EndsWell());
  EXPECT_EQ(0, answer.code) << answer.err;
  EXPECT_EQ("(there were changes that are not known)\n", answer.out);
}

TEST_F(MonitorVerb, EndsWhenTheTimeIsOver) {
  ExpectDone("", {"monitor", file, "--timeout", "0"});
  ExpectDone("", {"monitor", file, "--count", "0"});
  const Answer answer = Yaxreg({"monitor", file, "--timeout", "0", "--count", "1"});
  EXPECT_EQ(1, answer.code);
  EXPECT_EQ("", answer.out + answer.err);
}

TEST_F(MonitorVerb, RefusesWhatIsNoNumber) {
  EXPECT_EQ(2, Yaxreg({"monitor", file, "--timeout", "soon"}).code);
  EXPECT_EQ(2, Yaxreg({"monitor", file, "--count", "-1"}).code);
}

}  // namespace
