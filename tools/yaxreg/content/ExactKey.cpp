#include "tools/yaxreg/content/ExactKey.h"

namespace yaxreg {

namespace status = tamu::registry::status;

namespace {

// Each attempt that goes astray leaves one place less where the next one could.
constexpr int kAttempts = 16;

}  // namespace

unsigned int CreateExactKey(tamu::registry::Registry& registry, const std::string& path,
                            const unsigned long long* defaultValue) {
  for (int i = 0; i < kAttempts; ++i) {
    const unsigned int result = defaultValue == nullptr
                                    ? registry.CreateKey(0, path.c_str())
                                    : registry.CreateKey(0, path.c_str(), *defaultValue);
    // kExists also tells of a stray key that was there before.
    if (result != status::kOk && result != status::kExists) return result;
    unsigned char permission = 0;
    const unsigned int found = registry.GetKeyPermission(0, path.c_str(), &permission);
    if (found != status::kNotFound) return found;
  }
  return status::kInvalidFile;  // no sound file does this
}

}  // namespace yaxreg
