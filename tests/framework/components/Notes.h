// What the components of the tests tell about themselves. It lies in a shared object of its own,
// which the components and the tests share, and outlives the components.
#pragma once

#include <atomic>
#include <functional>
#include <initializer_list>

#include "framework/YAX_GUID_ST.h"

struct ComponentNotes {
  // ---- told by the components
  std::atomic<unsigned int> opened{0};
  std::atomic<unsigned int> closed{0};
  std::atomic<unsigned int> entered{0};  // calls of EntryFn_getFactory
  std::atomic<unsigned int> asked{0};    // calls of EntryFn_canUnloadNow
  std::atomic<unsigned int> factoriesMade{0};
  std::atomic<unsigned int> factoryReleases{0};
  std::atomic<unsigned int> factoriesGone{0};
  std::atomic<unsigned int> lastLock{0};  // what LockBinary was told
  // What the framework answered to a component that called it, call by call.
  static constexpr unsigned int kAnswers = 8;
  std::atomic<unsigned int> answers[kAnswers] = {};

  // ---- told to the components
  std::atomic<unsigned int> refusal{0};  // what EntryFn_canUnloadNow answers, where it asks here
  std::function<void()> whenAsked;       // runs in EntryFn_canUnloadNow, where it asks here
  YAX_GUID_ST self = {};                 // identifiers under which they are registered
  YAX_GUID_ST other = {};

  void Reset() {
    for (std::atomic<unsigned int>* note :
         {&opened, &closed, &entered, &asked, &factoriesMade, &factoryReleases, &factoriesGone,
          &lastLock, &refusal}) {
      *note = 0;
    }
    for (std::atomic<unsigned int>& answer : answers) answer = 0xFFFFFFFF;
    whenAsked = nullptr;
    self = {};
    other = {};
  }
};

__attribute__((visibility("default"))) ComponentNotes& Notes();
