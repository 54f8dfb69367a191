// The sources of the page, pages/view, which the build puts into the program.
#pragma once

#include <string>

namespace yaxreg {

// The frame, with {{names}} where something is put in.
std::string PageFrame();
// The text of its style and of its script.
std::string PageStyle();
std::string PageScript();
// "sha256-..." of both: a browser runs the script of these bytes and no other.
extern const char* const kPageStyleHash;
extern const char* const kPageScriptHash;

}  // namespace yaxreg
