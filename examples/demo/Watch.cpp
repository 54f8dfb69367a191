// Watches a number that other processes change; reads the file, so it sees what they do at once.
#include <chrono>
#include <thread>

#include "examples/Check.h"
#include "registry/Registry.h"

using namespace tamu::registry;
using std::chrono::steady_clock;

namespace {

class Watched {
 public:
  Watched(Registry& registry, const char* key, const char* name)
      : registry_(registry), key_(key), name_(name) {}

  unsigned int Read(unsigned long long* number) {
    ReadValue value(kValueTypeInteger);
    const unsigned int status = registry_.GetValue(0, key_, name_, &value);
    if (status == status::kOk) *number = value.number();
    return status;
  }
  // Waits until two looks in a row show another number: one may fall into the middle of a change.
  bool WaitForChange(unsigned long long* number, steady_clock::time_point until) {
    unsigned long long before = *number;
    while (steady_clock::now() < until) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      unsigned long long now = *number;
      if (Read(&now) != status::kOk) continue;
      if (now != *number && now == before) {
        *number = now;
        return true;
      }
      before = now;
    }
    return false;
  }

 private:
  Registry& registry_;
  const char* key_;
  const char* name_;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) {
    std::printf("usage: %s FILE KEY NAME CHANGES\n", argv[0]);
    return 2;
  }
  std::setvbuf(stdout, nullptr, _IOLBF, 0);  // who reads a pipe sees each line as it comes
  Registry registry(argv[1], "installer");
  Check(registry.Initialize(), argv[1]);
  Watched watched(registry, argv[2], argv[3]);
  unsigned long long number = 0;
  Check(watched.Read(&number), argv[3]);
  std::printf("%s is %llu\n", argv[3], number);

  const steady_clock::time_point until = steady_clock::now() + std::chrono::seconds(30);
  for (int changes = std::atoi(argv[4]); changes > 0; --changes) {
    if (!watched.WaitForChange(&number, until)) return 1;
    std::printf("%s is %llu now\n", argv[3], number);
  }
}
