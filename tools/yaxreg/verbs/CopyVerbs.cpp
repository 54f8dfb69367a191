// cp and mv: a value, or a key with all below it, to another place.
#include <algorithm>
#include <ostream>

#include "registry/base/ChangeNote.h"
#include "registry/base/Value.h"
#include "tools/yaxreg/content/ContentDiff.h"
#include "tools/yaxreg/content/ContentMerge.h"
#include "tools/yaxreg/content/PathPattern.h"
#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/verbs/Applying.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/Session.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace status = tamu::registry::status;
using tamu::registry::IsWithin;

namespace {

// A key, or a value of one.
struct Place {
  std::string path;  // without slashes at its ends
  std::string name;
  bool isValue = false;
};

Place PlaceOf(const std::string& text) {
  Place place;
  place.path = text;
  place.isValue = SplitPlace(text, &place.path, &place.name);
  if (!place.path.empty() && place.path.front() == '/') place.path.erase(0, 1);
  if (!place.path.empty() && place.path.back() == '/') place.path.pop_back();
  return place;
}

// A place where nothing can be.
std::string ProblemOf(const Place& place) {
  const std::string slashed = '/' + place.path + '/';
  if (!place.path.empty() && slashed.find("//") != std::string::npos)
    return "has an empty name in it";
  const bool isName = !place.name.empty() && place.name.size() <= tamu::registry::kValueNameMax;
  return place.isValue && !isName ? "tells a value whose name has not 1 to 31 bytes" : "";
}

// What is wrong with the two of them, whatever the file; "" when nothing is. A value goes by its
// own name to a place that tells none.
std::string TakePlaces(Invocation& call, Place* from, Place* to) {
  *from = PlaceOf(call.Text("FROM"));
  *to = PlaceOf(call.Text("TO"));
  for (const auto& [place, name] : {std::pair{from, "FROM"}, std::pair{to, "TO"}}) {
    const std::string problem = ProblemOf(*place);
    if (!problem.empty()) return Shown(call.Text(name)) + ' ' + problem;
  }
  if (from->isValue) {
    if (!to->isValue) to->name = from->name;
    to->isValue = true;
    return from->path == to->path && from->name == to->name ? "both places are the same" : "";
  }
  if (to->isValue) return "a key cannot become a value";
  if (from->path.empty()) return "the root cannot be put anywhere else";
  if (IsWithin(to->path.c_str(), from->path.c_str())) return "a key cannot be put into itself";
  return IsWithin(from->path.c_str(), to->path.c_str()) ? "a key cannot replace one that it is in"
                                                        : "";
}

class Copy {
 public:
  Copy(Invocation& call, bool isMove) : call_(call), session_(call), isMove_(isMove) {}

  ExitCode Run() {
    const std::string problem = TakePlaces(call_, &from_, &to_);
    if (!problem.empty()) return call_.Fail(kUsage, "", "", problem);
    if (!session_.OpenToChange()) return session_.code();
    const Content& present = session_.image().content();
    Content wanted;
    const ExitCode code = from_.isValue ? PutValue(present, &wanted) : PutKey(present, &wanted);
    return code == kDone ? Apply(present, wanted) : code;
  }

 private:
  ExitCode Fail(unsigned int status, const Place& place, const std::string& reason) {
    return call_.FailWithStatus(status, call_.File(), place.path, reason);
  }

  ExitCode PutValue(const Content& present, Content* wanted) {
    ExitCode code = kDone;
    size_t key = 0;
    if (!FindKey(present, from_.path, &key, &code)) return code;
    const ContentValue* const value = present.keys[key].FindValue(from_.name);
    if (value == nullptr) {
      return Fail(status::kNotFound, from_, "there is no value " + Shown(from_.name));
    }
    const size_t target = present.Find(to_.path);
    const bool isThere =
        target != Content::kNone && present.keys[target].FindValue(to_.name) != nullptr;
    if (isThere && !call_.Has("--force")) {
      return Fail(status::kExists, to_,
                  "there is a value " + Shown(to_.name) + " already; --force replaces it");
    }
    ContentUpdate update;
    update.keys.emplace_back();
    update.keys[0].tellsValues = true;
    update.keys[0].values = {*value};
    update.keys[0].values[0].name = to_.name;
    *wanted = MergedContent(present, to_.path, update);
    if (isMove_) DropValue(&wanted->keys[wanted->Find(from_.path)], from_.name);
    return kDone;
  }

  // What it hides goes, too.
  static void DropValue(ContentKey* key, const std::string& name) {
    const auto isIt = [&](const ContentValue& value) { return value.name == name; };
    key->values.erase(std::remove_if(key->values.begin(), key->values.end(), isIt),
                      key->values.end());
  }

  ExitCode PutKey(const Content& present, Content* wanted) {
    ExitCode code = kDone;
    size_t key = 0;
    if (!FindKey(present, from_.path, &key, &code)) return code;
    const size_t target = present.Find(to_.path);
    if (target != Content::kNone && !call_.Has("--force")) {
      return Fail(status::kExists, to_, "the key exists already; --force replaces it");
    }
    const Content rest = target == Content::kNone ? present : ContentWithout(present, target);
    *wanted = MergedContent(rest, to_.path, UpdateOf(present, key));
    if (isMove_) *wanted = ContentWithout(*wanted, wanted->Find(from_.path));
    return kDone;
  }

  bool FindKey(const Content& present, const std::string& path, size_t* key, ExitCode* code) {
    *key = present.Find(path);
    if (*key != Content::kNone) return true;
    *code = call_.FailWithStatus(status::kNotFound, call_.File(), path, "there is no such key");
    return false;
  }

  ExitCode Apply(const Content& present, const Content& wanted) {
    const bool isSame = AreSame(present, 0, wanted, 0);
    const ExitCode code = isSame ? kDone : ApplyContent(call_, session_, present, wanted);
    if (code == kDone && call_.isJson()) {
      call_.out << "{\"changed\":" << (isSame ? "false" : "true")
                << ",\"path\":" << TextJson(to_.path) << "}\n";
    }
    return code;
  }

  Invocation& call_;
  Session session_;
  const bool isMove_;
  Place from_;
  Place to_;
};

ExitCode RunCp(Invocation& call) {
  return Copy(call, false).Run();
}

ExitCode RunMv(Invocation& call) {
  return Copy(call, true).Run();
}

constexpr Argument kFrom = {"FROM", "The key, or key and value with a colon between them", true,
                            false};
constexpr Argument kTo = {"TO", "Where it is then; of a value the key alone keeps its name", true,
                          false};
constexpr Option kReplace = {"-f,--force", nullptr, "Replace what is there"};

}  // namespace

Verb CpVerb() {
  return {"cp",
          "Copy a key or a value",
          "Copies a key with all keys below it and their values, owners, rights, watch bits and "
          "default values, or one value. Missing parents are made. All of it happens, or nothing. "
          "It is done as the administrator.",
          {kFile, kFrom, kTo},
          {kReplace, kTimeout},
          "yaxreg cp device.rce network/eth0 network/eth1",
          RunCp};
}

Verb MvVerb() {
  return {"mv",
          "Move or rename a key or a value",
          "Does what cp does and deletes what was copied, as one change. A value goes with those "
          "that it hides, which are lost.",
          {kFile, kFrom, kTo},
          {kReplace, kTimeout},
          "yaxreg mv device.rce network/eth0:mtu network/eth0:size",
          RunMv};
}

}  // namespace yaxreg
