// Who wants to hear what happens to components. Internal.
#pragma once

#include <mutex>

#include "framework/YAXRecords.h"

// Statuses of IYAXCatalogue. Operations are for any thread.
class ComponentListeners {
 public:
  unsigned int Add(YAX_COMPONENT_LISTENER_FN function, void* context);
  unsigned int Remove(YAX_COMPONENT_LISTENER_FN function, void* context);
  // Calls all of them, in the order in which they came. Holds no lock meanwhile: they may add and
  // remove each other.
  void Tell(YAX_COMPONENT_EVENT_ENUM event, const YAX_GUID_ST& clsid);

 private:
  struct Listener {
    YAX_COMPONENT_LISTENER_FN function;
    void* context;
  };

  Listener listeners_[kYAXListenerMax] = {};
  unsigned int count_ = 0;
  std::mutex lock_;
};
