// Every system call that PCFile makes, except those of the mapping (FileMapping.h).
//
// The functions keep no state, and each repeats a call that a signal interrupted. PCFile decides
// everything else, so another implementation can be linked in place of PosixCalls.cpp, for instance
// one whose calls fail.
#pragma once

namespace posix {

// Opens an existing file for reading and writing; it never waits, whatever kind of file it is.
// Returns the descriptor (never 0, 1 or 2; closed on exec), or -errno.
int Open(const char* path);
// Opens the file for writing, made with mode 0666 less the umask where there is none, and empties
// it. Returns as Open does.
int OpenEmpty(const char* path);
// Closes the descriptor, which is gone afterwards in any case. False when the system reports that
// something written before was lost.
bool Close(int fd);

// True for a regular file; false also when the system cannot tell.
bool IsRegular(int fd);
// The file's length in bytes, or -1. Moves the descriptor's own offset, which nothing else uses.
long long Length(int fd);
// True when `path` leads to the file that `fd` is open on.
bool SameFile(int fd, const char* path);
// The same of two descriptors.
bool SameFile(int fd, int other);

// Reads up to `size` bytes at `offset`. Returns how many came, 0 at the end of the file, -1 on
// failure.
long PositionedRead(int fd, void* buffer, unsigned int size, unsigned long long offset);
// Writes up to `size` bytes at `offset`. Returns how many went, -1 on failure.
long PositionedWrite(int fd, const void* data, unsigned int size, unsigned long long offset);
// Makes the file `length` bytes long.
bool Truncate(int fd, unsigned int length);

}  // namespace posix
