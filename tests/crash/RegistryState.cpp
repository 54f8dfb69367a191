#include "tests/crash/RegistryState.h"

#include <algorithm>

#include "tests/crash/Script.h"
#include "tests/crash/ScriptRun.h"
#include "tests/registry/TreeText.h"

namespace crash {

using tamu::registry::NameList;
using tamu::registry::ReadValue;
using tamu::registry::Registry;

namespace {

constexpr unsigned int kMostNames = 1000;
constexpr size_t kLongestTold = 100;      // characters of a line
constexpr unsigned int kStrayBytes = 84;  // four bytes from here on have no meaning

void AddValues(Registry& registry, const char* path, std::string* text) {
  NameList names(kMostNames);
  registry.ListValues(0, path, 0, 0, &names);
  for (unsigned int i = 0; i < names.Count(); ++i) {
    const char* name = names.GetName(i, nullptr);
    ReadValue value;
    const unsigned int status = registry.GetValue(0, path, name, &value);
    *text += std::string("  ") + name + " status " + std::to_string(status) + " type " +
             std::to_string(value.type) + " ";
    if (value.data != nullptr) text->append(static_cast<const char*>(value.data), value.size);
    *text += "\n";
  }
}

void AddKey(Registry& registry, const char* path, std::string* text) {
  unsigned char permission = 0;
  unsigned long long number = 0;
  const unsigned int reached = registry.GetKeyPermission(0, path, &permission);
  const unsigned int isSet = registry.GetDefaultValue(0, path, &number);
  *text += std::string(path) + " status " + std::to_string(reached) + " permission " +
           std::to_string(permission) + " default " + std::to_string(isSet) + " " +
           std::to_string(number) + "\n";
  AddValues(registry, path, text);
}

std::string ContentOf(Registry& registry) {
  NameList names(kMostNames);
  std::string text = "status " + std::to_string(registry.ListKeys(0, "", 0, 0, &names, 0)) + "\n";
  AddKey(registry, "", &text);
  for (unsigned int i = 0; i < names.Count(); ++i) {
    AddKey(registry, names.GetName(i, nullptr), &text);
  }
  return text;
}

// The start of the first line that is different.
std::string FirstLine(const std::string& expected, const std::string& found) {
  size_t at = 0;
  while (at < expected.size() && at < found.size() && expected[at] == found[at]) ++at;
  const size_t start = at == 0 ? 0 : expected.rfind('\n', at - 1) + 1;
  const auto line = [=](const std::string& text) {
    return start < text.size()
               ? text.substr(start, std::min(text.find('\n', at) - start, kLongestTold))
               : "(end)";
  };
  return ::testing::PrintToString(line(found)) + " instead of " +
         ::testing::PrintToString(line(expected));
}

bool IsBackup(const std::string& name) {
  const std::string ending = ".backup";
  return name.size() > ending.size() &&
         name.compare(name.size() - ending.size(), ending.size(), ending) == 0;
}

// The first file of `some` that `all` does not have with the same bytes; of the backups.
std::string MissingBackup(const RegistryState& some, const RegistryState& all) {
  for (const auto& [name, bytes] : some.others) {
    const auto file = all.others.find(name);
    if (IsBackup(name) && (file == all.others.end() || file->second != bytes)) return name;
  }
  return "";
}

}  // namespace

RegistryState RegistryState::Read(const std::string& folder, Durability durability) {
  const std::string path = folder + "/" + kRegistryName;
  RegistryState state;
  Registry registry(path.c_str(), kUserId);
  Prepare(registry, durability);
  state.opening = registry.Initialize();
  if (state.opening != 0) return state;
  state.content = ContentOf(registry);
  registry.Finalize();
  FolderImage image = FolderImage::Of(folder);
  for (const auto& [name, number] : image.names) state.others[name] = image.files[number];
  state.file = MeaningfulBytes(std::move(state.others[kRegistryName]));
  state.others.erase(kRegistryName);
  return state;
}

void RegistryState::Decode(const std::string& folder) {
  const std::string path = folder + "/" + kRegistryName;
  tree = tamu::registry::Describe(DecodeTree(path)) + StructureFindings(path);
}

std::string MeaningfulBytes(std::string file) {
  if (file.size() > kStrayBytes + 4) file.replace(kStrayBytes, 4, 4, 0);
  constexpr unsigned int kLengthAt = 4180 + 32;  // what lies behind that length is nothing's
  if (file.size() < kLengthAt + 4) return file;
  size_t length = 0;
  for (unsigned int i = 4; i > 0; --i) {
    length = length << 8 | static_cast<unsigned char>(file[kLengthAt + i - 1]);
  }
  if (length < file.size()) file.resize(length);
  return file;
}

std::string Difference(const RegistryState& expected, const RegistryState& found) {
  if (found.opening != 0) return "cannot be opened: " + std::to_string(found.opening);
  if (found.content != expected.content) return FirstLine(expected.content, found.content);
  const std::string journal = std::string(kRegistryName) + ".journal";
  return found.others.count(journal) == 0 ? "" : journal + " is left behind";
}

std::string DifferenceOfTrees(const RegistryState& expected, const RegistryState& found) {
  return found.tree == expected.tree ? "" : FirstLine(expected.tree, found.tree);
}

std::string DifferenceOfBackups(const RegistryState& expected, const RegistryState& found) {
  const std::string gone = MissingBackup(expected, found);
  if (!gone.empty()) return gone + " is gone or other";
  const std::string made = MissingBackup(found, expected);
  return made.empty() ? "" : made + " is there";
}

}  // namespace crash
