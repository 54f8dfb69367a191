// What keeps a file in order.
#include "registry/Registry.h"
#include "registry/RegistryRouting.h"
#include "registry/filetree/Compaction.h"
#include "registry/store/Rewriting.h"

namespace tamu::registry {

namespace {

RegistryRoom::Kind RoomOf(const FileStore& store, NodeKind kind) {
  const TernaryNodeDescriptor& tables = store.Descriptor(kind);
  RegistryRoom::Kind room = {};
  if (tables.lastTable == nullptr) return room;
  for (unsigned int i = 0; i + 1 < tables.tableCount; ++i) {
    room.stranded += tables.tables[i]->freeCount();
  }
  room.inUse = tables.usedNodes;
  if (tables.damaged) return room;
  room.left = tables.lastTable->freeCount();
  if (store.MayGrow()) {
    room.left += (tables.tableCapacity - tables.tableCount) * (kExpansionSlots - 1);
  }
  if (store.ReusesSpace()) room.left += room.stranded;
  return room;
}

RegistryRoom RoomOf(const FileStore& store) {
  return {RoomOf(store, NodeKind::kString), RoomOf(store, NodeKind::kKey),
          RoomOf(store, NodeKind::kValue), RoomOf(store, NodeKind::kData)};
}

bool IsShort(const RegistryRoom& room, unsigned int slots) {
  return room.strings.left < slots || room.keys.left < slots || room.values.left < slots ||
         room.blocks.left < slots;
}

CheckResult::Kind KindOf(const FileStore& store, const FileSurvey& survey, NodeKind kind) {
  const unsigned int used = store.Descriptor(kind).usedNodes;
  const unsigned int reached = survey.CountMet(kind);
  return {reached, used > reached ? used - reached : 0};
}

CheckResult ResultOf(const FileStore& store, const FileSurvey& survey, Status status) {
  CheckResult result = {FileCondition::kSound, KindOf(store, survey, NodeKind::kString),
                        KindOf(store, survey, NodeKind::kKey),
                        KindOf(store, survey, NodeKind::kValue),
                        KindOf(store, survey, NodeKind::kData)};
  if (!status.IsOk()) {
    const bool hasRoot = result.keys.reached != 0;
    result.condition = hasRoot ? FileCondition::kDamaged : FileCondition::kLost;
    for (CheckResult::Kind* kind :
         {&result.strings, &result.keys, &result.values, &result.blocks}) {
      kind->leaked = 0;
    }
  } else if (result.strings.leaked + result.keys.leaked + result.values.leaked +
                 result.blocks.leaked !=
             0) {
    result.condition = FileCondition::kWorn;
  }
  return result;
}

class Compactor : public FileRewriter {
 public:
  Compactor(FileStore& store, Compaction::Strays strays)
      : access_(store), compaction_(access_, store, strays) {}

  const void* Rewrite(const void*, unsigned int* size) override {
    result_ = compaction_.Run();
    *size = compaction_.Size();
    return result_.IsOk() ? compaction_.Bytes() : nullptr;
  }
  // What has kept it from answering with a file.
  Status Result() const { return result_; }

 private:
  const LockedAccess access_;
  Compaction compaction_;
  Status result_ = status::kOk;
};

Status CheckFileOf(FileStore& store, CheckResult* result) {
  LockedAccess access(store);
  access.ExpectNoChange();
  FileSurvey survey(access, store);
  const Status status = survey.Run();
  if (status.IsOk() || status == status::kInvalidFile) {
    if (result != nullptr) *result = ResultOf(store, survey, status);
  }
  return status;
}

// The tree's lock is held, if there may be others.
Status CompactFileOf(FileStore& store, Compaction::Strays strays) {
  ChangeNote note;
  note.count = 1;
  note.changes[0] = {ChangeKind::kCompacted, "", nullptr};
  const StoreTelling telling(store, &note);
  Compactor compactor(store, strays);
  const Status result = Rewriting(store).Run(compactor);
  return compactor.Result().IsOk() ? result : compactor.Result();
}

}  // namespace

// Looks at the file as this thread sees it.
unsigned int Registry::LookAtFile(const FunctionRef<unsigned int(FileStore&)>& look) {
  if (instance->IsWalkedHere()) return status::kBusy;
  PCMutexGuard guard(instance->operationLock);
  if (!instance->transaction.IsMine()) return look(*keyTree->File());
  OpenTransaction::Scope open(instance->transaction);
  return look(*keyTree->File());
}

unsigned int Registry::GetRoom(RegistryRoom* room) {
  if (!IsReady()) return status::kNoRight;
  if (room == nullptr) return status::kBadArgument;
  return LookAtFile([&](FileStore& store) -> unsigned int {
    return store.Look([&](StoreAccess&) -> Status {
      *room = RoomOf(store);
      return status::kOk;
    });
  });
}

unsigned int Registry::Check(CheckResult* result) {
  if (!IsReady()) return status::kNoRight;
  if (result == nullptr) return status::kBadArgument;
  return LookAtFile([&](FileStore& store) -> unsigned int {
    const Status checked = CheckFileOf(store, result);
    return checked == status::kInvalidFile ? Status(status::kOk) : checked;
  });
}

unsigned int Registry::Compact() {
  if (!IsReady() || userId != kAdministratorId || options_.readOnly) return status::kNoRight;
  if (instance->IsWalkedHere() || instance->transaction.IsMine()) return status::kBusy;
  PCMutexGuard changeGuard(instance->changeLock);
  PCMutexGuard guard(instance->operationLock);
  PCMutexGuard treeGuard(keyTree->TreeLock());
  const Status result = CompactFileOf(*keyTree->File(), Compaction::Strays::kLeftBehind);
  if (result.IsOk()) keyTree->SetBehind();
  return result;
}

bool Registry::IsEmpty() {
  const TernaryFile& file = *keyTree->File();
  const LockedAccess access(*keyTree->File());
  return file.Descriptor(NodeKind::kString).usedNodes == 0 &&
         file.Descriptor(NodeKind::kKey).usedNodes == 0 &&
         file.Descriptor(NodeKind::kValue).usedNodes == 0 &&
         file.Descriptor(NodeKind::kData).usedNodes == 0;
}

unsigned int Registry::CheckAtOpening() {
  return options_.checkAtOpening ? CheckFileOf(*keyTree->File(), nullptr) : Status(status::kOk);
}

void Registry::CareForFile() {
  TernaryFile& file = *keyTree->File();
  if (options_.compactBelow == 0 || options_.readOnly) return;
  bool isShort = false;
  {
    const LockedAccess access(file);
    isShort = IsShort(RoomOf(file), options_.compactBelow);
  }
  // Else it goes on with the file as it is. What yaxreg repair could still save, nobody has asked
  // to throw away.
  if (isShort) CompactFileOf(file, Compaction::Strays::kRefused).Ignore();
}

}  // namespace tamu::registry
