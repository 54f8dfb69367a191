// The C++ interface of libYAX that says what it means; this header is all that a program includes.
//
//   yax::Registry registry("settings.rce");
//   if (!registry) return std::puts(registry.status().text()), 1;
//   yax::Key eth0 = registry["network/eth0"];
//   if (yax::Status set = eth0.Set("mtu", 1400); !set) std::puts(set.text());
//   const int mtu = eth0.Get("mtu", 1500);
//
// Inline code over yax/yax.h, whose statuses and rules are those here, so a program that was built
// with an older version goes on working with a newer library. Works without exceptions and RTTI.
#pragma once

#include <memory>
#include <string>

#include "yax/Key.h"

namespace yax {

// What a change survives once it was acknowledged.
enum class Durability : unsigned {
  kUsual = YAX_DURABILITY_USUAL,      // kProcess where that can be had, else kNone
  kNone = YAX_DURABILITY_NONE,        // a process that dies in a change may leave a part of it
  kProcess = YAX_DURABILITY_PROCESS,  // it leaves the change whole or not at all
  kPower = YAX_DURABILITY_POWER,      // so does a power cut, and what was acknowledged is there
};

// How a registry is opened.
struct Options {
  Durability durability = Durability::kUsual;  // of changes
  unsigned user = YAX_ADMINISTRATOR;           // taken at its word
  std::string userName;                        // counts instead, unless it is empty
  bool readOnly = false;     // changes are YAX_NO_RIGHT; nothing is made: YAX_NOT_FOUND
  unsigned fileMode = 0644;  // rights of a file that is made, less the umask; 0: 0644
  // A folder in memory for the file that kProcess keeps, the same for all programs; empty: beside
  // the registry.
  std::string sideFolder;
  unsigned compactBelow = 0;    // compacts at opening when fewer slots of a kind are left
  bool checkAtOpening = false;  // a damaged file is YAX_INVALID_FILE at once
  bool exactSpace = false;      // space is not used again: the same operations make the same bytes
  // Milliseconds that a change waits for those of other processes; at least one.
  unsigned waitAtMost = 60000;
};

// An open registry file. A process has one open at a time.
class Registry {
 public:
  // Opens the file, which is made when nothing is at the path. status() tells how that went;
  // without success everything below answers YAX_BAD_ARGUMENT.
  explicit Registry(const std::string& path, const Options& options = Options()) {
    for (const std::string* text : {&path, &options.userName, &options.sideFolder}) {
      if (HasZero(*text)) status_ = Refuse(*text);
    }
    if (status_) Open(path, options);
  }

  // Whether it is open, and why not.
  explicit operator bool() const { return status_.ok(); }
  Status status() const { return status_; }
  // The key of a path, "" for the root; nothing is looked up.
  Key operator[](const std::string& path) const { return root()[path]; }
  Key root() const {
    yax_key* key = nullptr;
    Status(yax_key_at(registry_.get(), "", &key)).Ignore();  // null tells it
    return Key(key);
  }
  // What changes survive; never kUsual.
  Durability durability() const { return static_cast<Durability>(yax_durability(registry_.get())); }
  // Waits until everything that was acknowledged is on the disk.
  Status Sync() { return yax_sync(registry_.get()); }
  // How much there is and how much more there can be. Cheap.
  Result<yax_room> Room() {
    yax_room room = {};
    room.size = sizeof room;
    const Status status = yax_get_room(registry_.get(), &room);
    if (!status) return status;
    return room;
  }
  // YAX_SOUND, YAX_WORN, YAX_DAMAGED or YAX_LOST, after a look at the whole file.
  Result<unsigned> Check() {
    unsigned condition = YAX_SOUND;
    const Status status = yax_check(registry_.get(), &condition);
    if (!status) return status;
    return condition;
  }
  // The same content without unused space in between, as one change; others go on with the file.
  // For the administrator.
  Status Compact() { return yax_compact(registry_.get()); }
  // The user counts for all threads.
  Status SetUser(const std::string& name) {
    return HasZero(name) ? Refuse(name) : Status(yax_set_user(registry_.get(), name.c_str()));
  }
  // The same by number, taken at its word.
  Status SetUser(unsigned user) { return yax_set_user_number(registry_.get(), user); }

  // For poll: readable when something was changed since this was first called and a Watch was last
  // asked without waiting (Watch::Tell). The registry's; -1 when none can be had.
  int ChangeDescriptor() { return yax_change_descriptor(registry_.get()); }

  yax_registry* get() const { return registry_.get(); }  // for the C interface; this object's

 private:
  struct Close {
    void operator()(yax_registry* registry) const { yax_close(registry); }
  };

  void Open(const std::string& path, const Options& options) {
    yax_options asked = YAX_OPTIONS_USUAL;
    asked.durability = static_cast<unsigned>(options.durability);
    asked.user = options.user;
    asked.read_only = options.readOnly ? 1 : 0;
    asked.file_mode = options.fileMode;
    asked.user_name = options.userName.empty() ? nullptr : options.userName.c_str();
    asked.side_folder = options.sideFolder.empty() ? nullptr : options.sideFolder.c_str();
    asked.compact_below = options.compactBelow;
    asked.check_at_opening = options.checkAtOpening ? 1 : 0;
    asked.wait_at_most = options.waitAtMost == 0 ? 1 : options.waitAtMost;  // 0 is a minute there
    asked.exact_space = options.exactSpace ? 1 : 0;
    yax_registry* opened = nullptr;
    status_ = yax_open(path.c_str(), &asked, &opened);
    registry_.reset(opened);
  }

  static Status Refuse(const std::string& text) {
    return yax_note_failure(nullptr, text.c_str(), YAX_BAD_ARGUMENT, "a zero byte is in the text");
  }

  std::unique_ptr<yax_registry, Close> registry_;
  Status status_;
};

}  // namespace yax
