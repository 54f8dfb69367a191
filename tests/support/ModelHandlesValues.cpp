// The model's operations on values, with handles.
#include "tests/support/ModelHandles.h"

unsigned ModelHandles::GetDefaultValue(unsigned handle, unsigned user, const std::string& path,
                                       unsigned long long* number) {
  ModelNode* start = nullptr;
  if (IsDirect(handle, &start)) return tree_.GetDefaultValue(user, path, number);
  ModelKey* key = nullptr;
  const unsigned result = Reach(start, user, path, ModelRegistry::kRead, &key);
  if (result != 0) return result;
  if (!key->isDefaultSet) return 53;
  *number = key->defaultValue;
  return 0;
}

unsigned ModelHandles::SetDefaultValue(unsigned handle, unsigned user, const std::string& path,
                                       unsigned long long number) {
  ModelNode* start = nullptr;
  if (IsDirect(handle, &start)) return tree_.SetDefaultValue(user, path, number);
  ModelKey* key = nullptr;
  const unsigned result = Reach(start, user, path, ModelRegistry::kModify, &key);
  if (result != 0) return result;
  key->isDefaultSet = true;
  key->defaultValue = number;
  key->storedCount = key->loadedCount;
  return 0;
}

// The new value is in the list that ModelRegistry makes; the key is loaded.
unsigned ModelHandles::CreateValue(unsigned handle, unsigned user, const std::string& path,
                                   const std::string& name, unsigned type,
                                   const std::string* data) {
  if (name.empty()) return 22;
  ModelNode* start = nullptr;
  if (IsDirect(handle, &start)) return tree_.CreateValue(user, path, name, type, data);
  if (start == nullptr) return 22;
  const bool isNumber = data == nullptr || type == 0;
  if (!isNumber && data->size() > 1024) return 75;
  ModelKey* key = nullptr;
  const unsigned result = Reach(start, user, path, ModelRegistry::kCreate, &key);
  if (result != 0) return result;
  if (!isNumber && type > 5) return 53;
  key->values.push_back(ModelRegistry::NewValue(name, type, data));
  key->storedCount = ++key->loadedCount;
  return 0;
}

// An unknown type changes nothing and is not reported. A number is set with all eight bytes.
unsigned ModelHandles::SetValue(unsigned handle, unsigned user, const std::string& path,
                                const std::string& name, unsigned type, const std::string& data) {
  ModelNode* start = nullptr;
  if (IsDirect(handle, &start)) return tree_.SetValue(user, path, name, type, data);
  if (start == nullptr) return 22;
  if (data.size() > 1024) return 75;
  ModelKey* key = nullptr;
  const unsigned result = Reach(start, user, path, ModelRegistry::kModify, &key);
  if (result != 0) return result;
  ModelValue* value = ModelRegistry::Find(key, name);
  if (value == nullptr) return 2;
  if (type > 5) return 0;
  value->type = type;
  value->isSet = !data.empty();
  if (type == 0) {
    value->size = 8;
    value->bytes.clear();
    value->low = model::Word(data, 0);
    value->high = model::Word(data, 4);
  } else {
    value->size = static_cast<unsigned>(data.size());
    value->bytes = data;
  }
  return 0;
}

unsigned ModelHandles::GetValue(unsigned handle, unsigned user, const std::string& path,
                                const std::string& name, unsigned* type, std::string* bytes) {
  ModelNode* start = nullptr;
  if (IsDirect(handle, &start)) return tree_.GetValue(user, path, name, type, bytes);
  ModelKey* key = nullptr;
  const unsigned result = Reach(start, user, path, ModelRegistry::kRead, &key);
  if (result != 0) return result;
  const ModelValue* value = ModelRegistry::Find(key, name);
  if (value == nullptr) return 2;
  if (!value->isSet || (*type != 6 && *type != value->type)) return 0;
  *type = value->type;
  *bytes = value->type == 0 ? model::Bytes(value->low) + model::Bytes(value->high) : value->bytes;
  bytes->resize(value->size);
  return 0;
}

// The key's record is written when its first value goes; otherwise the count in the file stays.
unsigned ModelHandles::DeleteValue(unsigned handle, unsigned user, const std::string& path,
                                   const std::string& name) {
  ModelNode* start = nullptr;
  if (IsDirect(handle, &start)) return tree_.DeleteValue(user, path, name);
  ModelKey* key = nullptr;
  const unsigned result = Reach(start, user, path, ModelRegistry::kDelete, &key);
  if (result != 0) return result;
  const ModelValue* value = ModelRegistry::Find(key, name);
  if (value == nullptr) return 2;
  const bool isFirst = value == &key->values.back();
  tree_.lostBlocks_ += model::BlocksOf(value->bytes);
  key->values.erase(key->values.begin() + (value - key->values.data()));
  --key->loadedCount;
  if (isFirst) key->storedCount = key->loadedCount;
  return 0;
}

unsigned ModelHandles::ListValues(unsigned handle, unsigned user, const std::string& path,
                                  unsigned first, unsigned capacity,
                                  std::vector<std::string>* names) {
  ModelNode* start = nullptr;
  if (IsDirect(handle, &start)) return tree_.ListValues(user, path, first, capacity, names);
  ModelKey* key = nullptr;
  const unsigned result = Reach(start, user, path, ModelRegistry::kRead, &key);
  if (result != 0) return result;
  if (first >= key->loadedCount) return 75;
  return model::HandOut(model::ValueNames(*key), first, capacity, names);
}
