// A registry file that is damaged as the input tells: every operation, with handles and without,
// under both policies of space, answers a status.
#include "fuzz/support/Harness.h"
#include "tests/crash/MemoryFolder.h"
#include "tests/registry/EveryOperation.h"

namespace fuzz {
namespace {

using namespace tamu::registry;

void ChangeThroughHandle(Registry& registry, unsigned int handle, Bytes& in) {
  const char* const path = in.Below(2) == 0 ? "" : "b/c";
  unsigned long long number = in.Below(256);
  Value value = {0, sizeof number, &number};
  NameList names(50);
  switch (in.Below(8)) {
    case 0:
      return hostile::ExpectKnown(registry.CreateKey(handle, "b/new", number));
    case 1:
      return hostile::ExpectKnown(registry.CreateValue(handle, path, "number", &value));
    case 2:
      return hostile::ExpectKnown(registry.SetValue(handle, path, "number", &value));
    case 3:
      return hostile::ExpectKnown(registry.DeleteValue(handle, path, "long"));
    case 4:
      return hostile::ExpectKnown(registry.DeleteKey(handle, "b/c"));
    case 5:
      return hostile::ExpectKnown(registry.ListKeys(handle, path, 0, 0, &names, 0));
    case 6:
      return hostile::ExpectKnown(registry.ListValues(handle, path, 0, 0, &names));
    default:
      return hostile::ExpectKnown(registry.SetDefaultValue(handle, path, number));
  }
}

void WorkThroughHandle(Registry& registry, Bytes& in) {
  unsigned int handle = 0;
  const unsigned int opened = registry.OpenKey("a", &handle);
  hostile::ExpectKnown(opened);
  if (opened != 0) return;
  for (unsigned int i = 0; i < 8 && !in.IsOver(); ++i) ChangeThroughHandle(registry, handle, in);
  hostile::ExpectKnown(registry.CloseKey(handle));
}

void RunRegistryFile(Bytes& in) {
  static const crash::MemoryFolder sFolder;
  static const std::string sPath = sFolder.path() + "/registry";
  static const std::string sSound = hostile::SoundFile(sFolder.path() + "/sound");
  const unsigned int choices = in.Below(256);
  std::string file = sSound;
  for (unsigned int damages = choices % 8; damages > 0 && file.size() == sSound.size(); --damages) {
    hostile::Mutate(in, &file);
  }
  PutFile(sPath, file);
  Registry registry(sPath.c_str(), kAdministratorId);
  RegistryOptions options;
  options.durability = Durability::kNone;
  options.space = (choices & 8) != 0 ? SpacePolicy::kReuse : SpacePolicy::kExact;
  options.checkAtOpening = (choices & 16) != 0;
  EXPECT_EQ(status::kOk, registry.SetOptions(options));
  const unsigned int opened = registry.Initialize();
  hostile::ExpectKnown(opened);
  if (opened != 0) {
    EXPECT_TRUE(GetFile(sPath) == file) << "a file that is refused is left alone";
    return;
  }
  if ((choices & 32) != 0) hostile::ReadEverything(registry);
  if ((choices & 64) != 0) WorkThroughHandle(registry, in);
  for (unsigned int i = 0; i < 20 && !in.IsOver(); ++i) hostile::ChangeSomething(registry, in);
  if ((choices & 128) != 0) hostile::CareForFile(registry);
  hostile::ReadEverything(registry);
}

const Harness sRegistryFile("RegistryFile", RunRegistryFile);

}  // namespace
}  // namespace fuzz
