// What a key has beside its values: default value, rights, watch bits.
#include <ostream>

#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/text/Numbers.h"
#include "tools/yaxreg/text/RightsText.h"
#include "tools/yaxreg/text/WatchText.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/Session.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace status = tamu::registry::status;

namespace {

ExitCode FailArgument(Invocation& call, const char* name, const char* what) {
  return call.Fail(kUsage, "", "", Shown(call.Text(name)) + " " + what);
}

// Begins what a look prints for programs: {"path":PATH,"field":
std::ostream& BeginJson(Invocation& call, const Session& session, const char* field) {
  return call.out << "{\"path\":" << TextJson(session.path()) << ",\"" << field << "\":";
}

ExitCode PrintDefault(Invocation& call) {
  Session session(call);
  if (!session.OpenToLook()) return session.code();
  const ContentKey* const key = session.Key();
  if (key == nullptr || !session.HasRight(*key, tamu::registry::kRightRead)) return session.code();
  if (!key->hasDefault) return session.FailWithStatus(status::kNoData, "no default value is set");
  const bool isSigned = call.Has("--signed");
  if (call.isJson()) {
    BeginJson(call, session, "default") << JsonNumberText(key->defaultValue, isSigned) << "}\n";
  } else {
    call.out << NumberText(key->defaultValue, isSigned) << "\n";
  }
  return session.EndOfLook();
}

ExitCode PrintRights(Invocation& call) {
  Session session(call);
  if (!session.OpenToLook()) return session.code();
  const ContentKey* const key = session.Key();
  if (key == nullptr) return session.code();
  const std::string owner = std::to_string(key->owner);
  const std::string rights = RightsText(key->permission);
  const std::string number = std::to_string(key->permission);
  if (call.isJson()) {
    BeginJson(call, session, "owner")
        << owner << ",\"rights\":" << number << ",\"letters\":\"" << rights << "\"}\n";
  } else {
    const bool isAdministrator = key->owner == tamu::registry::kAdministratorId;
    call.out << "owner " << (isAdministrator ? "administrator (" + owner + ")" : owner)
             << ", rights " << rights << " (" << number << ")\n";
  }
  return session.EndOfLook();
}

ExitCode PrintWatch(Invocation& call) {
  Session session(call);
  if (!session.OpenToLook()) return session.code();
  const ContentKey* const key = session.Key();
  if (key == nullptr || !session.HasRight(*key, tamu::registry::kRightRead)) return session.code();
  if (call.isJson()) {
    BeginJson(call, session, "watch") << std::to_string(key->watch) << ",\"words\":[";
    const char* separator = "\"";
    for (const std::string& word : WatchWords(key->watch)) {
      call.out << separator << word << '"';
      separator = ",\"";
    }
    call.out << "]}\n";
  } else {
    call.out << WatchText(key->watch) << "\n";
  }
  return session.EndOfLook();
}

// Opens the file, changes the key by `change`, and expects that `isDone` holds for it afterwards.
template <class Change, class IsDone>
ExitCode ChangeKey(Invocation& call, Change change, IsDone isDone) {
  Session session(call);
  if (!session.OpenToChange()) return session.code();
  const ContentKey* const key = session.Key();
  if (key == nullptr) return session.code();
  const bool changes = !isDone(*key);
  const unsigned int result = change(session.registry(), session.path().c_str());
  if (result != status::kOk) return session.FailWithStatus(result);
  if (!session.Close()) return session.code();
  const ContentKey* const changed = session.Key();
  if (changed == nullptr) return session.code();
  return isDone(*changed) ? session.EndOfChange(changes) : session.FailUnseen();
}

ExitCode RunDefault(Invocation& call) {
  if (!call.Has("NUMBER")) return PrintDefault(call);
  unsigned long long number = 0;
  if (!ParseNumber(call.Text("NUMBER"), &number)) {
    return FailArgument(call, "NUMBER", "is no whole number of 64 bits");
  }
  return ChangeKey(
      call,
      [&](tamu::registry::Registry& registry, const char* path) {
        return registry.SetDefaultValue(0, path, number);
      },
      [&](const ContentKey& key) { return key.hasDefault && key.defaultValue == number; });
}

ExitCode RunRights(Invocation& call) {
  if (!call.Has("RIGHTS")) return PrintRights(call);
  unsigned char permission = 0;
  if (!ParseRights(call.Text("RIGHTS"), &permission)) {
    return FailArgument(call, "RIGHTS", "are no rights such as rwcd:r or 0x1F");
  }
  return ChangeKey(
      call,
      [&](tamu::registry::Registry& registry, const char* path) {
        return registry.SetKeyPermission(0, path, permission);
      },
      [&](const ContentKey& key) { return key.permission == permission; });
}

ExitCode RunWatch(Invocation& call) {
  if (!call.Has("BITS")) return PrintWatch(call);
  unsigned char bits = 0;
  if (!ParseWatch(call.Text("BITS"), &bits)) {
    return FailArgument(call, "BITS",
                        "is no number from 0 to 63, and no words such as values,below");
  }
  return ChangeKey(
      call,
      [&](tamu::registry::Registry& registry, const char* path) {
        return registry.SetKeyWatch(0, path, bits);
      },
      [&](const ContentKey& key) { return key.watch == bits; });
}

}  // namespace

Verb DefaultVerb() {
  return {
      "default",
      "Print or set the default value of a key",
      "Prints the default value, or sets it when a number is given. The exit code is 1 when none "
      "is set. It cannot be taken away again but by an import.",
      {kFile,
       kKeyPath,
       {"NUMBER", "The new default value, a whole number of 64 bits", false, false}},
      {{"--signed", nullptr, "Print it as a signed number"}, kUser, kUid, kTimeout},
      "yaxreg default device.rce network/eth0 7",
      RunDefault};
}

Verb RightsVerb() {
  return {
      "rights",
      "Print or set the rights on a key",
      "Prints owner and rights of a key, such as rwcd:r---, or sets the rights: two groups of "
      "letters, the owner's and everybody else's, r (read), w (modify), c (create) and d (delete) "
      "in any order. The colon between them is needed; a group without letters, or with - alone, "
      "means no rights for it, as in rwcd:r, rwcd: or :r. Or the byte itself is given, as in "
      "0x1F. Only the owner and the administrator may set them.",
      {kFile, kKeyPath, {"RIGHTS", "The new rights, such as rwcd:r or 0x1F", false, false}},
      {kUser, kUid, kTimeout},
      "yaxreg rights device.rce network/eth0 rwcd:r",
      RunRights};
}

Verb WatchVerb() {
  return {
      "watch",
      "Print or set the watch bits of a key",
      "Prints the six watch bits of a key, as a number and what each of them asks for, or sets "
      "them: the sum of what programs are told that ask for what is watched, or the words for it. "
      "1, values: values are created, set or deleted; 2, default: the default value is set; 4, "
      "keys: keys directly below are created or deleted; 8, rights: rights or watch bits are set; "
      "16, restored: the key is restored; 32, below: all that for the keys below, too.",
      {kFile,
       kKeyPath,
       {"BITS", "The new bits, 0 to 63, or words such as values,below", false, false}},
      {kUser, kUid, kTimeout},
      "yaxreg watch device.rce network/eth0 3",
      RunWatch};
}

}  // namespace yaxreg
