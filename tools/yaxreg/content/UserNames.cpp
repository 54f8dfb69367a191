#include "tools/yaxreg/content/UserNames.h"

#include <sstream>

#include "registry/base/UserId.h"
#include "tools/yaxreg/text/ByteText.h"
#include "tools/yaxreg/text/Numbers.h"

namespace yaxreg {

namespace {

constexpr char kUserBlanks[] = " \t\r";
constexpr unsigned long long kMostUsers = 0xFFFFFFFF;

std::string WithoutBlanks(const std::string& text) {
  const size_t begin = text.find_first_not_of(kUserBlanks);
  if (begin == std::string::npos) return "";
  return text.substr(begin, text.find_last_not_of(kUserBlanks) + 1 - begin);
}

bool TakeUserNumber(const std::string& text, unsigned int* number) {
  unsigned long long taken = 0;
  if (!ParseNumberUpTo(text, kMostUsers, &taken)) return false;
  *number = static_cast<unsigned int>(taken);
  return true;
}

// "anna:x:1000:..."
bool TakeFields(const std::string& line, std::string* name, unsigned int* number) {
  const size_t first = line.find(':');
  const size_t second = line.find(':', first + 1);
  if (second == std::string::npos) return false;
  *name = WithoutBlanks(line.substr(0, first));
  return TakeUserNumber(line.substr(second + 1, line.find(':', second + 1) - second - 1), number);
}

// "1000 anna" or "anna".
bool TakeWords(const std::string& line, std::string* name, unsigned int* number) {
  const size_t blank = line.find_first_of(kUserBlanks);
  if (blank == std::string::npos) {
    *name = line;
    *number = tamu::registry::UserIdOf(name->c_str());
    return true;
  }
  *name = WithoutBlanks(line.substr(blank));
  return TakeUserNumber(line.substr(0, blank), number);
}

// Where an owner is told, digits are a number.
bool LooksLikeANumber(const std::string& name) {
  const size_t begin = name[0] == '+' || name[0] == '-' ? 1 : 0;
  return begin < name.size() && name[begin] >= '0' && name[begin] <= '9';
}

}  // namespace

std::string UserNames::Add(const std::string& line) {
  std::string name;
  unsigned int number = 0;
  const bool isTaken = line.find(':') != std::string::npos ? TakeFields(line, &name, &number)
                                                           : TakeWords(line, &name, &number);
  const bool isWord = name.find_first_of(kUserBlanks) == std::string::npos;
  if (!isTaken || name.empty() || !isWord || !IsText(name) ||
      name.find('\0') != std::string::npos) {
    return "is neither NUMBER NAME nor NAME:x:NUMBER: nor NAME";
  }
  if (LooksLikeANumber(name)) return Shown(name) + " could be taken for a number";
  const auto [place, isNew] = numbers_.emplace(name, number);
  if (!isNew && place->second != number) return Shown(name) + " has two numbers";
  names_.emplace(number, name);
  return "";
}

bool UserNames::Read(const std::string& text, std::string* reason) {
  UserNames read;
  std::istringstream lines(text);
  size_t number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    line = WithoutBlanks(line);
    if (line.empty() || line[0] == '#') continue;
    const std::string why = read.Add(line);
    if (why.empty()) continue;
    *reason = "line " + std::to_string(number) + ": " + why;
    return false;
  }
  *this = std::move(read);
  return true;
}

const std::string* UserNames::NameOf(unsigned int number) const {
  const auto found = names_.find(number);
  return found == names_.end() ? nullptr : &found->second;
}

const unsigned int* UserNames::NumberOf(const std::string& name) const {
  const auto found = numbers_.find(name);
  return found == numbers_.end() ? nullptr : &found->second;
}

}  // namespace yaxreg
