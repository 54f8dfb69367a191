// What libFuzzer calls.
#include "fuzz/support/Harness.h"

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size);

int LLVMFuzzerInitialize(int*, char*** argv) {
  int one = 1;
  fuzz::Prepare(&one, *argv);
  return 0;
}

int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size) {
  (*fuzz::Harness::First())(data, size);
  return 0;
}
