#include "tools/yaxreg/docs/ZshCompletion.h"

#include "tools/yaxreg/docs/Completion.h"

namespace yaxreg {

namespace {

// Behind a verb _arguments keeps its arguments in the array line, without options.
constexpr char kFunctions[] = R"zsh(
# Keys of the registry file, one level, and behind a colon the values of one.
_yaxreg_keys() {
  local word=${(Q)PREFIX} above name
  local -a found
  if [[ $word == *:* ]]; then
    _yaxreg_values_of "${word%:*}" "${word%:*}:"
    return
  fi
  above=${word%"${word##*/}"}
  for name in ${(f)"$(yaxreg ls -- "${(Q)line[1]}" "$above" 2>/dev/null)"}; do
    [[ $name == */ ]] && found+=("$above${(g::)name}")
  done
  compadd -S '' -- $found
}

_yaxreg_values_of() {
  local name
  local -a found
  for name in ${(f)"$(yaxreg ls -- "${(Q)line[1]}" "$1" 2>/dev/null)"}; do
    [[ $name == */ ]] || found+=("$2${(g::)name}")
  done
  compadd -- $found
}

# Values of the key that stands behind the file.
_yaxreg_values() {
  _yaxreg_values_of "${(Q)line[2]}" ''
}

_yaxreg "$@"
)zsh";

// For a text in single quotes within a word of _arguments: colons part that, brackets end a help.
std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '\'') {
      escaped += "'\\''";
      continue;
    }
    if (c == ':' || c == '[' || c == ']' || c == '\\') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

std::string ValueOf(const Option& option) {
  if (option.value == nullptr) return "";
  return ":" + Escaped(option.value) + ":" + (TakesFile(option) ? "_files" : "");
}

std::string SpecOf(const Option& option) {
  const std::string names = option.names;
  const size_t comma = names.find(',');
  const std::string rest = "'[" + Escaped(option.help) + "]" + ValueOf(option) + "'";
  if (comma == std::string::npos) return names + rest;
  const std::string both = names.substr(0, comma) + " " + names.substr(comma + 1);
  return "'(" + both + ")'{" + names + "}" + rest;
}

std::string SpecOf(const Argument& argument) {
  const std::string name = argument.name;
  std::string action;
  if (argument.isFile) action = "_files";
  if (name == "PATH" || name == "FROM" || name == "TO") action = "_yaxreg_keys";
  if (name == "NAME") action = "_yaxreg_values";
  return std::string("'") + (argument.isRequired ? ":" : "::") + Escaped(name) + ":" + action + "'";
}

std::string BranchOf(const Verb& verb, const std::string& indent) {
  const std::string name = verb.name;
  const size_t blank = name.find(' ');
  const std::string last = blank == std::string::npos ? name : name.substr(blank + 1);
  std::string branch = indent + last + ")\n" + indent + "  _arguments";
  for (const Option& option : verb.options) branch += " \\\n" + indent + "    " + SpecOf(option);
  branch += " \\\n" + indent + "    '--json[Print JSON]' '--help[Print help]'";
  for (const Argument& argument : verb.arguments) {
    branch += " \\\n" + indent + "    " + SpecOf(argument);
  }
  return branch + "\n" + indent + "  ;;\n";
}

// The verbs of a group; those of the first level, and the groups, for the empty name.
std::string FunctionOf(const VerbTable& table, const std::string& group) {
  std::string list;
  std::string branches;
  for (const Verb& verb : table.verbs) {
    const std::string name = verb.name;
    const size_t blank = name.find(' ');
    const std::string own = blank == std::string::npos ? "" : name.substr(0, blank);
    if (own != group) continue;
    const std::string last = blank == std::string::npos ? name : name.substr(blank + 1);
    list += "    '" + last + ":" + Escaped(verb.summary) + "'\n";
    branches += BranchOf(verb, "        ");
  }
  if (group.empty()) {
    for (const VerbGroup& one : table.groups) {
      const std::string name = one.name;
      list += "    '" + name + ":" + Escaped(one.summary) + "'\n";
      branches += "        " + name + ") _yaxreg_" + name + " ;;\n";
    }
  }
  const std::string options = group.empty() ? "'--help[Print help]' '--version[Print the version]'"
                                            : "'--help[Print help]'";
  return "_yaxreg" + (group.empty() ? "" : "_" + group) +
         "() {\n  local curcontext=$curcontext state line\n  local -a verbs\n  verbs=(\n" + list +
         "  )\n  _arguments -C " + options +
         " ':verb:->verb' '*::argument:->arguments'\n"
         "  case $state in\n    verb) _describe verb verbs ;;\n    arguments)\n"
         "      case $words[1] in\n" +
         branches + "      esac\n      ;;\n  esac\n}\n\n";
}

}  // namespace

std::string ZshCompletion(const VerbTable& table) {
  std::string script =
      "#compdef yaxreg\n# Completion of yaxreg for zsh. Made from the table of verbs, do not "
      "edit.\n\n";
  for (const VerbGroup& group : table.groups) script += FunctionOf(table, group.name);
  return script + FunctionOf(table, "") + (kFunctions + 1);
}

}  // namespace yaxreg
