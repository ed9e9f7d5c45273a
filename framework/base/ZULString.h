#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "framework/base/Export.h"

/// Text of the framework's interfaces: names of types, operators and modules.
///
/// Nothing here throws: a text for which there is no memory becomes the empty string.
class ZULTAV_BASE_API ZULString {
 public:
  ZULString() noexcept = default;
  /// Null is the empty string.
  ZULString(const char* text) noexcept;  // NOLINT(google-explicit-constructor): literals are names
  explicit ZULString(std::string_view text) noexcept;
  ZULString(const ZULString& other) noexcept;
  ZULString(ZULString&& other) noexcept = default;
  ZULString& operator=(const ZULString& other) noexcept;
  ZULString& operator=(ZULString&& other) noexcept = default;
  ~ZULString() = default;

  /// NUL-terminated; valid until the string changes.
  const char* Str() const noexcept { return mText.c_str(); }
  /// Number of bytes.
  std::size_t Length() const noexcept { return mText.size(); }

  // NOLINTNEXTLINE(google-explicit-constructor): a string is readable wherever a view is
  operator std::string_view() const noexcept { return mText; }

  friend bool operator==(const ZULString& a, const ZULString& b) noexcept {
    return a.mText == b.mText;
  }
  /// Order by byte values.
  friend bool operator<(const ZULString& a, const ZULString& b) noexcept {
    return a.mText < b.mText;
  }

 private:
  void Set(std::string_view text) noexcept;

  std::string mText;
};
