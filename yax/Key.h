// A place in the registry, where a key may be, and its values.
#pragma once

#include <memory>
#include <string>

#include "yax/Names.h"
#include "yax/Stored.h"

namespace yax {

// Names a key and stays good whatever other threads and programs make and remove. Holds no lock,
// can be moved, and may outlive the registry: operations then answer YAX_NO_RIGHT. One that was
// named by an impossible path answers YAX_BAD_ARGUMENT. Any thread may use it.
class Key {
 public:
  Key() = default;  // names nothing
  // Takes a key of the C interface over.
  explicit Key(yax_key* key) : key_(key) {}

  // From this key on: eth0["ip/address"].
  Key operator[](const std::string& path) const {
    yax_key* below = nullptr;
    if (HasZero(path)) {
      yax_note_failure(nullptr, path.c_str(), YAX_BAD_ARGUMENT, "a zero byte is in the path");
      return Key();
    }
    Status(yax_key_below(key_.get(), path.c_str(), &below)).Ignore();  // null tells it
    return Key(below);
  }
  std::string path() const { return yax_key_path(key_.get()); }  // from the root

  // ---- values

  // The value, or why it cannot be had: YAX_NOT_FOUND, YAX_WRONG_TYPE, YAX_RANGE, ...
  template <class T>
  Result<T> Get(const std::string& name) const {
    T value{};
    if (HasZero(name)) return Refuse(name);
    const Status status = Stored<T>::Read(key_.get(), name.c_str(), &value);
    if (status.ok()) return Result<T>(std::move(value));
    if (status == Status(YAX_RANGE)) yax_note_failure(get(), name.c_str(), YAX_RANGE, nullptr);
    return status;
  }
  // The value, or the fallback, whyever it cannot be had.
  template <class T>
  T Get(const std::string& name, T fallback) const {
    return Get<T>(name).value_or(std::move(fallback));
  }
  // The same for a text.
  std::string Get(const std::string& name, const char* fallback) const {
    return Get<std::string>(name).value_or(fallback);
  }
  // Creates or replaces a value; makes the key, and those above it, when they are missing.
  template <class T>
  Status Set(const std::string& name, const T& value) {
    if (HasZero(name)) return Refuse(name);
    return Stored<StoredAs<T>>::Write(key_.get(), name.c_str(), value);
  }
  // Whether there is a value of that name, set or not.
  bool Has(const std::string& name) const {
    return !HasZero(name) && yax_value_exists(key_.get(), name.c_str(), nullptr) == YAX_OK;
  }
  // Deletes a value. YAX_NOT_FOUND: there is none.
  Status Remove(const std::string& name) {
    return HasZero(name) ? Refuse(name) : Status(yax_remove_value(key_.get(), name.c_str()));
  }

  // ---- the key itself

  // Whether there is such a key.
  bool Exists() const { return yax_key_exists(key_.get()) == YAX_OK; }
  // Makes it, and those above it; one that is there is fine, too.
  Status Make() {
    const yax_status status = yax_key_make(key_.get());
    return status == YAX_EXISTS ? Status() : Status(status);
  }
  // With its values and all keys below.
  Status Remove() { return yax_key_remove(key_.get()); }
  // The path counts from the root. YAX_EXISTS. This object goes on naming the old path.
  Status CopyTo(const std::string& newPath) const {
    return HasZero(newPath) ? Refuse(newPath) : Status(yax_key_copy(key_.get(), newPath.c_str()));
  }
  // The same, and the old key is gone.
  Status MoveTo(const std::string& newPath) {
    return HasZero(newPath) ? Refuse(newPath) : Status(yax_key_move(key_.get(), newPath.c_str()));
  }
  // The key with all below it, to a file that is made or replaced.
  Status BackUp(const std::string& file) const {
    return HasZero(file) ? Refuse(file) : Status(yax_key_backup(key_.get(), file.c_str()));
  }
  // Such a file back, in place of what there is.
  Status Restore(const std::string& file) {
    return HasZero(file) ? Refuse(file) : Status(yax_key_restore(key_.get(), file.c_str()));
  }
  // A number that belongs to the key itself, as the values do not. YAX_NO_DATA: none is set.
  Result<std::uint64_t> DefaultNumber() const {
    std::uint64_t number = 0;
    const Status status = yax_key_get_default(key_.get(), &number);
    return status ? Result<std::uint64_t>(number) : Result<std::uint64_t>(status);
  }
  // Makes no key. YAX_NOT_FOUND.
  Status SetDefaultNumber(std::uint64_t number) { return yax_key_set_default(key_.get(), number); }
  // The owner's rights in the low four bits, everybody else's above: 1 read, 2 modify, 4 create, 8
  // delete.
  Result<unsigned char> Rights() const {
    unsigned char rights = 0;
    const Status status = yax_key_get_rights(key_.get(), &rights);
    return status ? Result<unsigned char>(rights) : Result<unsigned char>(status);
  }
  // For the owner and the administrator.
  Status SetRights(unsigned char rights) { return yax_key_set_rights(key_.get(), rights); }

  // ---- what there is, sorted by bytes

  Names Children() const { return List(yax_key_children); }  // the keys right below
  Names Branch() const { return List(yax_key_branch); }      // all below: "a", "a/b"
  Names Values() const { return List(yax_key_values); }      // the key's own
  // Calls visit(Key) for this key and all below it, a key before those below it.
  template <class Visit>
  Status Walk(Visit visit) const {
    const Names names = Branch();
    if (!names.status().ok()) return names.status();
    visit((*this)[""]);
    for (const std::string_view name : names) visit((*this)[std::string(name)]);
    return YAX_OK;
  }

  yax_key* get() const { return key_.get(); }  // for the C interface; this object's

 private:
  struct Free {
    void operator()(yax_key* key) const { yax_key_free(key); }
  };

  Status Refuse(const std::string& name) const {
    return yax_note_failure(get(), name.c_str(), YAX_BAD_ARGUMENT, "a zero byte is in the name");
  }
  Names List(yax_status (*list)(const yax_key*, yax_names**)) const {
    yax_names* names = nullptr;
    const Status status = list(key_.get(), &names);
    return {names, status};
  }

  std::unique_ptr<yax_key, Free> key_;
};

}  // namespace yax
