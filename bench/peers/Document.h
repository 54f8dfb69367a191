// Text files of which a program writes parts.
#pragma once

#include <string>

namespace tamu::bench {

// Puts a text between "<!-- begin NAME -->" and "<!-- end NAME -->", which the file must have.
void ReplacePart(const std::string& path, const std::string& name, const std::string& text);
void WriteFile(const std::string& path, const std::string& text);
// "2 cores, MODEL, Linux 6.1": nothing that names the machine itself.
std::string MachineText();
std::string DateText();

}  // namespace tamu::bench
