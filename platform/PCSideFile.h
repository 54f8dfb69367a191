// A file of the library's own beside another file.
#pragma once

#include "platform/PCFork.h"

// Offsets and sizes are in bytes. Calls return 1 for success and 0 for failure. Several objects of
// several processes may have the file at a path open; they agree by holding places. A process that
// was forked has it closed. Not thread-safe: the owner serialises.
class PCSideFile {
 public:
  PCSideFile() = default;
  ~PCSideFile() { Destroy(); }
  PCSideFile(const PCSideFile&) = delete;
  PCSideFile& operator=(const PCSideFile&) = delete;

  // Opens the file at `path`, or makes it, with the rights of the file that `model` names, and
  // holds its door (LeaveDoor). An existing one keeps its bytes. Fails for what is no regular file,
  // symbolic links included, and when the door cannot be had for some seconds.
  int Create(const char* path, const char* model);
  // Opens an existing file for reading alone, and holds its door with others who do so. Fails when
  // nothing is there, too; IsOpen tells then whether the door alone could not be had. -1: it cannot
  // be opened for now: the process has too many files open, or the path leads to another file each
  // time.
  int Look(const char* path);
  bool IsOpen() const { return mFd >= 0 && mFork == PCFork::Count(); }

  // Places that an object holds until it gives them up or closes the file, or its process ends.
  enum class Holding { kNone, kShared, kAlone };
  static constexpr unsigned int kDoor = 0;         // of one who opens or closes the file
  static constexpr unsigned int kPresence = 1;     // shared by all who use the file
  static constexpr unsigned int kFirstPlace = 2;   // free for any use, up to kAudience
  static constexpr unsigned int kAudience = 4096;  // of those who wait, and can only read
  // The same for places of an existing file of somebody else, which is opened for nothing else, to
  // be read if it is to be held with others. Fails when it cannot be opened.
  int OpenToHold(const char* path, Holding how);
  // False when another object keeps it from that; true also where there are no places.
  bool MayHold(unsigned int place, Holding how);
  void Identity(unsigned long long* device, unsigned long long* number) const;
  // Holds a place in this way instead of how it held it before. Fails at once when another object
  // keeps it from that; it is then held as before.
  int Hold(unsigned int place, Holding how);
  // True when another object holds the place.
  bool IsHeld(unsigned int place) const;
  // Waits, a millisecond if nothing else is said: for who holds a place and is about to give it up.
  static void Pause(unsigned int microseconds = 1000);
  // Waits for the door, for some seconds at most.
  int EnterDoor(Holding how = Holding::kAlone);
  void LeaveDoor() { Hold(kDoor, Holding::kNone); }

  // Current length; 0 when closed, 0xFFFFFFFF when it is longer.
  unsigned int Size() const;
  // Tells it as Size does. 0: it is closed, or the system does not know.
  int GetSize(unsigned int* size) const;
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
  // The same beside it, until the file is closed; to be read only after Look.
  unsigned char* MapStart(unsigned int length);
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
  // A number for what is at the path, as it is now: see posix::StateOf.
  static unsigned long long StateOf(const char* path, bool* isYoung);

 private:
  int Open(const char* path, const char* model);
  void DropMapping();
  void DropStart();

  int mFd = -1;
  bool mIsToRead = false;
  unsigned int mFork = 0;  // PCFork::Count when the file was opened
  char* mPath = nullptr;   // owned
  unsigned char* mMap = nullptr;
  unsigned int mMapLength = 0;
  unsigned char* mStart = nullptr;
  unsigned int mStartLength = 0;
};
