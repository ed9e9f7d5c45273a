#include "framework/solver/ZULTaVoLocalDomains.h"

#include <algorithm>
#include <bit>
#include <numeric>

namespace {

constexpr std::size_t kBits = 64;

std::uint64_t WidthOf(std::int64_t lower, std::int64_t upper) {
  return static_cast<std::uint64_t>(upper) - static_cast<std::uint64_t>(lower);
}

}  // namespace

ZULTaVoLocalDomains::ZULTaVoLocalDomains(std::uint32_t values, std::uint32_t state)
    : mOwn(2 * std::size_t{values} + state, 0), mNumbers(values), mSets(values) {
  std::iota(mNumbers.begin(), mNumbers.end(), 0);
  for (std::uint32_t x = 0; x < values; ++x) SetIntegers(x, kNoLower, kNoUpper);
  mWords = mOwn.data();
  mSlots = mNumbers.data();
  mState = 2 * std::size_t{values};
}

void ZULTaVoLocalDomains::SetWords(std::uint32_t x, std::int64_t lower, std::int64_t upper) {
  mOwn[2 * std::size_t{x}] = lower;
  mOwn[2 * std::size_t{x} + 1] = upper;
}

void ZULTaVoLocalDomains::SetIntegers(std::uint32_t x, std::int64_t lower, std::int64_t upper) {
  SetWords(x, lower, upper);
  mSets[x] = {};
}

void ZULTaVoLocalDomains::SetReals(std::uint32_t x, double lower, double upper) {
  SetIntegers(x, std::bit_cast<std::int64_t>(lower), std::bit_cast<std::int64_t>(upper));
}

void ZULTaVoLocalDomains::KeepValues(std::uint32_t x) {
  const std::int64_t lower = GetLower(x), upper = GetUpper(x);
  if (lower == kNoLower || upper == kNoUpper || WidthOf(lower, upper) >= kWidestSet) return;
  mSets[x] = {mBits.size(), static_cast<std::size_t>(WidthOf(lower, upper) / kBits + 1), lower};
  mBits.resize(mBits.size() + mSets[x].words, ~std::uint64_t{0});
}

void ZULTaVoLocalDomains::CopyFrom(const ZULTaVoDomains& others) {
  std::size_t used = 0;
  for (std::uint32_t x = 0; x < GetNumberOfValues(); ++x) {
    const std::int64_t lower = others.GetLower(x), upper = others.GetUpper(x);
    SetIntegers(x, lower, upper);
    std::int64_t base = 0;
    const std::uint64_t* bits = others.GetBits(x, base);
    if (bits == nullptr) continue;
    const auto first = static_cast<std::size_t>(WidthOf(base, lower) / kBits);
    const auto last = static_cast<std::size_t>(WidthOf(base, upper) / kBits);
    const std::size_t words = last - first + 1;
    mSets[x] = {used, words, base + static_cast<std::int64_t>(first * kBits)};
    if (mBits.size() < used + words) mBits.resize(used + words);
    std::copy_n(bits + first, words, mBits.begin() + static_cast<std::ptrdiff_t>(used));
    used += words;
  }
  ForgetState();
  mNarrowed = false;
}

void ZULTaVoLocalDomains::ForgetState() {
  std::fill(mOwn.begin() + static_cast<std::ptrdiff_t>(mState), mOwn.end(), 0);
}

bool ZULTaVoLocalDomains::HasBit(const Set& set, std::int64_t value) const {
  const auto bit = static_cast<std::size_t>(WidthOf(set.base, value));
  return (mBits[set.first + bit / kBits] >> bit % kBits & 1) != 0;
}

bool ZULTaVoLocalDomains::HasValue(std::uint32_t slot, std::int64_t value) const {
  return mSets[slot].words == 0 || HasBit(mSets[slot], value);
}

std::int64_t ZULTaVoLocalDomains::FindNext(std::uint32_t slot, std::int64_t value) const {
  const std::int64_t lower = GetLower(slot), upper = GetUpper(slot);
  if (value < lower) return lower;
  if (value >= upper) return value == kNoUpper ? value : value + 1;
  for (++value; value < upper && !HasValue(slot, value);) ++value;
  return value;
}

std::int64_t ZULTaVoLocalDomains::FindPrevious(std::uint32_t slot, std::int64_t value) const {
  const std::int64_t lower = GetLower(slot), upper = GetUpper(slot);
  if (value > upper) return upper;
  if (value <= lower) return value == kNoLower ? value : value - 1;
  for (--value; value > lower && !HasValue(slot, value);) --value;
  return value;
}

std::uint64_t ZULTaVoLocalDomains::CountValues(std::uint32_t slot) const {
  const std::int64_t lower = GetLower(slot), upper = GetUpper(slot);
  const Set& set = mSets[slot];
  if (set.words == 0)
    return lower == kNoLower || upper == kNoUpper ? UINT64_MAX : WidthOf(lower, upper) + 1;
  const auto first = static_cast<std::size_t>(WidthOf(set.base, lower));
  const auto last = static_cast<std::size_t>(WidthOf(set.base, upper));
  std::uint64_t count = 0;
  for (std::size_t word = first / kBits; word <= last / kBits; ++word) {
    std::uint64_t bits = mBits[set.first + word];
    if (word == first / kBits) bits &= ~std::uint64_t{0} << first % kBits;
    if (word == last / kBits) bits &= ~std::uint64_t{0} >> (kBits - 1 - last % kBits);
    count += static_cast<std::uint64_t>(std::popcount(bits));
  }
  return count;
}

const std::uint64_t* ZULTaVoLocalDomains::FindBits(std::uint32_t slot, std::int64_t& base) const {
  const Set& set = mSets[slot];
  if (set.words == 0) return nullptr;
  base = set.base;
  return &mBits[set.first];
}

bool ZULTaVoLocalDomains::RaiseLower(std::uint32_t slot, std::int64_t bound) {
  const std::int64_t upper = GetUpper(slot);
  if (bound > upper) return false;
  while (bound < upper && !HasValue(slot, bound)) ++bound;
  SetWords(slot, bound, upper);
  mNarrowed = true;
  return true;
}

bool ZULTaVoLocalDomains::DropUpper(std::uint32_t slot, std::int64_t bound) {
  const std::int64_t lower = GetLower(slot);
  if (bound < lower) return false;
  while (bound > lower && !HasValue(slot, bound)) --bound;
  SetWords(slot, lower, bound);
  mNarrowed = true;
  return true;
}

bool ZULTaVoLocalDomains::RemoveWithin(std::uint32_t slot, std::int64_t value) {
  if (value == kNoLower || value == kNoUpper) return true;
  if (value == GetLower(slot)) return RaiseLower(slot, value + 1);
  if (value == GetUpper(slot)) return DropUpper(slot, value - 1);
  const Set& set = mSets[slot];
  if (set.words == 0) return true;
  const auto bit = static_cast<std::size_t>(WidthOf(set.base, value));
  std::uint64_t& word = mBits[set.first + bit / kBits];
  const std::uint64_t mask = std::uint64_t{1} << bit % kBits;
  mNarrowed = mNarrowed || (word & mask) != 0;
  word &= ~mask;
  return true;
}

bool ZULTaVoLocalDomains::NarrowReals(std::uint32_t slot, double lower, double upper) {
  const double before = GetRealLower(slot), after = GetRealUpper(slot);
  lower = std::max(lower, before);
  upper = std::min(upper, after);
  if (!(lower <= upper)) return false;
  mNarrowed = mNarrowed || lower != before || upper != after;
  SetWords(slot, std::bit_cast<std::int64_t>(lower), std::bit_cast<std::int64_t>(upper));
  return true;
}

void ZULTaVoLocalDomains::SaveState(std::size_t word, std::int64_t value) { mOwn[word] = value; }
