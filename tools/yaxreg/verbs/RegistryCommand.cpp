#include "tools/yaxreg/verbs/RegistryCommand.h"

#include "tools/yaxreg/cli/CommandLine.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace {

bool IsOnFile(const Verb& verb) {
  return !verb.arguments.empty() && std::string(verb.arguments[0].name).compare(0, 4, "FILE") == 0;
}

}  // namespace

const Verb* AddRegistry(const std::string& file, bool isJson, std::vector<std::string>* words) {
  size_t count = 0;
  const Verb* const verb = FindVerb(AllVerbs(), *words, &count);
  if (verb == nullptr) return nullptr;
  auto place = words->begin() + static_cast<std::ptrdiff_t>(count);
  if (IsOnFile(*verb)) place = words->insert(place, file);
  if (isJson) words->insert(place, "--json");
  return verb;
}

// A word that begins with a dash would be taken for an option.
std::string FileWord(const Invocation& call) {
  const std::string file = call.File();
  return file.compare(0, 1, "-") == 0 ? "./" + file : file;
}

OutputKind KindOf(const Invocation& call) {
  if (!call.isTerminal) return OutputKind::kPlain;
  return *call.palette.end != 0 ? OutputKind::kColouredTerminal : OutputKind::kTerminal;
}

}  // namespace yaxreg
