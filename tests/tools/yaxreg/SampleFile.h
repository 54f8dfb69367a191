// A small registry file with one of each kind of thing that can be shown.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "registry/Registry.h"
#include "registry/base/Rights.h"
#include "registry/base/UserId.h"
#include "registry/base/Value.h"
#include "tests/platform/TestFiles.h"

namespace status = tamu::registry::status;

// network           default value 7
// network/eth       mac, mtu twice, name, state (not set)
// network/wlan      others may read
// shop              owned by user 1000
class SampleFile {
 public:
  SampleFile() : path_(folder_ / "sample.rce") {
    using tamu::registry::MakeValue;
    tamu::registry::Registry registry(path_.c_str(), tamu::registry::kAdministratorId);
    EXPECT_EQ(status::kOk, registry.Initialize());
    EXPECT_EQ(status::kOk, registry.CreateKey(0, "network", 7));
    EXPECT_EQ(status::kOk, registry.CreateKey(0, "network/eth"));
    EXPECT_EQ(status::kOk, registry.CreateKey(0, "network/wlan"));
    const unsigned char permission = tamu::registry::MakePermission(15, 1);
    EXPECT_EQ(status::kOk, registry.SetKeyPermission(0, "network/wlan", permission));
    unsigned long long mtu = 1400;
    auto number = MakeValue(tamu::registry::kValueTypeInteger, &mtu, 8);
    EXPECT_EQ(status::kOk, registry.CreateValue(0, "network/eth", "mtu", &number));
    mtu = 1500;
    EXPECT_EQ(status::kOk, registry.CreateValue(0, "network/eth", "mtu", &number));
    auto name = tamu::registry::TextValue("uplink");
    EXPECT_EQ(status::kOk, registry.CreateValue(0, "network/eth", "name", &name));
    EXPECT_EQ(status::kOk, registry.CreateValue(0, "network/eth", "state", nullptr));
    auto mac = MakeValue(2, "\x00\x1b\xff", 3);
    EXPECT_EQ(status::kOk, registry.CreateValue(0, "network/eth", "mac", &mac));
    EXPECT_EQ(status::kOk, registry.SetCurrentUserId(1000));
    EXPECT_EQ(status::kOk, registry.CreateKey(0, "shop"));
    registry.Finalize();
  }

  const std::string& path() const { return path_; }

  // Adds a value as the administrator.
  void AddValue(const char* key, const char* name, tamu::registry::Value value) {
    tamu::registry::Registry registry(path_.c_str(), tamu::registry::kAdministratorId);
    EXPECT_EQ(status::kOk, registry.Initialize());
    EXPECT_EQ(status::kOk, registry.CreateValue(0, key, name, &value));
  }
  // Adds keys as the administrator.
  void AddKeys(const std::vector<std::string>& keys) {
    tamu::registry::Registry registry(path_.c_str(), tamu::registry::kAdministratorId);
    EXPECT_EQ(status::kOk, registry.Initialize());
    for (const std::string& key : keys)
      EXPECT_EQ(status::kOk, registry.CreateKey(0, key.c_str())) << key;
  }
  void AddKey(const std::string& key) { AddKeys({key}); }

 private:
  TempDir folder_;
  std::string path_;
};
