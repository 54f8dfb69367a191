#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>
#include <string>

#include "registry/store/TernaryFile.h"
#include "tests/tools/yaxreg/ChangeRig.h"
#include "tools/yaxreg/verbs/Session.h"

namespace status = tamu::registry::status;

namespace yaxreg {

namespace {

class SessionTest : public ChangeRig {
 protected:
  SessionTest() : call(in, out, err) { call.given = {{"FILE", file}, {"PATH", "net"}}; }

  // Puts a registry of the same content into the place of the file.
  void Replace() {
    PutFile(folder / "new.rce", GetFile(file));
    ASSERT_EQ(0, std::rename((folder / "new.rce").c_str(), file.c_str()));
  }
  void ExpectReplaced(ExitCode code) const {
    EXPECT_EQ(kFailed, code);
    EXPECT_EQ(
        "yaxreg: " + file + ": was replaced by another program meanwhile, the change may be lost\n",
        err.str());
  }

  std::istringstream in;
  std::ostringstream out;
  std::ostringstream err;
  Invocation call;
};

TEST_F(SessionTest, TellsThatAnotherProgramHasReplacedTheFile) {
  Session session(call);
  ASSERT_TRUE(session.OpenToChange());
  ASSERT_EQ(0u, session.registry().CreateKey(0, "net"));
  Replace();
  EXPECT_FALSE(session.Close());
  ExpectReplaced(session.code());
}

// A program that was killed while it made the file leaves one without a root key; the library makes
// it when it opens the file.
class SessionWithoutARoot : public SessionTest {
 protected:
  void SetUp() override {
    tamu::registry::TernaryFile store;
    ASSERT_EQ(0u, store.CreateRegistryFile(file.c_str(), 65536));
  }
};

TEST_F(SessionWithoutARoot, IsChangedLikeAnyOther) {
  Session session(call);
  ASSERT_TRUE(session.OpenToChange());
  EXPECT_FALSE(session.image().content().keys[0].isMadeUp);
}

TEST_F(SessionWithoutARoot, TakesTheRootForAKeyThatIsThere) {
  EXPECT_EQ(0, Yaxreg({"mkkey", "-p", file, "/"}).code);
}

TEST_F(SessionWithoutARoot, TakesAValueOfTheRoot) {
  EXPECT_EQ(0, Yaxreg({"add", file, "/", "n", "--int", "1"}).code);
  EXPECT_EQ("1\n", Yaxreg({"get", file, "/", "n"}).out);
}

TEST_F(SessionWithoutARoot, IsImportedInto) {
  const Answer answer = Yaxreg({"import", file}, R"({"keys":[{"path":"a","watch":3}]})");
  EXPECT_EQ(0, answer.code) << answer.err;
  EXPECT_EQ(3, Key("a").watch);
}

TEST_F(SessionTest, TellsThatTheFileIsGone) {
  Session session(call);
  ASSERT_TRUE(session.OpenToChange());
  ASSERT_EQ(0, std::remove(file.c_str()));
  EXPECT_FALSE(session.Close());
  EXPECT_EQ("yaxreg: " + file + ": cannot be opened: No such file or directory\n", err.str());
}

TEST_F(SessionTest, NeverCallsARegistryFullThatWasReplaced) {
  for (const unsigned int status : {28u, 75u}) {
    err.str("");
    Session session(call);
    ASSERT_TRUE(session.OpenToChange());
    Replace();
    ExpectReplaced(session.FailWithStatus(status));
    err.str("");
    ExpectReplaced(session.FailWithStatus(status, "the registry is full"));
    err.str("");
    EXPECT_EQ(kNo, session.FailWithStatus(17, "it is there"));
    EXPECT_EQ("yaxreg: " + file + ": net: it is there (status 17)\n", err.str());
  }
}

TEST_F(SessionTest, TellsThatAChangeIsNotInTheFile) {
  Session session(call);
  ASSERT_TRUE(session.OpenToLook());
  EXPECT_EQ(kFailed, session.FailUnseen());
  EXPECT_EQ(
      "yaxreg: " + file + ": net: the file cannot be written, the change is lost (status 5)\n",
      err.str());
}

// With 21 tables of a kind, it is the room that may have been too little.
TEST_F(SessionTest, TellsThatAFullRegistryMayBeWhyAChangeIsNotInTheFile) {
  {
    Registry registry(file.c_str(), tamu::registry::kAdministratorId);
    ASSERT_EQ(status::kOk, registry.Initialize());
    unsigned int result = 0;
    for (int i = 0; result == 0; ++i) {
      result = registry.CreateValue(0, "", std::to_string(i).c_str(), nullptr);
    }
    ASSERT_EQ(status::kLimit, result);
  }
  Session session(call);
  ASSERT_TRUE(session.OpenToLook());
  EXPECT_EQ(kNo, session.FailUnseen());
  EXPECT_EQ(
      "yaxreg: " + file + ": net: the registry is full; yaxreg compact may help (status 75)\n",
      err.str());
}

}  // namespace

}  // namespace yaxreg
