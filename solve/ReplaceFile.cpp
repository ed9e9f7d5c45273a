#include "solve/ReplaceFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace {

/// An open file or folder.
class Descriptor {
 public:
  Descriptor(const std::string& name, int flags) : mNumber(open(name.c_str(), flags, 0666)) {}
  ~Descriptor() {
    if (IsOpen()) close(mNumber);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  bool IsOpen() const { return mNumber >= 0; }
  bool Sync() const { return fsync(mNumber) == 0; }
  bool Write(const std::string& bytes) const {
    for (std::size_t done = 0; done < bytes.size();) {
      const ssize_t count = write(mNumber, bytes.data() + done, bytes.size() - done);
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) return false;
      done += static_cast<std::size_t>(count);
    }
    return true;
  }

 private:
  int mNumber;
};

bool WriteAndSync(const std::string& file, const std::string& bytes) {
  const Descriptor part(file, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC);
  return part.IsOpen() && part.Write(bytes) && part.Sync();
}

}  // namespace

bool ReplaceFile(const std::string& file, const std::string& bytes, std::string& reason) {
  const std::string part = file + ".part";
  const bool done = WriteAndSync(part, bytes) && std::rename(part.c_str(), file.c_str()) == 0;
  if (!done) {
    reason = std::strerror(errno);
    unlink(part.c_str());
    return false;
  }
  // The new name, too, must be on the disk. Some file systems cannot sync a folder; the file is
  // whole all the same.
  const std::filesystem::path folder = std::filesystem::path(file).parent_path();
  const Descriptor opened(folder.empty() ? "." : folder.string(), O_RDONLY | O_CLOEXEC);
  if (opened.IsOpen()) opened.Sync();
  return true;
}
