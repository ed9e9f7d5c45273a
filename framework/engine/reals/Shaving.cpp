#include "framework/engine/reals/Shaving.h"

#include <algorithm>

namespace zultav::engine {

namespace {

// A loss of this share of a width is worth another part.
constexpr double kWorthwhile = 0.05;
// Within a part only losses of this share are passed on: what counts is whether it fails.
constexpr double kLargeLoss = 0.2;
constexpr int kSlices = 32;
// Runs for each statement; ranges that lose ever less need not be followed to the end.
constexpr std::size_t kSupposedRounds = 20;
// Runs for all of a shaving. In long chains each supposition may concern everything.
constexpr std::size_t kRounds = 100, kRuns = 20000;
// Of statements with more operations, on the average, there are fewer runs.
constexpr std::size_t kOperations = 100;
// Narrower ranges, relative to their magnitude, are Newton's business.
constexpr double kNarrowest = 1e-6;

double WidthOf(const RealRange& x) { return x.upper - x.lower; }

}  // namespace

Shaving::Shaving(Engine& engine, const RealSystem& system) : mEngine(engine), mSystem(system) {
  const std::size_t unknowns = system.GetUnknowns().size();
  mUnknownOf.assign(engine.GetProgram().GetNumberOfSlots(), kNone);
  for (std::uint32_t i = 0; i < unknowns; ++i) mUnknownOf[SlotOf(i)] = i;
  mJoined.reserve(unknowns);
  mHull.resize(unknowns);
  mParts.resize(unknowns);
  std::size_t operations = 0;
  for (const RealSystem::Statement& statement : system.GetStatements())
    operations += statement.operations.size();
  const std::size_t statements = system.GetStatements().size();
  mRuns = kRounds * statements +
          kRuns * kOperations /
              std::max(kOperations, operations / std::max<std::size_t>(statements, 1));
}

bool Shaving::Shave() {
  const auto count = static_cast<std::uint32_t>(mSystem.GetUnknowns().size());
  const std::uint64_t& runs = mEngine.GetStatistics().runs;
  const std::uint64_t limit = runs + mRuns;
  const std::uint32_t widest = FindWidest();
  for (std::uint32_t i = 0; i < count && runs < limit; ++i)
    if (!ShaveUnknown((widest + i) % count)) return false;
  return true;
}

std::uint32_t Shaving::FindWidest() const {
  std::uint32_t widest = 0;
  double width = 0;
  for (std::uint32_t i = 0; i < mSystem.GetUnknowns().size(); ++i) {
    const RealRange x = GetValue(i);
    if (!x.IsBounded() || WidthOf(x) <= width) continue;
    widest = i;
    width = WidthOf(x);
  }
  return widest;
}

/// Slices from either end until one holds, and the rest between them.
bool Shaving::ShaveUnknown(std::uint32_t unknown) {
  const RealRange whole = GetValue(unknown);
  if (!whole.IsBounded() || !(WidthOf(whole) > kNarrowest * whole.GetMagnitude())) return true;
  const double step = whole.upper / kSlices - whole.lower / kSlices;
  const auto cut = [&](int i) {
    return i == kSlices ? whole.upper : std::min(whole.lower + i * step, whole.upper);
  };
  mPart = 0;
  int first = 0, last = kSlices - 1;
  while (first < kSlices && !Suppose(unknown, {cut(first), cut(first + 1)})) ++first;
  if (first == kSlices) return false;
  while (last > first && !Suppose(unknown, {cut(last), cut(last + 1)})) --last;
  if (last > first + 1) {
    if (!MayGain()) return true;
    Suppose(unknown, {cut(first + 1), cut(last)});
  }
  for (const std::uint32_t i : mJoined)
    if (mParts[i] == mPart && !mEngine.Narrow(SlotOf(i), mHull[i])) return false;
  return mEngine.Propagate() != Engine::Status::kFailed;
}

/// Propagates with the unknown in a part of its range, joins the result to that of the parts
/// before, and takes everything back. False when the part holds no solution.
bool Shaving::Suppose(std::uint32_t unknown, const RealRange& part) {
  mEngine.Push();
  const std::uint64_t limit = mEngine.GetRunLimit();
  const double fraction = mEngine.GetNarrowingFraction();
  mEngine.SetRunLimit(kSupposedRounds * mSystem.GetStatements().size());
  mEngine.SetNarrowingFraction(std::max(fraction, kLargeLoss));
  const bool holds = mEngine.NarrowAndTell(SlotOf(unknown), part) &&
                     mEngine.Propagate() != Engine::Status::kFailed;
  mEngine.SetRunLimit(limit);
  mEngine.SetNarrowingFraction(fraction);
  if (holds) JoinPart();
  mEngine.Pop();
  return holds;
}

void Shaving::JoinPart() {
  if (mPart++ == 0) {
    for (const std::uint32_t i : mJoined) mParts[i] = 0;
    mJoined.clear();
    mEngine.ForEachChanged([this](Slot slot) {
      const std::uint32_t i = mUnknownOf[slot];
      if (i == kNone || mParts[i] != 0) return;
      mJoined.push_back(i);
      mHull[i] = GetValue(i);
      mParts[i] = 1;
    });
    return;
  }
  mEngine.ForEachChanged([this](Slot slot) {
    const std::uint32_t i = mUnknownOf[slot];
    // Unknowns that an earlier part has not narrowed keep what they have.
    if (i == kNone || mParts[i] != mPart - 1) return;
    mHull[i] = Hull(mHull[i], GetValue(i));
    mParts[i] = mPart;
  });
}

/// Whether a further part can leave something lost.
bool Shaving::MayGain() const {
  return std::any_of(mJoined.begin(), mJoined.end(), [this](std::uint32_t i) {
    return mParts[i] == mPart && IsMuchNarrower(mHull[i], GetValue(i), kWorthwhile);
  });
}

}  // namespace zultav::engine
