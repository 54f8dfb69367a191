// How the framework's registry is opened.
#pragma once

namespace tamu::registry {
class Registry;
}

// What SetYAXDurability has chosen; where that is nothing, what the environment variable
// YAX_DURABILITY names. A word that it does not know is told and ignored.
class DurabilityChoice {
 public:
  // yax_framework::kBadArgument for a number that is no choice.
  static unsigned int Set(unsigned int durability);
  // Asks `registry`, which is not initialised yet, for what was chosen, if anything was.
  static void Ask(tamu::registry::Registry& registry);

 private:
  static unsigned int Find();
  static unsigned int FromEnvironment();

  static unsigned int sChosen;
};
