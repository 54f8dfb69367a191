#include "tools/yaxreg/components/ComponentCheck.h"

namespace yaxreg {

namespace {

void CheckText(const ComponentField& field, const char* name, ComponentVerdict* verdict) {
  if (!field.isTooLong()) return;
  verdict->problems.push_back(std::string(name) + " has " + std::to_string(field.text.size()) +
                              " bytes, of which only " + std::to_string(ComponentField::kMaxText) +
                              " are used");
}

// As the framework does before it opens the file.
void CompareWithOffer(const ComponentOffer& offer, const ComponentOffer& binary,
                      ComponentVerdict* verdict) {
  if (offer.binarySize != 0 && offer.binarySize != binary.binarySize) {
    verdict->problems.push_back("has " + std::to_string(binary.binarySize) + " bytes, and " +
                                std::to_string(offer.binarySize) + " are registered");
  } else if (!offer.buildId.empty() && offer.buildId != binary.buildId) {
    verdict->problems.emplace_back("has another build id than is registered");
  }
}

// What is needed is a problem, what is not is a note.
void CheckField(const ComponentField& field, bool isNeeded, ComponentVerdict* verdict) {
  if (field.isThere()) return;
  (isNeeded ? verdict->problems : verdict->notes).push_back(field.problem);
}

}  // namespace

ComponentCheck::ComponentCheck(const DeviceFiles& files, const ElfMachine* machine)
    : files_(files), hasMachine_(machine != nullptr), folders_(files.LoaderFolders(machine)) {
  if (machine != nullptr) machine_ = *machine;
}

ComponentVerdict ComponentCheck::Verify(const Component& component, bool isSingleBinary) {
  ComponentVerdict verdict;
  const bool isLoaded = component.isBinary() && !isSingleBinary;
  verdict.isInProgram = (component.type.isThere() || isSingleBinary) && !isLoaded;
  if (!component.isIdentifier) {
    verdict.problems.emplace_back("the key's name is no identifier, so the component is not found");
  }
  CheckField(component.name, false, &verdict);
  CheckField(component.type, !isSingleBinary, &verdict);
  CheckField(component.function, verdict.isInProgram, &verdict);
  CheckField(component.path, isLoaded, &verdict);
  CheckText(component.name, "CompName", &verdict);
  CheckText(component.path, "BinaryPath", &verdict);
  if (component.isBinary() && isSingleBinary) {
    verdict.notes.emplace_back("its shared object is not loaded, because isSingleBin is 1");
  }
  if (isLoaded && component.path.isThere() && !component.path.isTooLong()) {
    VerifyBinary(component, &verdict);
  }
  return verdict;
}

void ComponentCheck::VerifyBinary(const Component& component, ComponentVerdict* verdict) {
  const std::string& path = component.path.text;
  if (path.empty()) {
    verdict->problems.emplace_back("BinaryPath is empty");
    return;
  }
  const bool hasFolder = path.find('/') != std::string::npos;
  if (hasFolder && path[0] != '/') {
    verdict->notes.emplace_back(files_.HasRoot() ? "the path is taken relative to the root folder"
                                                 : "the path is relative to the current folder");
  }
  const SharedObject found =
      hasFolder ? Examine(path, &verdict->file) : Search(path, &verdict->file);
  if (found.state != SharedObject::State::kGood) {
    verdict->problems.push_back(found.problem);
    verdict->isUnreadable = found.state == SharedObject::State::kUnreadable;
    return;
  }
  CompareWithOffer(component.offer, found.binary, verdict);
  if (!found.canBeAsked) {
    verdict->notes.emplace_back("it cannot be unloaded, it does not export EntryFn_canUnloadNow");
  }
  if (hasMachine_) return;
  hasMachine_ = true;
  machine_ = found.machine;
}

SharedObject ComponentCheck::Examine(const std::string& path, std::string* file) const {
  const int error = files_.Locate(path, file);
  return error != 0 ? AfterError(error) : ExamineSharedObject(*file, Wanted());
}

// The loader passes over files for other machines. The first other failure is remembered.
SharedObject ComponentCheck::Search(const std::string& name, std::string* file) const {
  SharedObject first;
  first.state = SharedObject::State::kAbsent;
  first.problem = "is in none of the folders in which the loader looks";
  for (const std::string& folder : folders_) {
    std::string candidate;
    const SharedObject found = Examine(folder + "/" + name, &candidate);
    if (found.state == SharedObject::State::kAbsent) continue;
    const bool isPassedOver = found.isOther || found.state == SharedObject::State::kUnreadable;
    if (isPassedOver && first.state != SharedObject::State::kAbsent) continue;
    *file = candidate;
    if (!isPassedOver) return found;
    first = found;
  }
  return first;
}

}  // namespace yaxreg
