// What a component offers, as the component framework keeps it in the registry.
#pragma once

#include <string>
#include <vector>

#include "framework/elf/ComponentNotes.h"
#include "tools/yaxreg/image/Content.h"

namespace yaxreg {

// What is 0 or empty is not told, and has no value in the registry.
struct ComponentOffer {
  unsigned int version = 0;
  unsigned long long binarySize = 0;
  std::string interfaces;  // 16 bytes each
  std::string buildId;     // bytes

  bool isEmpty() const {
    return version == 0 && binarySize == 0 && interfaces.empty() && buildId.empty();
  }
  // Whether an interface, of 16 bytes, is among them.
  bool Offers(const std::string& interface) const;
  // "{1FBF55FC-0F15-45CC-8F3F-DE86A5640CB5}" for each interface.
  std::vector<std::string> InterfaceNames() const;
};

// Values of a component, as they are made.
ContentValue NumberValue(const char* name, unsigned long long number);
ContentValue DataValue(const char* name, unsigned int type, const std::string& data);

// The names of the values in which it is kept.
const std::vector<std::string>& OfferValueNames();
ComponentOffer OfferOf(const ContentKey& key);
std::vector<ContentValue> ValuesOf(const ComponentOffer& offer);
// What a shared object of so many bytes says of itself. Empty where it does not say its version.
ComponentOffer OfferOf(const yax_elf::ComponentNotes& notes, unsigned long long binarySize);
// The 16 bytes of an identifier in capitals and braces.
std::string IdentifierBytes(const std::string& identifier);

}  // namespace yaxreg
