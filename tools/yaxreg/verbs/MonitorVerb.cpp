// monitor: changes as they happen.
#include <chrono>
#include <memory>
#include <ostream>

#include "registry/base/ChangeNote.h"
#include "tools/yaxreg/content/ContentJson.h"
#include "tools/yaxreg/content/ValueText.h"
#include "tools/yaxreg/image/FileIdentity.h"
#include "tools/yaxreg/image/SideFolder.h"
#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/text/Numbers.h"
#include "tools/yaxreg/text/RightsText.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/Session.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace status = tamu::registry::status;
using tamu::registry::Change;
using tamu::registry::ChangeKind;
using tamu::registry::ChangeList;
using tamu::registry::Registry;

namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned int kLookInterval = 200;  // ms between two looks at what else may have happened

bool IsOfValue(ChangeKind kind) {
  return kind == ChangeKind::kValueCreated || kind == ChangeKind::kValueSet ||
         kind == ChangeKind::kValueDeleted;
}

const char* WordOf(ChangeKind kind) {
  static const char* const kWords[] = {
      "key created",   "key deleted", "key restored", "value created",  "value set",
      "value deleted", "default set", "rights set",   "watch bits set", "compacted"};
  return kWords[static_cast<unsigned char>(kind)];
}

// Reads a value; the status of the library.
unsigned int ReadContent(Registry& registry, const Change& change, ContentValue* value) {
  tamu::registry::ReadValue read;
  const unsigned int result = registry.ReadWholeValue(change.keyPath, change.valueName, &read);
  value->name = change.valueName;
  if (result != status::kOk) return result;
  value->type = read.type;
  value->isSet = true;
  value->size = read.size;
  const auto* bytes = static_cast<const unsigned char*>(read.data);
  if (value->isNumber()) {
    for (unsigned int i = 0; i < read.size && i < ContentValue::kNumberSize; ++i) {
      value->number |= static_cast<unsigned long long>(bytes[i]) << (8 * i);
    }
  } else {
    value->data.assign(reinterpret_cast<const char*>(bytes), read.size);
  }
  return result;
}

class Monitor {
 public:
  Monitor(Invocation& call, const Session& session)
      : call_(call), file_(call.File()), key_(session.path()), user_(session.user()) {}

  // Takes --count and --timeout.
  bool TakeLimits();
  ExitCode Run();

 private:
  bool Open();
  bool IsOver() const;
  bool Follow();
  bool IsMeant(const Change& change) const;
  void PrintLost();
  void Print(const Change& change);
  void PrintJson(const Change& change);
  std::string TextOf(const Change& change);
  std::string ValueOf(const Change& change);

  Invocation& call_;
  const std::string file_;
  const std::string key_;
  const unsigned int user_;
  std::unique_ptr<Registry> registry_;
  FileIdentity opened_;
  unsigned long long number_ = 0;
  unsigned long long left_ = ~0ull;  // lines
  bool isTimed_ = false;
  Clock::time_point end_;
};

bool Monitor::TakeLimits() {
  constexpr unsigned long long kLongest = 1000000000;  // seconds
  unsigned long long seconds = 0;
  for (const char* const option : {"--count", "--timeout"}) {
    unsigned long long* const number = option == std::string("--count") ? &left_ : &seconds;
    if (!call_.Has(option)) continue;
    if (!ParseNumberUpTo(call_.Text(option), kLongest, number)) {
      call_.Fail(kUsage, "", "",
                 std::string(option) + ": " + Shown(call_.Text(option)) +
                     " is no number from 0 to 1000000000");
      return false;
    }
  }
  isTimed_ = call_.Has("--timeout");
  end_ = Clock::now() + std::chrono::seconds(seconds);
  return true;
}

bool Monitor::Open() {
  registry_ = std::make_unique<Registry>(file_.c_str(), user_);
  opened_ = FileIdentity(file_);
  UseSideFolder(*registry_);
  const unsigned int result = registry_->Initialize();
  if (result != status::kOk) {
    call_.FailWithStatus(result, file_, "",
                         result == status::kNoMemory ? "the library cannot open the file" : "");
    return false;
  }
  if (registry_->EffectiveDurability() == tamu::registry::Durability::kNone) {
    call_.Fail(kFailed, file_, "",
               "no journal can be had, without which the changes of other programs are not seen");
    return false;
  }
  number_ = registry_->ChangeNumber();
  return true;
}

bool Monitor::IsOver() const {
  return left_ == 0 || !call_.out || HeldSignals::IsToEnd() || (isTimed_ && Clock::now() >= end_);
}

ExitCode Monitor::Run() {
  const HeldSignals signals;
  if (!Open()) return kFailed;
  while (!IsOver()) {
    const FileIdentity now(file_);
    // Nothing has the name at the moment where a file is being replaced.
    if (now.IsFile() && now != opened_) {
      registry_.reset();
      if (!Open()) return kFailed;
      PrintLost();
    }
    if (registry_->WaitForChange(number_, kLookInterval) == status::kOk && !Follow()) {
      return kFailed;
    }
  }
  return left_ != 0 && call_.Has("--count") ? kNo : kDone;
}

bool Monitor::Follow() {
  ChangeList changes;
  const unsigned int result = registry_->ReadChanges(&number_, &changes);
  if (result == status::kLimit) PrintLost();
  if (result != status::kOk && result != status::kLimit) {
    call_.FailWithStatus(result, file_, "");
    return false;
  }
  for (unsigned int i = 0; i < changes.Count() && left_ > 0; ++i) {
    if (IsMeant(changes.At(i))) Print(changes.At(i));
  }
  call_.out.flush();
  return true;
}

// What creates, deletes or restores the key itself does so to its values.
bool Monitor::IsMeant(const Change& change) const {
  const bool isIn = tamu::registry::Concerns(change, key_.c_str());
  if (!isIn || !call_.Has("--value")) return isIn;
  if (IsOfValue(change.kind)) return change.valueName == call_.Text("--value");
  return change.kind <= ChangeKind::kKeyRestored &&
         tamu::registry::IsWithin(key_.c_str(), change.keyPath);
}

void Monitor::PrintLost() {
  if (call_.isJson()) {
    call_.out << "{\"change\":\"unknown\"}\n";
  } else {
    call_.out << call_.palette.bad << "(there were changes that are not known)" << call_.palette.end
              << '\n';
  }
  call_.out.flush();
  --left_;
}

void Monitor::Print(const Change& change) {
  --left_;
  if (call_.isJson()) return PrintJson(change);
  const Palette& colours = call_.palette;
  call_.out << colours.key << Shown(change.keyPath);
  if (!IsOfValue(change.kind)) call_.out << '/';
  call_.out << colours.end << ' ';
  if (IsOfValue(change.kind)) {
    call_.out << colours.value << Shown(change.valueName) << colours.end << ' ';
  }
  call_.out << TextOf(change) << '\n';
}

std::string Monitor::TextOf(const Change& change) {
  unsigned long long number = 0;
  unsigned char permission = 0;
  switch (change.kind) {
    case ChangeKind::kValueCreated:
    case ChangeKind::kValueSet:
      return ValueOf(change);
    case ChangeKind::kDefaultChanged:
      return registry_->GetDefaultValue(0, change.keyPath, &number) == status::kOk
                 ? "default = " + NumberText(number, false)
                 : WordOf(change.kind);
    case ChangeKind::kRightsChanged:
      return registry_->GetKeyPermission(0, change.keyPath, &permission) == status::kOk
                 ? "rights = " + RightsText(permission)
                 : WordOf(change.kind);
    case ChangeKind::kKeyCreated:
      return "created";
    case ChangeKind::kKeyRestored:
      return "restored";
    case ChangeKind::kWatchChanged:
    case ChangeKind::kCompacted:
      return WordOf(change.kind);
    default:
      return "deleted";
  }
}

// It may have been changed once more meanwhile: its line comes.
std::string Monitor::ValueOf(const Change& change) {
  ContentValue value;
  switch (ReadContent(*registry_, change, &value)) {
    case status::kOk:
    case status::kNoData:
      return "= " + ValueText(value);
    case status::kNoRight:
      return "= (no right to read it)";
    default:
      return "= (gone)";
  }
}

void Monitor::PrintJson(const Change& change) {
  call_.out << "{\"change\":\"" << WordOf(change.kind)
            << "\",\"path\":" << TextJson(change.keyPath);
  if (IsOfValue(change.kind)) {
    ContentValue value;
    const unsigned int result = ReadContent(*registry_, change, &value);
    const bool isThere = result == status::kOk || result == status::kNoData;
    call_.out << ",\"name\":" << TextJson(change.valueName);
    if (change.kind != ChangeKind::kValueDeleted && isThere) {
      call_.out << ",\"value\":" << ValueJson(value);
    }
  }
  call_.out << "}\n";
}

ExitCode RunMonitor(Invocation& call) {
  Session session(call);
  if (!session.OpenToLook()) return session.code();
  Monitor monitor(call, session);
  return monitor.TakeLimits() ? monitor.Run() : kUsage;
}

}  // namespace

Verb MonitorVerb() {
  return {
      "monitor",
      "Print changes as they happen",
      "Prints one line for each change that other programs make, until it is stopped: the key, the "
      "value and what it is then. A value that is changed again before it was read has two lines, "
      "both "
      "with the latest content. With PATH only that key and all below it. When changes came faster "
      "than they could be told, or the file was replaced, a line says that some are not known. The "
      "exit code is 1 when --timeout was over before --count lines were printed.",
      {kFile, kPath},
      {{"--value", "NAME", "Only the values of this name"},
       {"--count", "N", "End after so many lines"},
       {"--timeout", "S", "End after so many seconds"},
       kUser,
       kUid},
      "yaxreg monitor device.rce network/eth0 --count 1 --timeout 0",
      RunMonitor,
      true};
}

}  // namespace yaxreg
