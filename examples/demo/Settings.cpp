// Makes the settings of a device: keys, and values of several types below them.
#include "examples/Check.h"
#include "registry/Registry.h"

using namespace tamu::registry;

namespace {

// Writes keys and values; what fails ends the program.
class Settings {
 public:
  explicit Settings(Registry& registry) : registry_(registry) {}

  // A parent must be there before its children.
  void Key(const char* path) { Check(registry_.CreateKey(0, path), path); }
  void Key(const char* path, unsigned long long defaultValue) {
    Check(registry_.CreateKey(0, path, defaultValue), path);
  }
  void Number(const char* key, const char* name, unsigned long long number) {
    Add(key, name, MakeValue(kValueTypeInteger, &number, sizeof number));
  }
  void Text(const char* key, const char* name, const char* text) {
    Add(key, name, TextValue(text));
  }
  void Bytes(const char* key, const char* name, const unsigned char* bytes, unsigned int size) {
    constexpr unsigned int kOurType = 2;  // types 2, 3 and 5 mean what their users agree on
    Add(key, name, MakeValue(kOurType, bytes, size));
  }
  // The owner may do everything, others may read. Keys below take it over when they are made.
  void ForEverybodyToRead(const char* key) {
    Check(registry_.SetKeyPermission(0, key, MakePermission(kRightsAll, kRightRead)), key);
  }

 private:
  void Add(const char* key, const char* name, Value value) {
    Check(registry_.CreateValue(0, key, name, &value), name);
  }

  Registry& registry_;
};

void WriteAll(Settings settings) {
  settings.Key("audio", 40);
  settings.Key("display", 75);
  settings.ForEverybodyToRead("display");
  settings.Text("display", "mode", "800x480");
  settings.Key("display/night", 20);
  settings.Text("display/night", "from", "22:00");

  settings.Key("network");
  settings.Key("network/eth0");
  settings.Number("network/eth0", "mtu", 1500);
  settings.Text("network/eth0", "address", "192.168.7.20");
  const unsigned char mac[] = {0x02, 0x00, 0x5E, 0x10, 0xA7, 0x01};
  settings.Bytes("network/eth0", "mac", mac, sizeof mac);
  settings.Key("network/wlan0");
  settings.Text("network/wlan0", "ssid", "workshop");

  settings.Key("system");
  settings.Text("system", "hostname", "panel-7");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::printf("usage: %s FILE\n", argv[0]);
    return 2;
  }
  Registry registry(argv[1], "installer");
  Check(registry.Initialize(), argv[1]);
  WriteAll(Settings(registry));
}
