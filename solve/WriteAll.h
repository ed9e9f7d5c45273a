#ifndef ZULTAV_SOLVE_WRITE_ALL_H
#define ZULTAV_SOLVE_WRITE_ALL_H

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

/// Writes all the bytes, whatever signals come and however slow the reader is. False when that is
/// not possible; then errno says why.
inline bool WriteAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(descriptor, bytes.data(), bytes.size());
    if (count >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno == EAGAIN) {
      pollfd waiting = {descriptor, POLLOUT, 0};
      poll(&waiting, 1, -1);
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

#endif
