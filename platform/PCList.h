// A doubly linked list with one cursor.
#pragma once

#include <type_traits>

#include "platform/Export.h"
#include "platform/PCMutex.h"

// Elements are either pointers, which the list only keeps, or copies of bytes, which it owns. Calls
// return 1 for success and 0 for failure. Each call is safe from any thread; a walk with the cursor
// is made safe with Lock and Unlock.
class YAX_API PCList {
 public:
  // What Seek counts from; the values are part of the binary interface.
  enum Origin : int { First = 0, Current = 1, Last = 2 };
  // Where Add puts an element; the values are part of the binary interface.
  enum Where : int { AtFront = 0, AtEnd = 1 };

  PCList() = default;
  ~PCList() { Destroy(); }
  PCList(const PCList&) = delete;
  PCList& operator=(const PCList&) = delete;

  // Makes the internal lock; the list is empty. On a created list: 1, content kept.
  int Create();
  bool IsCreated() const { return mLock.IsCreated(); }
  unsigned int Count() const;

  // Keeps the pointer `element`; it stays the caller's. 0 when the list was not created or there is
  // no memory.
  int Add(void* element, int where);
  // Copies the 8-byte integer at `element`.
  template <class T>
  typename std::enable_if<std::is_integral<T>::value && sizeof(T) == 8, int>::type Add(
      const T* element, int where) {
    return AddCopy(element, sizeof(T), where);
  }
  // Copies `size` bytes; the list owns the copy. Fails as Add does.
  int AddCopy(const void* bytes, unsigned int size, int where);
  // Appends copies of `count` elements of `size` bytes each, which lie one behind the other at
  // `bytes`: all of them, with nothing in between, or none. Fails as Add does.
  int AddCopies(const void* bytes, unsigned int size, unsigned int count);

  // Moves the cursor to the element `offset` steps from `origin`. 1: it stands on an element. 0:
  // there is none; the cursor then stands on nothing.
  int Seek(int offset, int origin);
  // The element under the cursor: the pointer that was added, or the address of the list's copy
  // (aligned for any 8-byte type). Null when the cursor stands on nothing.
  void* Data();
  // Takes the element under the cursor out and frees the list's own copy of it; the cursor moves to
  // the next element. 0 when the cursor stands on nothing.
  int Delete();
  // Takes all elements out, frees the list's own copies, and gives the lock back. Returns 1.
  int Destroy();

  // Hold the list across several calls; recursive.
  void Lock() { mLock.Take(); }
  void Unlock() { mLock.Give(); }

 private:
  struct Node;
  int Link(Node* node, int where);

  Node* mFirst = nullptr;
  Node* mLast = nullptr;
  Node* mCursor = nullptr;
  unsigned int mCount = 0;
  mutable PCMutex mLock;
};
