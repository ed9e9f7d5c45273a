#include "framework/search/ZULTavSolution.h"

#include <new>
#include <utility>

#include "framework/base/ZULipstream.h"
#include "framework/base/ZULopstream.h"
#include "framework/search/detail/SearchVariable.h"

using namespace zultav::detail;

ZULTavSolution::ZULTavSolution(std::span<const SearchVariable> variables) {
  constexpr auto units = [](std::size_t bytes) {
    return (bytes + sizeof(std::max_align_t) - 1) / sizeof(std::max_align_t);
  };
  std::size_t total = 0;
  for (const SearchVariable& variable : variables) {
    total += units(variable.GetType()->GetObjectSize());
  }
  mMemory = std::make_unique_for_overwrite<std::max_align_t[]>(total);
  mEntries.reserve(variables.size());
  std::max_align_t* place = mMemory.get();
  for (const SearchVariable& variable : variables) {
    const ZULTaVoObjectDescriptor* type = variable.GetType();
    auto* copy = static_cast<ZULTaVoAny*>(type->InitObject(place, variable.GetValue()));
    if (copy == nullptr) {
      Destroy();
      throw std::bad_alloc();
    }
    mEntries.push_back({copy, type});
    place += units(type->GetObjectSize());
  }
}

ZULTavSolution::~ZULTavSolution() { Destroy(); }

ZULTavSolution& ZULTavSolution::operator=(ZULTavSolution&& other) noexcept {
  std::swap(mMemory, other.mMemory);
  std::swap(mEntries, other.mEntries);
  mProven = other.mProven;
  return *this;
}

void ZULTavSolution::SetBounds(std::size_t index, double lower, double upper) {
  auto& value = static_cast<ZULTaVoReal&>(GetValue(index));
  // Never empty on the way.
  const bool moveUp = upper > value.GetUpperBound();
  if (moveUp) value.SetUpperBound(upper);
  value.SetLowerBound(lower);
  if (!moveUp) value.SetUpperBound(upper);
}

void ZULTavSolution::Write(ZULopstream& out) const {
  out.WriteUnsigned(mProven);
  for (const Entry& entry : mEntries) out.WriteObject(*entry.value);
}

bool ZULTavSolution::Read(ZULipstream& in) {
  std::uint64_t proven = 0;
  in.ReadUnsigned(proven, 1);
  mProven = proven != 0;
  for (const Entry& entry : mEntries)
    if (!in.ReadObject(*entry.value)) return false;
  return in.Good();
}

void ZULTavSolution::Destroy() noexcept {
  for (const Entry& entry : mEntries) entry.type->DestroyObject(entry.value);
  mEntries.clear();
}
