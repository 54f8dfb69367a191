// The component framework: all that a component or a client includes.
#pragma once

#include "framework/IYAX.h"
#include "framework/IYAXCatalogue.h"
#include "framework/IYAXCompBase.h"
#include "framework/IYAXDynamicLoad.h"
#include "framework/IYAXInfoManager.h"
#include "framework/IYAXRegistry.h"
#include "framework/YAXComponentFactory.h"
#include "framework/YAXInterfaceIds.h"
#include "framework/YAXRecords.h"
#include "framework/YAXStatus.h"
#include "framework/YAX_GUID_ST.h"
#include "platform/Export.h"

// What a change in the framework's registry survives: the modes of registry/base/Durability.h.
enum YAX_FRAMEWORK_DURABILITY : unsigned int {
  YAX_FRAMEWORK_DURABILITY_NONE = 0,
  YAX_FRAMEWORK_DURABILITY_PROCESS = 1,
  YAX_FRAMEWORK_DURABILITY_POWER = 2,
  // What the environment variable YAX_DURABILITY names, if it is set.
  YAX_FRAMEWORK_DURABILITY_DEFAULT = 3,
};

extern "C" {

// Chooses a YAX_FRAMEWORK_DURABILITY for the frameworks that CreateYAX makes from now on; it comes
// before the environment variable YAX_DURABILITY (none, process, power; another word is told by a
// debug message and ignored). With one of them, CreateYAX answers kRegistryFailed where the mode
// cannot be had; without, the mode is PROCESS where it can be had and else NONE. kBadArgument for
// another number. For one thread at a time, as CreateYAX.
YAX_API unsigned int SetYAXDurability(unsigned int durability);
// Makes the framework on a registry file; null: "yax.rce" in the working directory. When there is
// one already, answers 0 and leaves it as it is. kRegistryFailed: the file cannot be opened or
// made; kNoMemory. Creating, getting and destroying the framework is for one
// thread at a time.
YAX_API unsigned int CreateYAX(const char* registryPath);
// A view of the framework, to be given back by Release; its operations are for any thread.
// kNoFramework and kBadArgument (*out as it was), kNoInterface (*out null).
YAX_API unsigned int GetYAXInstance(const YAX_GUID_ST& iid, void** out);
// Drops the reference that CreateYAX took. The framework ends with the last view that is given
// back; shared objects that are still open stay mapped. Returns 0. With the environment variable
// YAX_REPORT (anything but the empty text), it first tells on standard error which components are
// still in use, and then how many views of the framework were not given back.
YAX_API unsigned int DestroyYAX();

// Why the last call of this thread that was to open a component's binary, to compare it with its
// offer or to unload it has answered kCannotLoad or kInUse: "has 16384 bytes, and 15960 are
// registered", what the loader says, or "objects and factories that are left: 2, locks: 0". Never
// null; "" when it did not. Good until the thread's next such call.
YAX_API const char* YAXReason();

// The contract of a component in a shared object: it exports both functions.
//   unsigned int EntryFn_getFactory(const YAX_GUID_ST& clsid, const YAX_GUID_ST& iid, void** out);
//   unsigned int EntryFn_canUnloadNow();
// and may export a third, which tells what of it is left when it is not to be unloaded:
//   void EntryFn_getUse(unsigned int* objectsAndFactories, unsigned int* locks);
// The first gives a YAXComponentFactory (YAX_FACTORY_FN); the second answers 0 when none of the
// component's objects, factories and locks is left, so that the shared object may be closed. Both
// run under the framework's lock, the factory's operations do not; while the framework calls any of
// them, the shared object is not closed. Whatever the first answers, *out is null or a factory.
// Static objects of a component must not call the framework when they are made or destroyed: the C
// library's loader is locked then, and other threads wait for it while they hold the framework's.
// docs/components.md

}  // extern "C"
