// A file's bytes as memory. The build links one of two implementations: FileMapping.cpp, or
// FileMappingNone.cpp, which never maps.
#pragma once

namespace posix {

// Maps the first `size` bytes of the file, more than 0, for reading; what anybody writes to the
// file shows at once. The mapping may reach beyond the end of the file, but only bytes of the file
// may be touched. Null when it cannot be had, and for a file with holes.
const unsigned char* Map(int fd, unsigned int size);
// Lets what Map returned for the same `size` be written to, too. False when it cannot be.
bool AllowWrites(const unsigned char* bytes, unsigned int size);
// Maps the first `size` bytes of a file of our own for reading, and for writing if that is wanted.
// The file has blocks of the disk for all of them, and nobody makes it shorter. Null when it cannot
// be had.
unsigned char* MapShared(int fd, unsigned int size, bool mayWrite);
// Gives back what Map or MapShared returned for the same `size`.
void Unmap(const unsigned char* bytes, unsigned int size);

}  // namespace posix
