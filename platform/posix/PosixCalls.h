// Every system call on files that the library makes, except those of the mappings (FileMapping.h).
//
// The functions keep no state, and each repeats a call that a signal interrupted. PCFile and
// PCSideFile decide everything else, so another implementation can be linked in place of
// PosixCalls.cpp, for instance one whose calls fail.
#pragma once

namespace posix {

// Opens an existing file for reading and writing; it never waits, whatever kind of file it is.
// Returns the descriptor (never 0, 1 or 2; closed on exec), or -errno.
int Open(const char* path);
// The same for reading alone; `follows`: also what a symbolic link at the path leads to.
int OpenToRead(const char* path, bool follows);
// Opens the file for writing, made with mode 0666 less the umask where there is none, and empties
// it. Returns as Open does.
int OpenEmpty(const char* path);
// Opens a file for reading and writing that is made with mode 0666 less the umask where there is
// none; an existing one keeps its bytes. A symbolic link at the path is not followed. Returns as
// Open does.
int OpenOrMake(const char* path);
// Makes a file for reading and writing at a path where nothing is, with the mode less the umask.
// Returns as Open does.
int MakeNew(const char* path, unsigned int mode = 0666);
// Closes the descriptor, which is gone afterwards in any case. False when the system reports that
// something written before was lost.
bool Close(int fd);

// True for a regular file; false also when the system cannot tell.
bool IsRegular(int fd);
// The file's length in bytes, or -1. Moves the descriptor's own offset, which nothing else uses.
long long Length(int fd);
// A number that changes every few milliseconds, 10 at most. Makes no system call.
unsigned long long Tick();
// True when `path` leads to the file that `fd` is open on.
bool SameFile(int fd, const char* path);
// The same of two descriptors.
bool SameFile(int fd, int other);
// Two numbers that no other file of the machine has at the same time. Left as they are when the
// system cannot tell.
void Identify(int fd, unsigned long long* device, unsigned long long* number);

// Reads up to `size` bytes at `offset`. Returns how many came, 0 at the end of the file, -1 on
// failure.
long PositionedRead(int fd, void* buffer, unsigned int size, unsigned long long offset);
// Writes up to `size` bytes at `offset`. Returns how many went, -1 on failure.
long PositionedWrite(int fd, const void* data, unsigned int size, unsigned long long offset);
// Makes the file `length` bytes long.
bool Truncate(int fd, unsigned int length);
// Makes the file at least `length` bytes long, with blocks of the disk for all of them.
bool Allocate(int fd, unsigned int length);
// True when the file system never needs more room to write over a part of a file that has its
// blocks: what is stored into a mapping of such a file cannot fail for want of room.
bool WritesInPlace(int fd);
// True when the file is another machine's, or one that other machines may have open: their memory
// is not shared with this one's.
bool IsOnNetwork(int fd);
// Tells a number that is another one as soon as another file is at the path, or the file was
// changed by a system call or a new mapping; 0: nothing is there. *isYoung becomes true where a
// change that follows soon might not show.
unsigned long long StateOf(const char* path, bool* isYoung);
// Dates the last change of the file now.
void Touch(int fd);
// Waits until what was written to the file is on the disk, and its length.
bool SyncData(int fd);

// Makes the file this descriptor's alone until it is closed: 0, EWOULDBLOCK when it is another's,
// or errno where there are no locks.
int TryLock(int fd);
// How a place of a file is held, by an open file: until the last of its descriptors is closed.
enum class Holding { kNone, kShared, kAlone };
// Holds one byte of the file, which need not be there, in place of how it was held here: 0, EAGAIN
// when others keep it from being held this way, or errno where there are no such locks. Never
// waits.
int Hold(int fd, unsigned long long offset, Holding how);
// True when another open file holds the byte.
bool IsHeld(int fd, unsigned long long offset);
// Sleeps.
void Pause(unsigned int microseconds);
// Gives the file the owner, the group and the rights to read and write of the file at `model`, as
// far as the system allows it.
void TakeRightsOf(int fd, const char* model);
// Gives the file exactly the owner, the group and the mode of the file at `model`. Returns 0 or
// errno.
int CopyRights(int fd, const char* model);

// Gives the file at `from` the name `to`, which nothing else may have. Returns 0 or errno.
int Link(const char* from, const char* to);
// How Move treats what has the name already.
enum class Moving {
  kReplace,   // it goes
  kNew,       // it stays: EEXIST
  kExchange,  // it gets the other name
};
// Gives the file at `from` the name `to` in one step. Returns 0 or errno; EINVAL or ENOSYS when the
// file system cannot do it this way.
int Move(const char* from, const char* to, Moving how);
bool Remove(const char* path);
// Waits until the names in the folder of `path` are on the disk.
bool SyncFolderOf(const char* path);
// Writes the path without symbolic links, ended by 0. False when nothing is there, or for more than
// `capacity` bytes.
bool RealPath(const char* path, char* real, unsigned int capacity);
// Writes the path that the symbolic link at `path` leads to, seen from where `path` is seen, ended
// by 0. Returns 0 or errno: EINVAL for what is no link, ENAMETOOLONG for more than `capacity`
// bytes.
int LinkTarget(const char* path, char* target, unsigned int capacity);
// Writes the 16 bytes that the system has drawn when it was started. Asks it once; one thread at a
// time.
bool BootId(unsigned char (&id)[16]);

}  // namespace posix
