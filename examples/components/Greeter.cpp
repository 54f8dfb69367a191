// A component written with the kit.
#include <cstdio>

#include "IGreeter.h"
#include "framework/YAXComponentKit.h"

namespace {

class Greeter : public yax_component::Counted<IGreeter, IID_IGreeter> {
 public:
  unsigned int Greet(const char* name, char* text, unsigned int size) override {
    if (name == nullptr || text == nullptr) return yax_framework::kBadArgument;
    ++greetings_;
    std::snprintf(text, size, "Hello, %s (greeting %u)", name, greetings_);
    return yax_framework::kOk;
  }

 private:
  unsigned int greetings_ = 0;
};

}  // namespace

YAX_COMPONENT(CLSID_Greeter, Greeter)
