#include "platform/PCNotifier.h"

#include <pthread.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "platform/PCFork.h"

namespace {

constexpr unsigned int kStack = 256 * 1024;  // bytes

}  // namespace

int PCNotifier::Descriptor() const {
  return mFd >= 0 && mFork == PCFork::Count() ? mFd : -1;
}

// Signals are for the threads of the program.
int PCNotifier::Start(Waiting wait, Waking wake, void* context) {
  mWait = wait;
  mWake = wake;
  mContext = context;
  mIsEnding = false;
  mIsOver = false;
  mFork = PCFork::Count();
  mFd = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (mFd < 0) return 0;
  PCFork::CloseInChild(mFd);
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_t thread;
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kStack);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  const int started = pthread_create(&thread, &attributes, Run, this);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  pthread_attr_destroy(&attributes);
  if (started == 0) {
    mThread = static_cast<unsigned long>(thread);
    return 1;
  }
  mIsOver = true;
  PCFork::Forget(mFd);
  close(mFd);
  mFd = -1;
  return 0;
}

void* PCNotifier::Run(void* notifier) {
  auto* self = static_cast<PCNotifier*>(notifier);
  const unsigned long long one = 1;
  while (!self->mIsEnding) {
    if (self->mWait(self->mContext) == 0) continue;
    const ssize_t written = write(self->mFd, &one, sizeof one);
    static_cast<void>(written);  // what cannot be added to is readable
  }
  self->mIsOver = true;
  return nullptr;
}

// The thread may be just about to wait.
void PCNotifier::Stop() {
  if (Descriptor() < 0) {
    mFd = -1;
    return;
  }
  mIsEnding = true;
  while (!mIsOver) {
    mWake(mContext);
    usleep(200);
  }
  pthread_join(static_cast<pthread_t>(mThread), nullptr);
  PCFork::Forget(mFd);
  close(mFd);
  mFd = -1;
}

void PCNotifier::Clear() {
  unsigned long long count = 0;
  if (Descriptor() < 0) return;
  const ssize_t got = read(mFd, &count, sizeof count);
  static_cast<void>(got);  // nothing to read: it is clear
}
