// An input as choices: each takes some of its bytes, and behind its end all are 0.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>

namespace fuzz {

class Bytes {
 public:
  Bytes(const unsigned char* data, size_t size) : at_(data), end_(data + size) {}

  bool IsOver() const { return at_ == end_; }

  // The next bytes, as many as tell a number below the limit; 0: four of them, and any number.
  unsigned int Below(unsigned int limit) {
    const unsigned int count = limit == 0 || limit > 65536 ? 4 : limit > 256 ? 2 : 1;
    unsigned int number = 0;
    for (unsigned int i = 0; i < count && at_ != end_; ++i) number = number << 8 | *at_++;
    return limit == 0 ? number : number % limit;
  }
  // As a generator of random numbers has it.
  unsigned int operator()() { return Below(1u << 24); }

  // A text of at most so many bytes, whose length stands before it.
  std::string Text(unsigned int most) {
    const size_t wanted = Below(most + 1);  // first: it moves on
    const size_t length = std::min(wanted, static_cast<size_t>(end_ - at_));
    const std::string text(reinterpret_cast<const char*>(at_), length);
    at_ += length;
    return text;
  }
  // The same without bytes of 0, which end a name or a path.
  std::string Name(unsigned int most) {
    const std::string text = Text(most);
    return text.substr(0, text.find('\0'));
  }
  std::string Rest() {
    const std::string text(reinterpret_cast<const char*>(at_), static_cast<size_t>(end_ - at_));
    at_ = end_;
    return text;
  }

 private:
  const unsigned char* at_;
  const unsigned char* end_;
};

}  // namespace fuzz
