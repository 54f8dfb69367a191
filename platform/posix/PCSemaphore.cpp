#include "platform/PCSemaphore.h"

#include <semaphore.h>

#include <cerrno>
#include <new>

struct PCSemaphore::Impl {
  sem_t sem;
};

PCSemaphore::~PCSemaphore() {
  Destroy();
}

int PCSemaphore::Create(unsigned int initialCount) {
  Destroy();
  Impl* made = new (std::nothrow) Impl;
  if (made == nullptr) return 0;
  if (sem_init(&made->sem, 0, initialCount) != 0) {
    delete made;
    return 0;
  }
  mImpl = made;
  return 1;
}

int PCSemaphore::Take() {
  if (mImpl == nullptr) return 0;
  int result = sem_wait(&mImpl->sem);
  while (result != 0 && errno == EINTR) result = sem_wait(&mImpl->sem);
  return result == 0 ? 1 : 0;
}

int PCSemaphore::TryTake() {
  if (mImpl == nullptr) return 0;
  int result = sem_trywait(&mImpl->sem);
  while (result != 0 && errno == EINTR) result = sem_trywait(&mImpl->sem);
  return result == 0 ? 1 : 0;
}

// sem_post touches the semaphore no more once a waiter can pass, so that waiter may free it.
int PCSemaphore::Give() {
  if (mImpl == nullptr) return 0;
  return sem_post(&mImpl->sem) == 0 ? 1 : 0;
}

int PCSemaphore::Destroy() {
  if (mImpl == nullptr) return 1;
  sem_destroy(&mImpl->sem);
  delete mImpl;
  mImpl = nullptr;
  return 1;
}
