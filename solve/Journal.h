#ifndef ZULTAV_SOLVE_JOURNAL_H
#define ZULTAV_SOLVE_JOURNAL_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

/// A file of a head and records (format: docs/streams.md) that grows at its end. One process at a
/// time may write it, any may read it meanwhile. Whenever a process or the machine stops, what was
/// brought to the disk is whole.
class Journal {
 public:
  struct Record {
    char kind = 0;
    std::string bytes;
  };
  enum class Access {
    kRead,
    kWrite,
    kReplace  ///< as kWrite, but there need not be a file
  };

  /// Opens the file, which need not hold a journal. A link stands for the file that it leads to.
  /// Null, with the reason, for what is no regular file, and where a writer has it already.
  static std::unique_ptr<Journal> Open(const std::string& name, Access access, std::string& reason);

  bool Exists() const { return mFile.IsOpen(); }

  /// The file's first bytes, not more than `size`. The first record follows after so many.
  std::string ReadHead(std::size_t size);
  /// The next record. False at the end, and before bytes that are no whole record.
  bool Read(Record& record);
  /// Where the next record begins.
  std::uint64_t GetPosition() const { return mPosition; }
  /// Whether Read has met bytes that are no whole record.
  bool IsTorn() const { return mTorn; }

  /// What was read last is the last record that counts.
  void EndHere() { mEnd = mPosition; }
  std::uint64_t GetEnd() const { return mEnd; }
  /// Puts a record at the end. On failure the end stays, and `reason` says why.
  bool Append(char kind, std::string_view bytes, std::string& reason);
  /// Brings what was appended to the disk.
  bool Sync(std::string& reason) const;
  /// Replaces the file by one with this head and what `fill` appends, with the mode and, where that
  /// is allowed, the owner of the old one. It is replaced as a whole, or stays.
  bool Rewrite(std::string_view head,
               const std::function<bool(Journal& made, std::string& reason)>& fill,
               std::string& reason);

 private:
  /// An open file, locked or not.
  class Descriptor {
   public:
    Descriptor() = default;
    explicit Descriptor(int number) : mNumber(number) {}
    ~Descriptor();
    Descriptor(Descriptor&& other) noexcept : mNumber(std::exchange(other.mNumber, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
      std::swap(mNumber, other.mNumber);
      return *this;
    }
    bool IsOpen() const { return mNumber >= 0; }
    int Get() const { return mNumber; }

   private:
    int mNumber = -1;
  };

  explicit Journal(std::string name) : mName(std::move(name)) {}
  bool Take(int flags, std::string& reason);
  bool BeginAnew(std::string_view head, const Journal& old, std::string& reason);
  std::size_t ReadAt(std::uint64_t position, char* bytes, std::size_t size) const;
  bool Write(std::string_view bytes, std::string& reason);

  std::string mName;
  Descriptor mFile;
  std::uint64_t mPosition = 0, mEnd = 0;
  bool mTorn = false;
};

#endif
