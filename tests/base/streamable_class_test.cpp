#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "framework/base/ZULStreamable.h"
#include "framework/base/ZULStreamableClass.h"

namespace {

// Itanium C++ ABI: a pointer to a virtual member holds 1 + the byte offset of its slot.
template <class Member>
std::ptrdiff_t SlotOf(Member member) {
  static_assert(sizeof(member) == 2 * sizeof(std::ptrdiff_t));
  return std::bit_cast<std::array<std::ptrdiff_t, 2>>(member)[0] / std::ptrdiff_t{sizeof(void*)};
}

TEST(ZULStreamableTest, KeepsTheSlotOrder) {  // slots 0 and 1 are the destructor's
  EXPECT_EQ(SlotOf(&ZULStreamable::CastableID), 2);
  EXPECT_EQ(SlotOf(&ZULStreamable::Write), 3);
  EXPECT_EQ(SlotOf(&ZULStreamable::Read), 4);
}

TEST(ZULStreamableClassTest, TheOldestLivingRecordOfANameIsFound) {
  std::vector<std::string> names;
  for (int i = 0; i < 2000; ++i) names.push_back("Class" + std::to_string(i / 4));
  std::vector<std::unique_ptr<ZULStreamableClass>> records;
  for (const auto& name : names)
    records.push_back(std::make_unique<ZULStreamableClass>(name.c_str(), nullptr, 1));
  for (std::size_t i = 0; i < names.size(); ++i)
    if (i % 3 != 0) records[i].reset();
  for (std::size_t i = 0; i < names.size(); ++i) {
    const auto twins = records.begin() + static_cast<std::ptrdiff_t>(i / 4 * 4);
    const auto oldest = std::find_if(twins, twins + 4, [](const auto& r) { return r != nullptr; });
    ASSERT_EQ(ZULStreamableClass::Find(names[i]), oldest->get()) << names[i];
  }
  records.clear();
  EXPECT_EQ(ZULStreamableClass::Find(names[0]), nullptr);
}

TEST(ZULStreamableClassTest, OddRecordsAreHarmless) {
  const ZULStreamableClass nameless(nullptr, nullptr, -5);
  EXPECT_EQ(ZULStreamableClass::Find(""), nullptr);
  EXPECT_EQ(nameless.Version(), 0);
  EXPECT_EQ(nameless.Build(nullptr), nullptr);
  const ZULStreamableClass thrower(
      "Thrower", [](ZULStreamable*) -> ZULStreamable* { throw std::bad_alloc(); }, 1);
  EXPECT_EQ(thrower.Build(nullptr), nullptr);
}

}  // namespace
