// Verbs on a registry whose last program died in a change.
#include "tests/support/JournalBytes.h"
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

}  // namespace
