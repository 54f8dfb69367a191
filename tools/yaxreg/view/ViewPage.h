// A page that shows registry files, to be opened by a browser from wherever it lies.
#pragma once

#include <iosfwd>

#include "tools/yaxreg/view/ViewData.h"

namespace yaxreg {

// Writes an HTML document that needs nothing but itself: it loads nothing, and runs no other script
// than its own, whatever the files hold. With a second file it tells what differs; the map is that
// of the first. Stops early when the stream fails.
void WriteViewPage(const ViewedFile& first, const ViewedFile* second, std::ostream& out);

}  // namespace yaxreg
