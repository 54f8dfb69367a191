#include "tools/yaxreg/cli/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <deque>
#include <exception>
#include <new>
#include <sstream>

#include "tools/yaxreg/cli/OptionWords.h"
#include "tools/yaxreg/cli/Version.h"
#include "tools/yaxreg/text/WrappedText.h"

namespace yaxreg {

namespace {

constexpr char kDashes[] =
    "An argument that begins with a dash, such as the name -x or the rights -:r, needs -- before "
    "it; options stand before that.";

// Where CLI11 puts what was given for one verb.
struct Parsed {
  const Verb* verb;
  CLI::App* app;
  std::deque<std::string> texts;
  std::vector<std::pair<std::string, CLI::Option*>> options;  // name, and who parsed it
};

void AddArgument(const Argument& argument, Parsed* parsed) {
  parsed->texts.emplace_back();
  CLI::Option* option = parsed->app->add_option(argument.name, parsed->texts.back(), argument.help);
  if (argument.isRequired) option->required();
  option->type_name("");
  parsed->options.emplace_back(argument.name, option);
}

void AddOption(const Option& option, Parsed* parsed) {
  CLI::Option* added;
  if (option.value != nullptr) {
    parsed->texts.emplace_back();
    added = parsed->app->add_option(option.names, parsed->texts.back(), option.help);
    added->type_name(option.value);
    if (option.isRequired) added->required();
  } else {
    added = parsed->app->add_flag(option.names, option.help);
  }
  parsed->options.emplace_back(LongName(option), added);
}

void AddVerb(const Verb& verb, CLI::App* parent, const std::string& name, Parsed* parsed) {
  parsed->verb = &verb;
  parsed->app = parent->add_subcommand(name, verb.summary);
  std::string footer = verb.description;
  if (!verb.arguments.empty()) footer += std::string(" ") + kDashes;
  parsed->app->footer(footer + "\n\nExample:\n  " + verb.example);
  for (const Argument& argument : verb.arguments) AddArgument(argument, parsed);
  for (const Option& option : verb.options) AddOption(option, parsed);
  AddOption({"--json", nullptr, "Print JSON, for programs"}, parsed);
}

CLI::App* GroupOf(const VerbTable& table, const std::string& name, CLI::App* app) {
  for (const VerbGroup& group : table.groups) {
    if (name != group.name) continue;
    const auto isIt = [&](const CLI::App* one) { return one->get_name() == name; };
    const std::vector<CLI::App*> present = app->get_subcommands(isIt);
    if (!present.empty()) return present.front();
    CLI::App* found = app->add_subcommand(group.name, group.summary);
    found->require_subcommand(1);
    return found;
  }
  return app;
}

void AddAllVerbs(const VerbTable& table, CLI::App* app, std::deque<Parsed>* parsed) {
  for (const Verb& verb : table.verbs) {
    const std::string name = verb.name;
    const size_t blank = name.find(' ');
    parsed->emplace_back();
    if (blank == std::string::npos) {
      AddVerb(verb, app, name, &parsed->back());
    } else {
      AddVerb(verb, GroupOf(table, name.substr(0, blank), app), name.substr(blank + 1),
              &parsed->back());
    }
  }
}

// The first word when it is no verb and no group: CLI11 would only say that one is missing.
std::string UnknownVerb(const VerbTable& table, const std::vector<std::string>& arguments) {
  if (arguments.empty() || arguments[0].empty() || arguments[0][0] == '-') return "";
  for (const Verb& verb : table.verbs) {
    const std::string name = verb.name;
    if (name.substr(0, name.find(' ')) == arguments[0]) return "";
  }
  return arguments[0];
}

// The words as CLI11 takes them: the last one first.
bool PrepareWords(const VerbTable& table, const std::vector<std::string>& arguments,
                  std::vector<std::string>* words, std::string* reason) {
  size_t count = 0;
  const Verb* const verb = FindVerb(table, arguments, &count);
  if (verb == nullptr) {
    *words = arguments;
  } else {
    const auto rest = arguments.begin() + static_cast<std::ptrdiff_t>(count);
    words->assign(arguments.begin(), rest);
    if (!SplitOptionWords(*verb, {rest, arguments.end()}, words, reason)) return false;
  }
  std::reverse(words->begin(), words->end());
  return true;
}

void TakeOver(const Parsed& parsed, Invocation* call) {
  for (const auto& [name, option] : parsed.options) {
    if (option->count() == 0) continue;
    const std::vector<std::string>& results = option->results();
    call->given[name] = option->get_expected_max() == 0 || results.empty() ? "" : results.back();
  }
}

ExitCode EndOfOutput(Invocation& call, ExitCode code) {
  call.out.flush();
  if (call.out) return code;
  return call.Fail(kFailed, "", "", "the output cannot be written");
}

ExitCode FailUsage(Invocation& call, const std::string& reason) {
  return call.Fail(kUsage, "", "", reason + "; --help tells more");
}

// CLI11 would tell the words in another order. The first "--" is among them where there was one.
ExitCode FailExtras(Invocation& call, const CLI::App& app) {
  std::vector<std::string> extras = app.remaining(true);
  const auto mark = std::find(extras.begin(), extras.end(), "--");
  if (mark != extras.end() && extras.size() > 1) extras.erase(mark);
  std::string words;
  for (const std::string& word : extras) words += ' ' + Shown(word);
  return FailUsage(call, "not expected:" + words);
}

ExitCode RunParsed(Invocation& call, const std::deque<Parsed>& parsed) {
  for (const Parsed& one : parsed) {
    if (!one.app->parsed()) continue;
    TakeOver(one, &call);
    return EndOfOutput(call, one.verb->run(call));
  }
  return kUsage;
}

ExitCode ParseAndRun(const VerbTable& table, Invocation& call, std::vector<std::string> words) {
  CLI::App app("See, change, check, repair and move registry files", "yaxreg");
  app.set_version_flag("--version", "yaxreg " YAXREG_VERSION);
  app.require_subcommand(1);
  app.footer(
      "yaxreg VERB --help tells more. Exit: 0 done, 1 no, 2 wrong usage, 3 damaged file, 4 "
      "input/output.");
  std::deque<Parsed> parsed;
  AddAllVerbs(table, &app, &parsed);
  try {
    app.parse(words);
  } catch (const CLI::Success& success) {  // --help, --version
    std::ostringstream text;
    app.exit(success, text, call.err);
    call.out << Wrapped(text.str(), call.columns);
    return EndOfOutput(call, kDone);
  } catch (const CLI::ExtrasError&) {
    return FailExtras(call, app);
  } catch (const CLI::ParseError& error) {
    std::string reason = error.what();
    std::replace(reason.begin(), reason.end(), '\n', ' ');
    return FailUsage(call, Shown(reason));
  }
  return RunParsed(call, parsed);
}

}  // namespace

const Verb* FindVerb(const VerbTable& table, const std::vector<std::string>& words, size_t* count) {
  for (const Verb& verb : table.verbs) {
    const std::string name = verb.name;
    const bool isInGroup = name.find(' ') != std::string::npos;
    *count = isInGroup ? 2 : 1;
    if (words.size() < *count) continue;
    if (name == (isInGroup ? words[0] + ' ' + words[1] : words[0])) return &verb;
  }
  return nullptr;
}

std::string LongName(const Option& option) {
  const std::string names = option.names;
  const size_t begin = names.find("--");
  return begin == std::string::npos ? names : names.substr(begin);
}

ExitCode RunYaxreg(const VerbTable& table, const std::vector<std::string>& arguments,
                   std::istream& in, std::ostream& out, std::ostream& err, OutputKind kind,
                   unsigned int columns) {
  Invocation call(in, out, err, kind);
  call.columns = columns;
  return RunCommand(table, arguments, call);
}

ExitCode RunCommand(const VerbTable& table, const std::vector<std::string>& arguments,
                    Invocation& call) {
  try {
    const std::string unknown = UnknownVerb(table, arguments);
    if (!unknown.empty()) {
      return call.Fail(kUsage, "", "",
                       "there is no verb " + Shown(unknown) + "; --help lists them");
    }
    std::vector<std::string> words;
    std::string reason;
    if (!PrepareWords(table, arguments, &words, &reason)) return FailUsage(call, reason);
    return ParseAndRun(table, call, words);
  } catch (const std::bad_alloc&) {
    return call.Fail(kFailed, "", "", "out of memory");
  } catch (const std::exception& error) {
    return call.Fail(kFailed, "", "", Shown(error.what()));
  }
}

}  // namespace yaxreg
