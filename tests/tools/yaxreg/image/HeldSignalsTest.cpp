#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <memory>
#include <string>

#include "tests/tools/yaxreg/ChangeRig.h"
#include "tests/tools/yaxreg/SystemCalls.h"
#include "tools/yaxreg/image/FileBytes.h"
#include "tools/yaxreg/image/HeldSignals.h"
#include "tools/yaxreg/image/TemporaryFolder.h"
#include "tools/yaxreg/verbs/Session.h"

namespace yaxreg {

namespace {

class HeldSignalsTest : public ChangeRig {
 protected:
  // The signal that ends a process which does this work; 0 when it comes to its end.
  template <class Work>
  static int SignalThatEnds(Work work) {
    const pid_t child = fork();
    if (child == 0) {
      for (const int one : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) signal(one, SIG_DFL);
      work();
      _exit(0);
    }
    int status = 0;
    EXPECT_EQ(child, waitpid(child, &status, 0));
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  }
  const std::string mark = folder / "mark";
};

TEST_F(HeldSignalsTest, WaitUntilTheEndOfTheScope) {
  for (const int one : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
    unlink(mark.c_str());
    EXPECT_EQ(one, SignalThatEnds([&] {
                const HeldSignals held;
                raise(one);
                PutFile(mark, "alive");
              }));
    EXPECT_EQ("alive", GetFile(mark));
  }
}

TEST_F(HeldSignalsTest, WaitUntilTheEndOfTheLastScope) {
  EXPECT_EQ(SIGTERM, SignalThatEnds([&] {
              auto first = std::make_unique<HeldSignals>();
              auto second = std::make_unique<HeldSignals>();
              raise(SIGTERM);
              first.reset();
              PutFile(mark, "alive");
              second.reset();
              PutFile(mark, "too late");
            }));
  EXPECT_EQ("alive", GetFile(mark));
}

TEST_F(HeldSignalsTest, AreNotHeldBeforeAndAfterwards) {
  EXPECT_EQ(SIGINT, SignalThatEnds([&] {
              { const HeldSignals held; }
              raise(SIGINT);
            }));
  EXPECT_EQ(0, SignalThatEnds([&] {
              sigset_t mask;
              sigemptyset(&mask);
              sigaddset(&mask, SIGINT);
              sigprocmask(SIG_BLOCK, &mask, nullptr);
              { const HeldSignals held; }
              raise(SIGINT);
            }));
}

// ---- where they are held

TEST_F(HeldSignalsTest, LeaveNoTemporaryFile) {
  EXPECT_EQ(SIGINT, SignalThatEnds([&] {
              const TakenOverCalls taken({[] { return raise(SIGINT); }, {}});
              WriteNewFile(mark, "new");
            }));
  EXPECT_EQ("new", GetFile(mark));
  EXPECT_EQ(2u, FilesInFolder());
}

TEST_F(HeldSignalsTest, LeaveNoTemporaryFolder) {
  EXPECT_EQ(SIGHUP, SignalThatEnds([&] {
              const TemporaryFolder made(file);
              PutFile(made.FileIn("x"), "x");
              raise(SIGHUP);
            }));
  EXPECT_EQ(1u, FilesInFolder());
}

// The signal comes at the first moment at which the file is to change.
TEST_F(HeldSignalsTest, LeaveNoChangeHalfMade) {
  EXPECT_EQ(SIGTERM, SignalThatEnds([&] {
              std::istringstream in;
              std::ostringstream out;
              Invocation call(in, out, out);
              call.given = {{"FILE", file}, {"PATH", "net"}};
              Session session(call);
              if (!session.OpenToChange()) _exit(1);
              raise(SIGTERM);
              if (session.registry().CreateKey(0, "net") != 0 || !session.Close()) _exit(1);
              PutFile(mark, "done");
            }));
  EXPECT_EQ("done", GetFile(mark));
  EXPECT_EQ("net", Key("net").name);
}

// Who waits for another program's change can be stopped.
TEST_F(HeldSignalsTest, AreNotHeldWhileACallWaits) {
  Registry registry(file.c_str(), tamu::registry::kAdministratorId);
  ASSERT_EQ(status::kOk, registry.Initialize());
  if (registry.EffectiveDurability() == tamu::registry::Durability::kNone) return;
  ASSERT_EQ(status::kOk, registry.CreateKey(0, "worn"));
  ASSERT_EQ(status::kOk, registry.DeleteKey(0, "worn"));
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  ASSERT_EQ(status::kOk, registry.CreateKey(0, "other"));
  for (const std::vector<std::string>& call :
       std::vector<std::vector<std::string>>{{"mkkey", file, "net"}, {"compact", file}}) {
    EXPECT_EQ(SIGINT, SignalThatEnds([&] {
                signal(SIGALRM, [](int) { raise(SIGINT); });
                alarm(1);
                Yaxreg(call);
              }));
  }
  EXPECT_EQ(status::kOk, registry.EndTransaction());
}

}  // namespace

}  // namespace yaxreg
