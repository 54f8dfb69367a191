// The key tree that works on subtrees loaded into memory.
#pragma once

#include "platform/PCMutex.h"
#include "registry/RegistryInterface.h"

namespace tamu::registry {

class RegistryDaemon;
class TernaryFile;

// Owns the store of the registry file. Loading subtrees is not there yet: every operation but those
// below answers kNotSupported.
class TernaryKeyTree : public RegistryInterface {
 public:
  explicit TernaryKeyTree(RegistryDaemon* daemonObject);
  ~TernaryKeyTree() override;

  // Opens the store at `path`; when nothing is at the path, a new file is made first. kNoSpace: a
  // file is there but cannot be opened (it is left alone), or none can be made; kInputOutput: no
  // lock; kNoMemory; kInvalidFile. Again: closes the store and starts over.
  unsigned int Initialize(const char* path) override;
  // Closes the store. Later operations answer kNoRight. Returns 0.
  unsigned int Finalize() override;
  // TernaryFile::GetRegistryInfo.
  unsigned int GetRegistryInfo(RegistryInfo* info) override;

  // The store; null before Initialize and after Finalize. Stays this tree's.
  TernaryFile* File() const { return file; }

 private:
  void CloseFile();

  unsigned char initialized = 0;
  TernaryFile* file = nullptr;  // owned
  RegistryDaemon* daemon;       // kept, not used
  PCMutex spareLock;            // made and given back with the tree; nothing takes it
  PCMutex treeLock;             // held over every whole operation
};

}  // namespace tamu::registry
