// A text that the user changes in an editor.
#pragma once

#include <string>

namespace yaxreg {

// In a temporary file that only the user may read. It is removed at the end of the object, unless
// it is kept.
class EditedFile {
 public:
  explicit EditedFile(const std::string& text);
  ~EditedFile();
  EditedFile(const EditedFile&) = delete;
  EditedFile& operator=(const EditedFile&) = delete;

  // "" when it could be made.
  const std::string& reason() const { return reason_; }
  const std::string& path() const { return path_; }
  // Runs the editor that VISUAL or EDITOR tells, else vi, on the file, and reads what is in it
  // then. False: the editor cannot be run, or says that it has failed; *reason tells it.
  bool Edit(std::string* text, std::string* reason);
  // The editor may have removed it.
  bool IsThere() const;
  void Keep(bool isKept) { isKept_ = isKept; }

 private:
  std::string path_;
  std::string reason_;
  bool isKept_ = false;
};

}  // namespace yaxreg
