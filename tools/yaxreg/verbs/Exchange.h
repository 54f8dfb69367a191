// Giving a registry file the content that is made of its own.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "registry/Registry.h"
#include "tools/yaxreg/cli/Invocation.h"
#include "tools/yaxreg/image/HeldSignals.h"
#include "tools/yaxreg/image/RegistryImage.h"
#include "tools/yaxreg/verbs/Waiting.h"

namespace yaxreg {

// Programs that have the file open go on with the new content; they wait with their changes while
// it is made. What the library does not open, or has no journal for, is replaced by another file.
class Exchange : private tamu::registry::FileRewriter {
 public:
  // Makes the new bytes of what is decoded. Empty: it has failed, which has been printed, and the
  // exit code is set.
  using Make = std::function<std::string(const RegistryImage&, ExitCode*)>;

  Exchange(Invocation& call, Orphans orphans, tamu::registry::ChangeKind kind, Make make)
      : call_(call), orphans_(orphans), kind_(kind), make_(std::move(make)), waiting_(call) {}

  // kDone, or a failure that has been printed. Signals that would end the program wait from the
  // moment on where the file is the call's, until the end of the object.
  ExitCode Run();
  // The content before, decoded, and the bytes that came of it, after kDone.
  const RegistryImage& before() const { return *before_; }
  const std::string& after() const { return after_; }

 private:
  const void* Rewrite(const void* bytes, unsigned int* size) override;
  unsigned int Open(tamu::registry::Registry& registry, tamu::registry::Durability durability);
  bool MayOpen() const;
  bool OpenShared(std::unique_ptr<tamu::registry::Registry>* registry);
  unsigned int TryToOpen(std::unique_ptr<tamu::registry::Registry>* registry);
  ExitCode RunShared(tamu::registry::Registry& registry);
  ExitCode Replace();

  Invocation& call_;
  const Orphans orphans_;
  const tamu::registry::ChangeKind kind_;
  const Make make_;
  ExitCode code_ = kDone;
  Waiting waiting_;
  std::optional<HeldSignals> signals_;
  std::unique_ptr<RegistryImage> before_;
  std::string after_;
};

}  // namespace yaxreg
