#ifndef ZULTAV_NUMBERS_IO_DECIMAL_POINT_H
#define ZULTAV_NUMBERS_IO_DECIMAL_POINT_H

#include <clocale>

/// The decimal point of the C library's locale; values in text have '.' whatever it is.
inline char GetDot() { return *std::localeconv()->decimal_point; }

#endif
