// The interface of a component that knows none of the framework's headers.
#pragma once

#include "../IndependentYAX.h"

constexpr independent::Guid kAdder = {{0xAD, 0xDE, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}};
constexpr independent::Guid kAdderInterface = {
    {0xAE, 0xDE, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}};

class Adder {
 public:
  virtual independent::Word GetInterface(const independent::Guid& iid, void** view) = 0;
  virtual independent::Word AddRef() = 0;
  virtual independent::Word Release() = 0;
  virtual independent::Word Add(int number, int* sum) = 0;

 protected:
  ~Adder() = default;
};
