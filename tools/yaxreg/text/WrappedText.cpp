#include "tools/yaxreg/text/WrappedText.h"

#include <algorithm>

namespace yaxreg {

namespace {

// Where what is broken off a line begins.
size_t IndentOf(const std::string& line) {
  const size_t begin = line.find_first_not_of(' ');
  if (begin == std::string::npos || begin == 0) return 0;
  const size_t gap = line.find("  ", begin);
  const size_t column = gap == std::string::npos ? gap : line.find_first_not_of(' ', gap);
  return column == std::string::npos ? begin : column;
}

std::string WrappedLine(std::string line, size_t columns) {
  size_t indent = IndentOf(line);
  if (indent >= columns) indent = 0;
  std::string wrapped;
  while (line.size() > columns) {
    const size_t first = std::max(indent, line.find_first_not_of(' '));
    size_t cut = line.rfind(' ', columns);
    if (cut == std::string::npos || cut <= first) cut = line.find(' ', first + 1);
    if (first == std::string::npos || cut == std::string::npos) break;
    wrapped += line.substr(0, line.find_last_not_of(' ', cut) + 1) + "\n";
    const size_t rest = line.find_first_not_of(' ', cut);
    line = rest == std::string::npos ? "" : std::string(indent, ' ') + line.substr(rest);
  }
  return wrapped + line;
}

}  // namespace

std::string Wrapped(const std::string& text, unsigned int columns) {
  if (columns == 0) return text;
  std::string wrapped;
  for (size_t begin = 0; begin <= text.size();) {
    size_t end = text.find('\n', begin);
    if (end == std::string::npos) end = text.size();
    wrapped += WrappedLine(text.substr(begin, end - begin), columns);
    if (end < text.size()) wrapped += '\n';
    begin = end + 1;
  }
  return wrapped;
}

}  // namespace yaxreg
