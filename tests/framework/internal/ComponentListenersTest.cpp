#include <gtest/gtest.h>

#include <string>

#include "framework/YAXStatus.h"
#include "framework/internal/ComponentListeners.h"

namespace {

constexpr YAX_GUID_ST kComponent = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};

// Its name goes into what all have heard.
struct Listening {
  std::string name;
  std::string* heard;
  ComponentListeners* listeners = nullptr;  // in which the next one is removed
  Listening* next = nullptr;

  static void Hear(void* context, YAX_COMPONENT_EVENT_ENUM event, const YAX_GUID_ST& clsid) {
    Listening& self = *static_cast<Listening*>(context);
    EXPECT_TRUE(kComponent == clsid);
    *self.heard += self.name + std::to_string(event) + " ";
    if (self.next != nullptr) {
      EXPECT_EQ(yax_framework::kOk, self.listeners->Remove(Hear, self.next));
      self.next = nullptr;
    }
  }
};

TEST(ComponentListenersTest, AreCalledInTheirOrder) {
  std::string heard;
  Listening a{"a", &heard};
  Listening b{"b", &heard};
  Listening c{"c", &heard};
  ComponentListeners listeners;
  for (Listening* one : {&a, &b, &c}) {
    EXPECT_EQ(yax_framework::kOk, listeners.Add(Listening::Hear, one));
  }
  listeners.Tell(YAX_COMPONENT_LOADED, kComponent);
  EXPECT_EQ("a2 b2 c2 ", heard);
  EXPECT_EQ(yax_framework::kOk, listeners.Remove(Listening::Hear, &b));
  EXPECT_EQ(yax_framework::kBadArgument, listeners.Remove(Listening::Hear, &b));
  heard.clear();
  listeners.Tell(YAX_COMPONENT_UNREGISTERED, kComponent);
  EXPECT_EQ("a1 c1 ", heard);
}

TEST(ComponentListenersTest, OneMayRemoveAnotherWhileItIsCalled) {
  std::string heard;
  ComponentListeners listeners;
  Listening b{"b", &heard};
  Listening a{"a", &heard, &listeners, &b};
  EXPECT_EQ(yax_framework::kOk, listeners.Add(Listening::Hear, &a));
  EXPECT_EQ(yax_framework::kOk, listeners.Add(Listening::Hear, &b));
  listeners.Tell(YAX_COMPONENT_UNLOADED, kComponent);
  listeners.Tell(YAX_COMPONENT_UNLOADED, kComponent);
  EXPECT_EQ("a3 b3 a3 ", heard);
}

}  // namespace
