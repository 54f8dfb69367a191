// A file that is rewritten with bytes that are known before.
#pragma once

#include <string>

#include "registry/base/FileRewriter.h"

// The bytes are the caller's.
class GivenBytes : public tamu::registry::FileRewriter {
 public:
  explicit GivenBytes(const std::string& bytes) : bytes_(bytes) {}
  const void* Rewrite(const void*, unsigned int* size) override {
    *size = static_cast<unsigned int>(bytes_.size());
    return bytes_.data();
  }

 private:
  const std::string& bytes_;
};
