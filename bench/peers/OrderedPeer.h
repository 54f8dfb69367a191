// What stores do alike that keep the names of keys in order.
#pragma once

#include "bench/peers/Peer.h"

namespace tamu::bench {

// Store has Visit(key, visitor), which calls visitor(name, length) for each key below; a call of a
// virtual function for each would be measured as the store's own.
template <class Store>
class OrderedPeer : public Peer {
 public:
  void SetValue(const char* key, const char* name, unsigned int type, const void* data,
                unsigned int size) override {
    MakeValue(key, name, type, data, size);
  }
  void List(const char* key, bool, Names& names) override {
    Self().Visit(key, [&](const char* name, size_t length) { names.Add(name, length); });
  }
  unsigned int Count(const char* key) override {
    unsigned int count = 0;
    Self().Visit(key, [&](const char*, size_t) { ++count; });
    return count;
  }

 private:
  Store& Self() { return static_cast<Store&>(*this); }
};

}  // namespace tamu::bench
