#include <cstring>
#include <map>

#include "bench/peers/Peer.h"
#include "registry/Registry.h"

namespace tamu::bench {

namespace {

using registry::NameList;
using registry::ReadValue;
using registry::Registry;
using registry::Value;
using registry::WalkedKey;
using registry::WalkedValue;

void Check(unsigned int status, const char* what) {
  if (status == registry::status::kOk) return;
  Expect(false, (std::string(what) + ": " + registry::StatusText(status)).c_str());
}

// What the three ways share: the process works on one registry.
struct SharedRegistry {
  std::unique_ptr<Registry> object;
  unsigned int users = 0;
};
SharedRegistry sShared;

class Sum : public registry::WalkVisitor {
 public:
  Then VisitKey(const WalkedKey&) override { return Then::kGoOn; }
  Then VisitValue(const WalkedKey&, const WalkedValue& value) override {
    sum += value.size + *static_cast<const unsigned char*>(value.data);
    return Then::kGoOn;
  }
  unsigned long long sum = 0;
};

class YaxPeer : public Peer, public Reader {
 public:
  explicit YaxPeer(Way way) : way_(way) {}

  void Open(const std::string& folder, Sync sync) override {
    if (sShared.users++ > 0) return;
    const std::string path = folder + "/yax.rce";
    sShared.object = std::make_unique<Registry>(path.c_str(), registry::kAdministratorId);
    registry::RegistryOptions options;
    options.durability =
        sync == Sync::kAlways ? registry::Durability::kPower : registry::Durability::kProcess;
    Check(Shared().SetOptions(options), "SetOptions");
    Check(Shared().Initialize(), "Initialize");
  }
  void Close() override {
    handle_ = 0;
    handles_.clear();
    if (--sShared.users == 0) sShared.object.reset();
  }
  // An operation without a handle has closed what was open.
  void Prepare() override {
    handles_.clear();
    handle_ = 0;
    ReadValue value;
    Shared().GetValue(0, "none", "none", &value);
    if (way_ == Way::kRoot) Check(Shared().OpenKey("", &handle_), "OpenKey");
  }
  // A copy of what an operation needs: handles are of all threads.
  std::unique_ptr<Reader> MakeReader() override { return std::make_unique<YaxPeer>(*this); }
  Reader& Main() override { return *this; }

  unsigned int Get(const char* key, const char* name, void* buffer,
                   unsigned int capacity) override {
    ReadValue value;
    const bool isHeld = way_ == Way::kKey;
    const unsigned int handle = isHeld ? HandleOf(key) : handle_;
    Shared().GetValue(handle, isHeld ? "" : key, name, &value);
    if (value.size == 0 || value.size > capacity) return 0;
    std::memcpy(buffer, value.data, value.size);
    return value.size;
  }
  void MakeKey(const char* key) override { Check(Shared().CreateKey(handle_, key), key); }
  void RemoveKey(const char* key) override { Check(Shared().DeleteKey(handle_, key), key); }
  void MakeValue(const char* key, const char* name, unsigned int type, const void* data,
                 unsigned int size) override {
    Value value = registry::MakeValue(type, data, size);
    Check(Shared().CreateValue(handle_, key, name, &value), key);
  }
  void SetValue(const char* key, const char* name, unsigned int type, const void* data,
                unsigned int size) override {
    Value value = registry::MakeValue(type, data, size);
    Check(Shared().SetValue(handle_, key, name, &value), key);
  }
  void RemoveValue(const char* key, const char* name) override {
    Check(Shared().DeleteValue(handle_, key, name), key);
  }
  void List(const char* key, bool isDeep, Names& names) override {
    constexpr unsigned int kMany = 10344;  // more keys than fit into a file
    constexpr unsigned int kFew = 32;
    NameList list(isDeep ? kMany : kFew);
    Check(Shared().ListKeys(handle_, key, 0, 0, &list, 0), key);
    names.count += list.Count();
  }
  unsigned int Count(const char* key) override {
    registry::KeyInfo info;
    Check(Shared().GetKeyInfo(handle_, key, &info), key);
    return info.totalKeyCount;
  }
  unsigned long long ReadAll() override {
    Sum sum;
    Check(Shared().Walk(handle_, "", sum), "Walk");
    return sum.sum;
  }
  void BackUp(const std::string& folder) override {
    Check(Shared().BackupKey(0, "", (folder + "/yax.bak").c_str()), "BackupKey");
  }

 private:
  static Registry& Shared() { return *sShared.object; }

  unsigned int HandleOf(const char* key) {
    unsigned int& handle = handles_[key];
    if (handle == 0) Check(Shared().OpenKey(key, &handle), key);
    return handle;
  }

  Way way_;
  unsigned int handle_ = 0;
  std::map<const void*, unsigned int> handles_;  // by the text's address
};

}  // namespace

std::unique_ptr<Peer> MakeYaxPeer(Way way) {
  return std::make_unique<YaxPeer>(way);
}

}  // namespace tamu::bench
