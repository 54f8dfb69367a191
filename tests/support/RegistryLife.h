// What a program does with a registry through the C interface, as one text: what each step was
// answered, and what was read.
#pragma once

#include <set>
#include <string>

#include "tests/platform/TestFiles.h"
#include "yax/yax.h"

namespace yax {

class RegistryLife {
 public:
  RegistryLife(const std::string& folder, unsigned int durability)
      : folder_(folder), durability_(durability) {}

  // A life from the opening to the closing. `mayHave` becomes the numbers that "kept" may have
  // then.
  std::string Run(std::set<int64_t>* mayHave) {
    text_.clear();
    known_ = mayHave;
    yax_options options = YAX_OPTIONS_USUAL;
    options.durability = durability_;
    if (Told("open", yax_open((folder_ + "/registry").c_str(), &options, &registry_)) == YAX_OK) {
      KeepNumbers();
      Change();
      Carry();
      Look();
      yax_close(registry_);
    }
    return text_;
  }
  // True when nothing but statuses of yax_base.h was told, in any life.
  bool HasKnownStatuses() const {
    static const std::set<yax_status> kKnown = {
        YAX_OK,    YAX_NOT_FOUND,    YAX_INPUT_OUTPUT, YAX_CANNOT_OPEN,  YAX_NO_MEMORY,
        YAX_BUSY,  YAX_EXISTS,       YAX_BAD_ARGUMENT, YAX_NO_SPACE,     YAX_NO_DATA,
        YAX_LIMIT, YAX_INVALID_FILE, YAX_NO_RIGHT,     YAX_NOT_SUPPORTED};
    for (const yax_status status : statuses_) {
      if (kKnown.count(status) == 0) return false;
    }
    return true;
  }

 private:
  yax_status Told(const char* step, yax_status status) {
    text_ += std::string(step) + " " + std::to_string(status) + "\n";
    statuses_.insert(status);
    return status;
  }
  // A key that is there until the next call.
  yax_key* At(const char* path) {
    yax_key_free(key_);
    key_ = nullptr;
    Told(path, yax_key_at(registry_, path, &key_));
    return key_;
  }
  void Keep(int64_t number) {
    const yax_status status = Told("keep", yax_set_int(At(""), "kept", number));
    if (status == YAX_OK) *known_ = {number};
    // Nobody knows what a disk has that refuses to be synced.
    if (status != YAX_OK && durability_ == YAX_DURABILITY_POWER) known_->insert(number);
  }
  void KeepNumbers() {
    Keep(1);
    Keep(2);
    yax_transaction* transaction = nullptr;
    if (Told("begin", yax_begin(registry_, &transaction)) == YAX_OK) {
      std::set<int64_t> before = *known_;
      Keep(3);
      Told("text", yax_set_text(At("in/it"), "t", "text", YAX_ZERO_ENDED));
      const std::set<int64_t> after = *known_;
      if (Told("commit", yax_commit(transaction)) != YAX_OK) {
        *known_ = before;
        if (durability_ == YAX_DURABILITY_POWER) known_->insert(after.begin(), after.end());
      }
    }
    int64_t number = 0;
    if (Told("kept", yax_get_int(At(""), "kept", &number)) == YAX_OK) {
      text_ += known_->count(number) > 0 ? "as it was told\n" : "another number\n";
    }
    yax_key_free(key_);
    key_ = nullptr;
  }
  void Change() {
    const std::string data(700, 'd');
    Told("watch", yax_watch_key(At("a"), &watch_));
    Told("bytes", yax_set_bytes(At("a/b"), "data", data.data(), data.size()));
    Told("real", yax_set_real(At("a/b"), "real", 0.5));
    Told("default", yax_key_set_default(At("a/b"), 7));
    Told("rights", yax_key_set_rights(At("a/b"), 0xFF));
    Told("copy", yax_key_copy(At("a"), "copy"));
    Told("move", yax_key_move(At("copy"), "moved"));
    Told("remove value", yax_remove_value(At("moved/b"), "data"));
    Told("remove", yax_key_remove(At("moved")));
    yax_change change = {};
    while (watch_ != nullptr && Told("next", yax_watch_next(watch_, 0, &change)) == YAX_OK) {
      text_ += std::string(change.path) + " " + change.name + "\n";
    }
    yax_watch_free(watch_);
    watch_ = nullptr;
    text_ += yax_change_descriptor(registry_) >= 0 ? "descriptor\n" : "no descriptor\n";
  }
  void Carry() {
    const std::string backup = folder_ + "/backup";
    Told("backup", yax_key_backup(At("a"), backup.c_str()));
    Told("again", yax_key_backup(At("a"), backup.c_str()));
    Told("make", yax_key_make(At("r")));
    Told("restore", yax_key_restore(At("r"), backup.c_str()));
  }
  void Look() {
    yax_names* names = nullptr;
    if (Told("branch", yax_key_branch(At(""), &names)) == YAX_OK) {
      for (size_t i = 0; i < yax_names_count(names); ++i) {
        text_ += std::string(yax_names_at(names, i, nullptr)) + "\n";
      }
    }
    yax_names_free(names);
    char data[1024];
    size_t size = 0;
    if (Told("get", yax_get_bytes(At("a/b"), "data", data, sizeof data, &size)) == YAX_OK) {
      text_ += std::to_string(std::string(data, size) == std::string(700, 'd')) + "\n";
    }
    unsigned int condition = 9;
    Told("check", yax_check(registry_, &condition));
    text_ += std::to_string(condition) + "\n";
    Told("compact", yax_compact(registry_));
    yax_room room = {};
    room.size = sizeof room;
    Told("room", yax_get_room(registry_, &room));
    Told("sync", yax_sync(registry_));
    yax_key_free(key_);
    key_ = nullptr;
  }

  const std::string folder_;
  const unsigned int durability_;
  std::string text_;
  std::set<yax_status> statuses_;
  std::set<int64_t>* known_ = nullptr;
  yax_registry* registry_ = nullptr;
  yax_key* key_ = nullptr;
  yax_watch* watch_ = nullptr;
};

}  // namespace yax
