// A file of the library's own beside another file.
#pragma once

// Offsets and sizes are in bytes. Calls return 1 for success and 0 for failure. Only one object of
// all processes has the file at a path open. Not thread-safe: the owner serialises.
class PCSideFile {
 public:
  PCSideFile() = default;
  ~PCSideFile() { Destroy(); }
  PCSideFile(const PCSideFile&) = delete;
  PCSideFile& operator=(const PCSideFile&) = delete;

  // Opens the file at `path`, or makes it, with the rights of the file that `model` names. An
  // existing one keeps its bytes. Fails when another object or process has it open, and for what is
  // no regular file, symbolic links included.
  int Create(const char* path, const char* model);
  bool IsOpen() const { return mFd >= 0; }
  // Current length; 0 when closed, 0xFFFFFFFF when it is longer.
  unsigned int Size() const;
  // Exactly `size` bytes.
  int Read(unsigned int offset, void* buffer, unsigned int size) const;
  int Write(unsigned int offset, const void* data, unsigned int size);
  // Waits until all that was written is on the disk.
  int Sync();
  // Makes the file `length` bytes long, with blocks of the disk for all of them.
  int Resize(unsigned int length);
  // The first `length` bytes as memory, which others see at once and which stays in the file when
  // the process ends at any point. The file has that length (Resize). Null when there is no such
  // mapping. An earlier one goes.
  unsigned char* Map(unsigned int length);
  // Closes the file and removes it from its folder.
  void Remove();
  // Closes the file, which stays.
  void Destroy();

  // Writes the path of the file that `path` leads to, without symbolic links. 0 for none, or more
  // than `capacity` bytes with the ending 0.
  static int RealPath(const char* path, char* real, unsigned int capacity);
  // Waits until the names in the folder of `path` are on the disk.
  static int SyncFolderOf(const char* path);
  // 16 bytes that are others after each start of the machine.
  static int BootId(unsigned char (&id)[16]);
  // True when something is at the path.
  static bool IsThere(const char* path);

 private:
  void DropMapping();

  int mFd = -1;
  char* mPath = nullptr;  // owned
  unsigned char* mMap = nullptr;
  unsigned int mMapLength = 0;
};
