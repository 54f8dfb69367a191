// The C interface with any arguments, null pointers among them.
#include <cstring>

#include "fuzz/support/Harness.h"
#include "gtest/gtest.h"
#include "tests/crash/MemoryFolder.h"
#include "tests/support/StructureCheck.h"
#include "yax/yax.h"

namespace fuzz {
namespace {

constexpr unsigned int kPlaces = 4;  // for objects of a kind

class CallRun {
 public:
  CallRun(Bytes& in, const std::string& path) : in_(in), path_(path) {}
  ~CallRun() {
    yax_cancel(transaction_);
    for (yax_watch* each : watches_) yax_watch_free(each);
    for (yax_names* each : names_) yax_names_free(each);
    for (yax_key* each : keys_) yax_key_free(each);
    yax_close(registry_);
  }
  CallRun(const CallRun&) = delete;
  CallRun& operator=(const CallRun&) = delete;

  void Run() {
    Open();
    for (unsigned int i = 0; i < 60 && !in_.IsOver(); ++i) {
      const unsigned int kind = in_.Below(48);
      if (kind < 12) OfRegistry(kind);
      if (kind >= 12 && kind < 24) OfKeys(kind - 12);
      if (kind >= 24 && kind < 36) OfValues(kind - 24);
      if (kind >= 36) OfObjects(kind - 36);
    }
  }

 private:
  // One of the statuses that the header names.
  static void Expect(yax_status status) {
    EXPECT_STRNE("", yax_status_text(status));
    static const unsigned int kKnown[] = {0,  1,  2,  5,  9,  12, 16, 17,
                                          22, 28, 34, 37, 53, 59, 75, 79};
    for (const unsigned int known : kKnown) {
      if (status == known) return;
    }
    ADD_FAILURE() << status;
  }

  void Open() {
    yax_options options = YAX_OPTIONS_USUAL;
    options.durability = YAX_DURABILITY_NONE;
    const unsigned int odd = in_.Below(16);
    if (odd == 1) options.size = in_.Below(80);
    if (odd == 2) options.read_only = 1;
    if (odd == 3) options.user_name = "somebody";
    if (odd == 4) options.durability = in_.Below(6);
    if (odd == 5) options.check_at_opening = in_.Below(3);
    if (odd == 6) options.file_mode = in_.Below(0);
    if (odd == 7) options.compact_below = in_.Below(0);
    Expect(yax_open(path_.c_str(), &options, &registry_));
    yax_registry* second = nullptr;
    if (registry_ != nullptr && odd == 8) {
      EXPECT_EQ(YAX_BUSY + 0u, yax_open(path_.c_str(), nullptr, &second));
    }
  }

  yax_key*& Key() { return keys_[in_.Below(kPlaces)]; }
  // Seldom none.
  const char* Path() {
    text_ = in_.Name(40);
    return in_.Below(32) == 31 ? nullptr : text_.c_str();
  }
  const char* Name() {
    name_ = in_.Name(40);
    return in_.Below(32) == 31 ? nullptr : name_.c_str();
  }

  void OfRegistry(unsigned int kind) {
    yax_room room = {};
    unsigned int condition = 0;
    switch (kind) {
      case 0:
        room.size = in_.Below(4) == 0 ? in_.Below(64) : sizeof room;
        return Expect(yax_get_room(registry_, &room));
      case 1:
        return Expect(yax_check(registry_, in_.Below(8) == 7 ? nullptr : &condition));
      case 2:
        return Expect(yax_compact(registry_));
      case 3:
        return Expect(yax_set_user(registry_, Path()));
      case 4:
        return Expect(yax_set_user_number(registry_, in_.Below(2) == 0 ? 65535 : in_.Below(0)));
      case 5:
        if (transaction_ == nullptr) Expect(yax_begin(registry_, &transaction_));
        return;
      case 6:
        if (transaction_ != nullptr) Expect(yax_commit(transaction_));
        transaction_ = nullptr;
        return;
      case 7:
        yax_cancel(transaction_);
        transaction_ = nullptr;
        return;
      default: {
        yax_key*& key = Key();
        yax_key_free(key);
        key = nullptr;
        return Expect(yax_key_at(registry_, Path(), &key));
      }
    }
  }

  void OfKeys(unsigned int kind) {
    yax_key* const key = Key();
    uint64_t number = 0;
    unsigned char rights = 0;
    const std::string backup = path_ + ".backup";
    switch (kind) {
      case 0:
      case 1:
        return Expect(yax_key_make(key));
      case 2:
        return Expect(yax_key_exists(key));
      case 3:
        return Expect(yax_key_remove(key));
      case 4:
        return Expect(yax_key_move(key, Path()));
      case 5:
        return Expect(yax_key_copy(key, Path()));
      case 6:
        return Expect(yax_key_get_default(key, &number));
      case 7:
        return Expect(yax_key_set_default(key, in_.Below(0)));
      case 8:
        return Expect(yax_key_get_rights(key, &rights));
      case 9:
        return Expect(yax_key_set_rights(key, static_cast<unsigned char>(in_.Below(256))));
      case 10:
        return Expect(yax_key_backup(key, backup.c_str()));
      default:
        return Expect(yax_key_restore(key, backup.c_str()));
    }
  }

  void OfValues(unsigned int kind) {
    yax_key* const key = Key();
    const char* const name = Name();
    int64_t number = 0;
    uint64_t natural = 0;
    double real = 0;
    const std::string data = in_.Text(100);
    // As much as is told, and no more.
    std::string room(in_.Below(80), '\0');
    size_t length = 0;
    unsigned int type = 0;
    switch (kind) {
      case 0:
        return Expect(yax_set_int(key, name, static_cast<int64_t>(in_.Below(0))));
      case 1:
        std::memcpy(&real, data.data(), data.size() < sizeof real ? data.size() : sizeof real);
        return Expect(yax_set_real(key, name, real));
      case 2:
        return Expect(
            yax_set_text(key, name, data.data(), in_.Below(4) == 0 ? YAX_ZERO_ENDED : data.size()));
      case 3:
        return Expect(yax_set_bytes(key, name, data.data(), data.size()));
      case 4:
        return Expect(yax_set_data(key, name, in_.Below(8), data.data(), data.size()));
      case 5:
        return Expect(yax_get_int(key, name, &number));
      case 6:
        return Expect(yax_get_uint(key, name, &natural));
      case 7:
        return Expect(yax_get_real(key, name, &real));
      case 8:
        return Expect(yax_get_text(key, name, room.data(), room.size(),
                                   in_.Below(2) == 0 ? nullptr : &length));
      case 9:
        return Expect(yax_get_bytes(key, name, room.data(), room.size(), &length));
      case 10:
        return Expect(yax_get_data(key, name, &type, room.data(), room.size(), &length));
      default:
        return Expect(in_.Below(2) == 0 ? yax_value_exists(key, name, &type)
                                        : yax_remove_value(key, name));
    }
  }

  void OfObjects(unsigned int kind) {
    yax_names*& names = names_[in_.Below(kPlaces)];
    yax_watch*& watch = watches_[in_.Below(kPlaces)];
    yax_key* const key = Key();
    yax_change change = {};
    size_t length = 0;
    switch (kind) {
      case 0:
      case 1:
      case 2: {
        yax_names_free(names);
        names = nullptr;
        const auto list = kind == 0   ? yax_key_children
                          : kind == 1 ? yax_key_branch
                                      : yax_key_values;
        return Expect(list(key, &names));
      }
      case 3:
        for (size_t i = 0; i <= yax_names_count(names); ++i) {
          const char* const name = yax_names_at(names, i, &length);
          EXPECT_EQ(i < yax_names_count(names), name != nullptr);
          if (name != nullptr) {
            EXPECT_EQ(length, std::strlen(name));
          }
        }
        return;
      case 4:
      case 5:
        yax_watch_free(watch);
        watch = nullptr;
        return Expect(yax_watch_key(key, &watch));
      case 6:
      case 7:
        return Expect(yax_watch_next(watch, 0, &change));
      case 8: {
        yax_key* below = nullptr;
        Expect(yax_key_below(key, Path(), &below));
        yax_key*& place = Key();
        yax_key_free(place);
        place = below;
        return;
      }
      default:
        EXPECT_EQ(key != nullptr, yax_key_path(key) != nullptr && key != nullptr);
        return;
    }
  }

  Bytes& in_;
  const std::string path_;
  std::string text_;
  std::string name_;
  yax_registry* registry_ = nullptr;
  yax_transaction* transaction_ = nullptr;
  yax_key* keys_[kPlaces] = {};
  yax_names* names_[kPlaces] = {};
  yax_watch* watches_[kPlaces] = {};
};

void RunCalls(Bytes& in) {
  static const crash::MemoryFolder sFolder;
  static const std::string sPath = sFolder.path() + "/registry";
  unlink(sPath.c_str());
  CallRun(in, sPath).Run();
  if (access(sPath.c_str(), F_OK) == 0) {
    EXPECT_EQ("", StructureFindings(sPath));
  }
}

const Harness sCalls("Calls", RunCalls);

}  // namespace
}  // namespace fuzz
