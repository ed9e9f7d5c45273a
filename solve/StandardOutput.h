#ifndef ZULTAV_SOLVE_STANDARD_OUTPUT_H
#define ZULTAV_SOLVE_STANDARD_OUTPUT_H

#include <array>
#include <streambuf>

/// Takes what is written to std::cout to the program's standard output while it lives.
///
/// Nothing is lost to a signal or to a reader that is slow: the library's own buffer gives up what
/// it holds when a write is interrupted, or would have to wait and must not. Nor does a file get
/// the number of a standard stream that was closed.
class StandardOutput : public std::streambuf {
 public:
  StandardOutput();
  ~StandardOutput() override;

  /// Why the last write failed.
  const char* GetReason() const;

 protected:
  int_type overflow(int_type next) override;
  int sync() override;

 private:
  std::array<char, 1 << 14> mBuffer;
  std::streambuf* mOld;
  int mError = 0;
};

#endif
