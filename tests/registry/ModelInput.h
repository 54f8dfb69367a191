// Random arguments for the operations of a registry.
#pragma once

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/registry/RegistryRig.h"

namespace tamu::registry {

class ModelInput {
 public:
  // Answers a number below its argument, or any of 32 bits with 0.
  using Source = std::function<unsigned int(unsigned int)>;

  // The same numbers under the same seed.
  explicit ModelInput(unsigned int seed)
      : draw_([random = std::mt19937(seed)](unsigned int limit) mutable {
          return static_cast<unsigned int>(limit == 0 ? random() : random() % limit);
        }) {}
  explicit ModelInput(Source draw) : draw_(std::move(draw)) {}

  unsigned int Below(unsigned int limit) { return draw_(limit); }
  bool OneIn(unsigned int times) { return Below(times) == 0; }

  // ---- names and paths

  // The paths that Path mostly draws from; each as somebody has spelled it.
  void AddPath(const std::string& path) { paths_.push_back(path); }
  void ForgetPaths() { paths_.clear(); }

  // Mostly the path of a key, or of a new one below a key; sometimes an odd spelling or a guess.
  std::string Path(bool isNew) {
    std::string path = OneIn(3) ? "" : KnownPath();
    if (isNew || OneIn(8)) path += (path.empty() ? "" : "/") + Component();
    if (OneIn(10)) path += "/";
    if (OneIn(30)) path += "/" + Component();
    if (OneIn(60)) path += "//";
    if (OneIn(10)) path = "/" + path;
    if (OneIn(60)) path = "/" + path;
    return path;
  }

  // ---- values

  std::string ValueName() {
    if (OneIn(50)) return "";
    const std::string name(OneIn(6) ? 29 + Below(12) : 1, static_cast<char>('v' + Below(3)));
    return OneIn(4) ? name + '\xE0' : name;
  }

  std::string Data() {
    static const unsigned int kSizes[] = {0,   1,   4,   8,   12,   63,   64,  65,
                                          127, 128, 129, 640, 1023, 1024, 1025};
    const unsigned int size = kSizes[OneIn(4) ? Below(sizeof kSizes / sizeof *kSizes) : Below(8)];
    std::string data;
    for (unsigned int i = 0; i < size; ++i) data += static_cast<char>(Below(256));
    return data;
  }

  unsigned int Type() { return OneIn(30) ? 6 + Below(3) : Below(6); }

  unsigned long long Number() {
    const unsigned long long high = draw_(0);
    return high << 32 | static_cast<unsigned long long>(draw_(0));
  }

  // ---- users and rights

  unsigned int User() {
    static const unsigned int kUsers[] = {kAdmin, kAdmin, 7, 0xAC295ADD, 0};
    return kUsers[Below(5)];
  }

  // Mostly many rights, so that most operations are allowed.
  unsigned char Permission() {
    static const unsigned char kMost[] = {0x0F, 0x5F, 0xFF, 0xFF, 0x1F, 0xDF};
    return static_cast<unsigned char>(OneIn(4) ? Below(256) : kMost[Below(6)]);
  }

 private:
  // Mostly few different characters, so that names share beginnings; both halves of the bytes.
  char Character() {
    static const char kFew[] = {'a', 'b', '\x80', '\xFF', '\x01', '\x7F'};
    if (!OneIn(6)) return kFew[Below(sizeof kFew)];
    const char any = static_cast<char>(1 + Below(255));
    return any == '/' ? '0' : any;
  }

  std::string Component() {
    std::string name;
    if (OneIn(3)) name.assign(15 + Below(5), OneIn(2) ? 's' : '\x90');
    if (!names_.empty() && OneIn(2)) {
      const std::string& known = names_[Below(static_cast<unsigned int>(names_.size()))];
      name = known.substr(0, Below(static_cast<unsigned int>(known.size()) + 1));
    }
    const unsigned int more = OneIn(4) ? Below(40) : Below(4);
    for (unsigned int i = 0; i < more || name.empty(); ++i) name += Character();
    name.resize(std::min<size_t>(name.size(), 40));
    names_.push_back(name);
    return name;
  }

  std::string KnownPath() {
    return paths_.empty() ? "" : paths_[Below(static_cast<unsigned int>(paths_.size()))];
  }

  Source draw_;
  std::vector<std::string> names_;  // components tried so far
  std::vector<std::string> paths_;
};

// A value to be created. The size of a number may be left at 0.
struct NewValue {
  explicit NewValue(ModelInput& in) : type(in.Type()), data(in.Data()) {
    isUntold = type == 0 && data.empty();
    if (isUntold) data = Little(in.Number(), 8);
  }

  unsigned int type;
  std::string data;
  bool isUntold;
};

// The same for a registry.
class NewExactValue : public ExactValue {
 public:
  explicit NewExactValue(const NewValue& value) : ExactValue(value.type, value.data) {
    if (value.isUntold) size = 0;
  }
};

}  // namespace tamu::registry
