#include "tools/yaxreg/shell/ShellCompletion.h"

#include <algorithm>
#include <sstream>

namespace yaxreg {

namespace {

// The words of a line; the last one is empty behind a blank.
struct TypedWords {
  std::vector<std::string> words;
  size_t begin = 0;  // of the last one, in the line
};

TypedWords WordsOf(const std::string& line) {
  TypedWords typed = {{""}, 0};
  char quote = 0;
  for (size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (c == '\\' && quote != '\'' && i + 1 < line.size()) {
      typed.words.back() += line[++i];
    } else if (quote != 0 ? c == quote : c == '"' || c == '\'') {
      quote = quote == 0 ? c : '\0';
    } else if (quote == 0 && (c == ' ' || c == '\t')) {
      if (typed.begin < i) typed.words.emplace_back();
      typed.begin = i + 1;
    } else {
      typed.words.back() += c;
    }
  }
  return typed;
}

// As a word is typed.
std::string Escaped(const std::string& word) {
  std::string escaped;
  for (const char c : word) {
    if (std::string(" \t'\"\\").find(c) != std::string::npos || (c == '#' && escaped.empty())) {
      escaped += '\\';
    }
    escaped += c;
  }
  return escaped;
}

bool Begins(const std::string& word, const std::string& beginning) {
  return word.compare(0, beginning.size(), beginning) == 0;
}

// Of names such as "comp ls" the word at that place, where those before it are these.
std::vector<std::string> VerbWords(const VerbTable& table, const std::vector<std::string>& words) {
  std::vector<std::string> found;
  for (const Verb& verb : table.verbs) {
    std::istringstream name(verb.name);
    std::string word;
    bool isLed = true;
    for (size_t i = 0; i + 1 < words.size() && isLed; ++i) {
      isLed = static_cast<bool>(name >> word) && word == words[i];
    }
    if (!isLed || !(name >> word) || !Begins(word, words.back())) continue;
    if (std::find(found.begin(), found.end(), word) == found.end()) found.push_back(word);
  }
  return found;
}

const Verb* VerbOf(const VerbTable& table, const std::vector<std::string>& words) {
  for (const Verb& verb : table.verbs) {
    const std::string name = verb.name;
    const bool isInGroup = name.find(' ') != std::string::npos;
    if (words.size() < (isInGroup ? 3 : 2)) continue;
    if (name == (isInGroup ? words[0] + ' ' + words[1] : words[0])) return &verb;
  }
  return nullptr;
}

std::vector<std::string> OptionsOf(const Verb& verb, const std::string& beginning) {
  std::vector<std::string> found;
  const auto add = [&](const std::string& name) {
    if (Begins(name, beginning)) found.push_back(name);
  };
  for (const Option& option : verb.options) {
    std::istringstream names(option.names);
    for (std::string name; std::getline(names, name, ',');) add(name);
  }
  add("--json");
  add("--help");
  return found;
}

}  // namespace

ShellCompletion CompleteCommand(const VerbTable& table, const std::string& line,
                                const PlaceFinder& places) {
  const TypedWords typed = WordsOf(line);
  ShellCompletion completion = {typed.begin, VerbWords(table, typed.words)};
  const Verb* const verb = VerbOf(table, typed.words);
  if (!completion.words.empty() || verb == nullptr) return completion;
  const std::string& word = typed.words.back();
  if (Begins(word, "-")) {
    completion.words = OptionsOf(*verb, word);
  } else {
    for (const std::string& place : places(word)) completion.words.push_back(Escaped(place));
  }
  return completion;
}

std::string CommonBeginning(const std::vector<std::string>& words) {
  std::string common = words.empty() ? "" : words.front();
  for (const std::string& word : words) {
    const size_t length = std::min(common.size(), word.size());
    const auto ends = std::mismatch(
        common.begin(), common.begin() + static_cast<std::ptrdiff_t>(length), word.begin());
    common.erase(ends.first, common.end());
  }
  return common;
}

}  // namespace yaxreg
