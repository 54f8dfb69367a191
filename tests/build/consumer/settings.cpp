// Uses the C++ interfaces and the C one as they are installed.
#include <yax/Framework.h>
#include <yax/Settings.h>
#include <yax/yax.h>

namespace {

constexpr YAX_GUID_ST kClock = {0x5BD2A3C0, 0x7C1E, 0x4F0A, {0x91, 2, 3, 4, 5, 6, 7, 8}};

class IClock : public IYAXCompBase {
 public:
  static constexpr const YAX_GUID_ST& kInterface = kClock;

 protected:
  ~IClock() = default;
};

bool SettingsWork() {
  yax::Registry registry("settings.rce");
  if (!registry || !registry["network/eth0"].Set("mtu", 1400)) return false;
  yax_key* key = nullptr;
  if (yax_key_at(registry.get(), "network/eth0", &key) != YAX_OK) return false;
  std::int64_t mtu = 0;
  const yax_status status = yax_get_int(key, "mtu", &mtu);
  yax_key_free(key);
  return status == YAX_OK && mtu == 1400;
}

bool ComponentsWork() {
  yax::Framework framework("components.rce");
  if (!framework || !framework.Register(kClock, {"clock", "/none/libclock.so"}).ok()) return false;
  const auto found = framework.Find(kClock);
  if (!found.ok() || (*found).name != "clock") return false;
  return yax::Load<IClock>(framework, kClock).status() == yax_framework::kCannotLoad;
}

}  // namespace

int main() {
  return SettingsWork() && ComponentsWork() ? 0 : 1;
}
