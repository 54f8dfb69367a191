// A component made with the kit for component authors.
#include "Tally.h"

#include "framework/YAXComponentKit.h"

namespace {

class Tally : public yax_component::Counted<ITally, IID_ITally> {
 public:
  unsigned int Count() override { return ++count_; }

 private:
  unsigned int count_ = 0;
};

}  // namespace

YAX_COMPONENT(CLSID_Tally, Tally)
YAX_COMPONENT_OFFERS(7, IID_ITally, IID_Other)
