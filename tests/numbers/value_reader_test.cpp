#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>

#include "numbers/ZULTavNumbers.h"
#include "numbers/io/detail/ValueReader.h"
#include "tests/numbers/comma_locale.h"

using namespace zultav::detail;

namespace {

using SI = ZULTavSingleInteger;
using SB = ZULTavSingleBoolean;
using II = ZULTavIntervalInteger;
using SR = ZULTavSingleReal;
using IR = ZULTavIntervalReal;

std::string Rest(std::istream& in) {
  in.clear();
  return std::string(std::istreambuf_iterator<char>(in), {});
}

TEST(ValueReaderTest, ClassifiesText) {
  struct {
    const char* text;
    int number, boolean;
    // clang-format off
    const char* restOfNumber;
  } rows[] = {
      {"  [1", 1, 1, "1"}, {"{1", 8, -1, "1"}, {"Min", 2, -1, ""}, {"Maxi", 3, -1, "i"},
      {" \n Any,", 4, 4, ","}, {"Nil", 5, 5, ""}, {"intMin", 6, -1, ""}, {"intMax]", 7, -1, "]"},
      {"intAny", -1, -1, ""}, {"int\nMax", -1, -1, "\nMax"}, {"Mix", -1, -1, ""},
      {"A\nny", -1, -1, "\nny"}, {"42", 0, -1, "42"}, {"xyz", 0, -1, "xyz"}, {"", 0, -1, ""},
      {"True", 0, 2, "True"}, {"Truth", 0, -1, "Truth"}, {"False", 0, 3, "False"},
      {"Falso", 0, -1, "Falso"}};
  // clang-format on
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    std::istringstream numbers(row.text), booleans(row.text);
    EXPECT_EQ(CheckNumString(numbers), row.number);
    EXPECT_EQ(Rest(numbers), row.restOfNumber);
    EXPECT_EQ(CheckBoolString(booleans), row.boolean);
  }
}

/// Reads a value and prints it, then "!" if the stream failed, else what is left of the text.
template <class C>
std::string Read(const std::string& text) {
  std::istringstream in(text);
  C value;
  value.InputValue(in);
  std::ostringstream out;
  out << value << (in.fail() ? "!" : "") << '|';
  if (!in.fail()) return out.str() + Rest(in);
  EXPECT_EQ(in.rdstate(), std::ios::failbit);
  return out.str();
}

struct TextRow {
  const char* text;
  const char* result;
};

TEST(ValueReaderTest, SingleIntegers) {
  // clang-format off
  const TextRow rows[] = {
      {" -12 x", "-12| x"}, {"  Any", "Any|"}, {"Nil", "Nil|"}, {"Maxi", " Max|i"},
      {" Min", " Min|"}, {"intMax", " Max|"}, {"2147483646", " Max|"}, {"2147483647", "Any|"},
      {"-2147483647", "Nil|"}, {"2147483648", "Nil!|"}, {"-9999999999", "Nil!|"},
      {"99999999999999999999", "Nil!|"}, {"xyz", "Nil!|"}, {"", "Nil!|"}, {"[1,2]", "Nil!|"},
      {"{1}", "Nil!|"}, {"Mux", "Nil!|"}};
  // clang-format on
  for (const auto& row : rows) EXPECT_EQ(Read<SI>(row.text), row.result) << row.text;
}

TEST(ValueReaderTest, SingleBooleans) {
  // clang-format off
  const TextRow rows[] = {
      {" True", "True|"}, {"Falsey", "False|y"}, {"  Any", "Any|"}, {"Nil", "Nil|"},
      {"Truth", "Nil!|"}, {"[True]", "Nil!|"}, {"1", "Nil!|"}, {"Incorrect value", "Nil!|"}};
  // clang-format on
  for (const auto& row : rows) EXPECT_EQ(Read<SB>(row.text), row.result) << row.text;
}

// clang-format off
const TextRow kSingleReals[] = {
      {"2.5 3", "2.5| 3"}, {"-1.5e3,", "-1500.0|,"}, {"  Any", "Any|"}, {"Nil", "Nil|"},
      {" Max", " Max|"}, {"intMax", "intMax|"}, {"intMin ", "intMin| "},
      {"2147483646", "intMax|"}, {"5e19", "Any|"}, {"1e21", "Any|"}, {"-1e21", "Nil|"},
      {"1e400", "Nil!|"}, {"xyz", "Nil!|"}, {"", "Nil!|"}, {"[1,2]", "Nil!|"}, {"nan", "Nil!|"},
      {"inf", "Nil!|"}, {"-inf", "Nil!|"}, {"Infinity", "Nil!|"}};
// clang-format on

// clang-format off
const TextRow kRealIntervals[] = {
      {"[1,2]", "[1.0,2.0]|"}, {" [ -1.5 , 2.5 ]x", "[-1.5,2.5]|x"},
      {"[ Min,intMax]", "[ Min,intMax]|"}, {"[ Min, Max]", "Any|"}, {"2.5]", "2.5|]"},
      {"Any", "Any|"}, {"Nil", "Nil|"}, {"Max", " Max|"}, {"[3,1]", "Nil|"}, {"[1,2", "Nil!|"},
      {"[1 2]", "Nil!|"}, {"[1,2)", "Nil!|"}, {"[Nil,3]", "Nil!|"}, {"[1,Any]", "Nil!|"},
      {"[[1,2],3]", "Nil!|"}, {"{[1,2]}", "Nil!|"}, {"[,2]", "Nil!|"}, {"[", "Nil!|"},
      {"[1e21,2e21]", " Max|"}};
// clang-format on

TEST(ValueReaderTest, Reals) {
  for (const auto& row : kSingleReals) EXPECT_EQ(Read<SR>(row.text), row.result) << row.text;
  for (const auto& row : kRealIntervals) EXPECT_EQ(Read<IR>(row.text), row.result) << row.text;
}

TEST(ValueReaderTest, RealsInALocaleWithAComma) {
  const CommaLocale locale;
  for (const auto& row : kSingleReals) EXPECT_EQ(Read<SR>(row.text), row.result) << row.text;
  for (const auto& row : kRealIntervals) EXPECT_EQ(Read<IR>(row.text), row.result) << row.text;
  const TextRow rows[] = {
      {"2,5",     "2.0|,5"  },
      {"1.5,2.5", "1.5|,2.5"},
      {"2.5\n7",  "2.5|\n7" },
      {"0x10",    "Nil!|"   }
  };
  for (const auto& row : rows) EXPECT_EQ(Read<SR>(row.text), row.result) << row.text;
  const std::string digits(60, '1');  // no more than 48 characters are looked at
  EXPECT_EQ(Read<SR>("0." + digits), "0.1111111|" + digits.substr(46));
}

TEST(ValueReaderTest, AnUnreadableRealIsZeroForInputReal) {
  for (bool comma : {false, true}) {
    std::optional<CommaLocale> locale;
    if (comma) locale.emplace();
    std::istringstream in("xyz");
    EXPECT_EQ(SR::InputReal(in), 0.0);
    EXPECT_EQ(in.good(), comma);
    EXPECT_EQ(Rest(in), "xyz");
  }
}

TEST(ValueReaderTest, AStreamWithALocaleOfItsOwn) {
  const CommaLocale available;
  const std::locale comma("de_DE.UTF-8");
  std::locale::global(std::locale::classic());
  std::istringstream in("[1.5,2.5][1000,2000]");
  in.imbue(comma);
  IR reals;
  II integers;
  reals.InputValue(in);
  integers.InputValue(in);
  EXPECT_EQ(reals.GetUpperBound(), 2.5);
  EXPECT_EQ(integers.GetUpperBound(), 2000);
  EXPECT_EQ(in.getloc(), comma);
}

TEST(ValueReaderTest, IntegerIntervals) {
  // clang-format off
  const TextRow rows[] = {
      {"[-3, Max]", "[-3, Max]|"}, {"[ Min,3]", "[ Min,3]|"}, {" [ 1 , 5 ] ", "[1,5]| "},
      {"7", "[7,7]|"}, {"intMax", "[ Max, Max]|"}, {"Any", "Any|"}, {"Nil", "Nil|"},
      {"[5,3]", "Nil|"}, {"[Nil,3]", "Nil!|"}, {"[1.5,3]", "Nil!|"}, {"[1;3]", "Nil!|"},
      {"[1,3", "Nil!|"}, {"[1,9999999999]", "Nil!|"}, {"[1,2147483647]", "[1, Max]|"},
      {"True", "Nil!|"}};
  // clang-format on
  for (const auto& row : rows) EXPECT_EQ(Read<II>(row.text), row.result) << row.text;
}

TEST(ValueReaderTest, TheBadBitStays) {
  std::istringstream in("xyz");
  in.setstate(std::ios::badbit);
  SR value;
  value.InputValue(in);
  EXPECT_EQ(in.rdstate(), std::ios::badbit | std::ios::failbit);
}

}  // namespace
