#include "solve/Journal.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <thread>

#include "framework/base/Fnv1a.h"
#include "solve/WriteAll.h"

namespace {

constexpr char kInUse[] = "another run is using it";

// A record is framed by its checksum, the number of its bytes and its kind.
constexpr std::size_t kNumberSize = 8, kFrameSize = 2 * kNumberSize + 1;

void PutNumber(char* place, std::uint64_t number) {
  for (std::size_t i = 0; i < kNumberSize; ++i) place[i] = static_cast<char>(number >> 8 * i);
}

std::uint64_t GetNumber(const char* place) {
  std::uint64_t number = 0;
  for (std::size_t i = kNumberSize; i-- > 0;)
    number = number << 8 | static_cast<unsigned char>(place[i]);
  return number;
}

bool Fail(std::string& reason, const char* why = nullptr) {
  reason = why != nullptr ? why : std::strerror(errno);
  return false;
}

/// The file that a name stands for, be it there or not.
std::string TargetOf(const std::string& name) {
  constexpr int kMostLinks = 40;
  std::filesystem::path path = name;
  std::error_code none;
  for (int i = 0; i < kMostLinks && std::filesystem::is_symlink(path, none); ++i)
    path = path.parent_path() / std::filesystem::read_symlink(path, none);
  return path;
}

/// False when another process has locked it. One that was killed may be at the disk for a moment
/// more. Where files cannot be locked, none has.
bool Lock(int file) {
  constexpr std::chrono::milliseconds kPause(20);
  for (int tries = 50; flock(file, LOCK_EX | LOCK_NB) != 0; --tries) {
    if (errno != EWOULDBLOCK && errno != EINTR) return true;
    if (tries == 0) return false;
    std::this_thread::sleep_for(kPause);
  }
  return true;
}

/// Whether the open file still has the name.
bool IsNamed(int file, const std::string& name) {
  struct stat open = {}, named = {};
  return fstat(file, &open) == 0 && lstat(name.c_str(), &named) == 0 &&
         open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

void KeepModeAndOwner(int from, int to) {
  struct stat old = {};
  if (fstat(from, &old) != 0) return;
  // Who may not give files away may still give them to a group of his own.
  if (fchown(to, old.st_uid, old.st_gid) != 0 &&
      fchown(to, static_cast<uid_t>(-1), old.st_gid) != 0)
    errno = 0;
  fchmod(to, old.st_mode & ALLPERMS);
}

/// The new name, too, must be on the disk. Some file systems cannot sync a folder; the file is
/// whole all the same.
void SyncFolderOf(const std::string& name) {
  const std::filesystem::path folder = std::filesystem::path(name).parent_path();
  const int opened = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_CLOEXEC);
  if (opened < 0) return;
  fsync(opened);
  close(opened);
}

}  // namespace

Journal::Descriptor::~Descriptor() {
  if (IsOpen()) close(mNumber);
}

std::unique_ptr<Journal> Journal::Open(const std::string& name, Access access,
                                       std::string& reason) {
  const bool reads = access == Access::kRead;
  std::unique_ptr<Journal> journal(new Journal(reads ? name : TargetOf(name)));
  struct stat named = {};
  if (stat(journal->mName.c_str(), &named) != 0) {
    if (errno == ENOENT && access == Access::kReplace) return journal;
    Fail(reason);
  } else if (S_ISDIR(named.st_mode)) {
    Fail(reason, "it is a folder");
  } else if (!S_ISREG(named.st_mode)) {
    Fail(reason, "it is no regular file");
  } else if (journal->Take(reads ? O_RDONLY : O_RDWR, reason)) {
    return journal;
  }
  return nullptr;
}

/// Opens the file of the journal's name, and locks it for writing. A lock is the file's, not the
/// name's: one that was renamed or replaced meanwhile is not what was wanted.
bool Journal::Take(int flags, std::string& reason) {
  constexpr mode_t kMode = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
  do {
    mFile = Descriptor(open(mName.c_str(), flags | O_NONBLOCK | O_CLOEXEC, kMode));
    if (!mFile.IsOpen()) return Fail(reason);
    if ((flags & O_ACCMODE) == O_RDONLY) return true;
    if (!Lock(mFile.Get())) return Fail(reason, kInUse);
  } while (!IsNamed(mFile.Get(), mName));
  return true;
}

std::size_t Journal::ReadAt(std::uint64_t position, char* bytes, std::size_t size) const {
  std::size_t done = 0;
  while (done < size) {
    const ssize_t count =
        pread(mFile.Get(), bytes + done, size - done, static_cast<off_t>(position + done));
    if (count == 0 || (count < 0 && errno != EINTR)) break;
    if (count > 0) done += static_cast<std::size_t>(count);
  }
  return done;
}

std::string Journal::ReadHead(std::size_t size) {
  std::string head(size, '\0');
  head.resize(ReadAt(0, head.data(), size));
  mPosition = size;
  return head;
}

bool Journal::Read(Record& record) {
  std::array<char, kFrameSize> frame;
  const std::size_t count = ReadAt(mPosition, frame.data(), frame.size());
  if (count == 0) return false;
  mTorn = true;
  struct stat file = {};
  if (count != frame.size() || fstat(mFile.Get(), &file) != 0) return false;
  const std::uint64_t size = GetNumber(&frame[kNumberSize]);
  const std::uint64_t begin = mPosition + kFrameSize;
  // Memory only for bytes that are there.
  const auto end = static_cast<std::uint64_t>(file.st_size);
  if (end < begin || end - begin < size || size > record.bytes.max_size()) return false;
  record.bytes.resize(static_cast<std::size_t>(size));
  if (ReadAt(begin, record.bytes.data(), record.bytes.size()) != size) return false;
  const std::string_view rest(&frame[kNumberSize], kFrameSize - kNumberSize);
  if (GetNumber(frame.data()) != zultav::Fnv1a(record.bytes, zultav::Fnv1a(rest))) return false;
  record.kind = frame.back();
  mPosition = begin + size;
  mTorn = false;
  return true;
}

bool Journal::Append(char kind, std::string_view bytes, std::string& reason) {
  std::string record(kFrameSize, kind);
  PutNumber(&record[kNumberSize], bytes.size());
  record += bytes;
  PutNumber(record.data(), zultav::Fnv1a(std::string_view(record).substr(kNumberSize)));
  return Write(record, reason);
}

/// At the end, where a record that was not written whole may stand. At once, so that readers seldom
/// meet a part.
bool Journal::Write(std::string_view bytes, std::string& reason) {
  const auto end = static_cast<off_t>(mEnd);
  const int file = mFile.Get();
  if (ftruncate(file, end) != 0 || lseek(file, end, SEEK_SET) != end || !WriteAll(file, bytes))
    return Fail(reason);
  mEnd += bytes.size();
  return true;
}

bool Journal::Sync(std::string& reason) const { return fsync(mFile.Get()) == 0 || Fail(reason); }

bool Journal::Rewrite(std::string_view head,
                      const std::function<bool(Journal& made, std::string& reason)>& fill,
                      std::string& reason) {
  Journal made(mName + ".part");
  if (!made.BeginAnew(head, *this, reason)) return false;
  bool whole = made.Write(head, reason) && fill(made, reason) && made.Sync(reason);
  if (whole && std::rename(made.mName.c_str(), mName.c_str()) != 0) whole = Fail(reason);
  if (!whole) {
    unlink(made.mName.c_str());
    return false;
  }
  mFile = std::move(made.mFile);  // the lock on the old file ends when the new one has its name
  mPosition = mEnd = made.mEnd;
  SyncFolderOf(mName);
  return true;
}

/// Takes the place in which the new file is made, if it is free or holds what a killed run left.
bool Journal::BeginAnew(std::string_view head, const Journal& old, std::string& reason) {
  struct stat file = {};
  if (!Take(O_RDWR | O_CREAT | O_NOFOLLOW, reason)) return false;
  const std::string begun = ReadHead(head.size());
  if (fstat(mFile.Get(), &file) != 0 || !S_ISREG(file.st_mode) || !head.starts_with(begun))
    return Fail(reason, "a file in the way has its name with '.part' behind");
  if (!old.Exists() && access(old.mName.c_str(), F_OK) == 0) return Fail(reason, kInUse);
  if (old.Exists()) KeepModeAndOwner(old.mFile.Get(), mFile.Get());
  return true;
}
