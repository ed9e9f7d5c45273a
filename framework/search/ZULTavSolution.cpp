#include "framework/search/ZULTavSolution.h"

#include <new>
#include <utility>

#include "framework/base/ZULipstream.h"
#include "framework/base/ZULopstream.h"
#include "framework/solver/ZULTaVoNetwork.h"

ZULTavSolution::ZULTavSolution(const ZULTaVoNetwork& network, std::span<ZULTaVoAny* const> values) {
  constexpr auto units = [](std::size_t bytes) {
    return (bytes + sizeof(std::max_align_t) - 1) / sizeof(std::max_align_t);
  };
  std::size_t total = 0;
  mEntries.reserve(values.size());
  for (const ZULTaVoAny* value : values) {
    mEntries.push_back({nullptr, network.GetType(value)});
    total += units(mEntries.back().type->GetObjectSize());
  }
  mMemory = std::make_unique_for_overwrite<std::max_align_t[]>(total);
  std::max_align_t* place = mMemory.get();
  for (std::size_t i = 0; i < values.size(); ++i) {
    Entry& entry = mEntries[i];
    entry.value = static_cast<ZULTaVoAny*>(entry.type->InitObject(place, values[i]));
    if (entry.value == nullptr) {
      mEntries.resize(i);
      Destroy();
      throw std::bad_alloc();
    }
    place += units(entry.type->GetObjectSize());
  }
}

ZULTavSolution::~ZULTavSolution() { Destroy(); }

ZULTavSolution& ZULTavSolution::operator=(ZULTavSolution&& other) noexcept {
  std::swap(mMemory, other.mMemory);
  std::swap(mEntries, other.mEntries);
  mProven = other.mProven;
  return *this;
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
