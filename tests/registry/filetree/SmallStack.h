// Runs a piece of a test on a thread with a stack of 256 KB.
#pragma once

#include <gtest/gtest.h>
#include <pthread.h>

template <class Body>
void OnSmallStack(Body body) {
  pthread_attr_t attributes;
  ASSERT_EQ(0, pthread_attr_init(&attributes));
  ASSERT_EQ(0, pthread_attr_setstacksize(&attributes, 256 * 1024));
  pthread_t thread;
  const auto run = [](void* argument) -> void* {
    (*static_cast<Body*>(argument))();
    return nullptr;
  };
  const int started = pthread_create(&thread, &attributes, run, &body);
  pthread_attr_destroy(&attributes);
  ASSERT_EQ(0, started);
  ASSERT_EQ(0, pthread_join(thread, nullptr));
}
