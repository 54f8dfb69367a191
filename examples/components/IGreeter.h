// A greeter: the interface of an example component.
#pragma once

#include "framework/YAX.h"

constexpr YAX_GUID_ST CLSID_Greeter = {
    0xB83F5A17, 0x60C2, 0x4D9E, {0x85, 0x3B, 0x0A, 0xE9, 0x71, 0x2C, 0xD4, 0x56}};
constexpr YAX_GUID_ST IID_IGreeter = {
    0x29D6C04B, 0xF15A, 0x4782, {0xB0, 0x9C, 0x64, 0x1F, 0xA3, 0x8E, 0x57, 0x02}};

class IGreeter : public IYAXCompBase {
 public:
  // Writes a greeting for `name`, cut to `size` bytes with its terminator. Returns 0.
  virtual unsigned int Greet(const char* name, char* text, unsigned int size) = 0;

 protected:
  ~IGreeter() = default;
};
