// edit: a key and all below it as a document in the user's editor.
#include <optional>
#include <ostream>
#include <sstream>

#include "tools/yaxreg/content/ContentJson.h"
#include "tools/yaxreg/content/ContentJsonReader.h"
#include "tools/yaxreg/content/ContentMerge.h"
#include "tools/yaxreg/verbs/Applying.h"
#include "tools/yaxreg/verbs/ChangeCount.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/EditedFile.h"
#include "tools/yaxreg/verbs/Session.h"
#include "tools/yaxreg/verbs/UsersFile.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace status = tamu::registry::status;

namespace {

class Edit {
 public:
  explicit Edit(Invocation& call) : call_(call), session_(call) {}
  ExitCode Run();

 private:
  const UserNames* Users() const { return users_ ? &*users_ : nullptr; }
  // The document of the key, as the file was decoded last. False: a failure has been printed.
  bool TakeDocument(std::string* document);
  ExitCode EditDocument(const std::string& document);
  ExitCode EndUnchanged();
  ExitCode Apply(const std::string& document, const ContentUpdate& update);

  Invocation& call_;
  Session session_;
  std::optional<UserNames> users_;
};

bool Edit::TakeDocument(std::string* document) {
  if (session_.Key() == nullptr) return false;
  std::ostringstream text;
  const Content& content = session_.image().content();
  WriteContentJson(content, content.Find(session_.path()), text, Users());
  *document = text.str();
  return true;
}

ExitCode Edit::Run() {
  ExitCode code = kDone;
  if (!Waiting(call_).Take()) return kUsage;
  if (!TakeUsers(call_, &users_, &code)) return code;
  std::string document;
  if (!session_.OpenToLook()) return session_.code();
  if (!session_.image().IsSound()) {
    return call_.FailWithStatus(status::kInvalidFile, call_.File(), "",
                                "is damaged; yaxreg check tells how to mend it");
  }
  return TakeDocument(&document) ? EditDocument(document) : session_.code();
}

ExitCode Edit::EditDocument(const std::string& document) {
  EditedFile file(document);
  if (!file.reason().empty()) return call_.Fail(kFailed, file.path(), "", file.reason());
  std::string edited;
  std::string reason;
  const bool isEdited = file.Edit(&edited, &reason);
  if (isEdited && edited == document) return EndUnchanged();
  file.Keep(true);
  if (file.IsThere()) call_.failureNote = "; the document is kept in " + Shown(file.path());
  if (!isEdited) return call_.Fail(kFailed, file.path(), "", Shown(reason));
  ContentUpdate update;
  size_t line = 0;
  if (!ReadContentJson(edited, &update, &reason, Users(), &line)) {
    const std::string place = line == 0 ? "" : "line " + std::to_string(line) + ": ";
    return call_.Fail(kUsage, "", "", place + reason);
  }
  const ExitCode code = Apply(document, update);
  file.Keep(code != kDone);
  return code;
}

ExitCode Edit::EndUnchanged() {
  if (call_.isJson()) return session_.EndOfChange(false);
  call_.out << "nothing is changed\n";
  return kDone;
}

ExitCode Edit::Apply(const std::string& document, const ContentUpdate& update) {
  std::string now;
  if (!session_.OpenToChange() || !TakeDocument(&now)) return session_.code();
  if (now != document) {
    return session_.Fail(kNo, "was changed by another program meanwhile");
  }
  const Content present = session_.image().content();
  const Content wanted = ExactContent(present, session_.path(), update);
  const ChangeCount count(present, wanted);
  if (count.IsZero()) return EndUnchanged();
  const std::string path = session_.path();
  const ExitCode code = ApplyContent(call_, session_, present, wanted);
  return code == kDone ? EndOfCounted(call_, path, count) : code;
}

ExitCode RunEdit(Invocation& call) {
  return Edit(call).Run();
}

}  // namespace

Verb EditVerb() {
  return {"edit",
          "Change a key in an editor",
          "Opens the document that export writes of a key and all below it in the editor that the "
          "environment variable VISUAL or EDITOR tells, vi without them. What is saved is checked "
          "and done as one change, as by import --exact: what the document does not tell of is "
          "deleted. Nothing is changed when the document is as it was, has a mistake (2), or when "
          "another program has changed the key meanwhile (1); a document with changes is then kept "
          "in a temporary file, which the message names, for import.",
          {kFile, kPath},
          {kUsers, kTimeout},
          "EDITOR=nano yaxreg edit device.rce network",
          RunEdit,
          true};
}

}  // namespace yaxreg
