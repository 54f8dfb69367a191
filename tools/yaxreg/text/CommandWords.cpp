#include "tools/yaxreg/text/CommandWords.h"

namespace yaxreg {

namespace {

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r';
}

// A backslash that takes the meaning of the next character.
bool IsEscape(const std::string& line, size_t place, char quote) {
  if (line[place] != '\\' || quote == '\'') return false;
  if (quote == 0 || place + 1 == line.size()) return true;
  return line[place + 1] == '"' || line[place + 1] == '\\';
}

// The word at *place, which is behind it afterwards.
bool TakeWord(const std::string& line, size_t* place, std::string* word) {
  char quote = 0;
  for (; *place < line.size(); ++*place) {
    const char c = line[*place];
    if (IsEscape(line, *place, quote)) {
      if (++*place == line.size()) return false;
      *word += line[*place];
    } else if (quote != 0 && c == quote) {
      quote = 0;
    } else if (quote == 0 && (c == '\'' || c == '"')) {
      quote = c;
    } else if (quote == 0 && IsBlank(c)) {
      break;
    } else {
      *word += c;
    }
  }
  return quote == 0;
}

}  // namespace

bool SplitCommandWords(const std::string& line, std::vector<std::string>* words,
                       std::string* reason) {
  const bool hasZero = line.find('\0') != std::string::npos;
  if (reason != nullptr) {
    *reason = hasZero ? "a zero byte is in the line" : "a quotation mark or backslash has no end";
  }
  if (hasZero) return false;
  for (size_t place = 0; place < line.size();) {
    if (IsBlank(line[place])) {
      ++place;
      continue;
    }
    if (line[place] == '#') return true;
    words->emplace_back();
    if (!TakeWord(line, &place, &words->back())) return false;
  }
  return true;
}

}  // namespace yaxreg
