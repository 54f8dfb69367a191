// What Registry::RewriteFile asks for the bytes of the file.
#pragma once

namespace tamu::registry {

class FileRewriter {
 public:
  // `bytes` are the *size bytes that the file has, good during the call; what a change has left
  // that a process has died in is in them. Returns those that it is to have instead, and sets
  // *size: they are the rewriter's, until RewriteFile has answered. Null: the file stays as it is.
  virtual const void* Rewrite(const void* bytes, unsigned int* size) = 0;

 protected:
  ~FileRewriter() = default;
};

}  // namespace tamu::registry
