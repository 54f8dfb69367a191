// Operations that change a registry, drawn at random.
#pragma once

#include <string>
#include <vector>

namespace crash {

struct Step {
  enum Action {
    kCreateKey,  // with `number` as default value
    kSetDefault,
    kSetPermission,  // `number`
    kSetWatch,       // `number`
    kDeleteKey,
    kCreateValue,
    kSetValue,
    kDeleteValue,
    kBackup,  // to the file `name` in the registry's folder
    kRestore,
    kRewrite,      // the whole file, which becomes `data`
    kCompact,
    kTransaction,  // of the parts, cancelled when `number` is a multiple of 8
  };
  Action action;
  bool isThroughHandle;  // of the root key, which stays open; not for backups
  const char* path;
  const char* name;
  unsigned int type;
  std::string data;
  unsigned long long number;
  // With kTransaction. Those behind the first two are a transaction within it, which is cancelled
  // when `number` is odd.
  std::vector<Step> parts;
};

// Step number `index` of the random script with the seed. Few names, so that they meet: beginnings
// of others, siblings that share one, keys that are missing or there already; data of no, one and
// many blocks.
Step StepOf(unsigned int seed, unsigned int index);

// What a kRewrite puts there: a small registry with some of the names. Made by the first call, when
// no registry is open.
const std::string& RewrittenBytes();

// For messages: "SetValue(net, ip, 64 bytes)".
std::string Describe(const Step& step);

}  // namespace crash
