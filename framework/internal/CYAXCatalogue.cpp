#include "framework/internal/CYAXCatalogue.h"

#include "framework/YAXStatus.h"
#include "framework/internal/CYAX.h"
#include "framework/internal/ComponentBinary.h"
#include "framework/internal/ComponentOffers.h"
#include "framework/internal/Reason.h"

unsigned int CYAXCatalogue::GetInterface(const YAX_GUID_ST& iid, void** out) {
  return framework_.GetInterface(iid, out);
}

unsigned int CYAXCatalogue::AddRef() {
  return framework_.AddRef();
}

unsigned int CYAXCatalogue::Release() {
  return framework_.Release();
}

unsigned int CYAXCatalogue::ReadOffer(const char* path, YAX_COMPONENT_OFFER_ST* offer) {
  if (path == nullptr || offer == nullptr) return yax_framework::kBadArgument;
  ForgetReason();
  return ComponentBinary::Read(path, offer);
}

unsigned int CYAXCatalogue::SetOffer(const YAX_GUID_ST& clsid,
                                     const YAX_COMPONENT_OFFER_ST* offer) {
  const unsigned int result =
      framework_.Offers().Set(clsid, offer != nullptr ? *offer : YAX_COMPONENT_OFFER_ST{});
  if (offer != nullptr && result == yax_framework::kOk) {
    framework_.Listeners().Tell(YAX_COMPONENT_REGISTERED, clsid);
  }
  return result;
}

unsigned int CYAXCatalogue::GetOffer(const YAX_GUID_ST& clsid, YAX_COMPONENT_OFFER_ST* offer) {
  return offer != nullptr ? framework_.Offers().Get(clsid, offer) : yax_framework::kBadArgument;
}

unsigned int CYAXCatalogue::FindComponents(const YAX_GUID_ST& iid, YAX_GUID_ST* clsids,
                                           unsigned int room, unsigned int* count) {
  if (count == nullptr || (clsids == nullptr && room != 0)) return yax_framework::kBadArgument;
  return framework_.Offers().Find(iid, clsids, room, count);
}

unsigned int CYAXCatalogue::CheckComponent(const YAX_GUID_ST& clsid) {
  ForgetReason();
  return framework_.CheckBinary(clsid);
}

unsigned int CYAXCatalogue::AddListener(YAX_COMPONENT_LISTENER_FN listener, void* context) {
  return framework_.Listeners().Add(listener, context);
}

unsigned int CYAXCatalogue::RemoveListener(YAX_COMPONENT_LISTENER_FN listener, void* context) {
  return framework_.Listeners().Remove(listener, context);
}
