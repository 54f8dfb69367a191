// Whole registries and keys: created, deleted.
#include <ostream>

#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/text/Numbers.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/NewKeys.h"
#include "tools/yaxreg/verbs/NewRegistry.h"
#include "tools/yaxreg/verbs/Session.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace status = tamu::registry::status;

namespace {

bool TakeDefault(Invocation& call, unsigned long long* number, ExitCode* code) {
  const std::string text = call.Text("--default");
  if (!call.Has("--default") || ParseNumber(text, number)) return true;
  *code = call.Fail(kUsage, "", "", "--default: " + Shown(text) + " is no whole number of 64 bits");
  return false;
}

// Whether the key is there, with the default value if one was asked for.
bool IsMade(const Content& content, const std::string& path, const unsigned long long* number) {
  const size_t index = content.Find(path);
  if (index == Content::kNone || content.keys[index].isMadeUp) return false;
  if (number == nullptr) return true;
  return content.keys[index].hasDefault && content.keys[index].defaultValue == *number;
}

ExitCode MakeKey(Session& session, NewKeys& keys, const unsigned long long* number) {
  unsigned int deleted = status::kOk;
  const unsigned int created = keys.Create(number);
  if (!keys.DeleteStrays(&deleted)) return session.code();
  if (created != status::kOk) return session.FailWithStatus(created);
  if (deleted != status::kOk) {
    return session.FailWithStatus(deleted,
                                  "a key of a similar name was made and cannot be deleted");
  }
  if (!session.Close()) return session.code();
  if (!IsMade(session.image().content(), session.path(), number)) return session.FailUnseen();
  return session.EndOfChange();
}

// The key is there already, and the call does not mind.
ExitCode SetDefault(Session& session, const unsigned long long* number) {
  const bool isMade = IsMade(session.image().content(), session.path(), number);
  if (isMade || number == nullptr) return session.EndOfChange(false);
  const unsigned int result =
      session.registry().SetDefaultValue(0, session.path().c_str(), *number);
  if (result != status::kOk) return session.FailWithStatus(result);
  if (!session.Close()) return session.code();
  if (!IsMade(session.image().content(), session.path(), number)) return session.FailUnseen();
  return session.EndOfChange();
}

ExitCode RunCreate(Invocation& call) {
  const ExitCode code = MakeNewRegistry(call);
  if (code == kDone && call.isJson()) {
    call.out << "{\"changed\":true,\"file\":" << TextJson(call.File()) << "}\n";
  }
  return code;
}

ExitCode RunMkkey(Invocation& call) {
  std::vector<std::string> names;
  unsigned long long number = 0;
  ExitCode code = kDone;
  Session session(call);
  if (!TakeNames(call, session.path(), &names, &code)) return code;
  if (!TakeDefault(call, &number, &code)) return code;
  if (!session.OpenToChange()) return session.code();
  const unsigned long long* const given = call.Has("--default") ? &number : nullptr;
  const bool withParents = call.Has("--parents");
  NewKeys keys(session, names);
  if (keys.present() == names.size()) {
    if (!withParents) return session.FailWithStatus(status::kExists, "the key exists already");
    return SetDefault(session, given);
  }
  if (keys.present() + 1 < names.size() && !withParents) {
    return session.FailWithStatus(status::kNotFound, "its parent does not exist; -p creates it");
  }
  if (!keys.MayFit()) return session.FailWithStatus(status::kLimit);
  return MakeKey(session, keys, given);
}

ExitCode RunRmkey(Invocation& call) {
  Session session(call);
  if (session.path().empty()) {
    return call.Fail(kUsage, "", "", "the root cannot be deleted, only the keys below it");
  }
  if (!session.OpenToChange()) return session.code();
  const bool isAbsent = session.image().content().Find(session.path()) == Content::kNone;
  if (isAbsent && call.Has("--force")) return session.EndOfChange(false);
  if (session.Key() == nullptr) return session.code();
  const unsigned int result = session.registry().DeleteKey(0, session.path().c_str());
  if (result != status::kOk) return session.FailWithStatus(result);
  if (!session.Close()) return session.code();
  const bool isThere = session.image().content().Find(session.path()) != Content::kNone;
  return isThere ? session.FailUnseen() : session.EndOfChange();
}

}  // namespace

Verb CreateVerb() {
  return {"create",
          "Make a new registry",
          "Makes an empty registry of 75888 bytes. A file that exists is left alone.",
          {kFile},
          {},
          "yaxreg create device.rce",
          RunCreate,
          true};
}

Verb MkkeyVerb() {
  return {"mkkey",
          "Create a key",
          "Creates a key, exactly of this name whatever its neighbours are called. Its parent must "
          "exist.",
          {kFile, kKeyPath},
          {{"-p,--parents", nullptr, "Create missing parents, too; a key that exists is fine"},
           {"--default", "NUMBER", "Its default value"},
           kUser,
           kUid,
           kTimeout},
          "yaxreg mkkey -p device.rce network/eth0",
          RunMkkey};
}

Verb RmkeyVerb() {
  return {
      "rmkey",
      "Delete a key",
      "Deletes a key, all keys below it and their values. The root is refused: a registry without "
      "it could never hold a key again.",
      {kFile, kKeyPath},
      {kForce, kUser, kUid, kTimeout},
      "yaxreg rmkey device.rce network/eth1",
      RunRmkey};
}

}  // namespace yaxreg
