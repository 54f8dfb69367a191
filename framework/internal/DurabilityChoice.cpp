#include "framework/internal/DurabilityChoice.h"

#include <cstdlib>
#include <cstring>

#include "framework/YAX.h"
#include "framework/internal/DebugMessage.h"
#include "registry/Registry.h"

using tamu::registry::Durability;
using tamu::registry::Registry;
using tamu::registry::RegistryOptions;

namespace {

constexpr char kVariable[] = "YAX_DURABILITY";
// In the order of YAX_FRAMEWORK_DURABILITY_NONE and those behind it.
constexpr const char* kWords[] = {"none", "process", "power"};

}  // namespace

unsigned int DurabilityChoice::sChosen = YAX_FRAMEWORK_DURABILITY_DEFAULT;

unsigned int DurabilityChoice::Set(unsigned int durability) {
  if (durability > YAX_FRAMEWORK_DURABILITY_DEFAULT) return yax_framework::kBadArgument;
  sChosen = durability;
  return yax_framework::kOk;
}

void DurabilityChoice::Ask(Registry& registry) {
  const unsigned int choice = Find();
  if (choice == YAX_FRAMEWORK_DURABILITY_DEFAULT) return;
  RegistryOptions options;
  options.durability = static_cast<Durability>(choice);
  registry.SetOptions(options);
}

unsigned int DurabilityChoice::Find() {
  return sChosen != YAX_FRAMEWORK_DURABILITY_DEFAULT ? sChosen : FromEnvironment();
}

unsigned int DurabilityChoice::FromEnvironment() {
  const char* word = std::getenv(kVariable);  // NOLINT(concurrency-mt-unsafe)
  if (word == nullptr || *word == '\0') return YAX_FRAMEWORK_DURABILITY_DEFAULT;
  for (unsigned int choice = 0; choice < YAX_FRAMEWORK_DURABILITY_DEFAULT; ++choice) {
    if (std::strcmp(word, kWords[choice]) == 0) return choice;
  }
  PrintDebugMessage(__LINE__, "%s is \"%s\", not none, process or power: ignored", kVariable, word);
  return YAX_FRAMEWORK_DURABILITY_DEFAULT;
}
