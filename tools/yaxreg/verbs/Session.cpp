#include "tools/yaxreg/verbs/Session.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ostream>

#include "registry/format/RecordSize.h"
#include "tools/yaxreg/image/Kinds.h"
#include "tools/yaxreg/image/SideFolder.h"
#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/text/Numbers.h"
#include "tools/yaxreg/verbs/Loading.h"

namespace yaxreg {

namespace status = tamu::registry::status;

namespace {

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
  image_ = LoadImage(call_, file_, &code_);
  return image_ != nullptr && CheckInPlace();
}

void Session::Lock() {
  lock_.Take(file_);
}

// The library goes on writing into the file that it has opened, wherever that is.
bool Session::CheckInPlace() {
  if (lock_.IsInPlace()) return true;
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

bool Session::OpenToChange() {
  if (!ChooseUser()) return false;
  Lock();
  if (!signals_) signals_.emplace();
  if (!LookAgain() || !CheckSound() || !CheckWritable()) return false;
  registry_ = std::make_unique<tamu::registry::Registry>(file_.c_str(), user_);
  UseSideFolder(*registry_);
  const unsigned int opened = registry_->Initialize();
  // The library has made the root key of a file that had none yet.
  if (opened == status::kOk) return !image_->content().keys[0].isMadeUp || LookAgain();
  code_ = call_.FailWithStatus(
      opened, file_, "", opened == status::kNoMemory ? "the library cannot open the file" : "");
  return false;
}

bool Session::Close() {
  registry_.reset();
  return LookAgain();
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

bool Session::HasRight(const ContentKey& key, unsigned char right) {
  const bool isOwner = user_ == key.owner || user_ == tamu::registry::kAdministratorId;
  const unsigned int rights = isOwner ? key.permission : key.permission >> 4;
  if ((rights & right) != 0) return true;
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
    return FailWithStatus(unseen,
                          isFull ? kFull : "the file cannot be written, the change is lost");
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
