// Reading registry files for verbs that only look.
#pragma once

#include <memory>
#include <string>

#include "tools/yaxreg/cli/Invocation.h"
#include "tools/yaxreg/image/RegistryImage.h"

namespace yaxreg {

// Why a file cannot be opened to be changed that is there and sound (status 28).
constexpr char kHeldAlone[] = "another program has the file open and shares it with nobody";

// Reads and decodes a file as it is between two changes of other programs; one that a program has
// died in is completed. Null when it cannot be read or is no registry: the failure has been
// printed, and *code tells how to end. A damaged file is no failure.
std::unique_ptr<RegistryImage> LoadImage(Invocation& call, const std::string& file, ExitCode* code,
                                         Orphans orphans = Orphans::kIfDamaged);
// The same of bytes that were read already.
std::unique_ptr<RegistryImage> DecodeImage(Invocation& call, const std::string& file,
                                           std::string bytes, ExitCode* code,
                                           Orphans orphans = Orphans::kIfDamaged,
                                           bool isCompleted = false);

// Looks a key up for a verb. False when it is not there: the failure has been printed; *code is
// kNo, or kDamaged when the file is damaged so that the key may have been lost.
bool FindKey(Invocation& call, const RegistryImage& image, const std::string& file,
             const std::string& path, size_t* key, ExitCode* code);

// The same of a pattern that nothing matches: prints the failure and answers how to end.
ExitCode FailWithoutMatch(Invocation& call, const RegistryImage& image);

// What is to be said besides when something was not found: nothing, or that the file has lost
// something.
std::string HintOf(const RegistryImage& image);

// How a verb ends that has shown what it could: kDone, or kDamaged with a warning when something
// of the content is lost.
ExitCode EndOfLook(Invocation& call, const RegistryImage& image, const std::string& file);

}  // namespace yaxreg
