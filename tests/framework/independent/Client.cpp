// A program that knows none of the framework's headers: registers a component, uses it and has it
// unloaded. Client SHARED_OBJECT; returns 0 when all of it works.
#include <dlfcn.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "Adder.h"

namespace {

using independent::Guid;
using independent::Word;

int sFailures = 0;

void Expect(const char* what, Word is, Word expected) {
  if (is == expected) return;
  std::printf("%s: 0x%X, not 0x%X\n", what, is, expected);
  ++sFailures;
}

bool IsMapped(const char* path) {
  void* handle = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) dlclose(handle);
  return handle != nullptr;
}

template <class Interface>
Interface* View(const Guid& iid) {
  void* view = nullptr;
  Expect("GetYAXInstance", independent::GetYAXInstance(iid, &view), 0);
  if (view == nullptr) std::exit(1);
  return static_cast<Interface*>(view);
}

void Register(const char* path) {
  independent::Info* info = View<independent::Info>(independent::kInfoInterface);
  independent::ComponentInfo adder = {};
  adder.component = &kAdder;
  adder.type = 1;
  std::strcpy(adder.name, "adder");
  std::strncpy(adder.path, path, sizeof adder.path - 1);
  independent::ComponentInfo* all[] = {&adder, nullptr};
  Expect("RegisterAllComponent", info->RegisterAllComponent(all), 0);
  independent::ComponentInfo read = {};
  Expect("GetComponentInfo", info->GetComponentInfo(kAdder, &read), 0);
  Expect("its type", read.type, 1);
  Expect("its name differs", std::strcmp(read.name, "adder") != 0, 0);
  Expect("its path differs", std::strcmp(read.path, path) != 0, 0);
  Expect("Release of the information", info->Release(), 1);
}

void Use(const char* path) {
  independent::Framework* framework =
      View<independent::Framework>(independent::kFrameworkInterface);
  independent::Load* load = View<independent::Load>(independent::kLoadInterface);
  Expect("mapped before", IsMapped(path), 0);
  void* made = nullptr;
  Expect("GetComponentInstance", framework->GetComponentInstance(kAdder, kAdderInterface, &made),
         0);
  if (made == nullptr) std::exit(1);
  Adder* adder = static_cast<Adder*>(made);
  int sum = 0;
  adder->Add(40, &sum);
  Expect("Add", adder->Add(2, &sum), 0);
  Expect("the sum", static_cast<Word>(sum), 42);
  Expect("UnloadComponent with an object", load->UnloadComponent(kAdder), 0xE000000B);
  Expect("Release of the adder", adder->Release(), 0);
  Expect("LockComponent", load->LockComponent(kAdder, 1), 0);
  Expect("UnloadComponent with a lock", load->UnloadComponent(kAdder), 0xE000000B);
  Expect("LockComponent back", load->LockComponent(kAdder, 0), 0);
  Expect("mapped", IsMapped(path), 1);
  Expect("UnloadComponent", load->UnloadComponent(kAdder), 0);
  Expect("mapped afterwards", IsMapped(path), 0);
  Expect("Release of the loader", load->Release(), 2);
  Expect("Release of the framework", framework->Release(), 1);
}

}  // namespace

int main(int argc, char** argv) {
  const char* folder = std::getenv("TMPDIR");
  std::string temporary = std::string(folder != nullptr ? folder : "/tmp") + "/yax-client-XXXXXX";
  if (argc != 2 || mkdtemp(temporary.data()) == nullptr) return 2;
  const std::string registry = temporary + "/registry";
  Expect("CreateYAX", independent::CreateYAX(registry.c_str()), 0);
  Register(argv[1]);
  Expect("DestroyYAX", independent::DestroyYAX(), 0);
  Expect("CreateYAX again", independent::CreateYAX(registry.c_str()), 0);
  Use(argv[1]);
  Expect("DestroyYAX again", independent::DestroyYAX(), 0);
  void* view = nullptr;
  Expect("GetYAXInstance afterwards",
         independent::GetYAXInstance(independent::kRootInterface, &view), 0xE0000005);
  unlink(registry.c_str());
  rmdir(temporary.c_str());
  return sFailures == 0 ? 0 : 1;
}
