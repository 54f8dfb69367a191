// comp add, comp set and comp rm: components are registered without a program.
#include <algorithm>
#include <climits>
#include <ostream>
#include <sstream>

#include "registry/base/Value.h"
#include "tools/yaxreg/components/ComponentList.h"
#include "tools/yaxreg/components/ComponentOffer.h"
#include "tools/yaxreg/components/DeviceFiles.h"
#include "tools/yaxreg/components/SharedObject.h"
#include "tools/yaxreg/content/ContentDiff.h"
#include "tools/yaxreg/content/ContentMerge.h"
#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/text/Numbers.h"
#include "tools/yaxreg/verbs/Applying.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/ComponentArguments.h"
#include "tools/yaxreg/verbs/Session.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace status = tamu::registry::status;

namespace {

constexpr char kComponents[] = "YAX_ROOT/";
constexpr unsigned long long kBinary = 1;  // the type of a component in a shared object

bool TakeKey(Invocation& call, std::string* key, ExitCode* code) {
  std::string identifier;
  const bool isGood = TakeIdentifier(call, call.Text("ID"), &identifier, code);
  *key = kComponents + identifier;
  return isGood;
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

ContentValue TextValue(const char* name, const std::string& text) {
  return DataValue(name, tamu::registry::kValueTypeString, text + '\0');
}

// Takes --offers, a version and the identifiers of interfaces with commas between them, or none.
bool TakeOffer(Invocation& call, ComponentOffer* offer, ExitCode* code) {
  std::istringstream parts(call.Text("--offers"));
  std::string part;
  std::getline(parts, part, ',');
  if (part == "none" && parts.eof()) return true;
  unsigned long long version = 0;
  bool isGood = ParseNumberUpTo(part, UINT_MAX, &version) && version > 0;
  offer->version = static_cast<unsigned int>(version);
  while (isGood && std::getline(parts, part, ',')) {
    const std::string identifier = IdentifierOf(part);
    isGood = !identifier.empty();
    offer->interfaces += IdentifierBytes(identifier);
  }
  if (isGood && offer->interfaces.size() <= tamu::registry::kValueDataMax) return true;
  *code = call.Fail(kUsage, "", "",
                    "--offers: " + Shown(call.Text("--offers")) +
                        " is no version above 0 with at most 64 identifiers behind it, nor none");
  return false;
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
// another device any. *offer is what it says of itself.
bool CheckObject(Invocation& call, ComponentOffer* offer, ExitCode* code) {
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
  *offer = found.offer;
  if (found.state == SharedObject::State::kGood) return true;
  const bool isUnreadable = found.state == SharedObject::State::kUnreadable;
  *code = call.Fail(isUnreadable ? kFailed : kNo, object, "", found.problem);
  return false;
}

// The content with these values in a component's key, and no other offer than this one.
Content ContentWithOffer(Content content, const std::string& key, std::vector<ContentValue> values,
                         const ComponentOffer& offer) {
  const size_t found = content.Find(key);
  if (found != Content::kNone) {
    std::vector<ContentValue>& old = content.keys[found].values;
    const std::vector<std::string>& names = OfferValueNames();
    old.erase(std::remove_if(old.begin(), old.end(),
                             [&](const ContentValue& value) {
                               return std::find(names.begin(), names.end(), value.name) !=
                                      names.end();
                             }),
              old.end());
  }
  for (ContentValue& value : ValuesOf(offer)) values.push_back(std::move(value));
  return MergedContent(content, key, UpdateWith(std::move(values)));
}

ExitCode RunCompAdd(Invocation& call) {
  std::string key;
  ExitCode code = kDone;
  ComponentOffer offer;
  ComponentOffer told;
  if (!TakeKey(call, &key, &code) || !CheckTexts(call, &code)) return code;
  if (call.Has("--offers") && !TakeOffer(call, &told, &code)) return code;
  Session session(call);
  if (!session.OpenToChange()) return session.code();
  if (!CheckObject(call, &offer, &code)) return code;
  if (call.Has("--offers")) offer = told;
  const Content& present = session.image().content();
  if (present.Find(key) != Content::kNone && !call.Has("--force")) {
    return call.FailWithStatus(status::kExists, call.File(), key,
                               "the component is registered already; --force replaces it");
  }
  const std::string object = call.Text("OBJECT");
  const std::string name = call.Has("--name") ? call.Text("--name") : NameOf(object);
  std::vector<ContentValue> values = {TextValue("CompName", name), NumberValue("Type", kBinary),
                                      NumberValue("FactoryFn", 0), TextValue("BinaryPath", object)};
  return Change(call, session, key, ContentWithOffer(present, key, std::move(values), offer));
}

ExitCode RunCompSet(Invocation& call) {
  std::string key;
  ExitCode code = kDone;
  if (!TakeKey(call, &key, &code) || !CheckTexts(call, &code)) return code;
  std::vector<ContentValue> values;
  if (call.Has("--name")) values.push_back(TextValue("CompName", call.Text("--name")));
  if (call.Has("--path")) {
    values.push_back(NumberValue("Type", kBinary));
    values.push_back(TextValue("BinaryPath", call.Text("--path")));
  }
  ComponentOffer told;
  if (call.Has("--offers") && !TakeOffer(call, &told, &code)) return code;
  const bool isOffer = call.Has("--offers") || call.Has("--path");
  if (values.empty() && !isOffer) {
    return call.Fail(kUsage, "", "", "--name, --path or --offers is needed");
  }
  Session session(call);
  if (!session.OpenToChange()) return session.code();
  const Content& present = session.image().content();
  if (present.Find(key) == Content::kNone) {
    return call.FailWithStatus(status::kNotFound, call.File(), key, "there is no such component");
  }
  const Content wanted = isOffer ? ContentWithOffer(present, key, std::move(values), told)
                                 : MergedContent(present, key, UpdateWith(std::move(values)));
  return Change(call, session, key, wanted);
}

ExitCode RunCompRm(Invocation& call) {
  std::string key;
  ExitCode code = kDone;
  if (!TakeKey(call, &key, &code)) return code;
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

constexpr Option kOffers = {"--offers", "VERSION,ID,...",
                            "Its version and the interfaces that it has, or none"};
constexpr Argument kIdentifier = {"ID", "The identifier, with or without braces", true, false};

}  // namespace

Verb CompAddVerb() {
  return {
      "comp add",
      "Register a component",
      "Registers the component of a shared object, as an image is built, without running it. "
      "OBJECT is stored as the device will find it; the file is looked at, and refused (1) "
      "when it could not be loaded. The name is that of the file, without lib and .so, unless "
      "told. What the identifier is only its maker knows. What the shared object says that it "
      "offers is kept with its size and build id, and programs then refuse any other file there.",
      {kFile, kIdentifier, {"OBJECT", "The shared object, by its path on the device", true, true}},
      {{"--name", "NAME", "The component's name"},
       {"--root", "DIR", "Folder that stands for the device's root folder"},
       {"--machine", "NAME", "The machine that it must be for, as for comp verify"},
       kOffers,
       {"-f,--force", nullptr, "Replace a registration that is there"},
       kTimeout},
      "yaxreg comp add device.rce {1FBF55FC-0F15-45CC-8F3F-DE86A5640CB5} /usr/lib/libclock.so",
      RunCompAdd};
}

Verb CompSetVerb() {
  return {"comp set",
          "Change the registration of a component",
          "Gives a component that is registered another name or shared object, which comp verify "
          "then looks at, or tells what it offers. With another shared object only that is kept "
          "of what it offers which is told here; comp add --force asks the shared object itself.",
          {kFile, kIdentifier},
          {{"--name", "NAME", "The component's name"},
           {"--path", "FILE", "The shared object, by its path on the device"},
           kOffers,
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
