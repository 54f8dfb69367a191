// shell: commands about one registry, one after the other.
#include <signal.h>
#include <unistd.h>

#include <iostream>
#include <sstream>

#include "tools/yaxreg/cli/CommandLine.h"
#include "tools/yaxreg/shell/TerminalLines.h"
#include "tools/yaxreg/text/CommandWords.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/Loading.h"
#include "tools/yaxreg/verbs/RegistryCommand.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace {

// The places of keys and values that begin so, each key that has some below with a slash; behind a
// colon those of values.
std::vector<std::string> PlacesIn(const std::string& file, const std::string& beginning) {
  std::istringstream noInput;
  std::ostringstream unseen;
  Invocation quiet(noInput, unseen, unseen);
  ExitCode code = kDone;
  std::vector<std::string> places;
  const auto image = LoadImage(quiet, file, &code);
  if (image == nullptr) return places;
  const Content& content = image->content();
  const size_t slash = beginning.rfind('/');
  const size_t colon = beginning.find(':', slash == std::string::npos ? 0 : slash);
  const bool isValue = colon != std::string::npos;
  const size_t end = isValue ? colon : slash == std::string::npos ? 0 : slash;
  const std::string parent = beginning.substr(0, end);
  const std::string start = isValue ? parent + ':' : parent.empty() ? "" : parent + '/';
  const auto add = [&](const std::string& place) {
    if (place.compare(0, beginning.size(), beginning) == 0) places.push_back(place);
  };
  const size_t key = content.Find(parent);
  if (key == Content::kNone) return places;
  if (isValue) {
    for (const ContentValue& value : content.keys[key].values) add(start + value.name);
    return places;
  }
  const unsigned int depth = content.keys[key].depth + 1;
  for (size_t i = key + 1; i < content.EndOf(key); ++i) {
    if (content.keys[i].depth != depth) continue;
    add(start + content.keys[i].name + (content.EndOf(i) > i + 1 ? "/" : ""));
    if (!content.keys[i].values.empty()) add(start + content.keys[i].name + ':');
  }
  return places;
}

void TakeNoNotice(int) {}

// What is interrupted is a command and not the shell.
class NoInterrupts {
 public:
  NoInterrupts() {
    struct sigaction action = {};
    action.sa_handler = TakeNoNotice;
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, &before_);
  }
  ~NoInterrupts() { sigaction(SIGINT, &before_, nullptr); }
  NoInterrupts(const NoInterrupts&) = delete;
  NoInterrupts& operator=(const NoInterrupts&) = delete;

 private:
  struct sigaction before_ = {};
};

class Shell {
 public:
  explicit Shell(Invocation& call) : call_(call), file_(FileWord(call)) {}

  // The exit code of the first line that has failed.
  ExitCode RunAll() {
    ExitCode first = kDone;
    for (std::string line; !isOver_ && std::getline(call_.in, line);) {
      const ExitCode code = Run(line);
      if (first == kDone) first = code;
    }
    if (first == kDone && call_.in.bad()) {
      first = call_.Fail(kFailed, "standard input", "", "cannot be read");
    }
    return first;
  }

  ExitCode Talk() {
    const NoInterrupts interrupts;
    TerminalLines lines(Shown(call_.File()) + "> ", [this](const std::string& line) {
      const auto places = [this](const std::string& word) { return PlacesIn(call_.File(), word); };
      return CompleteCommand(AllVerbs(), line, places);
    });
    for (std::string line; !isOver_ && lines.Read(&line);) Run(line);
    if (!isOver_) call_.out << '\n';
    return kDone;
  }

 private:
  ExitCode Run(const std::string& line);

  Invocation& call_;
  const std::string file_;
  bool isOver_ = false;
};

ExitCode Shell::Run(const std::string& line) {
  std::vector<std::string> words;
  std::string reason;
  if (!SplitCommandWords(line, &words, &reason)) return call_.Fail(kUsage, "", "", reason);
  if (words.empty()) return kDone;
  isOver_ = words[0] == "exit" || words[0] == "quit";
  if (isOver_) return kDone;
  if (words[0] == "help") words[0] = "--help";
  const Verb* const verb = AddRegistry(file_, call_.isJson(), &words);
  if (verb != nullptr && verb->name == std::string("shell")) {
    return call_.Fail(kUsage, "", "", "shell is no command of a shell");
  }
  std::istringstream noInput;  // the lines are the shell's
  noInput.setstate(std::ios::badbit);
  Invocation one(noInput, call_.out, call_.err, KindOf(call_));
  one.columns = call_.columns;
  return RunCommand(AllVerbs(), words, one);
}

ExitCode RunShell(Invocation& call) {
  ExitCode code = kDone;
  if (LoadImage(call, call.File(), &code) == nullptr) return code;
  Shell shell(call);
  const bool isTerminal = &call.in == &std::cin && isatty(STDIN_FILENO) != 0;
  return isTerminal ? shell.Talk() : shell.RunAll();
}

}  // namespace

Verb ShellVerb() {
  return {"shell",
          "Take commands at a prompt",
          "Takes the verbs without the words yaxreg and FILE, with quotation marks as for batch, "
          "until exit, quit or the end of the input; help lists them. Each is done by itself, "
          "whatever becomes of the others. At a terminal the tabulator completes verbs, options "
          "and places, a key with values as far as the colon, and the arrow keys go back to "
          "earlier lines, if the program is built with libedit. Lines that do not come from a "
          "terminal are all done; the exit code is that of the first that has failed. What reads "
          "the standard input, as import does, reads nothing here.",
          {kFile},
          {},
          "yaxreg shell device.rce < commands.txt",
          RunShell,
          true};
}

}  // namespace yaxreg
