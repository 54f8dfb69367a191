// What a verb that is about one key does with its registry file: decode it, change it as a user,
// and look at what became of it.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "registry/Registry.h"
#include "tools/yaxreg/cli/Invocation.h"
#include "tools/yaxreg/image/FileIdentity.h"
#include "tools/yaxreg/image/HeldSignals.h"
#include "tools/yaxreg/image/RegistryImage.h"
#include "tools/yaxreg/verbs/Batch.h"
#include "tools/yaxreg/verbs/Waiting.h"

namespace yaxreg {

// Functions that answer false or null have printed the failure; code() then tells how to end.
//
// The file is decoded before it is changed, so that nothing is made where no registry is, and once
// more before the end, because the library does not report every change that found no room. All
// that a session changes is one transaction: it happens at Close, or not at all. In a batch it is
// part of the batch's.
class Session {
 public:
  explicit Session(Invocation& invocation);

  // Decodes the file, and needs no more than to read it. The user is --user, --uid or the
  // administrator; users are taken at their word.
  bool OpenToLook();
  // Opens the file as a registry, begins the change and decodes the file as it is then: other
  // programs wait with their changes from here to Close. A damaged one is refused. From then on
  // signals that would end the program wait for the end of the session.
  bool OpenToChange();
  // Decodes the file as it is now; within the change, as it will be. Fails when it was opened and
  // has been replaced by another program.
  bool LookAgain();
  // Decodes the file as it is with the change, makes the change and closes the registry.
  bool Close();

  ExitCode code() const { return code_; }
  unsigned int user() const { return user_; }
  // The key of the call, without one "/" at its beginning and one at its end.
  const std::string& path() const { return path_; }
  const RegistryImage& image() const { return *image_; }
  tamu::registry::Registry& registry() {
    return registry_ != nullptr ? *registry_ : *call_.batch->registry;
  }

  // The key of the call, and a value of it, as the file was decoded last.
  const ContentKey* Key();
  const ContentValue* FindValue(const ContentKey& key, const std::string& name);
  // Whether the user has the right on the key, as the library decides it.
  bool MayDo(const ContentKey& key, unsigned char right) const;
  // The same; false is a failure.
  bool HasRight(const ContentKey& key, unsigned char right);

  // A failure that is about the key, and one with a status of the library in words that help.
  ExitCode Fail(ExitCode code, const std::string& reason);
  ExitCode FailWithStatus(unsigned int status, const std::string& reason = "");
  // The same about another key than that of the call.
  ExitCode FailAt(const std::string& path, unsigned int status);
  // The library has answered 0, but the change is not in the file: what it should have answered, as
  // far as the file tells, and the failure.
  unsigned int UnseenStatus() const;
  ExitCode FailUnseen();
  // How a look ends that has printed what it should: kDone, or kDamaged with a warning when the
  // file has lost some of its content.
  ExitCode EndOfLook();
  // How a change ends: prints what programs get, and answers kDone.
  ExitCode EndOfChange(bool changed = true);

 private:
  bool ChooseUser();
  unsigned int OpenWith(tamu::registry::Durability durability, const Waiting& waiting);
  unsigned int OpenRegistry(const Waiting& waiting);
  bool BeginChange(Waiting& waiting);
  bool FailOpening(unsigned int opened, Waiting& waiting);
  bool JoinBatch();
  bool CheckSound();
  bool CheckWritable();
  bool CheckInPlace();
  bool FailLost(unsigned int result);

  Invocation& call_;
  std::string file_;
  std::string path_;
  unsigned int user_;
  ExitCode code_ = kDone;
  FileIdentity opened_;  // of the file that was opened to be changed
  std::optional<HeldSignals> signals_;
  std::unique_ptr<RegistryImage> image_;
  std::unique_ptr<tamu::registry::Registry> registry_;
};

}  // namespace yaxreg
