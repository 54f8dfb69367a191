#include "framework/internal/ComponentListeners.h"

#include <algorithm>

#include "framework/YAXStatus.h"

unsigned int ComponentListeners::Add(YAX_COMPONENT_LISTENER_FN function, void* context) {
  if (function == nullptr) return yax_framework::kBadArgument;
  const std::lock_guard<std::mutex> guard(lock_);
  if (count_ == kYAXListenerMax) return yax_framework::kNoMemory;
  listeners_[count_++] = {function, context};
  return yax_framework::kOk;
}

unsigned int ComponentListeners::Remove(YAX_COMPONENT_LISTENER_FN function, void* context) {
  const std::lock_guard<std::mutex> guard(lock_);
  Listener* const end = listeners_ + count_;
  Listener* const found = std::find_if(listeners_, end, [&](const Listener& one) {
    return one.function == function && one.context == context;
  });
  if (found == end) return yax_framework::kBadArgument;
  std::copy(found + 1, end, found);
  --count_;
  return yax_framework::kOk;
}

void ComponentListeners::Tell(YAX_COMPONENT_EVENT_ENUM event, const YAX_GUID_ST& clsid) {
  Listener listeners[kYAXListenerMax];
  unsigned int count = 0;
  {
    const std::lock_guard<std::mutex> guard(lock_);
    count = count_;
    std::copy(listeners_, listeners_ + count_, listeners);
  }
  for (unsigned int i = 0; i < count; ++i)
    listeners[i].function(listeners[i].context, event, clsid);
}
