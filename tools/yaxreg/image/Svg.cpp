#include "tools/yaxreg/image/Svg.h"

#include <cstdio>

#include "tools/yaxreg/text/ByteText.h"

namespace yaxreg {
namespace draw {

namespace {

// U+FFFE and U+FFFF are UTF-8, but nothing that XML takes.
std::string XmlCharacters(std::string text) {
  for (const char* wrong : {"\xEF\xBF\xBE", "\xEF\xBF\xBF"}) {
    for (size_t at = text.find(wrong); at != std::string::npos; at = text.find(wrong)) {
      text.replace(at, 3, "?");
    }
  }
  return text;
}

}  // namespace

std::string Text(unsigned long long number) {
  return std::to_string(number);
}

std::string Grouped(unsigned long long number) {
  std::string text = Text(number);
  for (size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, ",");
  return text;
}

std::string Decimal(double number) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2f", number);
  return text;
}

std::string Escaped(const std::string& bytes) {
  std::string text;
  for (const char c : XmlCharacters(Shown(bytes))) {
    if (c == '&') {
      text += "&amp;";
    } else if (c == '<') {
      text += "&lt;";
    } else if (c == '>') {
      text += "&gt;";
    } else {
      text += c;
    }
  }
  return text;
}

std::string Label(double x, double y, const std::string& classes, const std::string& text) {
  return "<text x=\"" + Decimal(x) + "\" y=\"" + Decimal(y) + "\" class=\"" + classes + "\">" +
         Escaped(text) + "</text>\n";
}

std::string Box(double x, double y, double width, double height, const std::string& look) {
  return "<rect x=\"" + Decimal(x) + "\" y=\"" + Decimal(y) + "\" width=\"" + Decimal(width) +
         "\" height=\"" + Decimal(height) + "\" " + look + "/>";
}

std::string ClassOf(const std::string& name) {
  return "class=\"" + name + "\"";
}

std::string Fill(const std::string& colour) {
  return "fill=\"" + colour + "\"";
}

}  // namespace draw
}  // namespace yaxreg
