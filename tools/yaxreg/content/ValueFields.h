// A value as JSON tells it.
#pragma once

#include <optional>
#include <string>

#include "registry/base/Value.h"
#include "tools/yaxreg/image/Content.h"

namespace yaxreg {

// The fields of one value, those left out empty.
struct ValueFields {
  static constexpr unsigned int kMaxType = 5;
  static constexpr unsigned int kMaxSize = tamu::registry::kValueDataMax;  // also of a number

  std::optional<std::string> name;
  std::optional<unsigned int> type;
  std::optional<bool> isSet;
  std::optional<unsigned int> size;
  std::optional<unsigned long long> number;
  std::optional<std::string> text;
  std::optional<std::string> bytes;  // of "hex"

  // Puts them together. Answers why they do not fit together, "" when they do.
  std::string MakeValue(ContentValue* value) const;

 private:
  std::string MakeNumber(ContentValue* value) const;
  std::string MakeData(ContentValue* value) const;
};

}  // namespace yaxreg
