// The interface of a component made with the kit for component authors.
#pragma once

#include "framework/YAX.h"

constexpr YAX_GUID_ST CLSID_Tally = {0x7A117A11, 0x0001, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, 1}};
constexpr YAX_GUID_ST IID_ITally = {0x7A117A11, 0x0002, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, 2}};
// Offered, too, in words alone.
constexpr YAX_GUID_ST IID_Other = {0x7A117A11, 0x0003, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, 3}};

class ITally : public IYAXCompBase {
 public:
  // Counts on; returns what it has counted.
  virtual unsigned int Count() = 0;

 protected:
  ~ITally() = default;
};
