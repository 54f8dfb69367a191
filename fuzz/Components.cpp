// A framework on a registry whose records of components somebody else has written.
#include <unistd.h>

#include <cstring>

#include "framework/YAX.h"
#include "fuzz/support/Harness.h"
#include "registry/Registry.h"
#include "tests/crash/MemoryFolder.h"
#include "tests/platform/TestFiles.h"

namespace fuzz {
namespace {

using namespace tamu::registry;

constexpr YAX_GUID_ST kIds[] = {
    {0x1FBF55FC, 0x0F15, 0x45CC, {0x8F, 0x3F, 0xDE, 0x86, 0xA5, 0x64, 0x0C, 0xB5}},
    {0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}}};
constexpr const char* kKeys[] = {"YAX_ROOT", "YAX_SYSTEM",
                                 "YAX_ROOT/{1FBF55FC-0F15-45CC-8F3F-DE86A5640CB5}",
                                 "YAX_ROOT/{00000000-0000-0000-0000-000000000000}"};
constexpr const char* kNames[] = {"CompName",   "Type",        "FactoryFn",
                                  "BinaryPath", "isSingleBin", "BinDirectory"};

void WriteRecords(const std::string& path, Bytes& in) {
  Registry registry(path.c_str(), kAdministratorId);
  RegistryOptions options;
  options.durability = Durability::kNone;
  EXPECT_EQ(0u, registry.SetOptions(options));
  EXPECT_EQ(0u, registry.Initialize());
  for (unsigned int values = in.Below(24); values > 0; --values) {
    const char* const key = kKeys[in.Below(4)];
    const char* const name = kNames[in.Below(6)];
    std::string data = in.Below(8) == 7 ? std::string(in.Below(1025), 'p') : in.Text(60);
    Value value = {in.Below(7), static_cast<unsigned int>(data.size()), data.data()};
    registry.MakeKey(key);
    if (in.Below(8) == 7) {
      registry.CreateValue(0, key, name, nullptr);
    } else {
      registry.CreateValue(0, key, name, &value);
    }
  }
}

unsigned int Factory(const YAX_GUID_ST&, const YAX_GUID_ST&, void** out) {
  *out = nullptr;
  return 1;
}

void FillText(char* text, Bytes& in) {
  std::memset(text, 'x', kYAXTextSize);  // seldom with an end
  const std::string begin = in.Text(60);
  std::memcpy(text, begin.data(), begin.size());
  if (in.Below(4) != 3) text[begin.size()] = 0;
}

// The loader opens whatever there is: only what is not there is asked for.
bool MayLoad(IYAXInfoManager& manager, const YAX_GUID_ST& id) {
  YAX_COMPONENT_INFO_ST info = {};
  if (manager.GetComponentInfo(id, &info) != 0) return true;
  EXPECT_NE(nullptr, std::memchr(info.BinaryPath, 0, sizeof info.BinaryPath));
  EXPECT_NE(nullptr, std::memchr(info.CompName, 0, sizeof info.CompName));
  return info.Type != YAX_COMPONENT_TYPE_BINARY ||
         (std::strchr(info.BinaryPath, '/') != nullptr && access(info.BinaryPath, F_OK) != 0);
}

template <class Interface>
Interface* ViewOf(const YAX_GUID_ST& iid) {
  void* view = nullptr;
  EXPECT_EQ(0u, GetYAXInstance(iid, &view));
  return static_cast<Interface*>(view);
}

void Work(IYAX& yax, IYAXInfoManager& manager, IYAXDynamicLoad& loader, Bytes& in) {
  const YAX_GUID_ST& id = kIds[in.Below(2)];
  YAX_COMPONENT_INFO_ST info = {};
  info.pGuid = in.Below(8) == 7 ? nullptr : &id;
  YAX_COMPONENT_INFO_ST* all[] = {&info, nullptr};
  YAX_SYSTEM_INFO_ST system = {};
  void* out = nullptr;
  const unsigned int kind = in.Below(9);
  if (kind < 3) {
    FillText(info.CompName, in);
    FillText(info.BinaryPath, in);
    info.Type = static_cast<YAX_COMPONENT_TYPE_ENUM>(in.Below(4));
    info.FactoryFn = in.Below(2) == 0 ? nullptr : Factory;
  }
  if (kind == 0) manager.RegisterComponent(id, &info);
  if (kind == 1) manager.SetComponentInfo(id, &info);
  if (kind == 2) manager.RegisterAllComponent(all);
  if (kind == 3) manager.UnregisterComponent(id);
  if (kind == 4) manager.GetSystemInfo(&system);
  if (kind == 5) {
    system.isSingleBin = in.Below(3);
    FillText(system.BinDirectory, in);
    manager.SetSystemInfo(&system);
  }
  if (kind < 6 || !MayLoad(manager, id)) return;
  if (kind == 6) yax.GetComponentFactory(id, &out);
  if (kind == 7) yax.GetComponentInstance(id, IID_IYAXRegistry, &out);
  if (kind == 8 && loader.LoadComponent(id, &out) == 0) loader.UnloadComponent(id);
  EXPECT_EQ(nullptr, out);
}

void RunComponents(Bytes& in) {
  static const crash::MemoryFolder sFolder;
  static const std::string sPath = sFolder.path() + "/registry";
  unlink(sPath.c_str());
  WriteRecords(sPath, in);
  ASSERT_EQ(0u, CreateYAX(sPath.c_str()));
  {
    IYAX* const yax = ViewOf<IYAX>(IID_IYAX);
    IYAXInfoManager* const manager = ViewOf<IYAXInfoManager>(IID_IYAXInfoManager);
    IYAXDynamicLoad* const loader = ViewOf<IYAXDynamicLoad>(IID_IYAXDynamicLoad);
    for (unsigned int i = 0; i < 20 && !in.IsOver(); ++i) Work(*yax, *manager, *loader, in);
    loader->Release();
    manager->Release();
    yax->Release();
  }
  DestroyYAX();
}

const Harness sComponents("Components", RunComponents);

}  // namespace
}  // namespace fuzz
