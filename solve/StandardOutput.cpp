#include "solve/StandardOutput.h"

#include <fcntl.h>

#include <cerrno>
#include <cstring>
#include <iostream>

#include "solve/WriteAll.h"

StandardOutput::StandardOutput() : mOld(std::cout.rdbuf(this)) {
  // Where one of the three was closed, a file opened later would take its place.
  int lowest = 0;
  while ((lowest = open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0 && lowest <= STDERR_FILENO) {
  }
  if (lowest >= 0) close(lowest);
  setp(mBuffer.data(), mBuffer.data() + mBuffer.size());
}

StandardOutput::~StandardOutput() {
  StandardOutput::sync();
  std::cout.rdbuf(mOld);
}

const char* StandardOutput::GetReason() const { return std::strerror(mError); }

StandardOutput::int_type StandardOutput::overflow(int_type next) {
  if (sync() != 0) return traits_type::eof();
  if (traits_type::eq_int_type(next, traits_type::eof())) return traits_type::not_eof(next);
  return sputc(traits_type::to_char_type(next));
}

int StandardOutput::sync() {
  const bool written = WriteAll(STDOUT_FILENO, {pbase(), pptr()});
  if (!written) mError = errno;
  setp(mBuffer.data(), mBuffer.data() + mBuffer.size());
  return written ? 0 : -1;
}
