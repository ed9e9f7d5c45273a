#pragma once

#include <gtest/gtest.h>

#include <clocale>
#include <locale>
#include <stdexcept>

/// While it lives, the C library and new streams follow a locale whose decimal point is a comma.
/// The test fails where the system lacks it.
class CommaLocale {
 public:
  CommaLocale() {
    try {
      std::locale::global(std::locale("de_DE.UTF-8"));
    } catch (const std::runtime_error&) {
      ADD_FAILURE()
          << "This test needs the locale de_DE.UTF-8: install the package \"locales\" and "
             "run: localedef -i de_DE -f UTF-8 de_DE.UTF-8";
    }
    EXPECT_STREQ(std::localeconv()->decimal_point, ",");
  }
  ~CommaLocale() { std::locale::global(std::locale::classic()); }
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;
};
