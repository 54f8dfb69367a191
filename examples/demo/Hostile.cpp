// Opens files that are no registry, or a damaged one, and asks them for everything.
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <string>

#include "examples/Check.h"
#include "registry/Registry.h"

using namespace tamu::registry;

namespace {

constexpr unsigned int kCopies = 1000;
constexpr unsigned int kMostWrong = 200;  // bytes

std::string Load(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void Store(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

// Remembers the first status that is not one of those that undamaged files give.
class Walk {
 public:
  explicit Walk(Registry& registry) : registry_(registry) {}

  // Lists all keys, all their values, and reads them.
  unsigned int Everything() {
    KeyInfo info = KeyInfo();
    Note(registry_.GetKeyInfo(0, "", &info));
    NameList keys(500);
    Note(registry_.ListKeys(0, "", 0, 0, &keys, 0));
    for (unsigned int i = 0; i < keys.Count(); ++i) Values(keys.GetName(i, nullptr));
    return first_;
  }

 private:
  void Values(const char* key) {
    NameList names(100);
    const unsigned int status = registry_.ListValues(0, key, 0, 0, &names);
    if (status != status::kLimit) Note(status);  // what a key without values answers, too
    for (unsigned int i = 0; i < names.Count(); ++i) {
      ReadValue value;
      Note(registry_.GetValue(0, key, names.GetName(i, nullptr), &value));
    }
  }
  void Note(unsigned int status) {
    if (first_ == status::kOk) first_ = status;
  }

  Registry& registry_;
  unsigned int first_ = status::kOk;
};

// What reading all of a file answers, from Initialize on.
unsigned int Ask(const std::string& path) {
  Registry registry(path.c_str(), kAdministratorId);
  const unsigned int status = registry.Initialize();
  return status == status::kOk ? Walk(registry).Everything() : status;
}

void Show(const char* what, const std::string& path, const std::string& bytes) {
  Store(path, bytes);
  const unsigned int status = Ask(path);
  const char* left = Load(path) == bytes ? "left alone" : "CHANGED";
  std::printf("%-30s %s, status %u: %s\n", what, left, status, StatusText(status));
  if (status == status::kOk || Load(path) != bytes) std::exit(1);
}

// Up to so many wrong bytes, half of them where the file tells what is where.
std::string Damaged(std::string bytes, std::mt19937& random) {
  constexpr std::size_t kHeaders = 5000;
  const auto wrong = 1 + random() % kMostWrong;
  for (auto i = wrong; i > 0; --i) {
    const std::size_t room = random() % 2 == 0 ? kHeaders : bytes.size();
    bytes[random() % room] = static_cast<char>(random());
  }
  return bytes;
}

void ShowDamaged(const std::string& path, const std::string& good) {
  std::mt19937 random(1);
  std::map<unsigned int, unsigned int> answers;
  for (unsigned int i = 0; i < kCopies; ++i) {
    Store(path, Damaged(good, random));
    ++answers[Ask(path)];
  }
  std::printf("%u copies with 1 to %u wrong bytes each, asked for all they hold:\n", kCopies,
              kMostWrong);
  for (const auto& answer : answers) {
    std::printf("%6u answer %2u: %s\n", answer.second, answer.first, StatusText(answer.first));
  }
  std::printf("None has crashed, none has hung.\n");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::printf("usage: %s FILE SCRATCH\n", argv[0]);
    return 2;
  }
  const std::string good = Load(argv[1]);
  const std::string scratch = argv[2];
  Show("an empty file", scratch, "");
  Show("a text", scratch, std::string(100000, 'x'));
  Show("a registry, cut in the middle", scratch, good.substr(0, good.size() / 2));
  ShowDamaged(scratch, good);
}
