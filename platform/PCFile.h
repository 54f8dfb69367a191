// A file that is read and written at any offset.
#pragma once

#include <atomic>

#include "platform/Export.h"

// Offsets and sizes are in bytes. Calls return 1 for success and 0 for failure. Reads are served
// from a shared mapping of the file where one can be had, but for the first ones, else by one
// positioned read; both see at once what this and other processes write. Not thread-safe: the owner
// serialises.
class PCFile {
 public:
  // The modes that Create takes.
  static constexpr int kRead = 1;
  static constexpr int kReadWrite = 2;

  constexpr PCFile() = default;
  ~PCFile() { Destroy(); }
  PCFile(const PCFile&) = delete;
  PCFile& operator=(const PCFile&) = delete;

  // Makes an empty regular file at `path` (mode 0666 less the umask) and leaves it closed. A file
  // that exists is emptied. Makes no directories.
  static int Make(const char* path);

  // Opens an existing regular file for reading, or reading and writing, at position 0; closes first
  // what this object had open. Never makes or empties a file. The whole length found is protected
  // (Protect).
  int Create(const char* path, int mode);
  // Reads go to the system from the next Create on, never to a mapping: for files of a medium that
  // may be taken away, where a mapping would end the process.
  void ReadDirectly() { mDirect = true; }
  // The file is mapped from now on, if it can be, and not after some more reads.
  void MapNow();
  // Reads exactly `size` bytes at the position and moves it; fails when fewer are there (the
  // position then stays). size 0 succeeds.
  int Read(void* buffer, unsigned int size);
  // Where the mapping has them: the bytes at the offset, to be copied at once. Else null. The
  // position stays.
  const unsigned char* ReadMapped(unsigned int offset, unsigned int size) const {
    const unsigned long long end = offset + static_cast<unsigned long long>(size);
    return end > mMapLength || size == 0 ? nullptr : mMap + offset;
  }
  // Writes exactly `size` bytes at the position and moves it; extends the file with zeros up to the
  // position where needed. A failure may leave a part of the bytes written; the position stays.
  int Write(const void* data, unsigned int size);
  // From now on, and until the file is closed, Store may put bytes into the mapping: only where
  // that can never fail, which depends on the file system.
  void AllowStores();
  // Takes all bytes of the file into memory: from now on everything is read there, and written
  // there within its length, until the copy is dropped. Fails when there is no memory for it, or it
  // cannot be read.
  int TakeCopy();
  void DropCopy();
  bool HasCopy() const { return mCopy != nullptr; }
  // As Write, within the file; without a system call where stores are allowed, but for Refresh,
  // unless that was just done by another Store.
  int Store(const void* data, unsigned int size, bool hasLooked = false);
  // Sets the position. Beyond the end succeeds; makes no system call.
  int Seek(unsigned int offset);
  // length > 0: makes the file that long. 0: cuts a grown file back to its protected length.
  int Truncate(unsigned int length);
  // Closes the file. Does nothing when closed.
  int Destroy();
  bool IsOpen() const { return mFd >= 0; }

  // True when the last Create failed because nothing is at the path.
  bool Missing() const;
  // Current length, asked of the system; 0 when closed, 0xFFFFFFFF when it is longer.
  unsigned int Size() const;
  // The same without asking the system while the file is mapped: what this object has seen of it.
  unsigned int KnownLength() const { return mMap != nullptr ? mMapLength : Size(); }
  // Where the next transfer begins; 0xFFFFFFFF when it is farther.
  unsigned int Position() const {
    return mPosition < 0xFFFFFFFF ? static_cast<unsigned int>(mPosition) : 0xFFFFFFFF;
  }
  // Dates the last change of the file now.
  void Touch();
  // Waits until what was written is on the disk, and the length.
  int Sync();
  // Moves the length that Truncate(0) must not cut.
  void Protect(unsigned int length) { mProtected = length; }
  // True when `path` leads to the file that is open here (symbolic links followed).
  bool SameFile(const char* path) const;
  // True when both have the same file open in the same mode, by whatever paths.
  bool SameFile(const PCFile& other) const;
  // What tells the file that is open here from all others: 0 and 0 when it cannot be told.
  void Identity(unsigned long long* device, unsigned long long* number) const;
  // True when other machines may have the file open, too.
  bool IsOnNetwork() const;
  // Exchanges what the two objects have open, with their positions.
  void Swap(PCFile& other);
  // Looks at the length, so that reads up to the next Refresh do not touch a part of the mapping
  // that somebody else has cut off meanwhile; it may be up to 10 milliseconds since. Called at the
  // start of every operation on the file: a system call costs as much as a small change.
  void Refresh();
  // True when the file is mapped, and no shorter than what is mapped of it: the system is asked
  // every few milliseconds. Threads may ask beside each other.
  bool IsFresh() const;
  // Changes every few milliseconds with Refresh and IsFresh.
  unsigned int LookedAt() const { return mLookedAt.load(std::memory_order_relaxed); }
  // Others have made the file longer, or shorter: reads go up to its end, and all of it is
  // protected.
  void Renew();

 private:
  // Refresh, as of now.
  void LookAtLength();
  // A read that the mapped bytes do not serve, or of size 0. Kept out of Read, which is short for
  // it.
  __attribute__((noinline)) int ReadSlowly(void* buffer, unsigned int size);
  // True when the mapping serves a read that ends at `end`; renews the mapping of a grown file.
  bool MappingCovers(unsigned long long end);
  void Map();
  // Maps the file, which is `length` bytes long, in place of the mapping there was.
  void MapAnew(unsigned long long length);
  void DropMapping();

  int mFd = -1;
  int mMode = 0;
  bool mDirect = false;                 // never mapped
  bool mMayStore = false;               // as soon as there is a mapping
  bool mStores = false;                 // into the mapping
  unsigned int mReadsUntilMapped = 0;   // 0: the mapping is there, or cannot be had
  int mError = 0;                       // errno of the last Create, 0 = it succeeded
  unsigned int mProtected = 0;          // bytes
  unsigned int mMapLength = 0;          // bytes that reads may take from mMap
  unsigned int mMapReserved = 0;        // bytes mapped
  const unsigned char* mMap = nullptr;  // null: no mapping; may be written to with mStores
  unsigned char* mCopy = nullptr;       // owned, then mMap is the same
  unsigned long long mPosition = 0;
  mutable std::atomic<unsigned int> mLookedAt{0};  // posix::Tick, of the last look at the length
};
