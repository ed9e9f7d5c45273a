#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "framework/solver/ZULTavAbstractTypes.h"
#include "numbers/ZULTavNumbers.h"

namespace {

using SB = ZULTavSingleBoolean;
using SI = ZULTavSingleInteger;
using II = ZULTavIntervalInteger;
using SR = ZULTavSingleReal;
using IR = ZULTavIntervalReal;

// Values through object streams ------------------------------------------------------------------

/// The values that some texts stand for, of those that the class can read.
template <class C>
std::vector<C> Values() {
  std::vector<C> values;
  for (const char* text : {"Any", "Nil", "True", "False", "0", "-7", "0.1", "Min", "Max", "[-3,5]",
                           "[Min,2]", "[0.1,0.3]"}) {
    std::istringstream in(text);
    C value;
    value.InputValue(in);
    if (!in.fail()) values.push_back(value);
  }
  return values;
}

/// All bits of the value.
template <class C>
std::string Bits(const C& value) {
  if constexpr (std::is_base_of_v<ZULTaVoBoolean, C>) {
    return std::to_string(value.GetSet().code);
  } else {
    std::ostringstream out;
    out << std::hexfloat << value.GetLowerBound() << ' ' << value.GetUpperBound();
    return out.str();
  }
}

template <class C>
class ValueTypeTest : public testing::Test {};
using ValueTypes = testing::Types<SB, SI, II, SR, IR, ZULTavAngle, ZULTavPositive>;
TYPED_TEST_SUITE(ValueTypeTest, ValueTypes);

TYPED_TEST(ValueTypeTest, ReadsBackWhatItWrote) {
  EXPECT_GE(Values<TypeParam>().size(), 4U);
  for (const TypeParam& value : Values<TypeParam>()) {
    SCOPED_TRACE(testing::Message() << value);
    std::stringstream bytes;
    ZULopstream out(bytes);
    TypeParam::writeRef(out, value);
    TypeParam::writePtr(out, &value);
    TypeParam::writePtr(out, &value);
    TypeParam::writePtr(out, nullptr);
    ASSERT_TRUE(out.Good()) << out.Reason();

    ZULipstream in(bytes);
    TypeParam read = Values<TypeParam>()[2];
    TypeParam* first = nullptr;
    TypeParam* again = nullptr;
    TypeParam* none = &read;
    TypeParam::readRef(in, read);
    TypeParam::readPtr(in, first);
    TypeParam::readPtr(in, again);
    TypeParam::readPtr(in, none);
    ASSERT_TRUE(in.Good()) << in.Reason();
    const std::unique_ptr<TypeParam> owned(first);
    EXPECT_EQ(Bits(read), Bits(value));
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(Bits(*first), Bits(value));
    EXPECT_EQ(again, first);
    EXPECT_EQ(none, nullptr);
  }
}

TYPED_TEST(ValueTypeTest, DescriptorBuildsCopiesAndIsStored) {
  const ZULTaVoObjectDescriptor* descriptor = TypeParam::sDescriptor;
  ASSERT_NE(descriptor, nullptr);
  EXPECT_EQ(TypeParam().GetDescriptor(), descriptor);
  EXPECT_EQ(descriptor->GetObjectSize(), sizeof(TypeParam));
  EXPECT_EQ(descriptor->InitObject(nullptr), nullptr);
  const TypeParam from = Values<TypeParam>()[2];
  EXPECT_EQ(descriptor->InitObject(nullptr, &from), nullptr);

  alignas(std::max_align_t) unsigned char place[sizeof(TypeParam)];
  ASSERT_EQ(descriptor->InitObject(place), place);
  auto* made = std::launder(reinterpret_cast<TypeParam*>(place));
  EXPECT_EQ(Bits(*made), Bits(TypeParam()));
  EXPECT_STREQ(made->CastableID(), TypeParam::kClassName);
  descriptor->DestroyObject(made);
  ASSERT_EQ(descriptor->InitObject(place, &from), place);
  EXPECT_EQ(Bits(*made), Bits(from));
  descriptor->DestroyObject(made);

  const std::string name = std::string(TypeParam::kClassName) + "_Descriptor";
  EXPECT_EQ(descriptor->CastableID(), name);
  EXPECT_NE(ZULStreamableClass::Find(TypeParam::kClassName), nullptr);
  const ZULStreamableClass* record = ZULStreamableClass::Find(name);
  ASSERT_NE(record, nullptr);
  const std::unique_ptr<ZULStreamable> built(record->Build(nullptr));
  ASSERT_NE(built, nullptr);
  EXPECT_EQ(built->CastableID(), name);
  EXPECT_EQ(record->Build(built.get()), built.get());
}

TEST(ValueTypesTest, InitialValuesAndSizes) {
  EXPECT_EQ(ZULTavAngle::sDescriptor->GetObjectSize(), sizeof(IR));
  EXPECT_EQ(ZULTavPositive::sDescriptor->GetObjectSize(), sizeof(IR));
  EXPECT_EQ(ZULTavAngle().GetSubdef().lower, 0);
  EXPECT_EQ(ZULTavAngle().GetSubdef().upper, 6.283185307179586);
  EXPECT_EQ(ZULTavPositive().GetSubdef().upper, SR::sNC_REAL_MAX);
  EXPECT_TRUE(IR().IsAny() && II().IsAny() && SR().IsAny() && SI().IsAny() && SB().IsAny());
}

TEST(ValueTypesTest, RecordsOfNoValueAreRefused) {
  const auto refuses = [](auto value, auto... fields) {
    std::stringstream bytes;
    ZULopstream out(bytes);
    (out << ... << fields);
    ZULipstream in(bytes);
    value.Read(in);
    EXPECT_STRNE(in.Reason(), "");
    EXPECT_TRUE(value.IsNil());
  };
  refuses(SB(), 4);
  refuses(SB(), -1);
  refuses(SR(1.0), std::nan(""));
  refuses(IR(), 1.0, std::nan(""));
  refuses(ZULTavAngle(), -std::nan(""), 1.0);
}

// Identity ---------------------------------------------------------------------------------------

TEST(ValueTypesTest, IdentityFollowsTheChainOfBasesByPointer) {
  const SB boolean;
  const SI integer;
  const II integers;
  const SR real;
  const IR reals;
  const ZULTavAngle angle;
  const ZULTavPositive positive;
  const ZULTavPrimeNumber prime;
  const ZULTaVoObject* objects[] = {&boolean, &integer, &integers, &real,
                                    &reals,   &angle,   &positive, &prime};
  const struct {
    const char* identity;
    const char* derived;  // for each object 1 or 0
  } rows[] = {
      {ZULTaVoObject::sIdent,     "11111111"},
      {ZULTaVoAny::sIdent,        "11111110"},
      {ZULTaVoScalar::sIdent,     "11111110"},
      {ZULTaVoNumber::sIdent,     "01111110"},
      {ZULTaVoBoolean::sIdent,    "10000000"},
      {ZULTaVoInteger::sIdent,    "01100000"},
      {ZULTaVoReal::sIdent,       "00011110"},
      {ZULTaVoConstraint::sIdent, "00000001"},
      {ZULTavPrimeNumber::sIdent, "00000001"},
      {SB::sIdent,                "10000000"},
      {SI::sIdent,                "01000000"},
      {II::sIdent,                "00100000"},
      {SR::sIdent,                "00010000"},
      {IR::sIdent,                "00001110"},
      {ZULTavAngle::sIdent,       "00000100"},
      {ZULTavPositive::sIdent,    "00000010"},
      {nullptr,                   "00000000"}
  };
  for (const auto& row : rows) {
    const std::string copy = row.identity != nullptr ? row.identity : "";
    for (std::size_t i = 0; i < std::size(objects); ++i) {
      SCOPED_TRACE(testing::Message() << objects[i]->CastableID() << " from " << copy);
      EXPECT_EQ(objects[i]->IsDerivedFrom(row.identity), row.derived[i] == '1');
      EXPECT_EQ(objects[i]->IsDerivedFrom(copy.c_str()), 0);
    }
  }
}

}  // namespace
