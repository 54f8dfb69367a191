// batch: several commands as one change.
#include <istream>
#include <ostream>
#include <sstream>

#include "tools/yaxreg/cli/CommandLine.h"
#include "tools/yaxreg/image/FileBytes.h"
#include "tools/yaxreg/text/CommandWords.h"
#include "tools/yaxreg/verbs/Batch.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/RegistryCommand.h"
#include "tools/yaxreg/verbs/Session.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace {

constexpr size_t kMaxCommands = 64u << 20;  // bytes

struct Command {
  size_t line;                     // counted from 1
  std::vector<std::string> words;  // with the file
};

ExitCode FailLine(Invocation& call, size_t line, ExitCode code, const std::string& reason) {
  return call.Fail(code, "line " + std::to_string(line), "", reason);
}

// The standard input if no file is told.
bool ReadCommands(Invocation& call, std::string* text, ExitCode* code) {
  const std::string file = call.Text("COMMANDS");
  if (!file.empty() && file != "-") {
    const FileResult read = ReadWholeFile(file, kMaxCommands, text);
    if (!read.isDone()) *code = call.Fail(kFailed, file, "", read.reason);
    return read.isDone();
  }
  text->assign(std::istreambuf_iterator<char>(call.in), std::istreambuf_iterator<char>());
  if (!call.in.bad()) return true;
  *code = call.Fail(kFailed, "standard input", "", "cannot be read");
  return false;
}

bool MakeCommand(Invocation& call, const std::string& file, Command* command, ExitCode* code) {
  const std::string first = command->words[0];
  const Verb* const verb = AddRegistry(file, call.isJson(), &command->words);
  if (verb == nullptr) {
    *code = FailLine(call, command->line, kUsage,
                     "there is no verb " + Shown(first) + "; --help lists them");
    return false;
  }
  if (!verb->isAlone) return true;
  *code =
      FailLine(call, command->line, kUsage, std::string(verb->name) + " is no command of a batch");
  return false;
}

bool TakeCommands(Invocation& call, const std::string& file, std::vector<Command>* commands,
                  ExitCode* code) {
  std::string text;
  if (!ReadCommands(call, &text, code)) return false;
  std::istringstream lines(text);
  size_t number = 0;
  for (std::string line; std::getline(lines, line);) {
    Command command = {++number, {}};
    std::string reason;
    if (!SplitCommandWords(line, &command.words, &reason)) {
      *code = FailLine(call, number, kUsage, reason);
      return false;
    }
    if (command.words.empty()) continue;
    if (!MakeCommand(call, file, &command, code)) return false;
    commands->push_back(std::move(command));
  }
  return true;
}

// The line of a failure without the program's name, which stands before it already.
std::string ReasonOf(const std::string& errors, ExitCode code) {
  constexpr char kName[] = "yaxreg: ";
  std::string reason = errors.substr(0, errors.find('\n'));
  if (reason.compare(0, sizeof kName - 1, kName) == 0) reason.erase(0, sizeof kName - 1);
  return reason.empty() ? "ends with " + std::to_string(code) : reason;
}

// Keeps what the commands print until all is done.
class CommandRun {
 public:
  CommandRun(Invocation& call, const Batch& batch) : call_(call), batch_(batch) {}

  ExitCode Run(const Command& command) {
    std::istringstream noInput;
    noInput.setstate(std::ios::badbit);
    std::ostringstream output;
    std::ostringstream errors;
    Invocation one(noInput, output, errors, KindOf(call_));
    one.batch = &batch_;
    const ExitCode code = RunCommand(AllVerbs(), command.words, one);
    if (code != kDone) return FailLine(call_, command.line, code, ReasonOf(errors.str(), code));
    Add(output.str());
    return kDone;
  }
  const std::string& output() const { return output_; }

 private:
  void Add(std::string text) {
    if (!call_.isJson()) {
      output_ += text;
      return;
    }
    while (!text.empty() && text.back() == '\n') text.pop_back();
    output_ += (output_.empty() ? "\n" : ",\n") + (text.empty() ? "null" : text);
  }

  Invocation& call_;
  const Batch& batch_;
  std::string output_;
};

ExitCode RunCommands(Invocation& call, Session& session, const std::vector<Command>& commands,
                     const std::string& file) {
  const std::string before = session.image().bytes();
  const Batch batch = {file, &session.registry()};
  CommandRun run(call, batch);
  for (const Command& command : commands) {
    const ExitCode code = run.Run(command);
    if (code != kDone) return code;
  }
  session.registry().SetCurrentUserId(tamu::registry::kAdministratorId);
  if (!session.LookAgain()) return session.code();
  const bool changes = session.image().bytes() != before;
  if (!call.Has("--dry-run") && !session.Close()) return session.code();
  if (call.isJson()) {
    call.out << "{\"changed\":" << (changes ? "true" : "false") << ",\"results\":[" << run.output()
             << (run.output().empty() ? "]}\n" : "\n]}\n");
  } else {
    call.out << run.output();
  }
  return kDone;
}

ExitCode RunBatch(Invocation& call) {
  const std::string file = FileWord(call);
  std::vector<Command> commands;
  ExitCode code = kDone;
  if (!TakeCommands(call, file, &commands, &code)) return code;
  Session session(call);
  if (!session.OpenToChange()) return session.code();
  return RunCommands(call, session, commands, file);
}

}  // namespace

Verb BatchVerb() {
  return {"batch",
          "Run commands as one change",
          "Runs the commands of a file or the standard input, one a line, without the words yaxreg "
          "and FILE: put network/eth0:mtu --int 1400. Words with blanks stand in quotation marks "
          "of either kind or have backslashes before the blanks; what follows a # at the beginning "
          "of a word is a remark. Each command sees what those before it have changed, other "
          "programs see all of it or nothing: the first that does not end with 0 ends the batch "
          "with its exit code, and nothing is changed. What commands print is printed at the end. "
          "Verbs that work on other files than the registry are no commands.",
          {kFile, {"COMMANDS", "The commands; the standard input if left out or -", false, true}},
          {{"-n,--dry-run", nullptr, "Run them, but change nothing"}, kTimeout},
          "yaxreg batch device.rce settings.txt",
          RunBatch,
          true};
}

}  // namespace yaxreg
