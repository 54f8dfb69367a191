#include "tests/crash/ScriptRun.h"

#include "tests/support/GivenBytes.h"

namespace crash {

using tamu::registry::Value;

// An operation without a handle closes the handle.
unsigned int ScriptRun::Handle(const Step& step) {
  if (!step.isThroughHandle) handle_ = 0;
  if (step.isThroughHandle && handle_ == 0) registry_.OpenKey("", &handle_);
  return handle_;
}

// What the parts answer makes no difference: what they have done stays or goes as a whole.
unsigned int ScriptRun::DoTransaction(const Step& step) {
  constexpr size_t kBeforeInner = 2;
  const unsigned int begun = registry_.BeginTransaction();
  if (begun != 0) return begun;
  for (size_t i = 0; i < step.parts.size(); ++i) {
    if (i == kBeforeInner) registry_.BeginTransaction();
    Do(step.parts[i]);
  }
  if (step.number % 2 != 0) {
    registry_.CancelTransaction();
  } else {
    registry_.EndTransaction();
  }
  // A key that was opened in it may be closed.
  handle_ = 0;
  return step.number % 8 == 0 ? registry_.CancelTransaction() : registry_.EndTransaction();
}

unsigned int ScriptRun::Do(const Step& step) {
  const unsigned int handle = Handle(step);
  const std::string file = folder_ + "/" + step.name;
  Value value = tamu::registry::MakeValue(step.type, step.data.data(),
                                          static_cast<unsigned int>(step.data.size()));
  const unsigned char byte = static_cast<unsigned char>(step.number);
  switch (step.action) {
    case Step::kCreateKey:
      return registry_.CreateKey(handle, step.path, step.number);
    case Step::kSetDefault:
      return registry_.SetDefaultValue(handle, step.path, step.number);
    case Step::kSetPermission:
      return registry_.SetKeyPermission(handle, step.path, byte);
    case Step::kSetWatch:
      return registry_.SetKeyWatch(handle, step.path, byte);
    case Step::kDeleteKey:
      return registry_.DeleteKey(handle, step.path);
    case Step::kCreateValue:
      return registry_.CreateValue(handle, step.path, step.name, &value);
    case Step::kSetValue:
      return registry_.SetValue(handle, step.path, step.name, &value);
    case Step::kDeleteValue:
      return registry_.DeleteValue(handle, step.path, step.name);
    case Step::kBackup:
      return registry_.BackupKey(handle, step.path, file.c_str());
    case Step::kRestore:
      return registry_.RestoreKey(handle, step.path, file.c_str());
    case Step::kRewrite: {
      GivenBytes replacement(step.data);
      return registry_.RewriteFile(replacement);
    }
    case Step::kCompact:
      return registry_.Compact();
    case Step::kTransaction:
      return DoTransaction(step);
  }
  return tamu::registry::status::kNotSupported;
}

}  // namespace crash
