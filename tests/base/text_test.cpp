#include <gtest/gtest.h>

#include <locale>
#include <string>
#include <string_view>
#include <utility>

#include "framework/base/ZULString.h"
#include "framework/base/ZULostrstream.h"

namespace {

TEST(ZULStringTest, HoldsBytesAndOrdersThem) {
  const char* const none = nullptr;
  EXPECT_EQ(ZULString(none), ZULString());
  EXPECT_STREQ(ZULString(none).Str(), "");
  const ZULString withNul(std::string_view("a\0b", 3));
  EXPECT_EQ(withNul.Length(), 3U);
  EXPECT_FALSE(withNul == ZULString("a"));
  EXPECT_LT(ZULString("a"), withNul);
  EXPECT_LT(ZULString("z"), ZULString("\xC3\xA9"));  // as unsigned bytes
  ZULString moved("interval int");
  ZULString copy = moved;
  ZULString target = std::move(moved);
  EXPECT_EQ(copy, target);
  copy = *&copy;
  EXPECT_EQ(std::string_view(copy), "interval int");
}

TEST(ZULostrstreamTest, KeepsTheWholeTextAcrossGrowth) {
  ZULostrstream out;
  EXPECT_STREQ(out.Str(), "");
  std::string expected;
  for (int i = 0; i < 3000; ++i) {
    out << i % 10;  // by single bytes: every length must leave room for the terminator
    expected += std::to_string(i % 10);
    ASSERT_EQ(std::string_view(out.Str(), out.Length()), expected);
    ASSERT_EQ(out.Str()[out.Length()], '\0');
  }
  EXPECT_TRUE(out.good());
}

TEST(ZULostrstreamTest, IgnoresTheGlobalLocale) {
  struct Comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale(), new Comma));
  ZULostrstream out;
  std::locale::global(before);
  out << 1234.5 << ' ' << 1234567;
  EXPECT_STREQ(out.Str(), "1234.5 1234567");
}

}  // namespace
