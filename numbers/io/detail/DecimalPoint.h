#ifndef ZULTAV_NUMBERS_IO_DETAIL_DECIMAL_POINT_H
#define ZULTAV_NUMBERS_IO_DETAIL_DECIMAL_POINT_H

#include <clocale>

namespace zultav::detail {

/// The decimal point of the C library's locale; values in text have '.' whatever it is.
inline char GetDot() { return *std::localeconv()->decimal_point; }

}  // namespace zultav::detail

#endif
