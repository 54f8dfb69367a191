#include "tools/yaxreg/cli/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <deque>
#include <new>

#include "tools/yaxreg/cli/Version.h"

namespace yaxreg {

namespace {

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
  } else {
    added = parsed->app->add_flag(option.names, option.help);
  }
  parsed->options.emplace_back(LongName(option), added);
}

void AddVerb(const Verb& verb, CLI::App* parent, const std::string& name, Parsed* parsed) {
  parsed->verb = &verb;
  parsed->app = parent->add_subcommand(name, verb.summary);
  parsed->app->footer(std::string(verb.description) + "\n\nExample:\n  " + verb.example);
  for (const Argument& argument : verb.arguments) AddArgument(argument, parsed);
  for (const Option& option : verb.options) AddOption(option, parsed);
  AddOption({"--json", nullptr, "Print JSON, for programs"}, parsed);
}

CLI::App* GroupOf(const std::string& name, CLI::App* app) {
  for (const VerbGroup& group : AllVerbGroups()) {
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

void AddAllVerbs(CLI::App* app, std::deque<Parsed>* parsed) {
  for (const Verb& verb : AllVerbs()) {
    const std::string name = verb.name;
    const size_t blank = name.find(' ');
    parsed->emplace_back();
    if (blank == std::string::npos) {
      AddVerb(verb, app, name, &parsed->back());
    } else {
      AddVerb(verb, GroupOf(name.substr(0, blank), app), name.substr(blank + 1), &parsed->back());
    }
  }
}

// The first word when it is no verb and no group: CLI11 would only say that one is missing.
std::string UnknownVerb(const std::vector<std::string>& arguments) {
  if (arguments.empty() || arguments[0].empty() || arguments[0][0] == '-') return "";
  for (const Verb& verb : AllVerbs()) {
    const std::string name = verb.name;
    if (name.substr(0, name.find(' ')) == arguments[0]) return "";
  }
  return arguments[0];
}

void TakeOver(const Parsed& parsed, Invocation* call) {
  for (const auto& [name, option] : parsed.options) {
    if (option->count() == 0) continue;
    const std::vector<std::string>& results = option->results();
    call->given[name] = option->get_expected_max() == 0 || results.empty() ? "" : results.back();
  }
}

ExitCode RunVerb(const Verb& verb, Invocation& call) {
  const ExitCode code = verb.run(call);
  call.out.flush();
  if (call.out) return code;
  return call.Fail(kFailed, "", "", "the output cannot be written");
}

}  // namespace

std::string LongName(const Option& option) {
  const std::string names = option.names;
  const size_t begin = names.find("--");
  return begin == std::string::npos ? names : names.substr(begin);
}

ExitCode RunYaxreg(const std::vector<std::string>& arguments, std::istream& in, std::ostream& out,
                   std::ostream& err, bool coloured) {
  Invocation call(in, out, err);
  if (coloured) call.palette = Palette::Coloured();
  const std::string unknown = UnknownVerb(arguments);
  if (!unknown.empty()) {
    return call.Fail(kUsage, "", "", "there is no verb " + Shown(unknown) + "; --help lists them");
  }
  CLI::App app("See, change, check, repair and move registry files", "yaxreg");
  app.set_version_flag("--version", "yaxreg " YAXREG_VERSION);
  app.require_subcommand(1);
  app.footer(
      "yaxreg VERB --help tells more. Exit: 0 done, 1 no, 2 wrong usage, 3 damaged file, 4 "
      "input/output.");
  std::deque<Parsed> parsed;
  AddAllVerbs(&app, &parsed);
  try {
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
    app.parse(reversed);
    for (const Parsed& one : parsed) {
      if (!one.app->parsed()) continue;
      TakeOver(one, &call);
      return RunVerb(*one.verb, call);
    }
  } catch (const CLI::Success& success) {  // --help, --version
    app.exit(success, out, err);
    return kDone;
  } catch (const CLI::ParseError& error) {
    std::string reason = error.what();
    std::replace(reason.begin(), reason.end(), '\n', ' ');
    return call.Fail(kUsage, "", "", Shown(reason) + "; --help tells more");
  } catch (const std::bad_alloc&) {
    return call.Fail(kFailed, "", "", "out of memory");
  }
  return kUsage;
}

}  // namespace yaxreg
