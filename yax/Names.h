// A sorted list of names.
#pragma once

#include <cstddef>
#include <iterator>
#include <memory>
#include <string_view>

#include "yax/Result.h"

namespace yax {

//   for (std::string_view name : key.Children()) ...
//
// Empty after a failure, which status() tells. The names are the list's.
class Names {
 public:
  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = std::string_view;
    using difference_type = std::ptrdiff_t;
    using pointer = const std::string_view*;
    using reference = std::string_view;

    Iterator() = default;  // of no list
    Iterator(const yax_names* names, std::size_t index) : names_(names), index_(index) {}
    std::string_view operator*() const {
      std::size_t length = 0;
      const char* const name = yax_names_at(names_, index_, &length);
      return {name, length};
    }
    Iterator& operator++() {
      ++index_;
      return *this;
    }
    Iterator operator++(int) {
      const Iterator before = *this;
      ++index_;
      return before;
    }
    friend bool operator==(const Iterator& a, const Iterator& b) { return a.index_ == b.index_; }
    friend bool operator!=(const Iterator& a, const Iterator& b) { return a.index_ != b.index_; }

   private:
    const yax_names* names_ = nullptr;
    std::size_t index_ = 0;
  };

  // Takes a list over.
  Names(yax_names* names, Status status) : names_(names), status_(status) {}

  // Why there is nothing; success otherwise.
  Status status() const { return status_; }
  // How many names there are.
  std::size_t size() const { return yax_names_count(names_.get()); }
  bool empty() const { return size() == 0; }
  // The name at an index below size().
  std::string_view operator[](std::size_t index) const { return *Iterator(names_.get(), index); }
  // For loops over all names.
  Iterator begin() const { return {names_.get(), 0}; }
  Iterator end() const { return {names_.get(), size()}; }

 private:
  struct Free {
    void operator()(yax_names* names) const { yax_names_free(names); }
  };

  std::unique_ptr<yax_names, Free> names_;
  Status status_;
};

}  // namespace yax
