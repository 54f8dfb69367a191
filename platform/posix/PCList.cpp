#include "platform/PCList.h"

#include <cstddef>
#include <new>

#include "platform/PCMem.h"

// The bytes of a copied element follow the node in one block of memory; the alignment makes them
// start where any 8-byte type may.
struct alignas(8) PCList::Node {
  Node* next;
  Node* previous;
  void* element;
};

namespace {

constexpr unsigned int kMaxCopy = 0x7FFFFFFF - 64;  // bytes; with a node still one allocation

// A node with a copy of the bytes behind it. Null: no memory.
template <class Node>
Node* CopyOf(const void* bytes, unsigned int size) {
  void* memory = ::operator new(sizeof(Node) + size, std::nothrow);
  if (memory == nullptr) return nullptr;
  Node* node = new (memory) Node{nullptr, nullptr, nullptr};
  node->element = node + 1;
  PCMem::Copy(node->element, bytes, size);
  return node;
}

}  // namespace

int PCList::Create() {
  return IsCreated() ? 1 : mLock.Create();
}

unsigned int PCList::Count() const {
  PCMutexGuard guard(mLock);
  return mCount;
}

int PCList::Add(void* element, int where) {
  if (!IsCreated()) return 0;
  void* memory = ::operator new(sizeof(Node), std::nothrow);
  if (memory == nullptr) return 0;
  return Link(new (memory) Node{nullptr, nullptr, element}, where);
}

int PCList::AddCopy(const void* bytes, unsigned int size, int where) {
  if (!IsCreated() || size > kMaxCopy || (bytes == nullptr && size > 0)) return 0;
  Node* node = CopyOf<Node>(bytes, size);
  return node != nullptr ? Link(node, where) : 0;
}

int PCList::AddCopies(const void* bytes, unsigned int size, unsigned int count) {
  if (!IsCreated() || size > kMaxCopy || (bytes == nullptr && size > 0 && count > 0)) return 0;
  const unsigned char* from = static_cast<const unsigned char*>(bytes);
  Node* made = nullptr;  // of all elements, before any is in the list
  for (unsigned int i = count; i > 0; --i) {
    Node* node =
        CopyOf<Node>(size > 0 ? from + static_cast<std::size_t>(i - 1) * size : from, size);
    if (node != nullptr) {
      node->next = made;
      made = node;
      continue;
    }
    while (made != nullptr) {
      Node* next = made->next;
      ::operator delete(made);
      made = next;
    }
    return 0;
  }
  PCMutexGuard guard(mLock);
  while (made != nullptr) {
    Node* next = made->next;
    Link(made, AtEnd);
    made = next;
  }
  return 1;
}

int PCList::Link(Node* node, int where) {
  PCMutexGuard guard(mLock);
  const bool front = where == AtFront;
  node->previous = front ? nullptr : mLast;
  node->next = front ? mFirst : nullptr;
  (node->previous != nullptr ? node->previous->next : mFirst) = node;
  (node->next != nullptr ? node->next->previous : mLast) = node;
  ++mCount;
  return 1;
}

int PCList::Seek(int offset, int origin) {
  PCMutexGuard guard(mLock);
  Node* node = nullptr;
  if (origin == First) node = mFirst;
  if (origin == Current) node = mCursor;
  if (origin == Last) node = mLast;
  for (; node != nullptr && offset > 0; --offset) node = node->next;
  for (; node != nullptr && offset < 0; ++offset) node = node->previous;
  mCursor = node;
  return node != nullptr ? 1 : 0;
}

void* PCList::Data() {
  PCMutexGuard guard(mLock);
  return mCursor != nullptr ? mCursor->element : nullptr;
}

int PCList::Delete() {
  PCMutexGuard guard(mLock);
  Node* node = mCursor;
  if (node == nullptr) return 0;
  mCursor = node->next;
  (node->previous != nullptr ? node->previous->next : mFirst) = node->next;
  (node->next != nullptr ? node->next->previous : mLast) = node->previous;
  --mCount;
  ::operator delete(node);
  return 1;
}

int PCList::Destroy() {
  {
    PCMutexGuard guard(mLock);
    mCursor = mFirst;
    while (Delete() != 0) {
    }
  }
  mLock.Destroy();
  return 1;
}
