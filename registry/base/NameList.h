// The names that a listing hands out.
#pragma once

#include "platform/Export.h"

namespace tamu::registry {

// Flags of a listing of keys. With path: the path, as it was given, is put before each name,
// with nothing between them.
constexpr unsigned int kListWithPath = 1;

// Owns its names. A name that is taken over is an array of char from new[]; copies lie behind each
// other in a few blocks.
class YAX_API NameList {
 public:
  // Makes room for `capacity` names. When the memory cannot be had the capacity is 0.
  explicit NameList(unsigned int capacity);
  ~NameList();
  NameList(const NameList&) = delete;
  NameList& operator=(const NameList&) = delete;

  // Appends a name and its tag and takes the name over. 0; kNoMemory when the capacity is 0; kLimit
  // when the list is full. After a failure the name is still the caller's.
  unsigned int AddName(char* name, unsigned long long tag);
  // Appends a copy of the name, of `most` bytes of it at most, with tag 0. kNoMemory, kLimit.
  unsigned int AddCopy(const char* name, unsigned int most = 0xFFFFFFFF);
  // Appends a name with tag 0 whose `length` characters and terminator the caller writes to *place,
  // before anything else is done with the list; up to `slack` bytes behind them may be written
  // over, too. kNoMemory, kLimit: there is no name.
  YAX_LOCAL unsigned int AddSpace(unsigned int length, unsigned int slack, char** place);
  // The name at `index`, which stays the list's, and its tag (unless `tag` is null). Null for an
  // index beyond the last name; the tag is then untouched.
  char* GetName(unsigned int index, unsigned long long* tag) const;

  // Drops the names from `first` on, and what memory only they needed.
  void CutTo(unsigned int first);

  // How many names there are, and may be.
  unsigned int Count() const { return count; }
  unsigned int Capacity() const { return capacity; }

 private:
  // Has room for `size` bytes behind it.
  struct Block {
    Block* before;
    unsigned int size;
    unsigned int used;
    char* Bytes() { return reinterpret_cast<char*>(this + 1); }
    YAX_LOCAL bool Has(const char* name) const;
  };

  YAX_LOCAL bool MakeRoom(unsigned int size);
  YAX_LOCAL bool IsCopy(const char* name) const;
  YAX_LOCAL void FreeNewestBlock();

  Block* blocks_ = nullptr;  // the newest
  unsigned int count = 0;
  unsigned int capacity = 0;  // names; fixed
  unsigned int taken = 0;     // names that are no copies
  char** names = nullptr;
  unsigned long long* tags = nullptr;
};

}  // namespace tamu::registry
