#include "tools/yaxreg/verbs/Session.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ostream>

#include "registry/format/RecordSize.h"
#include "tools/yaxreg/image/Kinds.h"
#include "tools/yaxreg/image/SideFolder.h"
#include "tools/yaxreg/image/Snapshot.h"
#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/text/Numbers.h"
#include "tools/yaxreg/verbs/Loading.h"

namespace yaxreg {

namespace status = tamu::registry::status;
using tamu::registry::Durability;
using tamu::registry::Registry;
using tamu::registry::RegistryOptions;
using tamu::registry::SpacePolicy;

namespace {

constexpr char kLost[] = "the file cannot be written, the change is lost";
constexpr char kFull[] = "the registry is full; yaxreg compact may help";

// Of "/" at the beginning and the end of a path, one each does not count.
std::string KeyPath(const Invocation& call) {
  std::string path = call.Path();
  if (!path.empty() && path.back() == '/') path.pop_back();
  return path;
}

// No key has an empty name.
bool HasEmptyName(const std::string& path) {
  if (path.empty()) return false;
  return path.front() == '/' || path.back() == '/' || path.find("//") != std::string::npos;
}

}  // namespace

Session::Session(Invocation& invocation)
    : call_(invocation),
      file_(invocation.File()),
      path_(KeyPath(invocation)),
      user_(tamu::registry::kAdministratorId) {}

bool Session::ChooseUser() {
  if (call_.Has("--user") && call_.Has("--uid")) {
    code_ = call_.Fail(kUsage, "", "", "only one of --user and --uid may be given");
    return false;
  }
  if (call_.Has("--user")) user_ = tamu::registry::UserIdOf(call_.Text("--user").c_str());
  if (!call_.Has("--uid")) return true;
  unsigned long long number = 0;
  if (!ParseNumberUpTo(call_.Text("--uid"), 0xFFFFFFFF, &number)) {
    code_ = call_.Fail(kUsage, "", "", "--uid: " + Shown(call_.Text("--uid")) + " is no user id");
    return false;
  }
  user_ = static_cast<unsigned int>(number);
  return true;
}

bool Session::OpenToLook() {
  return ChooseUser() && LookAgain();
}

bool Session::LookAgain() {
  if (registry_ == nullptr) {
    image_ = LoadImage(call_, file_, &code_);
    return image_ != nullptr && CheckInPlace();
  }
  if (!CheckInPlace()) return false;
  std::string bytes;
  const unsigned int result = TakeSnapshot(*registry_, &bytes);
  if (result != status::kOk) return FailLost(result);
  image_ = DecodeImage(call_, file_, std::move(bytes), &code_);
  return image_ != nullptr;
}

// The library goes on writing into the file that it has opened, wherever that is.
bool Session::CheckInPlace() {
  const FileIdentity now(file_);
  if (!opened_.IsFile() || now == opened_) return true;
  if (!now.IsFile()) {
    LoadImage(call_, file_, &code_);
    return false;
  }
  code_ = call_.Fail(kFailed, file_, "",
                     "was replaced by another program meanwhile, the change may be lost");
  return false;
}

// The library answers the same status for a file that may not be written and for want of memory.
bool Session::CheckWritable() {
  const int opened = open(file_.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK);
  if (opened >= 0) {
    close(opened);
    return true;
  }
  code_ = call_.Fail(kFailed, file_, "", std::string("cannot be written: ") + std::strerror(errno));
  return false;
}

// In a damaged file a change may take what another key needs.
bool Session::CheckSound() {
  if (image_->IsSound()) return true;
  code_ = call_.FailWithStatus(status::kInvalidFile, file_, "",
                               image_->IsComplete()
                                   ? "the file is damaged; yaxreg compact mends it"
                                   : "the file is damaged; yaxreg repair saves what can be read");
  return false;
}

unsigned int Session::OpenWith(Durability durability, const Waiting& waiting) {
  RegistryOptions options;
  options.waitAtMost = waiting.Left(options.waitAtMost);
  options.durability = durability;
  options.space = SpacePolicy::kReuse;
  if (durability == Durability::kProcess) options.sideFolder = SideFolder();
  opened_ = FileIdentity(file_);
  registry_ = std::make_unique<Registry>(file_.c_str(), user_);
  registry_->SetOptions(options);
  return registry_->Initialize();
}

// Where there is no journal, whoever has the file open to change it has it alone.
unsigned int Session::OpenRegistry(const Waiting& waiting) {
  constexpr int kTries = 500;
  constexpr int kPause = 10000;  // microseconds
  for (int i = 0;; ++i) {
    unsigned int opened = OpenWith(Durability::kProcess, waiting);
    if (opened == status::kNoSpace && SideFolder() == nullptr) {
      opened = OpenWith(Durability::kNone, waiting);
    }
    const bool isOver = waiting.IsLimited() ? waiting.IsOver() : i == kTries;
    if (opened != status::kNoSpace || isOver) return opened;
    usleep(kPause);
  }
}

bool Session::BeginChange(Waiting& waiting) {
  const unsigned int begun = registry_->BeginTransaction();
  waiting.End();
  if (!signals_) signals_.emplace();
  if (begun == status::kOk) return true;
  const bool isTooLate = begun == status::kInputOutput && waiting.IsOver();
  code_ = isTooLate ? waiting.FailOver() : FailWithStatus(begun);
  return false;
}

bool Session::FailOpening(unsigned int opened, Waiting& waiting) {
  registry_.reset();
  waiting.End();
  if (waiting.IsOver() && (opened == status::kNoSpace || waiting.IsHeldByOthers())) {
    code_ = waiting.FailOver();
    return false;
  }
  code_ = call_.FailWithStatus(opened, file_, "",
                               opened == status::kNoMemory  ? "the library cannot open the file"
                               : opened == status::kNoSpace ? kHeldAlone
                                                            : "");
  return false;
}

// The users of the commands may be different.
bool Session::JoinBatch() {
  const unsigned int result = call_.batch->registry->SetCurrentUserId(user_);
  if (result == status::kOk) return LookAgain() && CheckSound();
  code_ = FailWithStatus(result);
  return false;
}

// Beside a program that writes without a journal a sound file may look damaged for a moment.
bool Session::OpenToChange() {
  constexpr int kLooks = 5;
  constexpr int kPause = 10000;  // microseconds
  Waiting waiting(call_);
  if (!waiting.Take()) {
    code_ = kUsage;
    return false;
  }
  if (!ChooseUser()) return false;
  if (call_.batch != nullptr) return JoinBatch();
  for (int i = 0; i < kLooks; ++i) {
    if (!LookAgain()) return false;
    if (image_->IsSound()) break;
    usleep(kPause);
  }
  if (!CheckSound() || !CheckWritable()) return false;
  waiting.Begin();
  const unsigned int opened = OpenRegistry(waiting);
  if (opened != status::kOk) return FailOpening(opened, waiting);
  return BeginChange(waiting) && LookAgain() && CheckSound();
}

bool Session::Close() {
  if (!LookAgain()) return false;
  if (call_.batch != nullptr) return true;
  const unsigned int ended = registry_->EndTransaction();
  registry_.reset();
  return ended == status::kOk ? CheckInPlace() : FailLost(ended);
}

// The library closes a file that it could not make longer.
bool Session::FailLost(unsigned int result) {
  code_ = FailWithStatus(result, result == status::kInputOutput ? kLost : "");
  return false;
}

const ContentKey* Session::Key() {
  size_t index = 0;
  if (HasEmptyName(path_)) {
    code_ = FailWithStatus(status::kNotFound, "there is no such key");
    return nullptr;
  }
  if (!FindKey(call_, *image_, file_, path_, &index, &code_)) return nullptr;
  const ContentKey& key = image_->content().keys[index];
  if (!key.isMadeUp) return &key;
  code_ = FailWithStatus(status::kInvalidFile,
                         "the file is damaged, nothing but the name of the key is left");
  return nullptr;
}

const ContentValue* Session::FindValue(const ContentKey& key, const std::string& name) {
  const ContentValue* const value = key.FindValue(name);
  if (value != nullptr) return value;
  code_ = FailWithStatus(status::kNotFound, "there is no value " + Shown(name) + HintOf(*image_));
  if (!image_->IsComplete()) code_ = kDamaged;
  return nullptr;
}

bool Session::MayDo(const ContentKey& key, unsigned char right) const {
  const bool isOwner = user_ == key.owner || user_ == tamu::registry::kAdministratorId;
  const unsigned int rights = isOwner ? key.permission : key.permission >> 4;
  return (rights & right) != 0;
}

bool Session::HasRight(const ContentKey& key, unsigned char right) {
  if (MayDo(key, right)) return true;
  code_ = FailWithStatus(status::kNoRight);
  return false;
}

ExitCode Session::Fail(ExitCode code, const std::string& reason) {
  return call_.Fail(code, file_, path_, reason);
}

ExitCode Session::FailWithStatus(unsigned int status, const std::string& reason) {
  // The room in a file that is not there any more tells nothing.
  const bool isFull = status == status::kLimit || status == status::kNoSpace;
  if (isFull && !CheckInPlace()) return code_;
  if (!reason.empty()) return call_.FailWithStatus(status, file_, path_, reason);
  switch (status) {
    case status::kNoRight:
      return FailWithStatus(status, "user " + std::to_string(user_) + " has no right to do this");
    case status::kNoSpace:
      return FailWithStatus(status, std::string("the disk or ") + kFull);
    case status::kLimit:
      return FailWithStatus(status, kFull);
    case status::kCannotOpen:  // a record that cannot be read
      return Fail(kDamaged, "the file is damaged here; yaxreg check tells more (status 9)");
    case status::kInvalidFile:
      return FailWithStatus(status, "the file is damaged here; yaxreg check tells more");
    default:
      return call_.FailWithStatus(status, file_, path_);
  }
}

ExitCode Session::FailAt(const std::string& path, unsigned int status) {
  path_ = path;
  return FailWithStatus(status);
}

// Nothing is full for good while each kind may get another table: then a write has failed.
unsigned int Session::UnseenStatus() const {
  for (const NodeKind kind : kAllKinds) {
    if (image_->UseOf(kind).tables >= tamu::registry::kTablesMax) return status::kLimit;
  }
  return status::kInputOutput;
}

ExitCode Session::FailUnseen() {
  if (image_->IsComplete()) {
    const unsigned int unseen = UnseenStatus();
    const bool isFull = unseen == status::kLimit;
    return FailWithStatus(unseen, isFull ? kFull : kLost);
  }
  return FailWithStatus(status::kInvalidFile,
                        "the file is damaged, the change is lost; yaxreg check tells more");
}

ExitCode Session::EndOfLook() {
  return yaxreg::EndOfLook(call_, *image_, file_);
}

ExitCode Session::EndOfChange(bool changed) {
  if (!call_.isJson()) return kDone;
  call_.out << "{\"changed\":" << (changed ? "true" : "false") << ",\"path\":" << TextJson(path_)
            << "}\n";
  return kDone;
}

}  // namespace yaxreg
