#include "framework/search/ZULTavSolution.h"

#include <new>
#include <utility>

#include "framework/base/ZULipstream.h"
#include "framework/base/ZULopstream.h"
#include "framework/solver/ZULTaVoNetwork.h"

namespace {

void Write(ZULopstream& out, const ZULTavObserved& observed) {
  out.WriteUnsigned(static_cast<std::uint64_t>(observed.kind));
  if (observed.kind == ZULTavObserved::Kind::kReal) {
    out << observed.reals.lower << observed.reals.upper;
    return;
  }
  out.WriteUnsigned(static_cast<std::uint64_t>(observed.integers.lower));
  out.WriteUnsigned(static_cast<std::uint64_t>(observed.integers.upper));
}

void Read(ZULipstream& in, ZULTavObserved& observed) {
  std::uint64_t kind = 0, lower = 0, upper = 0;
  in.ReadUnsigned(kind, static_cast<std::uint64_t>(ZULTavObserved::Kind::kReal));
  observed.kind = static_cast<ZULTavObserved::Kind>(kind);
  if (observed.kind == ZULTavObserved::Kind::kReal) {
    in >> observed.reals.lower >> observed.reals.upper;
    if (observed.reals.IsEmpty()) in.Fail("an observed value is empty");
    return;
  }
  in.ReadUnsigned(lower);
  in.ReadUnsigned(upper);
  observed.integers = {static_cast<std::int64_t>(lower), static_cast<std::int64_t>(upper)};
  if (observed.integers.IsEmpty()) in.Fail("an observed value is empty");
}

}  // namespace

ZULTavSolution::ZULTavSolution(const ZULTaVoNetwork& network, std::span<ZULTaVoAny* const> values,
                               std::size_t observed)
    : mObserved(observed) {
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
  std::swap(mObserved, other.mObserved);
  mProven = other.mProven;
  return *this;
}

void ZULTavSolution::Write(ZULopstream& out) const {
  out.WriteUnsigned(mProven);
  for (const Entry& entry : mEntries) out.WriteObject(*entry.value);
  for (const ZULTavObserved& observed : mObserved) ::Write(out, observed);
}

bool ZULTavSolution::Read(ZULipstream& in) {
  std::uint64_t proven = 0;
  in.ReadUnsigned(proven, 1);
  mProven = proven != 0;
  for (const Entry& entry : mEntries)
    if (!in.ReadObject(*entry.value)) return false;
  for (ZULTavObserved& observed : mObserved) ::Read(in, observed);
  return in.Good();
}

void ZULTavSolution::Destroy() noexcept {
  for (const Entry& entry : mEntries) entry.type->DestroyObject(entry.value);
  mEntries.clear();
}
