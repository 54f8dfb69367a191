// How stores that know only one key for each record spell paths, names and typed data.
#pragma once

#include <cstring>
#include <string>

namespace tamu::bench {

// "path\0name": the values of a key lie together.
class JoinedName {
 public:
  JoinedName(const char* key, const char* name) {
    const size_t keyLength = std::strlen(key);
    const size_t nameLength = std::strlen(name);
    std::memcpy(text_, key, keyLength + 1);
    std::memcpy(text_ + keyLength + 1, name, nameLength);
    length_ = keyLength + 1 + nameLength;
  }
  const char* text() const { return text_; }
  size_t length() const { return length_; }

 private:
  char text_[256];
  size_t length_;
};

// "path/", with which the names of all keys below begin; nothing for the root.
class PathPrefix {
 public:
  explicit PathPrefix(const char* key) : text_(key) {
    if (!text_.empty()) text_ += '/';
  }
  const char* text() const { return text_.c_str(); }
  size_t length() const { return text_.size(); }
  bool Begins(const char* name, size_t length) const {
    return length >= text_.size() && std::memcmp(name, text_.data(), text_.size()) == 0;
  }

 private:
  std::string text_;
};

// One byte of type, then the data.
class TypedData {
 public:
  TypedData(unsigned int type, const void* data, unsigned int size) : size_(size + 1) {
    bytes_[0] = static_cast<char>(type);
    std::memcpy(bytes_ + 1, data, size);
  }
  const char* bytes() const { return bytes_; }
  size_t size() const { return size_; }

 private:
  char bytes_[1 + 1024];
  size_t size_;
};

}  // namespace tamu::bench
