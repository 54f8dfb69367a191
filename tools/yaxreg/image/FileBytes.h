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

// The folder that a path lies in, "." without a slash.
std::string FolderOf(const std::string& path);

// Writes a file that must not exist yet, and forces it onto the disk: complete or not at all, also
// when the power goes. It is written as a temporary file of the same folder, ".yaxreg-XXXXXX", and
// then gets its name; only where the file system can neither link nor rename without replacing, it
// is written under its name at once. Signals that would end the program wait.
FileResult WriteNewFile(const std::string& path, const std::string& bytes);

// Puts new bytes into the place of a file: written to a temporary file ".yaxreg-XXXXXX" beside it
// with the same mode, and the same owner and group where the user may give it away, forced onto the
// disk, renamed. A link is followed. The file must be
// writable and still hold `expected`; after a failure it is as it was. Signals that would end the
// program wait.
FileResult ReplaceFile(const std::string& path, const std::string& expected,
                       const std::string& bytes);

}  // namespace yaxreg
