// The entry points.
#include "framework/YAX.h"

#include <cstdio>
#include <cstdlib>
#include <new>

#include "framework/internal/CYAX.h"
#include "framework/internal/DebugMessage.h"
#include "framework/internal/DurabilityChoice.h"
#include "framework/internal/Reason.h"

const char* YAXReason() {
  return Reason();
}

unsigned int SetYAXDurability(unsigned int durability) {
  return DurabilityChoice::Set(durability);
}

unsigned int CreateYAX(const char* registryPath) {
  if (CYAX::mspCYAX != nullptr) return yax_framework::kOk;
  CYAX* made = new (std::nothrow) CYAX;
  if (made == nullptr) return yax_framework::kNoMemory;
  PrintDebugMessage(__LINE__, "*********** YAX ***********");
  const unsigned int result = made->Initialize(registryPath);
  if (result != yax_framework::kOk) {
    made->Release();
    return result;
  }
  CYAX::mspCYAX = made;
  return yax_framework::kOk;
}

unsigned int GetYAXInstance(const YAX_GUID_ST& iid, void** out) {
  CYAX* framework = CYAX::mspCYAX;
  return framework != nullptr ? framework->GetInterface(iid, out) : yax_framework::kNoFramework;
}

// Views that were not given back keep the object; it is not found any more.
unsigned int DestroyYAX() {
  CYAX* framework = CYAX::mspCYAX.exchange(nullptr);
  if (framework == nullptr) return yax_framework::kOk;
  const char* wish = std::getenv("YAX_REPORT");  // NOLINT(concurrency-mt-unsafe)
  const bool isReported = wish != nullptr && *wish != '\0';
  if (isReported) framework->ReportUse();
  const unsigned int left = framework->Release();
  if (isReported && left > 0) {
    std::fprintf(stderr, "YAX: views of the framework that were not given back: %u\n", left);
  }
  return yax_framework::kOk;
}
