// The keys of a registry as a text.
#pragma once

#include <gtest/gtest.h>

#include "tests/support/StructureCheck.h"

namespace tamu::registry {

// For comparing, and for the message when two differ.
inline std::string Describe(const std::map<std::string, DecodedKey>& tree) {
  std::string text;
  for (const auto& [path, key] : tree) {
    text += ::testing::PrintToString(path) + " owner " + std::to_string(key.owner) +
            " permission " + std::to_string(key.permission) + " flags " +
            std::to_string(key.flags) + " default " + std::to_string(key.defaultValue) + "\n";
    for (const DecodedValue& value : key.values) {
      text += "  " + ::testing::PrintToString(value.name) + " type " + std::to_string(value.type) +
              (value.isSet ? " set" : " unset") + " size " + std::to_string(value.size) +
              " number " + std::to_string(value.number) + " bytes " +
              ::testing::PrintToString(value.bytes) + "\n";
    }
  }
  return text;
}

}  // namespace tamu::registry
