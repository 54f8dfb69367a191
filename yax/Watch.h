// What is changed in a registry, by this program or another.
#pragma once

#include <chrono>

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

  yax_watch* get() const { return watch_.get(); }  // for the C interface; this object's

 private:
  struct Free {
    void operator()(yax_watch* watch) const { yax_watch_free(watch); }
  };

  std::unique_ptr<yax_watch, Free> watch_;
  Status status_;
};

}  // namespace yax
