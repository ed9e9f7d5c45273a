#include "framework/base/ZULString.h"

ZULString::ZULString(const char* text) noexcept {
  if (text != nullptr) Set(text);
}

ZULString::ZULString(std::string_view text) noexcept { Set(text); }

ZULString::ZULString(const ZULString& other) noexcept { Set(other); }

ZULString& ZULString::operator=(const ZULString& other) noexcept {
  if (this != &other) Set(other);
  return *this;
}

void ZULString::Set(std::string_view text) noexcept {
  try {
    mText = text;
  } catch (...) {
    mText.clear();
  }
}
