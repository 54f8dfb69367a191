#include "tools/yaxreg/docs/FishCompletion.h"

#include <set>
#include <sstream>
#include <vector>

#include "tools/yaxreg/docs/Completion.h"

namespace yaxreg {

namespace {

constexpr char kFunctions[] = R"fish(
# The verb and the arguments so far, without options and their values.
function __yaxreg_given
    set -l words (commandline -opc)
    set -l isvalue 0
    for word in $words[2..-1]
        if test $isvalue -eq 1
            set isvalue 0
        else if contains -- $word $__yaxreg_valued
            set isvalue 1
        else if not string match -q -- '-?*' $word
            printf '%s\n' $word
        end
    end
end

# True when just the verb and that many arguments are there.
function __yaxreg_at -a count
    set -l given (__yaxreg_given)
    test (count $given) -eq (math (count $argv) - 1 + $count); and __yaxreg_is $argv[2..-1]
end

# True behind the verb.
function __yaxreg_is
    set -l given (__yaxreg_given)
    set -l words (count $argv)
    test $words -eq 0; and return 0
    test (count $given) -ge $words; and test "$given[1..$words]" = "$argv"
end

# Keys of the registry file that stands behind the verb of that many words, one level.
function __yaxreg_keys -a verb
    set -l given (__yaxreg_given)
    set -l above (string replace -r '[^/]*$' '' -- (commandline -ct))
    for line in (yaxreg ls -- $given[(math $verb + 1)] $above 2>/dev/null)
        string match -q -- '*/' $line; and printf '%s%b\n' $above $line
    end
end

# Values of the key that stands behind the file.
function __yaxreg_values -a verb
    set -l given (__yaxreg_given)
    for line in (yaxreg ls -- $given[(math $verb + 1)] $given[(math $verb + 2)] 2>/dev/null)
        string match -q -- '*/' $line; or printf '%b\n' $line
    end
end

complete -c yaxreg -f
complete -c yaxreg -l help -d 'Print help'
complete -c yaxreg -n '__yaxreg_at 0' -l version -d 'Print the version'
)fish";

std::string Quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\'' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + "'";
}

std::string Line(const std::string& condition, const std::string& rest) {
  return "complete -c yaxreg -n " + Quoted(condition) + " " + rest + "\n";
}

// "-d" and "--depth" of "-d,--depth".
std::vector<std::string> NamesOf(const Option& option) {
  std::vector<std::string> names;
  std::istringstream all(option.names);
  for (std::string name; std::getline(all, name, ',');) names.push_back(name);
  return names;
}

std::string OptionLine(const std::string& verb, const Option& option) {
  std::string rest;
  for (const std::string& name : NamesOf(option)) {
    rest += name[1] == '-' ? "-l " + name.substr(2) + " " : "-s " + name.substr(1) + " ";
  }
  rest += "-d " + Quoted(option.help);
  if (option.value != nullptr) rest += TakesFile(option) ? " -r -F" : " -x";
  return Line("__yaxreg_is " + verb, rest);
}

unsigned int WordsOf(const std::string& verb) {
  return verb.find(' ') == std::string::npos ? 1 : 2;
}

std::string ArgumentLine(const std::string& verb, unsigned int place, const Argument& argument) {
  const std::string name = argument.name;
  const std::string words = std::to_string(WordsOf(verb));
  const std::string condition = "__yaxreg_at " + std::to_string(place) + " " + verb;
  if (argument.isFile) return Line(condition, "-F");
  if (name == "PATH" || name == "FROM" || name == "TO") {
    return Line(condition, "-a " + Quoted("(__yaxreg_keys " + words + ")"));
  }
  if (name != "NAME") return "";
  return Line(condition, "-a " + Quoted("(__yaxreg_values " + words + ")"));
}

std::string LinesOf(const Verb& verb) {
  const std::string name = verb.name;
  const size_t blank = name.find(' ');
  const std::string group = blank == std::string::npos ? "" : " " + name.substr(0, blank);
  const std::string last = blank == std::string::npos ? name : name.substr(blank + 1);
  std::string lines = Line("__yaxreg_at 0" + group, "-a " + last + " -d " + Quoted(verb.summary));
  unsigned int place = 0;
  for (const Argument& argument : verb.arguments) lines += ArgumentLine(name, place++, argument);
  for (const Option& option : verb.options) lines += OptionLine(name, option);
  return lines + Line("__yaxreg_is " + name, "-l json -d 'Print JSON'");
}

std::string ValuedOptions(const VerbTable& table) {
  std::set<std::string> names;
  for (const Verb& verb : table.verbs) {
    for (const Option& option : verb.options) {
      if (option.value == nullptr) continue;
      for (const std::string& name : NamesOf(option)) names.insert(name);
    }
  }
  std::string list;
  for (const std::string& name : names) list += " " + name;
  return list;
}

}  // namespace

std::string FishCompletion(const VerbTable& table) {
  std::string script =
      "# Completion of yaxreg for fish.\n# Made from the table of verbs, do not edit.\n\n"
      "set -g -- __yaxreg_valued";
  script += ValuedOptions(table) + "\n" + kFunctions;
  for (const VerbGroup& group : table.groups) {
    script +=
        Line("__yaxreg_at 0", "-a " + std::string(group.name) + " -d " + Quoted(group.summary));
  }
  for (const Verb& verb : table.verbs) script += LinesOf(verb);
  return script;
}

}  // namespace yaxreg
