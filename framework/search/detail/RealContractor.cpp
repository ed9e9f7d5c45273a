#include "framework/search/detail/RealContractor.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "framework/search/detail/RealFunction.h"

namespace zultav::detail {

namespace {

using Relation = RealSystem::Relation;

// A loss of this share of a width is passed on to the other statements.
constexpr double kWorthwhile = 0.05;
constexpr int kSlices = 32;
// Revisions for each statement; intervals that lose ever less need not be followed to the end.
constexpr std::size_t kRounds = 100, kSupposedRounds = 20;
// Revisions for all of a shaving. In long chains each supposition may concern everything.
constexpr std::size_t kShavingRounds = 100, kShavingRevisions = 20000;
// Narrower intervals, relative to their magnitude, are Newton's business.
constexpr double kNarrowest = 1e-6;

bool IsWithin(const RealInterval& inner, const RealInterval& outer) {
  return outer.lower <= inner.lower && inner.upper <= outer.upper;
}

double WidthOf(const RealInterval& x) { return x.upper - x.lower; }

}  // namespace

RealContractor::RealContractor(const RealSystem& system) : mSystem(system) {
  for (const RealSystem::Statement& equation : system.GetEquations())
    mStatements.push_back(&equation);
  for (const RealSystem::Statement& condition : system.GetConditions())
    if (condition.relation == Relation::kLess || condition.relation == Relation::kLessOrEqual)
      mStatements.push_back(&condition);
  const std::size_t unknowns = system.GetUnknowns().size(), slots = system.GetSlots().size();
  mFirstUse.resize(unknowns + 1);
  std::size_t most = 0;
  for (const auto* statement : mStatements) {
    most = std::max(most, statement->unknowns.size());
    for (const std::uint32_t unknown : statement->unknowns) ++mFirstUse[unknown + 1];
  }
  for (std::size_t i = 0; i < unknowns; ++i) mFirstUse[i + 1] += mFirstUse[i];
  mUses.resize(mFirstUse[unknowns]);
  std::vector<std::uint32_t> next(mFirstUse.begin(), mFirstUse.end());
  for (std::uint32_t i = 0; i < mStatements.size(); ++i)
    for (const std::uint32_t unknown : mStatements[i]->unknowns) mUses[next[unknown]++] = i;
  mActive.resize(mStatements.size());
  mDomains.resize(slots);
  mValues.resize(slots);
  mForward.resize(slots);
  mGiven.resize(slots, true);
  for (const std::uint32_t slot : system.GetUnknowns()) mGiven[slot] = false;
  for (const RealSystem::Operation& operation : system.GetOperations())
    mGiven[operation.target] = false;
  mBefore.resize(most);
  mQueue.resize(mStatements.size());
  mQueued.resize(mStatements.size());
  mTrail.reserve(unknowns);
  mOnTrail.resize(unknowns);
  mJoined.reserve(unknowns);
  mHull.resize(unknowns);
  mParts.resize(unknowns);
}

void RealContractor::Begin() {
  ClearQueue();
  const auto& slots = mSystem.GetSlots();
  for (std::size_t i = 0; i < slots.size(); ++i) {
    mDomains[i] = slots[i].GetDomain();
    mValues[i] = mDomains[i];
    if (slots[i].constant) mValues[i].Intersect(slots[i].initial);
  }
  for (std::uint32_t i = 0; i < mStatements.size(); ++i) {
    mActive[i] = mStatements[i]->guard.Holds();
    if (!mActive[i]) continue;
    mQueue[mQueueSize++] = i;
    mQueued[i] = true;
  }
}

bool RealContractor::HasChanged() const {
  const auto& slots = mSystem.GetSlots();
  for (std::uint32_t i = 0; i < mStatements.size(); ++i)
    if (mActive[i] != mStatements[i]->guard.Holds()) return true;
  for (std::size_t i = 0; i < slots.size(); ++i) {
    const RealInterval domain = slots[i].GetDomain();
    if (mGiven[i] && !slots[i].constant && !(domain == mDomains[i])) return true;
  }
  const auto& unknowns = mSystem.GetUnknowns();
  return std::any_of(unknowns.begin(), unknowns.end(), [&](std::uint32_t slot) {
    return IsMuchNarrower(slots[slot].GetDomain(), mValues[slot], kWorthwhile) ||
           !IsWithin(slots[slot].GetDomain(), mValues[slot]);
  });
}

void RealContractor::Narrow(std::size_t unknown, const RealInterval& value) {
  SubdefReal& present = mValues[SlotOf(unknown)];
  const RealInterval before = present;
  present.Intersect(value);
  if (IsMuchNarrower(present, before, kWorthwhile)) Wake(static_cast<std::uint32_t>(unknown));
}

void RealContractor::Wake(std::uint32_t unknown) {
  for (std::size_t k = mFirstUse[unknown]; k < mFirstUse[unknown + 1]; ++k) {
    const std::uint32_t statement = mUses[k];
    if (!mActive[statement] || mQueued[statement]) continue;
    mQueued[statement] = true;
    mQueue[(mQueueHead + mQueueSize++) % mQueue.size()] = statement;
  }
}

void RealContractor::ClearQueue() {
  for (; mQueueSize > 0; --mQueueSize, mQueueHead = (mQueueHead + 1) % mQueue.size())
    mQueued[mQueue[mQueueHead]] = false;
  mQueueHead = 0;
}

bool RealContractor::Propagate() {
  std::size_t budget = (mSupposing ? kSupposedRounds : kRounds) * mStatements.size();
  for (; mQueueSize > 0 && budget > 0; --budget, ++mRevisions) {
    const std::uint32_t statement = mQueue[mQueueHead];
    mQueueHead = (mQueueHead + 1) % mQueue.size();
    --mQueueSize;
    if (!Revise(statement)) {
      mQueued[statement] = false;
      ClearQueue();
      return false;
    }
    mQueued[statement] = false;
  }
  ClearQueue();
  return true;
}

bool RealContractor::Revise(std::uint32_t index) {
  const RealSystem::Statement& statement = *mStatements[index];
  for (std::size_t i = 0; i < statement.unknowns.size(); ++i)
    mBefore[i] = mValues[SlotOf(statement.unknowns[i])];
  const bool holds = EvaluateForward(statement) && Relate(statement) && ProjectBack(statement);
  NoteChanges(statement);
  return holds;
}

bool RealContractor::EvaluateForward(const RealSystem::Statement& statement) {
  const auto& operations = mSystem.GetOperations();
  for (auto i = statement.operations.rbegin(); i != statement.operations.rend(); ++i) {
    const auto& [function, target, first, second] = operations[*i];
    const SubdefReal value = Evaluate(function, mValues[first], mValues[second]);
    const SubdefReal& domain = mDomains[target];
    mForward[target] = value;
    mValues[target] = {std::max(value.lower, domain.lower), std::min(value.upper, domain.upper)};
    if (mValues[target].IsEmpty()) return false;
  }
  return true;
}

/// The value of the slot; a copy where it is not for us to narrow.
SubdefReal& RealContractor::Operand(std::uint32_t slot, SubdefReal& copy) {
  if (!mGiven[slot]) return mValues[slot];
  copy = mValues[slot];
  return copy;
}

bool RealContractor::Relate(const RealSystem::Statement& statement) {
  SubdefReal copies[2];
  SubdefReal &left = Operand(statement.left, copies[0]),
             &right = Operand(statement.right, copies[1]);
  if (statement.relation == Relation::kEqual) {
    left.Intersect(right);
    right = left;
    return !left.IsEmpty();
  }
  left.upper = std::min(left.upper, right.upper);
  right.lower = std::max(right.lower, left.lower);
  return !left.IsEmpty() && !right.IsEmpty();
}

bool RealContractor::ProjectBack(const RealSystem::Statement& statement) {
  const auto& operations = mSystem.GetOperations();
  SubdefReal copies[2];
  for (const std::uint32_t index : statement.operations) {
    const auto& [function, target, first, second] = operations[index];
    if (mValues[target] == mForward[target] && !IsPartial(function)) continue;
    if (!Project(function, mValues[target], Operand(first, copies[0]), Operand(second, copies[1])))
      return false;
  }
  return true;
}

void RealContractor::NoteChanges(const RealSystem::Statement& statement) {
  for (std::size_t i = 0; i < statement.unknowns.size(); ++i) {
    const std::uint32_t unknown = statement.unknowns[i];
    const SubdefReal& now = mValues[SlotOf(unknown)];
    if (now == mBefore[i]) continue;
    if (mSupposing && !mOnTrail[unknown]) {
      mOnTrail[unknown] = true;
      mTrail.push_back({unknown, mBefore[i]});
    }
    if (IsMuchNarrower(now, mBefore[i], kWorthwhile)) Wake(unknown);
  }
}

// --- Shaving ----------------------------------------------------------------------------------

bool RealContractor::Shave() {
  const std::size_t count = mSystem.GetUnknowns().size();
  const std::size_t limit = kShavingRounds * mStatements.size() + kShavingRevisions;
  const std::size_t widest = FindWidest();
  mRevisions = 0;
  for (std::size_t i = 0; i < count && mRevisions < limit; ++i)
    if (!ShaveUnknown(static_cast<std::uint32_t>((widest + i) % count))) return false;
  return true;
}

std::size_t RealContractor::FindWidest() const {
  std::size_t widest = 0;
  double width = 0;
  for (std::size_t i = 0; i < mSystem.GetUnknowns().size(); ++i) {
    const RealInterval x = GetValue(i);
    if (!IsFinite(x) || WidthOf(x) <= width) continue;
    widest = i;
    width = WidthOf(x);
  }
  return widest;
}

/// Slices from either end until one holds, and the rest between them.
bool RealContractor::ShaveUnknown(std::uint32_t unknown) {
  const RealInterval whole = mValues[SlotOf(unknown)];
  const double magnitude = std::max(std::fabs(whole.lower), std::fabs(whole.upper));
  const double width = WidthOf(whole);
  if (!IsFinite(whole) || !(width > kNarrowest * magnitude)) return true;
  const auto cut = [&](int i) {
    return i == kSlices ? whole.upper : std::min(whole.lower + i * (width / kSlices), whole.upper);
  };
  mPart = 0;
  int first = 0, last = kSlices - 1;
  while (first < kSlices && !Suppose(unknown, {cut(first), cut(first + 1)})) ++first;
  if (first == kSlices) return false;
  while (last > first && !Suppose(unknown, {cut(last), cut(last + 1)})) --last;
  if (last > first + 1 && MayGain())
    Suppose(unknown, {cut(first + 1), cut(last)});
  else if (last > first + 1)
    return true;
  for (const std::uint32_t i : mJoined)
    if (mParts[i] == mPart) Narrow(i, mHull[i]);
  return Propagate();
}

/// Propagates with the unknown in a part of its interval, joins the result to that of the parts
/// before, and takes everything back. False when the part holds no solution.
bool RealContractor::Suppose(std::uint32_t unknown, const RealInterval& part) {
  mSupposing = true;
  mTrail.push_back({unknown, mValues[SlotOf(unknown)]});
  mOnTrail[unknown] = true;
  mValues[SlotOf(unknown)] = part;
  Wake(unknown);
  const bool holds = Propagate();
  if (holds) JoinPart();
  RestorePart();
  mSupposing = false;
  return holds;
}

void RealContractor::JoinPart() {
  if (mPart++ == 0) {
    mJoined.clear();
    for (const Change& change : mTrail) {
      mJoined.push_back(change.unknown);
      mHull[change.unknown] = mValues[SlotOf(change.unknown)];
      mParts[change.unknown] = 1;
    }
    return;
  }
  for (const Change& change : mTrail) {
    const std::uint32_t i = change.unknown;
    // Unknowns that an earlier part has not narrowed keep what they have.
    if (mParts[i] != mPart - 1) continue;
    mHull[i] = mHull[i].mf_Union(mValues[SlotOf(i)]);
    mParts[i] = mPart;
  }
}

void RealContractor::RestorePart() {
  for (const Change& change : mTrail) {
    mValues[SlotOf(change.unknown)] = change.value;
    mOnTrail[change.unknown] = false;
  }
  mTrail.clear();
}

/// Whether a further part can leave something lost.
bool RealContractor::MayGain() const {
  return std::any_of(mJoined.begin(), mJoined.end(), [this](std::uint32_t i) {
    return mParts[i] == mPart && IsMuchNarrower(mHull[i], mValues[SlotOf(i)], kWorthwhile);
  });
}

}  // namespace zultav::detail
