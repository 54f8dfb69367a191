#include "tools/yaxreg/verbs/EditedFile.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "tools/yaxreg/image/FileBytes.h"

namespace yaxreg {

namespace {

constexpr size_t kMostEdited = 65u << 20;  // bytes; more than a document may have

// What the user has set, with its own arguments if it has some.
std::string Editor() {
  for (const char* const variable : {"VISUAL", "EDITOR"}) {
    const char* const editor = std::getenv(variable);
    if (editor != nullptr && *editor != 0) return editor;
  }
  return "vi";
}

// As the shell takes a word.
std::string Quoted(const std::string& word) {
  std::string quoted = "'";
  for (const char c : word) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

bool WriteText(int file, const std::string& text) {
  for (size_t done = 0; done < text.size();) {
    const ssize_t size = write(file, text.data() + done, text.size() - done);
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) return false;
    done += static_cast<size_t>(size);
  }
  return true;
}

}  // namespace

EditedFile::EditedFile(const std::string& text) {
  constexpr char kEnding[] = ".json";
  std::error_code error;
  std::filesystem::path folder = std::filesystem::temp_directory_path(error);
  if (error) folder = ".";
  path_ = (folder / "yaxreg-XXXXXX").string() + kEnding;
  const int file = mkstemps(&path_[0], sizeof kEnding - 1);
  if (file < 0) {
    isKept_ = true;
    reason_ = std::string("cannot be made: ") + std::strerror(errno);
    return;
  }
  const bool isWritten = WriteText(file, text);
  if (!isWritten) reason_ = std::string("cannot be written: ") + std::strerror(errno);
  if (close(file) != 0 && isWritten) reason_ = "cannot be written";
}

EditedFile::~EditedFile() {
  if (!isKept_) unlink(path_.c_str());
}

bool EditedFile::IsThere() const {
  return access(path_.c_str(), F_OK) == 0;
}

bool EditedFile::Edit(std::string* text, std::string* reason) {
  const std::string editor = Editor();
  // The editor gets the user's signals meanwhile, this program none.
  const int ended = std::system((editor + ' ' + Quoted(path_)).c_str());
  if (ended == -1 || !WIFEXITED(ended) || WEXITSTATUS(ended) != 0) {
    *reason = "the editor " + editor + " has failed";
    return false;
  }
  const FileResult read = ReadWholeFile(path_, kMostEdited, text);
  *reason = read.reason;
  return read.isDone();
}

}  // namespace yaxreg
