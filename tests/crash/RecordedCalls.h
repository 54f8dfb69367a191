// System calls that are recorded: linked in place of the real ones, they do the same.
//
// What changes the files of one folder is recorded in the order in which it happens. Stores through
// mappings are seen afterwards: before each other change, and when a step ends, the bytes of the
// open files are compared with what was known of them. Not thread-safe.
#pragma once

#include <vector>

#include "tests/crash/FolderImage.h"

namespace crash {

// From here on, with the folder as `image` tells. Steps are counted from 0.
void StartRecording(const FolderImage& image);
// The next calls belong to the next step.
void EndStep();
// The calls since the start. Files may still be open; what happens to them is not recorded any
// more.
std::vector<Call> StopRecording();

// Another start of the machine: what it draws then is new.
void Restart();

}  // namespace crash
