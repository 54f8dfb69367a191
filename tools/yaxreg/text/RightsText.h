// The rights on a key as letters.
#pragma once

#include <string>

namespace yaxreg {

// A permission byte as two groups of four places, the owner's and everybody else's: r (read), w
// (modify), c (create), d (delete), each in its place, or "-". 0x1F is "rwcd:r---".
std::string RightsText(unsigned char permission);

// Takes two groups of letters, parted by ":", in any order and with as many "-" as one likes: what
// RightsText writes, and also "rwcd:r", ":r" or "dr:-". Or the byte itself as a number, 0 to 255.
// False when it is neither; *permission is as it was.
bool ParseRights(const std::string& text, unsigned char* permission);

}  // namespace yaxreg
