// The framework: what components offer, and whether their binaries are those that were registered.
#pragma once

#include "framework/IYAXCompBase.h"
#include "framework/YAXRecords.h"

// Kept in the registry beside what IYAXInfoManager keeps, and never needed: a component without an
// offer is loaded as it is. One with an offer is loaded only from the binary that the offer tells
// of; any other is kCannotLoad before it is opened, and YAXReason says why. Nothing here opens or
// runs a shared object. The order of the operations is part of the binary interface. Null
// arguments: kBadArgument; a component that is not registered, and every failure of the registry:
// kRegistryFailed.
class IYAXCatalogue : public IYAXCompBase {
 public:
  // What the shared object at a path tells of itself: its size and build id, and what
  // YAX_COMPONENT_OFFERS says in its source. kCannotLoad: it is no component for this machine.
  virtual unsigned int ReadOffer(const char* path, YAX_COMPONENT_OFFER_ST* offer) = 0;
  // Keeps the offer of a component that is registered, or with null takes it back. kBadArgument:
  // a count or size is too large.
  virtual unsigned int SetOffer(const YAX_GUID_ST& clsid, const YAX_COMPONENT_OFFER_ST* offer) = 0;
  // All 0 where nothing is kept.
  virtual unsigned int GetOffer(const YAX_GUID_ST& clsid, YAX_COMPONENT_OFFER_ST* offer) = 0;
  // The components that offer an interface: the newest version first, those of one version in the
  // order of their identifiers. *count: how many there are; the first `room` of them are written.
  // What damage or lack of memory keeps from being read is not found.
  virtual unsigned int FindComponents(const YAX_GUID_ST& iid, YAX_GUID_ST* clsids,
                                      unsigned int room, unsigned int* count) = 0;
  // Compares a component's binary with its offer, as is done before it is opened: it is there, for
  // this machine, exports EntryFn_getFactory, and has the size and the build id. kCannotLoad, with
  // YAXReason: it is another one. 0 also without an offer, and for a path without "/", which only
  // the loader finds.
  virtual unsigned int CheckComponent(const YAX_GUID_ST& clsid) = 0;
  // Calls the function for all that happens from now on through this framework, by any thread (what
  // is taken back with SetOffer is no event): in
  // that thread, when it has happened. It may call the framework, but must not wait for a thread
  // that does. kNoMemory: there are kYAXListenerMax already.
  virtual unsigned int AddListener(YAX_COMPONENT_LISTENER_FN listener, void* context) = 0;
  // No call begins any more; one that another thread has begun may go on. kBadArgument: there is no
  // such one.
  virtual unsigned int RemoveListener(YAX_COMPONENT_LISTENER_FN listener, void* context) = 0;

 protected:
  ~IYAXCatalogue() = default;
};
