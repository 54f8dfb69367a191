// What the tests of the component life cycle have in common: the framework on a file of its own,
// its views, and components that are registered in it.
#pragma once

#include <gtest/gtest.h>

#include <cstring>

#include "framework/YAX.h"
#include "framework/YAXStatus.h"
#include "tests/framework/ComponentFiles.h"
#include "tests/framework/components/TestComponent.h"
#include "tests/platform/TestFiles.h"

// A view of the framework for the scope.
template <class Interface>
class View {
 public:
  explicit View(const YAX_GUID_ST& iid) {
    void* view = nullptr;
    EXPECT_EQ(yax_framework::kOk, GetYAXInstance(iid, &view));
    view_ = static_cast<Interface*>(view);
  }
  ~View() { view_->Release(); }
  View(const View&) = delete;
  View& operator=(const View&) = delete;
  Interface* operator->() const { return view_; }

 private:
  Interface* view_;
};

// The framework from the constructor to the destructor.
class Framework {
 public:
  explicit Framework(const std::string& path) {
    EXPECT_EQ(yax_framework::kOk, CreateYAX(path.c_str()));
  }
  ~Framework() { EXPECT_EQ(yax_framework::kOk, DestroyYAX()); }
  Framework(const Framework&) = delete;
  Framework& operator=(const Framework&) = delete;
};

class ComponentRig : public ::testing::Test {
 protected:
  // A component with both ways to its factory; `type` tells which one counts.
  void Register(const YAX_GUID_ST& clsid, const std::string& path, YAX_FACTORY_FN function,
                unsigned int type) {
    YAX_COMPONENT_INFO_ST info = {};
    info.pGuid = &clsid;
    info.Type = static_cast<YAX_COMPONENT_TYPE_ENUM>(type);
    info.FactoryFn = function;
    std::strncpy(info.BinaryPath, path.c_str(), sizeof info.BinaryPath - 1);
    EXPECT_EQ(yax_framework::kOk, manager_->RegisterComponent(clsid, &info));
  }
  // A component in a shared object of components/.
  void Register(const YAX_GUID_ST& clsid, const char* name) {
    Register(clsid, ComponentFile(name), nullptr, YAX_COMPONENT_TYPE_BINARY);
  }
  void SetSystem(unsigned int isSingleBin, const char* folder = "") {
    YAX_SYSTEM_INFO_ST info = {};
    info.isSingleBin = isSingleBin;
    std::strncpy(info.BinDirectory, folder, sizeof info.BinDirectory - 1);
    EXPECT_EQ(yax_framework::kOk, manager_->SetSystemInfo(&info));
  }
  // The handle; null also when it fails.
  void* Load(const YAX_GUID_ST& clsid) {
    void* handle = nullptr;
    EXPECT_EQ(yax_framework::kOk, loader_->LoadComponent(clsid, &handle));
    return handle;
  }

  FreshComponents fresh_;  // before the framework: what it leaves open is closed after it
  TempDir folder_;
  Framework framework_{folder_ / "registry"};
  View<IYAX> yax_{IID_IYAX};
  View<IYAXInfoManager> manager_{IID_IYAXInfoManager};
  View<IYAXDynamicLoad> loader_{IID_IYAXDynamicLoad};
};
