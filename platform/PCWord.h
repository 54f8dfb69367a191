// Words of memory that several processes have mapped.
#pragma once

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define YAX_WITHOUT_FENCES
#endif
#elif defined(__SANITIZE_THREAD__)
#define YAX_WITHOUT_FENCES
#endif

// Loads and stores are whole; whoever sees a stored word sees what was stored before it. The words
// lie at multiples of four bytes.
class PCWord {
 public:
  static unsigned int Load(const unsigned int* word) {
    return __atomic_load_n(word, __ATOMIC_ACQUIRE);
  }
  // The same, and never before an earlier Store of the thread.
  static unsigned int LoadInOrder(const unsigned int* word) {
    return __atomic_load_n(word, __ATOMIC_SEQ_CST);
  }
  static void Store(unsigned int* word, unsigned int value) {
    __atomic_store_n(word, value, __ATOMIC_SEQ_CST);
  }
  static unsigned int Exchange(unsigned int* word, unsigned int value) {
    return __atomic_exchange_n(word, value, __ATOMIC_SEQ_CST);
  }
  // Stores `value` where `expected` stood. False, with nothing stored, where something else stood.
  static bool Replace(unsigned int* word, unsigned int expected, unsigned int value) {
    return __atomic_compare_exchange_n(word, &expected, value, false, __ATOMIC_SEQ_CST,
                                       __ATOMIC_RELAXED);
  }
  // Loads the word after everything that was read before the call.
  static unsigned int LoadBehindReads(const unsigned int* word) {
    FenceReads();
    return Load(word);
  }
  // Stores the word before anything that is written after the call.
  static void StoreBeforeWrites(unsigned int* word, unsigned int value);

  // Sleeps while the word is `value`: until somebody wakes those who wait for it, a signal comes or
  // the time is over. May return early.
  static void Wait(const unsigned int* word, unsigned int value, unsigned int milliseconds);
  // Wakes one who waits for the word, or all.
  static void WakeOne(const unsigned int* word);
  static void WakeAll(const unsigned int* word);
  // Milliseconds since some moment, which no setting of the clock changes.
  static unsigned long long Now();
  // Seconds since 1970, as the clock is set, modulo 2^32.
  static unsigned int Date();

 private:
  // The thread sanitizer knows no fences; what this one orders is memory of other processes.
  static void FenceReads() {
#ifndef YAX_WITHOUT_FENCES
    __atomic_thread_fence(__ATOMIC_ACQUIRE);
#endif
  }
};
