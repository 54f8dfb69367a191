// Pieces of SVG documents.
#pragma once

#include <string>

namespace yaxreg {
namespace draw {

std::string Text(unsigned long long number);
// "10,332".
std::string Grouped(unsigned long long number);
// Any bytes as text between tags, without control characters.
std::string Escaped(const std::string& bytes);
std::string Label(double x, double y, const std::string& classes, const std::string& text);
// `look` is an attribute with its value, such as Fill() and ClassOf() make.
std::string Box(double x, double y, double width, double height, const std::string& look);
std::string ClassOf(const std::string& name);
std::string Fill(const std::string& colour);
// With two digits behind the point.
std::string Decimal(double number);

}  // namespace draw
}  // namespace yaxreg
