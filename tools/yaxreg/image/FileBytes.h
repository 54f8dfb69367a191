// Whole files, read and written at once.
#pragma once

#include <string>

namespace yaxreg {

// What became of a file operation. `reason` is in words, for the user; empty when it went well.
struct FileResult {
  bool isDone() const { return reason.empty(); }
  std::string reason;
  bool exists = false;    // it failed because the file is there already
  bool tooLarge = false;  // it failed because the file is longer than the limit
};

// Reads a regular file of at most `limit` bytes. Opens it for reading only.
FileResult ReadWholeFile(const std::string& path, size_t limit, std::string* bytes);

// Writes a file that must not exist yet, and forces it onto the disk. Nothing is left after a
// failure.
FileResult WriteNewFile(const std::string& path, const std::string& bytes);

// Puts new bytes into the place of a file: written to a temporary file beside it with the same
// owner and mode, forced onto the disk, renamed. A link is followed. The file must be writable and
// still hold `expected`; after a failure it is as it was.
FileResult ReplaceFile(const std::string& path, const std::string& expected,
                       const std::string& bytes);

}  // namespace yaxreg
