#include "framework/search/ZULTavSolution.h"

#include <new>
#include <utility>

#include "framework/search/SearchVariable.h"
#include "framework/search/ZULTavProof.h"

ZULTavProof::~ZULTavProof() = default;

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

void ZULTavSolution::Destroy() noexcept {
  for (const Entry& entry : mEntries) entry.type->DestroyObject(entry.value);
  mEntries.clear();
}
