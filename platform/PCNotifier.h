// A descriptor for event loops that a thread makes readable.
#pragma once

#include <atomic>

// Start, Stop and the rest are called by one thread at a time.
class PCNotifier {
 public:
  // Waits for some time for what there is to tell; not 0: it has come. Called again and again, by
  // the thread.
  using Waiting = int (*)(void* context);
  // Makes a Waiting that waits return early.
  using Waking = void (*)(void* context);

  PCNotifier() = default;
  PCNotifier(const PCNotifier&) = delete;
  PCNotifier& operator=(const PCNotifier&) = delete;

  // Begins. 1, or 0 with nothing begun.
  int Start(Waiting wait, Waking wake, void* context);
  // Ends the thread and closes the descriptor. A process that was forked has neither.
  void Stop();
  // Can be read when `wait` has told something since Clear; -1 when there is none.
  int Descriptor() const;
  void Clear();

 private:
  static void* Run(void* notifier);

  Waiting mWait = nullptr;
  Waking mWake = nullptr;
  void* mContext = nullptr;
  int mFd = -1;
  unsigned int mFork = 0;
  unsigned long mThread = 0;
  std::atomic<bool> mIsEnding{false};
  std::atomic<bool> mIsOver{false};
};
