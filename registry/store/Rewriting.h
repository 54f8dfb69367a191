// Exchanging all bytes of a registry file.
#pragma once

#include <memory>

#include "registry/base/FileRewriter.h"
#include "registry/store/Changes.h"

namespace tamu::registry {

// As one change, in the file that is there: with a journal it happens whole or not at all, and
// whoever has the file open sees it as any other. The file gets no shorter while others may read
// it: what is behind the new content is zero, and who closes it last cuts it off.
class Rewriting {
 public:
  explicit Rewriting(FileStore& store) : store_(store) {}
  Rewriting(const Rewriting&) = delete;
  Rewriting& operator=(const Rewriting&) = delete;

  // The statuses of Registry::RewriteFile. Nobody else writes meanwhile.
  Status Run(FileRewriter& rewriter);
  // The same where nothing may be changed: kBusy when it is asked for.
  Status Look(FileRewriter& rewriter);

 private:
  Status Ask(FileRewriter& rewriter, const unsigned char** bytes, unsigned int* size);
  Status Put(Changes& changes, const unsigned char* bytes, unsigned int size);
  Status Load(TableMap* tables, unsigned int size) const;

  FileStore& store_;
  std::unique_ptr<unsigned char[]> before_;
  unsigned int length_ = 0;  // bytes
};

}  // namespace tamu::registry
