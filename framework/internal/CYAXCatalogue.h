// The view of the framework that knows what components offer.
#pragma once

#include "framework/IYAXCatalogue.h"

class ComponentOffers;
class CYAX;

// Has no references of its own: they are the framework's.
class CYAXCatalogue : public IYAXCatalogue {
 public:
  explicit CYAXCatalogue(CYAX& framework) : framework_(framework) {}
  CYAXCatalogue(const CYAXCatalogue&) = delete;
  CYAXCatalogue& operator=(const CYAXCatalogue&) = delete;

  unsigned int GetInterface(const YAX_GUID_ST& iid, void** out) override;
  unsigned int AddRef() override;
  unsigned int Release() override;

  unsigned int ReadOffer(const char* path, YAX_COMPONENT_OFFER_ST* offer) override;
  unsigned int SetOffer(const YAX_GUID_ST& clsid, const YAX_COMPONENT_OFFER_ST* offer) override;
  unsigned int GetOffer(const YAX_GUID_ST& clsid, YAX_COMPONENT_OFFER_ST* offer) override;
  unsigned int FindComponents(const YAX_GUID_ST& iid, YAX_GUID_ST* clsids, unsigned int room,
                              unsigned int* count) override;
  unsigned int CheckComponent(const YAX_GUID_ST& clsid) override;
  unsigned int AddListener(YAX_COMPONENT_LISTENER_FN listener, void* context) override;
  unsigned int RemoveListener(YAX_COMPONENT_LISTENER_FN listener, void* context) override;

 private:
  CYAX& framework_;
};
