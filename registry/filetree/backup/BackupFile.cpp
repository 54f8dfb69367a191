#include "registry/filetree/backup/BackupFile.h"

#include "platform/PCMem.h"
#include "registry/store/Immortal.h"

namespace tamu::registry {

namespace {

constexpr unsigned int kPieceSize = 65536;     // bytes that are written at once
constexpr unsigned int kReadPieceSize = 4096;  // bytes that are read

Immortal<PCFile> sBackup;

}  // namespace

PCFile& BackupFile::backup = sBackup.value;
unsigned char BackupFile::backupHeader = 0;

Status BackupFile::OpenBackup(const char* path, bool make) {
  Close();
  if (piece_.EnsureCapacity(make ? kPieceSize : kReadPieceSize) != status::kOk) return status::kNoMemory;
  used_ = 0;
  next_ = 0;
  offset_ = 0;
  if (make) {
    const int begun = made_.Create(path);
    if (begun < 0) return status::kNoMemory;
    if (begun == 0) return status::kInputOutput;
    path = made_.Path();
  }
  backup.ReadDirectly();  // backups come from media that may be pulled out
  return backup.Create(path, PCFile::kReadWrite) ? status::kOk : status::kInputOutput;
}

Status BackupFile::Make(const char* path) {
  const Status result = OpenBackup(path, true);
  if (!result.IsOk()) return result;
  writing_ = true;
  return Write(&backupHeader, kHeaderSize);
}

Status BackupFile::WritePiece() {
  if (!writing_ || !backup.Write(piece_.data, used_)) {
    writing_ = false;
    return status::kInputOutput;
  }
  used_ = 0;
  return status::kOk;
}

Status BackupFile::Write(const void* data, unsigned int size) {
  const unsigned char* from = static_cast<const unsigned char*>(data);
  while (size > 0) {
    const unsigned int room = kPieceSize - used_;
    const unsigned int now = size < room ? size : room;
    PCMem::Copy(piece_.data + used_, from, now);
    used_ += now;
    from += now;
    size -= now;
    if (used_ < kPieceSize) continue;
    const Status result = WritePiece();
    if (!result.IsOk()) return result;
  }
  return status::kOk;
}

Status BackupFile::Complete(bool sync) {
  const Status result = MarkComplete();
  if (!result.IsOk()) return result;
  if (sync && !made_.Sync()) return status::kInputOutput;
  return made_.TakeName(sync) ? status::kOk : status::kInputOutput;
}

Status BackupFile::MarkComplete() {
  Status result = WritePiece();
  if (!result.IsOk()) return result;
  backupHeader = 1;
  backup.Seek(0);  // cannot fail on an open file
  result = Write(&backupHeader, kHeaderSize);
  return result.IsOk() ? WritePiece() : result;
}

Status BackupFile::Open(const char* path) {
  Status result = OpenBackup(path, false);
  unsigned char complete = 0;
  if (result.IsOk()) result = Read(&complete, kHeaderSize);
  if (result.IsOk() && complete == 0) result = status::kInputOutput;
  return result;
}

void BackupFile::Rewind() {
  backup.Seek(kHeaderSize);  // cannot fail on an open file
  offset_ = kHeaderSize;
  used_ = 0;
  next_ = 0;
}

Status BackupFile::ReadPiece() {
  next_ = 0;
  used_ = 0;
  const unsigned int size = backup.Size();
  const unsigned int there = size > offset_ ? size - offset_ : 0;
  const unsigned int now = there < kReadPieceSize ? there : kReadPieceSize;
  if (now == 0 || !backup.Read(piece_.data, now)) return status::kInputOutput;
  used_ = now;
  offset_ += now;
  return status::kOk;
}

Status BackupFile::Read(void* data, unsigned int size) {
  unsigned char* to = static_cast<unsigned char*>(data);
  while (size > 0) {
    if (next_ == used_) {
      const Status result = ReadPiece();
      if (!result.IsOk()) return result;
    }
    const unsigned int there = used_ - next_;
    const unsigned int now = size < there ? size : there;
    PCMem::Copy(to, piece_.data + next_, now);
    next_ += now;
    to += now;
    size -= now;
  }
  return status::kOk;
}

Status BackupFile::Peek(unsigned int ahead, unsigned char* byte) const {
  if (used_ - next_ <= ahead) return status::kInputOutput;
  *byte = piece_.data[next_ + ahead];
  return status::kOk;
}

void BackupFile::Close() {
  // Of a failed backup: as much as there is.
  if (writing_ && made_.IsInPlace()) WritePiece().Ignore();
  writing_ = false;
  backup.Destroy();
  made_.Destroy();
}

}  // namespace tamu::registry
