#include "tools/yaxreg/cli/OptionWords.h"

#include <sstream>

namespace yaxreg {

namespace {

enum class Taken {
  kUnknown,  // there is no such option
  kSwitch,
  kValue
};

// `name` with its dashes.
Taken TakenBy(const Verb& verb, const std::string& name) {
  if (name == "--json" || name == "--help" || name == "-h") return Taken::kSwitch;
  for (const Option& option : verb.options) {
    std::istringstream names(option.names);
    for (std::string one; std::getline(names, one, ',');) {
      if (one == name) return option.value == nullptr ? Taken::kSwitch : Taken::kValue;
    }
  }
  return Taken::kUnknown;
}

// Whether the next word is the value of an option in "-kd"; in "-d2" the value is there already.
bool EndsInOptionOfValue(const Verb& verb, const std::string& word) {
  for (size_t i = 1; i < word.size(); ++i) {
    const Taken taken = TakenBy(verb, std::string("-") + word[i]);
    if (taken != Taken::kSwitch) return taken == Taken::kValue && i + 1 == word.size();
  }
  return false;
}

}  // namespace

bool SplitOptionWords(const Verb& verb, const std::vector<std::string>& words,
                      std::vector<std::string>* result, std::string* reason) {
  bool isValue = false;  // of the option before
  bool areOptions = true;
  for (const std::string& word : words) {
    const bool isLong = areOptions && !isValue && word.compare(0, 2, "--") == 0;
    const bool isShort = areOptions && !isValue && !isLong && word.compare(0, 1, "-") == 0;
    if (isLong && word.size() == 2) areOptions = false;
    const size_t equals = isLong ? word.find('=') : std::string::npos;
    const std::string name = word.substr(0, equals);
    const Taken taken = isLong ? TakenBy(verb, name) : Taken::kUnknown;
    if (taken == Taken::kSwitch && equals != std::string::npos) {
      *reason = name + " takes no value";
      return false;
    }
    isValue = isLong ? taken == Taken::kValue : isShort && EndsInOptionOfValue(verb, word);
    if (isValue && equals != std::string::npos) {
      result->push_back(name);
      result->push_back(word.substr(equals + 1));
      isValue = false;
    } else {
      result->push_back(word);
    }
  }
  return true;
}

}  // namespace yaxreg
