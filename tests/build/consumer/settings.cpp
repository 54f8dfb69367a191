// Uses the C++ and the C interface as they are installed.
#include <yax/Settings.h>
#include <yax/yax.h>

int main() {
  yax::Registry registry("settings.rce");
  if (!registry || !registry["network/eth0"].Set("mtu", 1400)) return 1;
  yax_key* key = nullptr;
  if (yax_key_at(registry.get(), "network/eth0", &key) != YAX_OK) return 1;
  std::int64_t mtu = 0;
  const yax_status status = yax_get_int(key, "mtu", &mtu);
  yax_key_free(key);
  return status == YAX_OK && mtu == 1400 ? 0 : 1;
}
