#include "tools/yaxreg/docs/Completion.h"

#include <algorithm>
#include <initializer_list>

#include "tools/yaxreg/components/MachineNames.h"

namespace yaxreg {

namespace {

// Bash cuts words at : and = as well, and hands quotes over as they were typed; _yaxreg_words and
// _yaxreg_unquote undo that. Only what is behind the last cut is replaced by a reply, so
// _yaxreg_reply takes off what is before.
constexpr char kFunctions[] = R"bash(
# Sets words and cword to the words as they were typed, cut to what of the current one stays.
_yaxreg_words() {
  local rest=$COMP_LINE blanks word i
  words=() cword=0 cut=''
  for ((i = 0; i < ${#COMP_WORDS[@]}; ++i)); do
    word=${COMP_WORDS[i]}
    blanks=${rest%%[![:blank:]]*}
    rest=${rest#"$blanks"}
    if [[ $i -gt 1 && -z $blanks && -n $word && $rest == "$word"* ]]; then
      ((i == COMP_CWORD)) && cut=${words[${#words[@]} - 1]}
      words[${#words[@]} - 1]+=$word
    else
      words+=("$word")
    fi
    rest=${rest#"$word"}
    ((i == COMP_CWORD)) && cword=$((${#words[@]} - 1))
    [[ $i -eq $COMP_CWORD && ($word == : || $word == =) ]] && cut=${words[cword]}
  done
  return 0
}

# Sets plain to a word without its quotes and backslashes; nothing in it is expanded or run.
_yaxreg_unquote() {
  local text=$1 quote='' c i
  plain=''
  for ((i = 0; i < ${#text}; ++i)); do
    c=${text:i:1}
    if [[ -n $quote && $c == "$quote" ]]; then
      quote=''
    elif [[ -z $quote && ($c == "'" || $c == '"') ]]; then
      quote=$c
    elif [[ $c == '\' && $quote != "'" ]]; then
      i=$((i + 1))
      c=${text:i:1}
      [[ $quote == '"' && $c != [\$\`\"\\] ]] && plain+='\'
      plain+=$c
    else
      plain+=$c
    fi
  done
}

# Adds a reply, a whole word; only what begins like the current word is one.
_yaxreg_reply() {
  [[ $1 == "$current"* ]] && COMPREPLY+=("${1#"$cut"}")
  return 0
}

# Adds a reply that stands for an argument. One that begins with a dash would be taken for an option:
# in its place -- is offered, behind which it is.
_yaxreg_argument() {
  if [[ -z $only && $1 == -* ]]; then
    dashed=1
  else
    _yaxreg_reply "$1"
  fi
}

# Names of files that begin with $2; $1 is what comes before them in the word.
_yaxreg_files() {
  local home='' name
  [[ $2 == "~/"* ]] && home=$HOME
  while IFS= read -r name; do
    [[ -n $home ]] && name='~'${name#"$home"}
    _yaxreg_argument "$1$name"
  done < <(
    shopt -u failglob
    shopt -s nullglob
    set +f
    start=$2
    [[ -n $home ]] && start=$home${2#'~'}
    for name in "$start"*; do printf '%s\n' "$name"; done
  )
  compopt -o filenames 2>/dev/null || :
}

# The lines of yaxreg ls, of keys with a slash at the end and of values without.
_yaxreg_ls() {
  local program
  _yaxreg_unquote "${words[0]}"
  program=${plain/#'~/'/"$HOME/"}
  "$program" ls -- "$1" "$2" 2>/dev/null </dev/null
}

# Keys of the registry file $1 that begin with $2, one level.
_yaxreg_keys() {
  local above=${2%"${2##*/}"} line
  while IFS= read -r line; do
    [[ $line == */ ]] || continue
    printf -v line %b "$line"
    _yaxreg_argument "$above$line"
  done < <(_yaxreg_ls "$1" "$above")
  compopt -o filenames -o nospace 2>/dev/null || :
}

# Values of the key $2 of the registry file $1; $3 is what comes before them in the word.
_yaxreg_values() {
  local line
  while IFS= read -r line; do
    [[ $line == */ ]] && continue
    printf -v line %b "$line"
    _yaxreg_argument "$3$line"
  done < <(_yaxreg_ls "$1" "$2")
  compopt -o filenames 2>/dev/null || :
}

_yaxreg_list() {
  local word
  for word in $1; do _yaxreg_reply "$word"; done
}

# Values of the option $1 that begin with $3; $2 is what comes before them in the word.
_yaxreg_option_value() {
  local word choices=''
  only=1 # a value is no option, whatever it begins with
  if [[ " $files " == *" $1 "* ]]; then
    _yaxreg_files "$2" "$3"
    return 0
  fi
  _yaxreg_choices "$1"
  for word in $choices; do _yaxreg_reply "$2$word"; done
  return 0
}

_yaxreg() {
  local IFS=$' \t\n'
  local words cword cut plain current i verbs
  local verb='' options='' valued='' files='' kinds='' key='' file=''
  COMPREPLY=()
  _yaxreg_words
  _yaxreg_unquote "$cut"
  cut=$plain
  _yaxreg_unquote "${words[cword]}"
  current=$plain

  i=1
  if ((cword > 1)); then
    verb=${words[1]}
    i=2
    if _yaxreg_is_group "$verb" && ((cword > 2)); then
      verb+=" ${words[2]}"
      i=3
    fi
  fi
  _yaxreg_verb "$verb"

  local given=() order=() word wanted='' only='' dashed=''
  for (( ; i < cword; ++i)); do
    word=${words[i]}
    if [[ -n $wanted ]]; then
      wanted=''
    elif [[ -z $only && $word == -- ]]; then
      only=1
    elif [[ -z $only && $word == -?* ]]; then
      [[ " $valued " == *" $word "* ]] && wanted=$word
    else
      _yaxreg_unquote "$word"
      given+=("$plain")
    fi
  done

  if [[ -z $wanted && -z $only && $current == --*=* ]]; then
    _yaxreg_option_value "${current%%=*}" "${current%%=*}=" "${current#*=}"
    return 0
  fi
  if [[ -n $wanted ]]; then
    _yaxreg_option_value "$wanted" '' "$current"
    return 0
  fi
  if [[ -z $only && $current == -* ]]; then
    _yaxreg_list "$options"
    [[ $kinds != verb ]] && _yaxreg_reply --
    return 0
  fi
  read -r -a order <<<"$kinds"
  for ((i = 0; i < ${#given[@]}; ++i)); do
    [[ ${order[i]} == file && -z $file ]] && file=${given[i]/#'~/'/"$HOME/"}
    [[ ${order[i]} == key ]] && key=${given[i]}
  done
  case ${order[${#given[@]}]} in
    file) _yaxreg_files '' "$current" ;;
    key | place)
      if [[ $current == *:* && "${order[*]:${#given[@]}:2}" == @(place*|*value) ]]; then
        _yaxreg_values "$file" "${current%:*}" "${current%:*}:"
      else
        _yaxreg_keys "$file" "$current"
      fi
      ;;
    value) _yaxreg_values "$file" "$key" '' ;;
    verb) _yaxreg_list "$verbs" ;;
  esac
  [[ -n $dashed ]] && _yaxreg_reply --
  return 0
}

complete -F _yaxreg yaxreg
)bash";

bool IsOneOf(const std::string& text, std::initializer_list<const char*> all) {
  for (const char* one : all) {
    if (text == one) return true;
  }
  return false;
}

void Append(std::string* list, const std::string& word) {
  *list += (list->empty() ? "" : " ") + word;
}

// "-d --depth" of "-d,--depth".
std::string NamesOf(const Option& option) {
  std::string names = option.names;
  for (char& c : names) {
    if (c == ',') c = ' ';
  }
  return names;
}

std::string KindOf(const Argument& argument) {
  if (argument.isFile) return "file";
  const std::string name = argument.name;
  if (name == "PATH") return "key";
  if (name == "FROM" || name == "TO") return "place";
  return name == "NAME" ? "value" : "other";
}

// What the script knows of one verb, as a branch of its case statement.
std::string BranchOf(const Verb& verb) {
  std::string kinds;
  std::string options;
  std::string valued;
  std::string files;
  for (const Argument& argument : verb.arguments) Append(&kinds, KindOf(argument));
  for (const Option& option : verb.options) {
    Append(&options, NamesOf(option));
    if (option.value != nullptr) Append(&valued, NamesOf(option));
    if (TakesFile(option)) Append(&files, NamesOf(option));
  }
  Append(&options, "--json --help");
  return "    '" + std::string(verb.name) + "')\n      kinds='" + kinds + "'\n      options='" +
         options + "'\n      valued='" + valued + "'\n      files='" + files + "'\n      ;;\n";
}

// The verbs below a group; those of the first level for the empty name.
std::string VerbsBelow(const VerbTable& table, const std::string& group) {
  std::string names;
  for (const Verb& verb : table.verbs) {
    const std::string name = verb.name;
    const size_t blank = name.find(' ');
    if (blank == std::string::npos) {
      if (group.empty()) Append(&names, name);
    } else if (name.substr(0, blank) == group) {
      Append(&names, name.substr(blank + 1));
    }
  }
  if (!group.empty()) return names;
  for (const VerbGroup& one : table.groups) Append(&names, one.name);
  return names;
}

std::string GroupBranch(const VerbTable& table, const std::string& group) {
  return "    '" + group + "')\n      kinds='verb'\n      verbs='" + VerbsBelow(table, group) +
         "'\n      options='" + (group.empty() ? "--help --version" : "--help") + "'\n      ;;\n";
}

// "x86-64 i386 ..."
std::string MachineWords() {
  std::string words = AllMachineNames();
  words.erase(std::remove(words.begin(), words.end(), ','), words.end());
  return words;
}

std::string Tables(const VerbTable& table) {
  std::string script =
      "# Sets what may follow a verb: arguments, options, options with a value, with a file.\n";
  script += "_yaxreg_verb() {\n  verbs=\n  case $1 in\n" + GroupBranch(table, "");
  for (const VerbGroup& group : table.groups) script += GroupBranch(table, group.name);
  for (const Verb& verb : table.verbs) script += BranchOf(verb);
  script += "  esac\n}\n\n_yaxreg_is_group() {\n  case $1 in\n";
  for (const VerbGroup& group : table.groups) {
    script += "    '" + std::string(group.name) + "') return 0 ;;\n";
  }
  script += "    *) return 1 ;;\n  esac\n}\n\n# Sets what an option may have as its value.\n";
  script += "_yaxreg_choices() {\n  case $1 in\n    --type) choices='0 1 2 3 4 5' ;;\n";
  return script + "    --machine) choices='" + MachineWords() + "' ;;\n  esac\n}\n";
}

}  // namespace

bool TakesFile(const Option& option) {
  return option.value != nullptr && IsOneOf(option.value, {"FILE", "SVG", "NEW", "DIR"});
}

std::string BashCompletion(const VerbTable& table) {
  return "# Completion of yaxreg for bash. Made from the table of verbs, do not edit.\n\n" +
         Tables(table) + kFunctions;
}

}  // namespace yaxreg
