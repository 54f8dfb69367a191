// A file that gets its name when it is complete.
#pragma once

// The file is written under a temporary name in the folder where it is to be: ".yax-new-00", or the
// next number that no other maker uses. Until it gets its own name, what is there stays as it is;
// when it is given up, it is gone. A process that dies may leave the temporary name, with a part of
// the file or as a second name of the whole one; the next file that is made in the folder removes
// it. Calls return 1 for success and 0 for failure. Not thread-safe: the owner serialises.
class PCNewFile {
 public:
  PCNewFile() = default;
  ~PCNewFile() { Destroy(); }
  PCNewFile(const PCNewFile&) = delete;
  PCNewFile& operator=(const PCNewFile&) = delete;

  // Makes an empty file that is to be the one at `path`; symbolic links lead to where it is to be,
  // also those that lead to nothing yet. It has the mode less the umask, or owner, group and mode
  // of the regular file that is there. Where the folder takes no other file, or the system does not
  // give the owner, that file is emptied and written itself (IsInPlace). Fails when there is
  // something else, or a file that cannot be read and written. -1 when memory is short.
  int Create(const char* path, unsigned int mode = 0666);
  // The same where nothing is at the path, or something came there a moment ago: GiveName leaves it
  // there.
  int CreateNew(const char* path, unsigned int mode = 0666);
  bool IsOpen() const { return mFd >= 0; }
  // Where to write the file. Null when it is not open.
  const char* Path() const { return IsOpen() ? mPaths + (mIsInPlace ? 0 : kPathSize) : nullptr; }
  bool IsInPlace() const { return mIsInPlace; }

  // Waits until what was written to the file, by whomever, is on the disk.
  int Sync();
  // Gives the file its name, in place of the file that Create has found there. When there was none
  // and has come one since, that one stays, and this one is given up: 1 as well. `sync`: the name
  // is on the disk before the answer. After a failure everything is as it was before, unless the
  // system fails to take a change of names back.
  int GiveName(bool sync);
  // Gives the file its name, whatever has it. `sync`: the name is on the disk before the answer.
  int TakeName(bool sync = false);
  // Closes the file, and removes it if it has no name yet.
  void Destroy();

 private:
  static constexpr unsigned int kPathSize = 4096;  // bytes, with the ending 0

  int Begin(const char* path, int old, unsigned int mode);
  // Makes the file under its temporary name. `old`: the file that is there, or negative. Returns 0
  // or errno.
  int Prepare(const char* path, int old, unsigned int mode);
  // Follows the symbolic links from `path` to where the file is to be.
  bool FindPlace(const char* path);
  // Opens a new file under a temporary name. Returns its descriptor, or -errno.
  int MakeTemporary(unsigned int mode);
  // Empties the file that is there; the descriptor is this object's then.
  bool WriteInPlace(const char* path, int old);
  // What had the name goes; a file that cannot be replaced gets the bytes of this one.
  bool Replace();
  // The same, and it is on the disk; when that fails, the old file gets its name back.
  bool ReplaceOnDisk();
  bool CopyInPlace() const;
  // Closes the file; one without a name is gone.
  void RemoveTemporary();

  int mFd = -1;
  bool mIsInPlace = false;
  bool mReplaces = false;  // a file was there
  char* mPaths = nullptr;  // owned: the file's, then the temporary one; kPathSize bytes each
};
