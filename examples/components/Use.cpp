// The second program of the component demonstration: gets components by their identifiers and uses
// them.
#include <cstdio>
#include <string>

#include "IGreeter.h"
#include "IThermometer.h"
#include "examples/Show.h"

namespace {

// A view of the framework; given back at the end.
template <class Interface>
class View {
 public:
  View(const char* name, const YAX_GUID_ST& iid) {
    void* view = nullptr;
    Show((std::string("GetYAXInstance of ") + name).c_str(), GetYAXInstance(iid, &view));
    view_ = static_cast<Interface*>(view);
  }
  ~View() { view_->Release(); }
  View(const View&) = delete;
  View& operator=(const View&) = delete;
  Interface& operator*() const { return *view_; }

 private:
  Interface* view_;
};

void UseThermometer(IYAX& yax, IYAXDynamicLoad& loader) {
  std::printf(
      "\nAn object is asked for by two identifiers, the component's and the interface's:\n");
  void* made = nullptr;
  Show("GetComponentInstance of the thermometer",
       yax.GetComponentInstance(CLSID_Thermometer, IID_IThermometer, &made));
  IThermometer* thermometer = static_cast<IThermometer*>(made);
  int milliDegrees = 0;
  Show("SetOffset(-750)", thermometer->SetOffset(-750));
  Show("GetTemperature", thermometer->GetTemperature(&milliDegrees));
  std::printf("      %d.%03d degrees\n", milliDegrees / 1000, milliDegrees % 1000);

  std::printf("\nIts shared object stays loaded as long as an object lives:\n");
  Show("UnloadComponent", loader.UnloadComponent(CLSID_Thermometer), yax_status::kInUse);
  thermometer->Release();
  Show("UnloadComponent after the last Release", loader.UnloadComponent(CLSID_Thermometer));
}

void UseGreeter(IYAX& yax, IYAXDynamicLoad& loader) {
  std::printf("\nA lock keeps a component loaded while nobody has an object:\n");
  Show("LockComponent of the greeter", loader.LockComponent(CLSID_Greeter, 1));
  Show("UnloadComponent", loader.UnloadComponent(CLSID_Greeter), yax_status::kInUse);
  void* made = nullptr;
  Show("GetComponentInstance of the greeter",
       yax.GetComponentInstance(CLSID_Greeter, IID_IGreeter, &made));
  IGreeter* greeter = static_cast<IGreeter*>(made);
  char text[64];
  Show("Greet", greeter->Greet("world", text, sizeof text));
  std::printf("      %s\n", text);
  greeter->Release();
  Show("LockComponent: the lock is taken back", loader.LockComponent(CLSID_Greeter, 0));
  Show("UnloadComponent", loader.UnloadComponent(CLSID_Greeter));
}

void ShowComponent(IYAXInfoManager& manager, const YAX_GUID_ST& clsid) {
  YAX_COMPONENT_INFO_ST info = {};
  Show("GetComponentInfo", manager.GetComponentInfo(clsid, &info));
  const std::string path = info.BinaryPath;
  std::printf("      %s, type %u, %s\n", info.CompName, static_cast<unsigned int>(info.Type),
              path.substr(path.rfind('/') + 1).c_str());
}

void ShowRegistry(IYAXInfoManager& manager, IYAXRegistry& registry) {
  std::printf("\nWhat the registry holds:\n");
  ShowComponent(manager, CLSID_Thermometer);
  ShowComponent(manager, CLSID_Greeter);
  unsigned int first = 0;
  unsigned int keys = 0;
  unsigned int allKeys = 0;
  unsigned int values = 0;
  unsigned int allValues = 0;
  Show("GetKeyInfo \"YAX_ROOT\"",
       registry.GetKeyInfo(0, "YAX_ROOT", &first, &keys, &allKeys, &values, &allValues));
  std::printf("      %u components, %u values\n", keys, allValues);
  char name[32];
  unsigned int size = sizeof name;
  Show("GetValue of a component's name",
       registry.GetValue(0, "YAX_ROOT/{6C1D0E52-94B3-4F0A-A715-3E5288C40B21}", "CompName",
                         YAX_REG_DATA_TYPE_STRING, name, &size));
  std::printf("      %s\n", name);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::printf("usage: %s REGISTRY\n", argv[0]);
    return 2;
  }
  std::printf(
      "\nAnother program knows the components' identifiers and interfaces, nothing else:\n");
  Show("CreateYAX", CreateYAX(argv[1]));
  {
    const View<IYAX> yax("IYAX", IID_IYAX);
    const View<IYAXDynamicLoad> loader("IYAXDynamicLoad", IID_IYAXDynamicLoad);
    const View<IYAXInfoManager> manager("IYAXInfoManager", IID_IYAXInfoManager);
    const View<IYAXRegistry> registry("IYAXRegistry", IID_IYAXRegistry);
    UseThermometer(*yax, *loader);
    UseGreeter(*yax, *loader);
    ShowRegistry(*manager, *registry);
  }
  Show("DestroyYAX", DestroyYAX());
  void* view = nullptr;
  Show("GetYAXInstance", GetYAXInstance(IID_IYAX, &view), yax_status::kNoFramework);
  return 0;
}
