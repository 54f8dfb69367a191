// What components offer, as it lies in the registry. Internal.
#pragma once

#include "framework/YAXRecords.h"
#include "platform/PCMutex.h"
#include "registry/Registry.h"

class YAXInfoManager;

// In each component's key: "Version" and "BinarySize", numbers, "Interfaces", 16 bytes for each in
// the order of their texts, and "BuildId", bytes. What is 0 or empty has no value. Statuses of
// IYAXCatalogue; operations are serialised.
class ComponentOffers {
 public:
  // Both stay the caller's.
  ComponentOffers(tamu::registry::Registry& registry, YAXInfoManager& names)
      : registry_(registry), names_(names) {
    lock_.Create();
  }
  ~ComponentOffers() { lock_.Destroy(); }
  ComponentOffers(const ComponentOffers&) = delete;
  ComponentOffers& operator=(const ComponentOffers&) = delete;

  unsigned int Set(const YAX_GUID_ST& clsid, const YAX_COMPONENT_OFFER_ST& offer);
  unsigned int Get(const YAX_GUID_ST& clsid, YAX_COMPONENT_OFFER_ST* offer);
  unsigned int Find(const YAX_GUID_ST& iid, YAX_GUID_ST* clsids, unsigned int room,
                    unsigned int* count);

 private:
  tamu::registry::Registry& registry_;
  YAXInfoManager& names_;
  PCMutex lock_;
};
