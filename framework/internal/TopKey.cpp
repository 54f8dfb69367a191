#include "framework/internal/TopKey.h"

namespace status = tamu::registry::status;

TopKey::TopKey(tamu::registry::Registry& registry, const char* key, Missing missing)
    : registry_(registry) {
  registry_.HoldHandles();
  const unsigned int found =
      missing != Missing::kMakeSure ? registry_.OpenKey(key, &key_, 0) : status::kNotFound;
  if (found != status::kOk && missing != Missing::kFail) Create(key);
  isMissing_ = found == status::kNotFound && key_ == 0;
}

TopKey::~TopKey() {
  if (key_ != 0) registry_.CloseKey(key_);
  if (root_ != 0) registry_.CloseKey(root_);
  registry_.LetHandlesGo();
}

void TopKey::Create(const char* key) {
  if (registry_.OpenKey("/", &root_, 0) != status::kOk) return;
  const unsigned int result = registry_.CreateKey(root_, key);
  if (result != status::kOk && result != status::kExists) return;
  isNew_ = result == status::kOk;
  registry_.OpenKey(key, &key_, 0);
}
