// A harness is a function that does something with an input: what it may answer is told by
// assertions of GoogleTest, which end the program here.
#pragma once

#include "fuzz/support/Bytes.h"

namespace fuzz {

using Run = void (*)(Bytes& in);

// One of the harnesses of this program, by its name.
class Harness {
 public:
  Harness(const char* name, Run run) : name_(name), run_(run), next_(first_) { first_ = this; }
  Harness(const Harness&) = delete;
  Harness& operator=(const Harness&) = delete;

  // Null if there is none.
  static const Harness* Find(const std::string& name);
  // The only one of a program for the fuzzer.
  static const Harness* First() { return first_; }
  void operator()(const unsigned char* data, size_t size) const {
    Bytes in(data, size);
    run_(in);
  }

 private:
  static const Harness* first_;

  const char* name_;
  Run run_;
  const Harness* next_;
};

// To be called once, before the first input: temporary folders lie in memory, and an assertion that
// does not hold ends the program.
void Prepare(int* argc, char** argv);

}  // namespace fuzz
