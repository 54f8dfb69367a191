// The watch bits of a key as words.
#pragma once

#include <string>
#include <vector>

namespace yaxreg {

// The bits as programs get them, in their order: "values", "default", "keys", "rights", "restored",
// "below".
std::vector<std::string> WatchWords(unsigned char watch);

// The number and what each bit asks for: "3: values are created, set or deleted; the default value
// is set", "0: nothing".
std::string WatchText(unsigned char watch);

// Takes the number, 0 to 63, or words of WatchWords with commas between them. False when it is
// neither; *watch is as it was.
bool ParseWatch(const std::string& text, unsigned char* watch);

}  // namespace yaxreg
