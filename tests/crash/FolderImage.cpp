#include "tests/crash/FolderImage.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <utility>

namespace crash {
namespace {

void Write(std::string* bytes, unsigned int offset, const char* data, size_t size) {
  if (bytes->size() < offset + size) bytes->resize(offset + size);
  bytes->replace(offset, size, data, size);
}

std::string BytesOf(const std::string& path) {
  std::string bytes(static_cast<size_t>(std::filesystem::file_size(path)), 0);
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  EXPECT_EQ(static_cast<ssize_t>(bytes.size()), read(fd, bytes.data(), bytes.size())) << path;
  close(fd);
  return bytes;
}

void MakeFile(const std::string& path, const std::string& bytes) {
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  ASSERT_GE(fd, 0) << path;
  EXPECT_EQ(static_cast<ssize_t>(bytes.size()), write(fd, bytes.data(), bytes.size()));
  close(fd);
}

}  // namespace

FolderImage FolderImage::Of(const std::string& folder) {
  FolderImage image;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    const int number = static_cast<int>(image.files.size());
    image.names[entry.path().filename().string()] = number;
    image.files[number] = BytesOf(entry.path().string());
  }
  return image;
}

void FolderImage::Apply(const Call& call) {
  ApplyToNames(call);
  ApplyToBytes(call);
}

void FolderImage::ApplyTorn(const Call& call, unsigned int size) {
  Write(&files[call.file], call.offset, call.bytes.data(), size);
}

void FolderImage::ApplyToNames(const Call& call) {
  if (call.kind == Call::kMake) {
    names[call.name] = call.file;
  } else if (call.kind == Call::kRemove) {
    names.erase(call.name);
  } else if (call.kind == Call::kExchange) {
    if (NumberOf(call.name) != call.file || names.count(call.to) == 0) return;  // a making was lost
    std::swap(names[call.name], names[call.to]);
  } else if (call.kind == Call::kLink || call.kind == Call::kRename) {
    const auto from = names.find(call.name);
    if (from == names.end() || from->second != call.file) return;  // its making was lost
    names[call.to] = from->second;
    if (call.kind == Call::kRename) names.erase(from);
  }
}

void FolderImage::ApplyToBytes(const Call& call) {
  if (call.kind == Call::kMake) {
    files[call.file].clear();
  } else if (call.kind == Call::kWrite || call.kind == Call::kStore) {
    Write(&files[call.file], call.offset, call.bytes.data(), call.bytes.size());
  } else if (call.kind == Call::kLength) {
    files[call.file].resize(call.offset);
  }
}

int FolderImage::NumberOf(const std::string& name) const {
  const auto found = names.find(name);
  return found == names.end() ? -1 : found->second;
}

void FolderImage::PutInto(const std::string& folder) const {
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    std::filesystem::remove(entry.path());
  }
  std::map<int, std::string> made;  // number -> path
  for (const auto& [name, number] : names) {
    const std::string path = folder + "/" + name;
    if (made.count(number) != 0) {
      EXPECT_EQ(0, link(made[number].c_str(), path.c_str()));
    } else {
      MakeFile(path, files.at(number));
      made[number] = path;
    }
  }
}

}  // namespace crash
