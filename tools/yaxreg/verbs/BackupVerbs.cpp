// The library's own backup of a key and all below it.
#include <sys/stat.h>

#include <memory>

#include "tools/yaxreg/image/FileBytes.h"
#include "tools/yaxreg/image/FileIdentity.h"
#include "tools/yaxreg/image/TemporaryFolder.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/Session.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace status = tamu::registry::status;
using tamu::registry::Registry;

namespace {

constexpr size_t kMaxBackup = 64u << 20;  // bytes; far more than any backup has
constexpr char kTooLarge[] = "is larger than any backup can be";

// By whatever path, or as a second name of the same file.
bool IsSameFile(const std::string& one, const std::string& other) {
  const FileIdentity first(one);
  return first.IsFile() && first == FileIdentity(other);
}

bool IsThere(const std::string& file) {
  struct stat found;
  return lstat(file.c_str(), &found) == 0;
}

ExitCode FailThere(Invocation& call, const std::string& backup) {
  return call.FailWithStatus(status::kExists, backup, "",
                             "there is a file already; --force replaces it");
}

// Lets the library back up the key of a copy of the registry, into bytes: the registry itself is
// only read, and needs not be writable.
ExitCode MakeBackup(Invocation& call, Session& session, const std::string& backup,
                    std::string* bytes) {
  const TemporaryFolder folder(backup);
  if (!folder.isMade()) return call.Fail(kFailed, backup, "", folder.reason());
  const std::string copy = folder.FileIn("registry");
  const FileResult copied = WriteNewFile(copy, session.image().bytes());
  if (!copied.isDone()) return call.Fail(kFailed, backup, "", copied.reason);
  Registry registry(copy.c_str(), session.user());
  unsigned int result = registry.Initialize();
  const std::string made = folder.FileIn("backup");
  if (result == status::kOk) result = registry.BackupKey(0, session.path().c_str(), made.c_str());
  registry.Finalize();
  if (result != status::kOk) return session.FailWithStatus(result);
  const FileResult read = ReadWholeFile(made, kMaxBackup, bytes);
  return read.isDone() ? kDone : call.Fail(kFailed, backup, "", read.reason);
}

// Puts the backup into its place, where it is either complete or not at all.
ExitCode WriteBackup(Invocation& call, const std::string& backup, const std::string& bytes) {
  FileResult written;
  if (call.Has("--force") && IsThere(backup)) {
    std::string old;
    written = ReadWholeFile(backup, kMaxBackup, &old);
    if (written.tooLarge) written.reason = kTooLarge;
    if (written.isDone()) written = ReplaceFile(backup, old, bytes);
  } else {
    written = WriteNewFile(backup, bytes);
  }
  if (written.exists) return FailThere(call, backup);
  return written.isDone() ? kDone : call.Fail(kFailed, backup, "", written.reason);
}

// What the library's status says about the two files.
ExitCode FailRestore(Invocation& call, Session& session, const std::string& backup,
                     unsigned int result) {
  unsigned char permission = 0;
  const bool isClosed =
      session.registry().GetKeyPermission(0, "", &permission) == status::kInputOutput;
  if (result == status::kInputOutput && !isClosed) {
    return call.Fail(kDamaged, backup, "", "is no complete backup (status 5)");
  }
  if (result == status::kInvalidFile && session.image().IsSound()) {
    return call.FailWithStatus(result, backup, "", "is no backup");
  }
  if (result == status::kInvalidFile) {
    return session.FailWithStatus(result, Shown(backup) + " is no backup, or the file is damaged");
  }
  if (result == status::kLimit || result == status::kNoSpace) {
    return session.FailWithStatus(
        result,
        "the registry is full, a backup needs room beside what is there; yaxreg compact "
        "may help");
  }
  return session.FailWithStatus(result);
}

// A copy, because the library wants to write what it restores from.
ExitCode Restore(Invocation& call, Session& session, const std::string& backup,
                 const std::string& bytes) {
  const std::unique_ptr<TemporaryFolder> folder = MakeTemporaryFolder(call.File());
  if (!folder->isMade()) {
    return call.Fail(kFailed, "", "", "a temporary folder " + folder->reason());
  }
  const std::string copy = folder->FileIn("backup");
  const FileResult copied = WriteNewFile(copy, bytes);
  if (!copied.isDone()) return call.Fail(kFailed, copy, "", copied.reason);
  const unsigned int result =
      session.registry().RestoreKey(0, session.path().c_str(), copy.c_str());
  return result == status::kOk ? kDone : FailRestore(call, session, backup, result);
}

ExitCode RunBackup(Invocation& call) {
  const std::string backup = call.Text("BACKUP");
  Session session(call);
  if (!session.OpenToLook()) return session.code();
  if (IsThere(backup) && !call.Has("--force")) return FailThere(call, backup);
  if (IsSameFile(call.File(), backup)) {
    return call.Fail(kUsage, backup, "", "is the registry itself");
  }
  const ContentKey* const key = session.Key();
  if (key == nullptr || !session.HasRight(*key, tamu::registry::kRightRead)) return session.code();
  std::string bytes;
  const ExitCode made = MakeBackup(call, session, backup, &bytes);
  if (made != kDone) return made;
  const ExitCode written = WriteBackup(call, backup, bytes);
  if (written != kDone) return written;
  session.EndOfChange();
  return session.EndOfLook();
}

ExitCode RunRestore(Invocation& call) {
  const std::string backup = call.Text("BACKUP");
  std::string bytes;
  Session session(call);
  if (!session.OpenToChange()) return session.code();
  if (session.Key() == nullptr) return session.code();
  const FileResult read = ReadWholeFile(backup, kMaxBackup, &bytes);
  if (read.tooLarge) return call.Fail(kDamaged, backup, "", kTooLarge);
  if (!read.isDone()) return call.Fail(kFailed, backup, "", read.reason);
  const bool wasComplete = session.image().IsComplete();
  const ExitCode restored = Restore(call, session, backup, bytes);
  if (restored != kDone) return restored;
  if (!session.Close() || session.Key() == nullptr) return session.code();
  const bool isWhole = session.image().IsComplete() || !wasComplete;
  return isWhole ? session.EndOfChange() : session.FailUnseen();
}

}  // namespace

Verb BackupVerb() {
  return {
      "backup",
      "Write a key and all below it into a backup file",
      "Writes the library's own backup. A file that exists is refused; --force replaces it. The "
      "registry is only read; the backup is in its place when it is complete.",
      {kFile, kKeyPath, {"BACKUP", "The backup file to make", true, true}},
      {{"-f,--force", nullptr, "Replace a backup file that exists"}, kUser, kUid},
      "yaxreg backup device.rce network network.bak",
      RunBackup,
      true};
}

Verb RestoreVerb() {
  return {"restore",
          "Replace a key by what is in a backup file",
          "Replaces a key and all below it by a backup. The key must exist; only its name stays. "
          "After a failure it is as it was.",
          {kFile, kKeyPath, {"BACKUP", "The backup file", true, true}},
          {kUser, kUid, kTimeout},
          "yaxreg restore device.rce network network.bak",
          RunRestore,
          true};
}

}  // namespace yaxreg
