// What is changed in a registry, by this program or another.
#pragma once

#include <pthread.h>

#include <atomic>
#include <chrono>
#include <functional>

#include "yax/Settings.h"

namespace yax {

// What was done to a key or value.
enum class ChangeKind : unsigned {
  kKeyCreated = YAX_KEY_CREATED,
  kKeyDeleted = YAX_KEY_DELETED,    // with all below it
  kKeyRestored = YAX_KEY_RESTORED,  // anything at the key and below it
  kValueCreated = YAX_VALUE_CREATED,
  kValueSet = YAX_VALUE_SET,
  kValueDeleted = YAX_VALUE_DELETED,
  kDefaultChanged = YAX_DEFAULT_CHANGED,
  kRightsChanged = YAX_RIGHTS_CHANGED,
  kWatchBitsChanged = YAX_WATCH_BITS_CHANGED,
  kCompacted = YAX_COMPACTED,
};

// The texts are the watch's, until it is asked for the next change.
struct Change {
  ChangeKind kind;        // what was done
  std::string_view path;  // of the key, from the root; "" is the root
  std::string_view name;  // of the value; "" where none is concerned
};

// Tells the changes of a key, which need not be there, and of all below it, from now on.
//
//   yax::Watch watch(registry["network"]);
//   while (auto change = watch.Next()) Use(change->path, change->name);
//
// For one thread at a time.
class Watch {
 public:
  // As long as it takes.
  static constexpr std::chrono::milliseconds kForever{YAX_FOREVER};

  // status() tells how that went.
  explicit Watch(const Key& key) {
    yax_watch* watch = nullptr;
    status_ = yax_watch_key(key.get(), &watch);
    watch_.reset(watch);
    if (status_.ok()) path_ = key.path();
  }

  // Whether it has begun; if not, Next answers YAX_BAD_ARGUMENT.
  Status status() const { return status_; }
  // The next change; waits for it. YAX_NO_DATA: there was none in the time. YAX_LIMIT: so much was
  // changed that some of it is not known; look at everything that matters and go on.
  Result<Change> Next(std::chrono::milliseconds timeout = kForever) {
    const auto count = timeout.count();
    const unsigned milliseconds = count < 0             ? 0
                                  : timeout >= kForever ? YAX_FOREVER
                                                        : static_cast<unsigned>(count);
    yax_change change = {};
    const Status result = yax_watch_next(watch_.get(), milliseconds, &change);
    if (!result) return result;
    return Change{static_cast<ChangeKind>(change.kind), change.path, change.name};
  }
  // Calls heard(const Change&) for each change that there is, and does not wait: for a loop that
  // polls Registry::ChangeDescriptor. What is not known any more is told as one change, anything at
  // the key and below it (kKeyRestored). A failure is told when Next tells one.
  template <class Heard>
  Status Tell(Heard heard) {
    Status told = TellNext(heard, std::chrono::milliseconds(0));
    while (told) told = TellNext(heard, std::chrono::milliseconds(0));
    return told == Status(YAX_NO_DATA) ? Status() : told;
  }
  // The same for the next change alone, which it waits for like Next: YAX_NO_DATA.
  template <class Heard>
  Status TellNext(Heard& heard, std::chrono::milliseconds timeout) {
    const Result<Change> next = Next(timeout);
    const bool isUnknown = next.status() == Status(YAX_LIMIT);
    if (!next && !isUnknown) return next.status();
    heard(isUnknown ? Change{ChangeKind::kKeyRestored, path_, ""} : *next);
    return YAX_OK;
  }

  yax_watch* get() const { return watch_.get(); }  // for the C interface; this object's

 private:
  struct Free {
    void operator()(yax_watch* watch) const { yax_watch_free(watch); }
  };

  std::unique_ptr<yax_watch, Free> watch_;
  Status status_;
  std::string path_;
};

// Calls a function for each change of a key and of all below it, in a thread of its own, from now
// on until its end, which waits up to a fifth of a second for the thread.
//
//   yax::WatchThread network(registry["network"], [](const yax::Change& c) { Use(c.path); });
//
// It must end before the registry does, and not within the function. What is not known any more is
// told as by Watch::Tell.
class WatchThread {
 public:
  // Called by the thread; may use the registry, but not wait for a thread that has a transaction.
  using Heard = std::function<void(const Change& change)>;

  // status() tells how that went. YAX_NO_MEMORY: there is no thread.
  WatchThread(const Key& key, Heard heard) : watch_(key), heard_(std::move(heard)) {
    status_ = watch_.status();
    if (!status_.ok()) return;
    isRunning_ = pthread_create(&thread_, nullptr, Run, this) == 0;
    if (!isRunning_) status_ = YAX_NO_MEMORY;
  }
  WatchThread(const WatchThread&) = delete;
  WatchThread& operator=(const WatchThread&) = delete;
  ~WatchThread() {
    isEnding_ = true;
    if (isRunning_) pthread_join(thread_, nullptr);
  }

  // Whether it has begun.
  Status status() const { return status_; }

 private:
  static constexpr std::chrono::milliseconds kSlice{200};  // between two looks at isEnding_

  static void* Run(void* self) {
    static_cast<WatchThread*>(self)->TellAll();
    return nullptr;
  }
  void TellAll() {
    while (!isEnding_) {
      const Status told = watch_.TellNext(heard_, kSlice);
      if (!told && told != Status(YAX_NO_DATA)) return;  // the registry was closed
    }
  }

  Watch watch_;
  Heard heard_;
  Status status_;
  pthread_t thread_ = {};
  bool isRunning_ = false;
  std::atomic<bool> isEnding_{false};
};

}  // namespace yax
