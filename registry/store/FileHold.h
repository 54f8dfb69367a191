// How this process has a registry file open, for other processes.
#pragma once

namespace tamu::registry {

// Alone, or shared with others who have a journal. It is the file itself that is held, by whatever
// path, until the process ends or gives it up; all objects of the process that have the same file
// hold it together, alone if one of them does. Where the system has no such locks nothing is held.
// ProcessFile::Lock is held by the caller.
class FileHold {
 public:
  FileHold() = default;
  ~FileHold() { Drop(); }
  FileHold(const FileHold&) = delete;
  FileHold& operator=(const FileHold&) = delete;

  // False when another process keeps it from that. What was held before is dropped.
  bool Take(const char* path, bool isAlone);
  // From now on others may share it.
  void Share();
  void Drop();

 private:
  struct Held;
  static Held* sFirst;  // of all that are held

  Held* held_ = nullptr;
};

}  // namespace tamu::registry
