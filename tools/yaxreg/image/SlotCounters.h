// A number for every slot of a kind.
#pragma once

#include <vector>

#include "tools/yaxreg/image/RegistryImage.h"

namespace yaxreg {

template <class Number>
class SlotNumbers {
 public:
  explicit SlotNumbers(const std::vector<RegistryImage::Table>& tables) {
    for (const RegistryImage::Table& table : tables) numbers_.emplace_back(table.entries);
  }
  // The slot of the id exists.
  Number& operator[](unsigned int id) {
    return numbers_[tamu::registry::TableOf(id)][tamu::registry::SlotOf(id)];
  }
  Number operator[](unsigned int id) const {
    return numbers_[tamu::registry::TableOf(id)][tamu::registry::SlotOf(id)];
  }

 private:
  std::vector<std::vector<Number>> numbers_;
};

// Small numbers that only grow, up to 255.
class SlotCounters : public SlotNumbers<unsigned char> {
 public:
  using SlotNumbers::SlotNumbers;

  // Adds one and answers the new number.
  unsigned char Count(unsigned int id) {
    unsigned char& counter = (*this)[id];
    if (counter < 255) ++counter;
    return counter;
  }
};

}  // namespace yaxreg
