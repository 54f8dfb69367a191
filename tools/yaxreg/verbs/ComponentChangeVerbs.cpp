// comp add, comp set and comp rm: components are registered without a program.
#include <algorithm>
#include <cctype>
#include <ostream>

#include "registry/base/Value.h"
#include "tools/yaxreg/components/ComponentList.h"
#include "tools/yaxreg/components/DeviceFiles.h"
#include "tools/yaxreg/components/SharedObject.h"
#include "tools/yaxreg/content/ContentDiff.h"
#include "tools/yaxreg/content/ContentMerge.h"
#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/verbs/Applying.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/Session.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace status = tamu::registry::status;

namespace {

constexpr char kComponents[] = "YAX_ROOT/";
constexpr unsigned long long kBinary = 1;  // the type of a component in a shared object

// In capitals and braces, as the framework spells it; "" when it is none.
std::string IdentifierOf(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  if (!text.empty() && text.front() != '{') text = '{' + text + '}';
  return IsComponentIdentifier(text) ? text : "";
}

bool TakeIdentifier(Invocation& call, std::string* key, ExitCode* code) {
  const std::string identifier = IdentifierOf(call.Text("ID"));
  *key = kComponents + identifier;
  if (!identifier.empty()) return true;
  *code = call.Fail(
      kUsage, "", "",
      Shown(call.Text("ID")) + " is no identifier such as {1FBF55FC-0F15-45CC-8F3F-DE86A5640CB5}");
  return false;
}

bool CheckTexts(Invocation& call, ExitCode* code) {
  for (const char* const name : {"--name", "--path", "OBJECT"}) {
    const std::string text = call.Text(name);
    const bool isPath = std::string(name) != "--name";
    const bool isEmpty = isPath && call.Has(name) && text.empty();
    if (text.size() <= ComponentField::kMaxText && !isEmpty) continue;
    *code = call.Fail(kUsage, "", "", std::string(name) + ": has not 1 to 255 bytes");
    return false;
  }
  return true;
}

ContentValue NumberValue(const char* name, unsigned long long number) {
  ContentValue value;
  value.name = name;
  value.isSet = true;
  value.size = ContentValue::kNumberSize;
  value.number = number;
  return value;
}

ContentValue TextValue(const char* name, const std::string& text) {
  ContentValue value;
  value.name = name;
  value.type = tamu::registry::kValueTypeString;
  value.isSet = true;
  value.data = text + '\0';
  value.size = static_cast<unsigned int>(value.data.size());
  return value;
}

// "clock" of "/usr/lib/libclock.so.1".
std::string NameOf(const std::string& object) {
  std::string name = object.substr(object.rfind('/') + 1);
  const size_t end = name.find(".so");
  if (end != std::string::npos && end > 0) name.resize(end);
  if (name.compare(0, 3, "lib") == 0 && name.size() > 3) name.erase(0, 3);
  return name;
}

// Makes the content the wanted one and prints what programs get.
ExitCode Change(Invocation& call, Session& session, const std::string& key, const Content& wanted) {
  const Content& present = session.image().content();
  const bool isSame = AreSame(present, 0, wanted, 0);
  const ExitCode code = isSame ? kDone : ApplyContent(call, session, present, wanted);
  if (code == kDone && call.isJson()) {
    call.out << "{\"changed\":" << (isSame ? "false" : "true") << ",\"path\":" << TextJson(key)
             << "}\n";
  }
  return code;
}

ContentUpdate UpdateWith(std::vector<ContentValue> values) {
  ContentUpdate update;
  update.keys.emplace_back();
  update.keys[0].tellsValues = true;
  update.keys[0].values = std::move(values);
  return update;
}

// The shared object must be one that could be loaded. Without a machine that of this tool, for
// another device any.
bool CheckObject(Invocation& call, ExitCode* code) {
  ElfMachine machine = yax_elf::OwnMachine();
  if (call.Has("--machine") && !FindMachine(call.Text("--machine"), &machine)) {
    *code = call.Fail(
        kUsage, "", "",
        "unknown machine '" + Shown(call.Text("--machine")) + "'; known are " + AllMachineNames());
    return false;
  }
  const std::string object = call.Text("OBJECT");
  const bool isKnown = call.Has("--machine") || !call.Has("--root");
  std::string file;
  const int error = DeviceFiles(call.Text("--root")).Locate(object, &file);
  const SharedObject found =
      error != 0 ? AfterError(error) : ExamineSharedObject(file, isKnown ? &machine : nullptr);
  if (found.state == SharedObject::State::kGood) return true;
  const bool isUnreadable = found.state == SharedObject::State::kUnreadable;
  *code = call.Fail(isUnreadable ? kFailed : kNo, object, "", found.problem);
  return false;
}

ExitCode RunCompAdd(Invocation& call) {
  std::string key;
  ExitCode code = kDone;
  if (!TakeIdentifier(call, &key, &code) || !CheckTexts(call, &code)) return code;
  Session session(call);
  if (!session.OpenToChange()) return session.code();
  if (!CheckObject(call, &code)) return code;
  const Content& present = session.image().content();
  if (present.Find(key) != Content::kNone && !call.Has("--force")) {
    return call.FailWithStatus(status::kExists, call.File(), key,
                               "the component is registered already; --force replaces it");
  }
  const std::string object = call.Text("OBJECT");
  const std::string name = call.Has("--name") ? call.Text("--name") : NameOf(object);
  const ContentUpdate update =
      UpdateWith({TextValue("CompName", name), NumberValue("Type", kBinary),
                  NumberValue("FactoryFn", 0), TextValue("BinaryPath", object)});
  return Change(call, session, key, MergedContent(present, key, update));
}

ExitCode RunCompSet(Invocation& call) {
  std::string key;
  ExitCode code = kDone;
  if (!TakeIdentifier(call, &key, &code) || !CheckTexts(call, &code)) return code;
  std::vector<ContentValue> values;
  if (call.Has("--name")) values.push_back(TextValue("CompName", call.Text("--name")));
  if (call.Has("--path")) {
    values.push_back(NumberValue("Type", kBinary));
    values.push_back(TextValue("BinaryPath", call.Text("--path")));
  }
  if (values.empty()) return call.Fail(kUsage, "", "", "--name or --path is needed");
  Session session(call);
  if (!session.OpenToChange()) return session.code();
  const Content& present = session.image().content();
  if (present.Find(key) == Content::kNone) {
    return call.FailWithStatus(status::kNotFound, call.File(), key, "there is no such component");
  }
  return Change(call, session, key, MergedContent(present, key, UpdateWith(values)));
}

ExitCode RunCompRm(Invocation& call) {
  std::string key;
  ExitCode code = kDone;
  if (!TakeIdentifier(call, &key, &code)) return code;
  Session session(call);
  if (!session.OpenToChange()) return session.code();
  const Content& present = session.image().content();
  const size_t found = present.Find(key);
  if (found == Content::kNone && !call.Has("--force")) {
    return call.FailWithStatus(status::kNotFound, call.File(), key, "there is no such component");
  }
  if (found == Content::kNone) return Change(call, session, key, present);
  return Change(call, session, key, ContentWithout(present, found));
}

constexpr Argument kIdentifier = {"ID", "The identifier, with or without braces", true, false};

}  // namespace

Verb CompAddVerb() {
  return {
      "comp add",
      "Register a component",
      "Registers the component of a shared object, as an image is built, without running it. "
      "OBJECT is stored as the device will find it; the file is looked at, and refused (1) "
      "when it could not be loaded. The name is that of the file, without lib and .so, unless "
      "told. What the identifier is only its maker knows.",
      {kFile, kIdentifier, {"OBJECT", "The shared object, by its path on the device", true, true}},
      {{"--name", "NAME", "The component's name"},
       {"--root", "DIR", "Folder that stands for the device's root folder"},
       {"--machine", "NAME", "The machine that it must be for, as for comp verify"},
       {"-f,--force", nullptr, "Replace a registration that is there"},
       kTimeout},
      "yaxreg comp add device.rce {1FBF55FC-0F15-45CC-8F3F-DE86A5640CB5} /usr/lib/libclock.so",
      RunCompAdd};
}

Verb CompSetVerb() {
  return {"comp set",
          "Change the registration of a component",
          "Gives a component that is registered another name or shared object, which comp verify "
          "then looks at.",
          {kFile, kIdentifier},
          {{"--name", "NAME", "The component's name"},
           {"--path", "FILE", "The shared object, by its path on the device"},
           kTimeout},
          "yaxreg comp set device.rce {1FBF55FC-0F15-45CC-8F3F-DE86A5640CB5} --name clock",
          RunCompSet};
}

Verb CompRmVerb() {
  return {"comp rm",
          "Take a component out of the registry",
          "Deletes the registration of a component, not its shared object.",
          {kFile, kIdentifier},
          {kForce, kTimeout},
          "yaxreg comp rm device.rce {1FBF55FC-0F15-45CC-8F3F-DE86A5640CB5}",
          RunCompRm};
}

}  // namespace yaxreg
