// Registers two components with the paths of their shared objects, as an installation does.
#include <cstdio>
#include <cstring>
#include <string>

#include "IGreeter.h"
#include "IThermometer.h"
#include "examples/Check.h"

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
  Check(CreateYAX(argv[1]), argv[1]);
  void* view = nullptr;
  Check(GetYAXInstance(IID_IYAXInfoManager, &view), "GetYAXInstance");
  IYAXInfoManager* manager = static_cast<IYAXInfoManager*>(view);

  YAX_COMPONENT_INFO_ST thermometer =
      Describe(CLSID_Thermometer, "thermometer", folder + "/libthermometer.so");
  YAX_COMPONENT_INFO_ST greeter = Describe(CLSID_Greeter, "greeter", folder + "/libgreeter.so");
  YAX_COMPONENT_INFO_ST* all[] = {&thermometer, &greeter, nullptr};
  Check(manager->RegisterAllComponent(all), "RegisterAllComponent");

  manager->Release();
  Check(DestroyYAX(), "DestroyYAX");
}
