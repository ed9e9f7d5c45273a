#include "framework/solver/detail/Reification.h"

#include <utility>

namespace zultav::detail {

namespace {

// Of one argument, how many values are tried one by one.
constexpr int kMostTried = 64;
// Runs after which a propagator that never has enough is left alone.
constexpr int kMostRuns = 100;

}  // namespace

Reification::Reification(std::unique_ptr<ZULTaVoPropagator> relation, std::vector<bool> isReal)
    : mRelation(std::move(relation)),
      mIsReal(std::move(isReal)),
      mSupposed(static_cast<std::uint32_t>(mIsReal.size()), mRelation->GetStateSize()) {}

ZULTaVoPropagator::Wake Reification::GetWake(std::uint32_t argument) const {
  return argument == GetCount() ? Wake::kOnFixed : mRelation->GetWake(argument);
}

bool Reification::WantsValues(std::uint32_t argument) const {
  return argument != GetCount() && mRelation->WantsValues(argument);
}

ZULTaVoPropagator::Outcome Reification::Propagate(ZULTaVoDomains& domains) {
  const std::uint32_t truth = GetCount();
  if (domains.IsTrue(truth)) return mRelation->Propagate(domains);
  const bool isDenied = domains.IsFalse(truth);
  switch (Decide(domains)) {
    case Truth::kTrue:
      return !isDenied && domains.Fix(truth, 1) ? Outcome::kEntailed : Outcome::kFailed;
    case Truth::kFalse:
      return domains.Fix(truth, 0) ? Outcome::kEntailed : Outcome::kFailed;
    case Truth::kOpen:
      break;
  }
  return isDenied ? Deny(domains) : Outcome::kFixpoint;
}

bool Reification::IsFixed(const ZULTaVoDomains& domains, std::uint32_t x) const {
  return mIsReal[x] ? domains.GetRealLower(x) == domains.GetRealUpper(x) : domains.IsFixed(x);
}

/// Whether the relation holds for all values that are left, or for none.
Reification::Truth Reification::Decide(const ZULTaVoDomains& domains) {
  mSupposed.CopyFrom(domains);
  const Outcome outcome = Suppose();
  if (outcome == Outcome::kFailed) return Truth::kFalse;
  if (mSupposed.HasNarrowed()) return Truth::kOpen;
  if (outcome == Outcome::kEntailed) return Truth::kTrue;
  // Where all are fixed, a propagator of integers is exact; reals may be near its numbers only.
  for (std::uint32_t x = 0; x < GetCount(); ++x)
    if (mIsReal[x] || !IsFixed(domains, x)) return Truth::kOpen;
  return Truth::kTrue;
}

ZULTaVoPropagator::Outcome Reification::Suppose() {
  Outcome outcome = Outcome::kAgain;
  for (int run = 0; run < kMostRuns && outcome == Outcome::kAgain; ++run)
    outcome = mRelation->Propagate(mSupposed);
  return outcome;
}

/// Of arguments that are all fixed but x.
bool Reification::HoldsAt(const ZULTaVoDomains& domains, std::uint32_t x, std::int64_t value) {
  mSupposed.CopyFrom(domains);
  for (std::uint32_t y = x; y < GetCount(); ++y)
    if (domains.AreSame(x, y) && !mSupposed.Fix(y, value)) return false;
  return Suppose() != Outcome::kFailed;
}

/// Where one argument alone is open, what would make the relation hold is removed from it.
ZULTaVoPropagator::Outcome Reification::Deny(ZULTaVoDomains& domains) {
  std::uint32_t open = kNone;
  for (std::uint32_t x = 0; x < GetCount(); ++x) {
    if (IsFixed(domains, x)) continue;
    if (mIsReal[x] || (open != kNone && !domains.AreSame(open, x))) return Outcome::kFixpoint;
    if (open == kNone) open = x;
  }
  if (open == kNone) return Outcome::kFixpoint;
  if (domains.GetSize(open) <= kMostTried) {
    std::int64_t value = domains.GetLower(open);
    for (const std::int64_t last = domains.GetUpper(open);; value = domains.GetNext(open, value)) {
      if (HoldsAt(domains, open, value) && !domains.Remove(open, value)) return Outcome::kFailed;
      if (value >= last) return Outcome::kFixpoint;
    }
  }
  for (int tried = 0; tried < kMostTried; ++tried) {
    const std::int64_t lower = domains.GetLower(open);
    if (lower == ZULTaVoDomains::kNoLower || !HoldsAt(domains, open, lower)) break;
    if (!domains.SetLower(open, lower + 1)) return Outcome::kFailed;
  }
  for (int tried = 0; tried < kMostTried; ++tried) {
    const std::int64_t upper = domains.GetUpper(open);
    if (upper == ZULTaVoDomains::kNoUpper || !HoldsAt(domains, open, upper)) break;
    if (!domains.SetUpper(open, upper - 1)) return Outcome::kFailed;
  }
  return Outcome::kFixpoint;
}

}  // namespace zultav::detail
