// A journal beside a registry: one that somebody has left, one that is written over while the
// registry is open, and what the next one finds who opens it.
#include <fcntl.h>
#include <unistd.h>

#include "fuzz/support/Harness.h"
#include "tests/crash/MemoryFolder.h"
#include "tests/registry/EveryOperation.h"
#include "tests/support/JournalBytes.h"

namespace fuzz {
namespace {

using namespace tamu::registry;

constexpr unsigned int kPatience = 10;  // milliseconds

// A journal with records as the input tells, or any bytes. Each choice is a statement of its own:
// in which order a call's arguments are evaluated differs between compilers.
std::string Left(Bytes& in, const std::string& file) {
  using namespace journal_bytes;
  const unsigned int kind = in.Below(4);
  if (kind == 3) return in.Text(200);
  std::string journal;
  for (unsigned int records = 1 + in.Below(3); records > 0; --records) {
    std::string text = in.Text(64);
    text.resize((text.size() + 3) / 4 * 4);
    const unsigned int place = in.Below(76000);
    std::string record = RecordOf(place, text, file, in.Below(4));
    for (unsigned int changes = in.Below(3); changes > 0; --changes) {
      const unsigned int word = in.Below(static_cast<unsigned int>(record.size() / 4));
      Put32(&record, 4 * word, in.Below(0));
    }
    if (kind != 0) record = Sealed(record);
    if (journal.empty()) journal = kind == 0 ? ProcessJournal("") : Head(2);
    journal += record;
  }
  for (unsigned int changes = in.Below(4); changes > 0; --changes) {
    const unsigned int word = in.Below(60);
    Put32(&journal, 4 * word, in.Below(2) != 0 ? in.Below(0) : in.Below(3));
  }
  return journal;
}

void ExpectSome(unsigned int answer) {
  if (answer != status::kBusy) hostile::ExpectKnown(answer);
}

// Opens what is there, and works with it.
class Opened {
 public:
  Opened(const std::string& path, Durability durability)
      : journal_(path + ".journal"), registry_(path.c_str(), kAdministratorId) {
    RegistryOptions options;
    options.durability = durability;
    options.waitAtMost = kPatience;
    EXPECT_EQ(status::kOk, registry_.SetOptions(options));
    const unsigned int opened = registry_.Initialize();
    ExpectSome(opened);
    isOpen_ = opened == 0;
  }

  bool isOpen() const { return isOpen_; }
  void Work(Bytes& in) {
    for (unsigned int i = 0; i < 12 && !in.IsOver(); ++i) {
      if (in.Below(3) == 0) {
        WriteOver(in);
      } else {
        Change(in);
      }
    }
    unsigned long long number = 0;
    ExpectSome(registry_.GetDefaultValue(0, "a", &number));
    ChangeList changes;
    ExpectSome(registry_.ReadChanges(&number, &changes));
  }
  Registry& registry() { return registry_; }

 private:
  void Change(Bytes& in) {
    std::string data(in.Below(200), 'x');
    Value value = {2, static_cast<unsigned int>(data.size()), data.data()};
    unsigned long long number = registry_.ChangeNumber();
    ChangeList changes;
    switch (in.Below(8)) {
      case 0:
        return ExpectSome(registry_.BeginTransaction());
      case 1:
        return ExpectSome(registry_.EndTransaction());
      case 2:
        return ExpectSome(registry_.WaitForChange(number, 0));
      case 3:
        number -= in.Below(4);
        return ExpectSome(registry_.ReadChanges(&number, &changes));
      case 4:
        return ExpectSome(registry_.Compact());
      default:
        return ExpectSome(registry_.PutValue("a/b", "text", value, true));
    }
  }

  // Mostly a word of the header.
  void WriteOver(Bytes& in) {
    const int journal = open(journal_.c_str(), O_RDWR | O_CLOEXEC);
    if (journal < 0) return;
    const unsigned int offset = in.Below(4) != 0 ? 4 * in.Below(45) : in.Below(40000);
    const unsigned int word = in.Below(2) != 0 ? in.Below(0) : in.Below(4);
    EXPECT_EQ(static_cast<ssize_t>(sizeof word), pwrite(journal, &word, sizeof word, offset));
    close(journal);
  }

  const std::string journal_;
  Registry registry_;
  bool isOpen_ = false;
};

void RunSideFile(Bytes& in) {
  static const crash::MemoryFolder sFolder;
  static const std::string sPath = sFolder.path() + "/registry";
  static const std::string sSound = hostile::SoundFile(sFolder.path() + "/sound");
  const std::string journal = sPath + ".journal";
  unlink(journal.c_str());
  PutFile(sPath, sSound);
  const unsigned int choices = in.Below(256);
  const Durability modes[] = {Durability::kProcess, Durability::kPower};
  if ((choices & 1) != 0) PutFile(journal, Left(in, sSound));
  {
    Opened first(sPath, modes[choices / 2 % 2]);
    if (first.isOpen()) first.Work(in);
    // A process that dies leaves its journal.
    if ((choices & 8) != 0 && access(journal.c_str(), F_OK) == 0) {
      const std::string left = GetFile(journal);
      first.registry().Finalize();
      PutFile(journal, left);
    }
  }
  Opened next(sPath, modes[choices / 4 % 2]);
  if (!next.isOpen()) return;
  next.Work(in);
  hostile::ReadEverything(next.registry());
}

const Harness sSideFile("SideFile", RunSideFile);

}  // namespace
}  // namespace fuzz
