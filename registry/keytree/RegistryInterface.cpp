#include "registry/keytree/RegistryInterface.h"

namespace tamu::registry {

unsigned int RegistryInterface::Initialize(const char*) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::Finalize() {
  return status::kNotSupported;
}

unsigned int RegistryInterface::CreateKey(unsigned int, void*, const char*, unsigned long long,
                                          bool) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::DeleteKey(unsigned int, void*, const char*) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::FindKey(unsigned int, void*, const char*, unsigned int) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::GetKeyInfo(unsigned int, void*, const char*, KeyInfo*) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::GetDefaultValue(unsigned int, void*, const char*,
                                                unsigned long long*) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::SetDefaultValue(unsigned int, void*, const char*,
                                                unsigned long long, bool) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::GetValue(unsigned int, void*, const char*, const char*, Value*) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::SetValue(unsigned int, void*, const char*, const char*, Value*) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::LoadKeyTree(const char*, void*&) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::UnloadKeyTree(void*) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::LoadKey(const char*, Key*) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::StoreKey(Key*) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::BackupKeyTree(unsigned int, void*, const char*, const char*) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::RestoreKeyTree(unsigned int, void*, const char*, const char*) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::CreateValue(unsigned int, void*, const char*, const char*,
                                            unsigned long long, bool) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::CreateValue(unsigned int, void*, const char*, const char*, Value*) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::DeleteValue(unsigned int, void*, const char*, const char*) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::GetSetValue(unsigned int, void*, const char*, const char*,
                                            unsigned long long*, bool) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::ListKeys(unsigned int, void*, const char*, unsigned int, NameList*,
                                         unsigned int) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::ListValues(unsigned int, void*, const char*, unsigned int,
                                           NameList*) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::SetKeyPermission(unsigned int, void*, const char*, unsigned char) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::GetKeyPermission(unsigned int, void*, const char*, unsigned char*) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::SetKeyWatch(unsigned int, void*, const char*, unsigned char) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::GetChangeBuffer(ChangeBuffer*&) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::GetRegistryInfo(RegistryInfo*) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::GetValueOffset(unsigned int, void*, const char*, const char*,
                                               unsigned int*) {
  return status::kNotSupported;
}

unsigned int RegistryInterface::Walk(unsigned int, void*, const char*, WalkVisitor*) {
  return status::kNotSupported;
}

}  // namespace tamu::registry
