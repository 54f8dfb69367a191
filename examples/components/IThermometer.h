// A thermometer: the interface of an example component.
#pragma once

#include "framework/YAX.h"

constexpr YAX_GUID_ST CLSID_Thermometer = {
    0x6C1D0E52, 0x94B3, 0x4F0A, {0xA7, 0x15, 0x3E, 0x52, 0x88, 0xC4, 0x0B, 0x21}};
constexpr YAX_GUID_ST IID_IThermometer = {
    0x0F7A9D64, 0x2E1B, 0x4C83, {0x9B, 0x60, 0xD1, 0x47, 0x35, 0xFA, 0x16, 0x8C}};

class IThermometer : public IYAXCompBase {
 public:
  // In thousandths of a degree. Returns 0.
  virtual unsigned int GetTemperature(int* milliDegrees) = 0;
  // Added to each reading from now on. Returns 0.
  virtual unsigned int SetOffset(int milliDegrees) = 0;

 protected:
  ~IThermometer() = default;
};
