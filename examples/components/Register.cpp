// The first program of the component demonstration: registers components with the paths of their
// shared objects.
#include <cstdio>
#include <cstring>
#include <string>

#include "IGreeter.h"
#include "IThermometer.h"
#include "examples/Show.h"

namespace {

YAX_COMPONENT_INFO_ST Describe(const YAX_GUID_ST& clsid, const char* name,
                               const std::string& path) {
  YAX_COMPONENT_INFO_ST info = {};
  info.pGuid = &clsid;
  std::strncpy(info.CompName, name, sizeof info.CompName - 1);
  info.Type = YAX_COMPONENT_TYPE_BINARY;
  std::strncpy(info.BinaryPath, path.c_str(), sizeof info.BinaryPath - 1);
  return info;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::printf("usage: %s REGISTRY FOLDER\n", argv[0]);
    return 2;
  }
  const std::string folder = argv[2];
  std::printf("\nA program makes the framework on a registry file and registers two components:\n");
  Show("CreateYAX", CreateYAX(argv[1]));
  void* view = nullptr;
  Show("GetYAXInstance of IYAXInfoManager", GetYAXInstance(IID_IYAXInfoManager, &view));
  IYAXInfoManager* manager = static_cast<IYAXInfoManager*>(view);
  YAX_SYSTEM_INFO_ST system = {};
  std::strncpy(system.BinDirectory, folder.c_str(), sizeof system.BinDirectory - 1);
  Show("SetSystemInfo", manager->SetSystemInfo(&system));
  YAX_COMPONENT_INFO_ST thermometer =
      Describe(CLSID_Thermometer, "thermometer", folder + "/libthermometer.so");
  YAX_COMPONENT_INFO_ST greeter = Describe(CLSID_Greeter, "greeter", folder + "/libgreeter.so");
  YAX_COMPONENT_INFO_ST* all[] = {&thermometer, &greeter, nullptr};
  Show("RegisterAllComponent", manager->RegisterAllComponent(all));
  Show("RegisterComponent of the first again",
       manager->RegisterComponent(CLSID_Thermometer, &thermometer), yax_status::kRegistryFailed);
  manager->Release();
  Show("DestroyYAX", DestroyYAX());
  return 0;
}
