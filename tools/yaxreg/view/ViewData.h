// What a page that shows registry files knows of them.
#pragma once

#include <iosfwd>
#include <string>

#include "tools/yaxreg/image/RegistryImage.h"

namespace yaxreg {

// A file to show; the image keeps its bytes.
struct ViewedFile {
  std::string name;
  const RegistryImage* image;
};

// Writes a JSON document of all that a file holds; docs/json.md tells its fields. With a second
// file the keys of both, and which of them differ. Holds none of the characters < > &, U+2028 and
// U+2029, so that nothing in it can end a script element of a page, whatever names and values hold.
//
// Keys come with their depth in place of their path, in the order of Content, so that the size
// grows with the number of keys alone, however deep they lie.
void WriteViewData(const ViewedFile& first, const ViewedFile* second, std::ostream& out);

// The same characters in any JSON text, written as \u003c and so on.
std::string WithoutMarkup(const std::string& json);

}  // namespace yaxreg
