// Verbs on a registry whose last program died in a change.
#include <cstdlib>

#include "registry/store/JournalPath.h"
#include "tests/support/JournalBytes.h"
#include "tests/support/PossibleModes.h"
#include "tests/tools/yaxreg/verbs/SmallTreeRig.h"

namespace {

using namespace journal_bytes;

constexpr char kNote[] =
    "note: a program has died in a change; the next one that opens the file completes it\n";

// The file is as it was before "mtu" was made; the journal beside it holds the change.
class PendingChange : public SmallTreeRig {
 protected:
  void SetUp() override {
    SmallTreeRig::SetUp();
    before = GetFile(file);
    ASSERT_EQ(0, Yaxreg({"mkkey", file, "pending"}).code);
    ASSERT_EQ(0, Yaxreg({"add", file, "pending", "mtu", "--int", "1500"}).code);
    after = GetFile(file);
    LeaveChange();
  }
  void LeaveChange() {
    PutFile(file, before);
    PutFile(journal, ProcessJournal(RecordOf(0, after.substr(0, after.size() - 4), after, 1)));
  }
  void ExpectUntouched() {
    EXPECT_TRUE(GetFile(file) == before);
    EXPECT_EQ(GetFile(journal).size(), kRecords + 48 + after.size() - 4);
  }

  const std::string journal = file + ".journal";
  std::string before;
  std::string after;
};

TEST_F(PendingChange, IsSeenByVerbsThatOnlyLook) {
  EXPECT_EQ("1500\n", Yaxreg({"get", file, "pending", "mtu"}).out);
  EXPECT_NE(std::string::npos, Yaxreg({"ls", file}).out.find("pending"));
  EXPECT_NE(std::string::npos, Yaxreg({"tree", file}).out.find("pending"));
  EXPECT_NE(std::string::npos, Yaxreg({"export", file}).out.find("\"pending\""));
  ExpectUntouched();
}

TEST_F(PendingChange, IsToldByCheck) {
  const Answer checked = Yaxreg({"check", file});
  EXPECT_EQ(0, checked.code);
  EXPECT_NE(std::string::npos, checked.out.find(kNote));
  EXPECT_NE(std::string::npos,
            Yaxreg({"check", file, "--json"}).out.find("\"pendingChange\": true"));
  ExpectUntouched();
  ASSERT_EQ(0, std::remove(journal.c_str()));
  EXPECT_EQ(std::string::npos, Yaxreg({"check", file}).out.find(kNote));
  EXPECT_NE(std::string::npos,
            Yaxreg({"check", file, "--json"}).out.find("\"pendingChange\": false"));
}

TEST_F(PendingChange, OfAnotherFileIsNone) {
  std::string other = before;
  other.back() = static_cast<char>(other.back() ^ 1);
  PutFile(file, other);
  EXPECT_EQ(std::string::npos, Yaxreg({"check", file}).out.find(kNote));
  EXPECT_EQ(1, Yaxreg({"get", file, "pending", "mtu"}).code);
}

TEST_F(PendingChange, ThatReachesBeyondTheFileIsNone) {
  PutFile(journal, ProcessJournal(RecordOf(static_cast<std::uint32_t>(before.size() - 4),
                                           "12345678", after, 1)));
  EXPECT_EQ(std::string::npos, Yaxreg({"check", file}).out.find(kNote));
}

TEST_F(PendingChange, IsCompletedByVerbsThatChange) {
  EXPECT_EQ(0, Yaxreg({"set", file, "pending", "mtu", "--int", "9000"}).code);
  EXPECT_FALSE(std::filesystem::exists(journal));
  EXPECT_EQ("9000\n", Yaxreg({"get", file, "pending", "mtu"}).out);
}

TEST_F(PendingChange, IsKeptByCompactAndRepair) {
  const std::string output = file + ".repaired";
  EXPECT_EQ(0, Yaxreg({"repair", file, "--output", output}).code);
  ExpectUntouched();
  EXPECT_EQ("1500\n", Yaxreg({"get", output, "pending", "mtu"}).out);
  EXPECT_EQ(0, Yaxreg({"compact", file}).code);
  EXPECT_FALSE(std::filesystem::exists(journal));
  EXPECT_EQ("1500\n", Yaxreg({"get", file, "pending", "mtu"}).out);
}

// The journal lies in another folder, which the environment names.
class PendingChangeElsewhere : public PendingChange {
 protected:
  void SetUp() override {
    PendingChange::SetUp();
    const std::string journals = file + ".journals";
    ASSERT_TRUE(std::filesystem::create_directory(journals));
    ASSERT_EQ(0, setenv("YAX_SIDE_FOLDER", journals.c_str(), 1));
    tamu::registry::JournalPath place;
    ASSERT_TRUE(place.Find(file.c_str(), journals.c_str()));
    elsewhere = place.Text();
    std::filesystem::rename(journal, elsewhere);
  }
  void TearDown() override {
    unsetenv("YAX_SIDE_FOLDER");
    PendingChange::TearDown();
  }

  const bool canHaveJournal = PossibleModes().size() == 3;
  std::string elsewhere;
};

TEST_F(PendingChangeElsewhere, IsSeenByVerbsThatOnlyLook) {
  EXPECT_EQ("1500\n", Yaxreg({"get", file, "pending", "mtu"}).out);
  EXPECT_NE(std::string::npos, Yaxreg({"check", file}).out.find(kNote));
  EXPECT_TRUE(GetFile(file) == before);
  ASSERT_EQ(0, unsetenv("YAX_SIDE_FOLDER"));
  EXPECT_EQ(1, Yaxreg({"get", file, "pending", "mtu"}).code);
}

TEST_F(PendingChangeElsewhere, BesideTheFileIsSeenToo) {
  std::filesystem::rename(elsewhere, journal);
  EXPECT_EQ("1500\n", Yaxreg({"get", file, "pending", "mtu"}).out);
}

TEST_F(PendingChangeElsewhere, IsCompletedByVerbsThatChange) {
  const Answer answer = Yaxreg({"set", file, "pending", "mtu", "--int", "9000"});
  if (!canHaveJournal) {
    EXPECT_NE(std::string::npos, answer.err.find("status 28")) << answer.err;
    return;
  }
  EXPECT_EQ(0, answer.code);
  EXPECT_FALSE(std::filesystem::exists(elsewhere));
  EXPECT_EQ("9000\n", Yaxreg({"get", file, "pending", "mtu"}).out);
}

TEST_F(PendingChangeElsewhere, IsKeptByCompact) {
  const Answer answer = Yaxreg({"compact", file});
  EXPECT_EQ(canHaveJournal, answer.code == 0) << answer.err;
  EXPECT_EQ(canHaveJournal, !std::filesystem::exists(elsewhere));
  EXPECT_EQ("1500\n", Yaxreg({"get", file, "pending", "mtu"}).out);
}

TEST_F(PendingChangeElsewhere, NothingIsChangedWhereTheFolderIsMissing) {
  ASSERT_EQ(0, setenv("YAX_SIDE_FOLDER", (file + ".missing").c_str(), 1));
  const Answer answer = Yaxreg({"set", file, "pending", "mtu", "--int", "9000"});
  EXPECT_NE(0, answer.code);
  EXPECT_NE(std::string::npos, answer.err.find("status 28")) << answer.err;
  EXPECT_TRUE(GetFile(file) == before);
}

}  // namespace
