// comp ls and comp verify: the components that are registered, and their shared objects.
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>
#include <ostream>

#include "tools/yaxreg/components/ComponentCheck.h"
#include "tools/yaxreg/components/ComponentJson.h"
#include "tools/yaxreg/components/ComponentList.h"
#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/ComponentArguments.h"
#include "tools/yaxreg/verbs/Loading.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace {

using Json = nlohmann::ordered_json;

std::string TextOrProblem(const ComponentField& field) {
  return field.isThere() ? Shown(field.text) : field.problem;
}

// The width of the column of names; a very long name may stick out.
size_t NameWidth(const ComponentList& list) {
  size_t width = 0;
  for (const Component& component : list.components) {
    width = std::max(width, WidthOf(TextOrProblem(component.name)));
  }
  return std::min<size_t>(width, 40);
}

std::string HowReached(const Component& component) {
  if (!component.type.isThere()) return component.type.problem;
  if (component.isBinary()) {
    const std::string path = TextOrProblem(component.path);
    const unsigned int version = component.offer.version;
    return version != 0 ? path + " (version " + std::to_string(version) + ")" : path;
  }
  std::string text = "in the program";
  if (component.type.word() != 0) text += " (type " + std::to_string(component.type.word()) + ")";
  if (!component.function.isThere()) return text + ", " + component.function.problem;
  if (component.function.word() == 0) return text;
  char address[16];
  std::snprintf(address, sizeof address, "0x%08x", component.function.word());
  return text + " at " + address;
}

void PrintSystem(const ComponentList& list, std::ostream& out) {
  if (!list.hasSystem) return;
  if (list.isSingleBin.isThere()) {
    out << "isSingleBin: " << list.isSingleBin.word()
        << (list.IsSingleBinary() ? ", nothing is ever loaded" : "") << '\n';
  } else {
    out << "isSingleBin: " << list.isSingleBin.problem << '\n';
  }
  out << "BinDirectory: " << TextOrProblem(list.binDirectory) << '\n';
}

void PrintList(const ComponentList& list, const Palette& palette, std::ostream& out) {
  const size_t width = NameWidth(list);
  for (const Component& component : list.components) {
    const char* colour = component.isIdentifier ? palette.faint : palette.bad;
    out << colour << Shown(component.identifier) << palette.end << "  "
        << (component.name.isThere() ? palette.key : palette.bad)
        << Padded(TextOrProblem(component.name), width) << palette.end << "  "
        << HowReached(component);
    if (!component.isIdentifier) out << "  (the key's name is no identifier)";
    out << '\n';
  }
}

// ---- comp verify

struct Verified {
  const Component* component;
  ComponentVerdict verdict;
};

const char* WordOf(const ComponentVerdict& verdict) {
  if (verdict.isUnreadable) return "unreadable";
  return verdict.isGood() ? "ok" : "wrong";
}

Json VerdictJson(const Verified& one) {
  const ComponentVerdict& verdict = one.verdict;
  Json json = {{"id", JsonText(one.component->identifier)},
               {"name", FieldJson(one.component->name)},
               {"result", WordOf(verdict)},
               {"inProgram", verdict.isInProgram},
               {"binaryPath", FieldJson(one.component->path)},
               {"file", verdict.file.empty() ? Json() : JsonText(verdict.file)},
               {"problems", verdict.problems},
               {"notes", verdict.notes}};
  return json;
}

void PrintVerdict(const Verified& one, size_t width, const Palette& palette, std::ostream& out) {
  const Component& component = *one.component;
  const ComponentVerdict& verdict = one.verdict;
  out << (verdict.isGood() ? palette.good : palette.bad) << Padded(WordOf(verdict), 10)
      << palette.end << "  " << palette.faint << Shown(component.identifier) << palette.end << "  "
      << palette.key << Padded(TextOrProblem(component.name), width) << palette.end << "  ";
  if (verdict.isInProgram) {
    out << "in the program";
  } else if (!verdict.file.empty()) {
    out << Shown(verdict.file);
  } else {
    out << (component.isBinary() ? TextOrProblem(component.path) : "?");
  }
  const char* separator = ": ";
  for (const std::string& problem : verdict.problems) {
    out << separator << palette.bad << problem << palette.end;
    separator = "; ";
  }
  if (verdict.isGood()) separator = "; ";
  for (const std::string& note : verdict.notes) {
    out << separator << palette.faint << note << palette.end;
    separator = "; ";
  }
  out << '\n';
}

// The machine that was told, or the own one; null if it is left to the first shared object. False
// when there is no such machine: the failure has been printed.
bool ChooseMachine(Invocation& call, ElfMachine* machine, bool* isKnown) {
  *machine = yax_elf::OwnMachine();
  *isKnown = !call.Has("--root");
  if (!call.Has("--machine")) return true;
  *isKnown = true;
  if (FindMachine(call.Text("--machine"), machine)) return true;
  call.Fail(
      kUsage, "", "",
      "unknown machine '" + Shown(call.Text("--machine")) + "'; known are " + AllMachineNames());
  return false;
}

// True when the folder of --root is one, or none was given.
bool CheckRoot(Invocation& call, ExitCode* code) {
  if (!call.Has("--root")) return true;
  const std::string root = call.Text("--root");
  struct stat found;
  std::string reason;
  if (stat(root.c_str(), &found) != 0) {
    reason = std::strerror(errno);
  } else if (!S_ISDIR(found.st_mode)) {
    reason = std::strerror(ENOTDIR);
  }
  if (reason.empty()) return true;
  *code = call.Fail(kFailed, root, "", "cannot be the root folder: " + reason);
  return false;
}

void PrintVerdicts(Invocation& call, const ComponentList& list, const std::vector<Verified>& all,
                   const ComponentCheck& check) {
  if (call.isJson()) {
    Json json = {{"machine", check.HasMachine() ? Json(MachineName(check.machine())) : Json()},
                 {"components", Json::array()}};
    for (const Verified& one : all) json["components"].push_back(VerdictJson(one));
    call.out << JsonDump(json, 2) << '\n';
    return;
  }
  if (all.empty()) call.out << "no components are registered\n";
  const size_t width = NameWidth(list);
  for (const Verified& one : all) PrintVerdict(one, width, call.palette, call.out);
}

ExitCode EndOfVerify(Invocation& call, const std::string& file, const std::vector<Verified>& all) {
  size_t unreadable = 0;
  bool isGood = true;
  for (const Verified& one : all) {
    if (one.verdict.isUnreadable) ++unreadable;
    isGood = isGood && one.verdict.isGood();
  }
  if (unreadable == 0) return isGood ? kDone : kNo;
  return call.Fail(kFailed, file, "",
                   unreadable == 1 ? "the shared object of a component cannot be read"
                                   : std::to_string(unreadable) + " shared objects cannot be read");
}

ExitCode RunCompLs(Invocation& call) {
  ExitCode code = kDone;
  std::string interface;
  if (call.Has("--interface") &&
      !TakeIdentifier(call, call.Text("--interface"), &interface, &code)) {
    return code;
  }
  const std::unique_ptr<RegistryImage> image = LoadImage(call, call.File(), &code);
  if (image == nullptr) return code;
  ComponentList list = ReadComponents(image->content());
  if (!interface.empty()) list.KeepThoseWith(IdentifierBytes(interface));
  if (call.isJson()) {
    call.out << JsonDump(ComponentsJson(list), 2) << '\n';
  } else {
    if (interface.empty()) PrintSystem(list, call.out);
    if (list.components.empty()) {
      call.out << (interface.empty() ? "no components are registered\n"
                                     : "no component offers that interface\n");
    }
    PrintList(list, call.palette, call.out);
  }
  return EndOfLook(call, *image, call.File());
}

ExitCode RunCompVerify(Invocation& call) {
  ExitCode code = kUsage;
  ElfMachine machine;
  bool isKnown = false;
  if (!ChooseMachine(call, &machine, &isKnown) || !CheckRoot(call, &code)) return code;
  const std::unique_ptr<RegistryImage> image = LoadImage(call, call.File(), &code);
  if (image == nullptr) return code;
  const ComponentList list = ReadComponents(image->content());
  const DeviceFiles files(call.Text("--root"));
  ComponentCheck check(files, isKnown ? &machine : nullptr);
  std::vector<Verified> all;
  for (const Component& component : list.components) {
    all.push_back({&component, check.Verify(component, list.IsSingleBinary())});
  }
  PrintVerdicts(call, list, all, check);
  code = EndOfLook(call, *image, call.File());
  return code == kDone ? EndOfVerify(call, call.File(), all) : code;
}

}  // namespace

Verb CompLsVerb() {
  return {"comp ls",
          "List the registered components",
          "Lists the components that are registered, with their names and how they are reached.",
          {kFile},
          {{"--interface", "ID", "Those alone that offer the interface, the newest version first"}},
          "yaxreg comp ls device.rce",
          RunCompLs};
}

Verb CompVerifyVerb() {
  return {
      "comp verify",
      "Check the shared objects of the components",
      "Looks whether the shared object of each component is there, is built for the right machine "
      "and has the entry function, and is the one that was registered where the component tells "
      "what it "
      "offers. The files are only read, nothing is loaded. The exit code is 1 "
      "when something is wrong.",
      {kFile},
      {{"--root", "DIR", "Folder that stands for the device's root folder"},
       {"--machine", "NAME",
        "The machine: x86-64, i386, arm, aarch64 and others. Without it the one that yaxreg is "
        "built for, with --root the one of the first shared object"}},
      "yaxreg comp verify device.rce",
      RunCompVerify};
}

}  // namespace yaxreg
