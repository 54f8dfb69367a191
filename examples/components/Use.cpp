// Gets components by their identifiers and uses them; knows their interfaces, nothing else.
#include <cstdio>
#include <fstream>
#include <string>

#include "IGreeter.h"
#include "IThermometer.h"
#include "examples/Check.h"

namespace {

// A reference to something that counts its references; given back at the end.
template <class Interface>
class Held {
 public:
  explicit Held(void* view) : view_(static_cast<Interface*>(view)) {}
  ~Held() { view_->Release(); }
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;
  Interface* operator->() const { return view_; }

 private:
  Interface* view_;
};

// A view of the framework.
void* View(const YAX_GUID_ST& iid) {
  void* view = nullptr;
  Check(GetYAXInstance(iid, &view), "GetYAXInstance");
  return view;
}

// A new object of a component; its shared object is opened if it is not open yet.
void* Make(const YAX_GUID_ST& clsid, const YAX_GUID_ST& iid) {
  const Held<IYAX> yax(View(IID_IYAX));
  void* made = nullptr;
  Check(yax->GetComponentInstance(clsid, iid, &made), "GetComponentInstance");
  return made;
}

// Whether the kernel has the file mapped into this process.
bool IsLoaded(const std::string& file) {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    if (line.find("/" + file) != std::string::npos) return true;
  }
  return false;
}

void Tell(const char* what, const char* file, bool expected) {
  const bool loaded = IsLoaded(file);
  std::printf("%-44s %s is %s\n", what, file, loaded ? "loaded" : "not loaded");
  if (loaded != expected) std::exit(1);
}

void UseThermometer() {
  const char* file = "libthermometer.so";
  Tell("the program has started:", file, false);
  const Held<IYAXDynamicLoad> loader(View(IID_IYAXDynamicLoad));
  {
    const Held<IThermometer> thermometer(Make(CLSID_Thermometer, IID_IThermometer));
    Tell("an object is asked for by its identifiers:", file, true);
    int milliDegrees = 0;
    Check(thermometer->GetTemperature(&milliDegrees), "GetTemperature");
    std::printf("it tells %.1f degrees\n", milliDegrees / 1000.0);
    Check(loader->UnloadComponent(CLSID_Thermometer), "UnloadComponent", yax_framework::kInUse);
    Tell("to be unloaded while the object lives:", file, true);
  }
  Check(loader->UnloadComponent(CLSID_Thermometer), "UnloadComponent");
  Tell("to be unloaded after its last release:", file, false);
}

// A lock keeps a component loaded while nobody has an object of it.
void UseGreeter() {
  const char* file = "libgreeter.so";
  const Held<IYAXDynamicLoad> loader(View(IID_IYAXDynamicLoad));
  Check(loader->LockComponent(CLSID_Greeter, 1), "LockComponent");
  Check(loader->UnloadComponent(CLSID_Greeter), "UnloadComponent", yax_framework::kInUse);
  Tell("another one is kept by a lock:", file, true);
  {
    const Held<IGreeter> greeter(Make(CLSID_Greeter, IID_IGreeter));
    char text[64];
    Check(greeter->Greet("world", text, sizeof text), "Greet");
    std::printf("it says \"%s\"\n", text);
  }
  Check(loader->LockComponent(CLSID_Greeter, 0), "LockComponent");
  Check(loader->UnloadComponent(CLSID_Greeter), "UnloadComponent");
  Tell("the lock is taken back, to be unloaded:", file, false);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::printf("usage: %s REGISTRY\n", argv[0]);
    return 2;
  }
  Check(CreateYAX(argv[1]), argv[1]);
  UseThermometer();
  UseGreeter();
  Check(DestroyYAX(), "DestroyYAX");
}
