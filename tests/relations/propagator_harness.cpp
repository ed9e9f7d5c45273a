#include "tests/relations/propagator_harness.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <limits>
#include <utility>

namespace zultav::relations {

std::int64_t Draw::Between(std::int64_t least, std::int64_t greatest) {
  const auto count = static_cast<std::uint64_t>(greatest) - static_cast<std::uint64_t>(least) + 1;
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(least) + mEngine() % count);
}

std::size_t Draw::Size(std::size_t least, std::size_t greatest) {
  return static_cast<std::size_t>(
      Between(static_cast<std::int64_t>(least), static_cast<std::int64_t>(greatest)));
}

Values Draw::Set(std::int64_t least, std::int64_t greatest, std::size_t most) {
  Values values(Chance(20) ? 1 : Size((most + 1) / 2, most + 1));
  for (std::int64_t& value : values) value = Between(least, greatest);
  std::sort(values.begin(), values.end());
  values.erase(std::unique(values.begin(), values.end()), values.end());
  return values;
}

std::int64_t Draw::Base() {
  const std::int64_t kBases[] = {0, 0, 0, ZULTaVoDomains::kNoLower + 1,
                                 ZULTaVoDomains::kNoUpper - 21};
  return kBases[Size(0, std::size(kBases) - 1)];
}

Call& Call::Values(std::size_t count, std::int64_t firstIndex, bool isReal) {
  ZULTaVoRelationArgument& argument = mParts.emplace_back().argument;
  argument.columns = static_cast<std::uint32_t>(count);
  argument.isReal = isReal;
  argument.first = mCount;
  argument.firstIndex = firstIndex;
  mCount += argument.columns;
  return *this;
}

Call& Call::Known(std::vector<std::int64_t> numbers, std::size_t rows, std::int64_t firstIndex) {
  ZULTaVoRelationArgument& argument = mParts.emplace_back().argument;
  argument.rows = static_cast<std::uint32_t>(rows);
  argument.columns = static_cast<std::uint32_t>(numbers.size() / rows);
  argument.isKnown = true;
  argument.first = mCount;
  argument.firstIndex = firstIndex;
  mParts.back().integers = std::move(numbers);
  return *this;
}

Call& Call::KnownReals(std::vector<double> pairs, std::size_t rows, std::int64_t firstIndex) {
  Known(std::vector<std::int64_t>(pairs.size() / 2), rows, firstIndex);
  mParts.back().argument.isReal = true;
  mParts.back().reals = std::move(pairs);
  return *this;
}

std::unique_ptr<ZULTaVoPropagator> Call::operator()() const {
  std::vector<ZULTaVoRelationArgument> arguments;
  for (const Part& part : mParts) {
    arguments.push_back(part.argument);
    if (part.argument.isReal)
      arguments.back().reals = part.reals;
    else
      arguments.back().integers = part.integers;
  }
  const ZULTaVoRelationDescriptor descriptor(mDescribe());
  EXPECT_EQ(descriptor.Check(arguments), "");
  return descriptor.GetDefinition().make(arguments);
}

namespace {

using Outcome = ZULTaVoPropagator::Outcome;
using Wake = ZULTaVoPropagator::Wake;

/// Domains over plain words, of which a copy takes everything back.
class WordDomains final : public ZULTaVoDomains {
 public:
  struct Slot {
    bool hasSet = false;
    std::int64_t base = 0;
    std::size_t firstWord = 0, count = 0;
  };

  WordDomains(std::vector<std::uint32_t> slots, std::size_t slotCount, std::uint32_t stateSize)
      : mSlotOf(std::move(slots)), mInfo(slotCount), mAll(2 * slotCount), mStateSize(stateSize) {
    mWords = nullptr;
  }
  void SetUp(std::uint32_t slot, std::int64_t lower, std::int64_t upper) {
    mAll[2 * slot] = lower;
    mAll[2 * slot + 1] = upper;
  }
  void SetUp(std::uint32_t slot, const Values& values, std::int64_t base) {
    SetUp(slot, values.front(), values.back());
    Slot& info = mInfo[slot];
    info = {true, base, mAll.size(), static_cast<std::size_t>(values.back() - base) / 64 + 1};
    mAll.resize(mAll.size() + info.count);
    for (const std::int64_t value : values) WordOf(info, value) |= BitOf(info, value);
  }
  void Finish() {
    mState = mAll.size();
    mAll.resize(mAll.size() + mStateSize);
    mWords = mAll.data();
    mSlots = mSlotOf.data();
  }

  Values Save() const { return mAll; }
  void Restore(const Values& words) { std::copy(words.begin(), words.end(), mAll.begin()); }
  void ForgetState() {
    std::fill(mAll.begin() + static_cast<std::ptrdiff_t>(mState), mAll.end(), 0);
  }
  /// Without what the propagator remembers.
  std::span<const std::int64_t> Domains() const { return std::span(mAll).first(mState); }
  std::span<const std::uint32_t> Slots() const { return mSlotOf; }
  bool HasSet(std::uint32_t argument) const { return mInfo[mSlotOf[argument]].hasSet; }

 private:
  std::int64_t& WordOf(const Slot& info, std::int64_t value) {
    return mAll[info.firstWord + static_cast<std::size_t>(value - info.base) / 64];
  }
  static std::int64_t BitOf(const Slot& info, std::int64_t value) {
    return std::bit_cast<std::int64_t>(std::uint64_t{1} << ((value - info.base) & 63));
  }
  bool HasValue(std::uint32_t slot, std::int64_t value) const override {
    const Slot& info = mInfo[slot];
    return !info.hasSet ||
           (const_cast<WordDomains*>(this)->WordOf(info, value) & BitOf(info, value)) != 0;
  }
  std::int64_t FindNext(std::uint32_t slot, std::int64_t value) const override {
    const std::int64_t lower = mAll[2 * slot], upper = mAll[2 * slot + 1];
    if (value < lower) return lower;
    if (value >= upper) return value >= kNoUpper - 1 ? kNoUpper : value + 1;
    do ++value;
    while (!HasValue(slot, value));
    return value;
  }
  std::int64_t FindPrevious(std::uint32_t slot, std::int64_t value) const override {
    const std::int64_t lower = mAll[2 * slot], upper = mAll[2 * slot + 1];
    if (value > upper) return upper;
    if (value <= lower) return value <= kNoLower + 1 ? kNoLower : value - 1;
    do --value;
    while (!HasValue(slot, value));
    return value;
  }
  std::uint64_t CountValues(std::uint32_t slot) const override {
    const std::int64_t lower = mAll[2 * slot], upper = mAll[2 * slot + 1];
    const std::uint64_t width =
        static_cast<std::uint64_t>(upper) - static_cast<std::uint64_t>(lower);
    if (lower == kNoLower || upper == kNoUpper) return std::numeric_limits<std::uint64_t>::max();
    if (!mInfo[slot].hasSet) return width + 1;
    std::uint64_t count = 0;
    for (std::uint64_t i = 0; i <= width; ++i)
      count += HasValue(slot, lower + static_cast<std::int64_t>(i)) ? 1 : 0;
    return count;
  }
  const std::uint64_t* FindBits(std::uint32_t slot, std::int64_t& base) const override {
    if (!mInfo[slot].hasSet) return nullptr;
    base = mInfo[slot].base;
    return reinterpret_cast<const std::uint64_t*>(mAll.data() + mInfo[slot].firstWord);
  }
  bool RaiseLower(std::uint32_t slot, std::int64_t bound) override {
    if (bound > mAll[2 * slot + 1]) return false;
    mAll[2 * slot] = HasValue(slot, bound) ? bound : FindNext(slot, bound);
    return true;
  }
  bool DropUpper(std::uint32_t slot, std::int64_t bound) override {
    if (bound < mAll[2 * slot]) return false;
    mAll[2 * slot + 1] = HasValue(slot, bound) ? bound : FindPrevious(slot, bound);
    return true;
  }
  bool RemoveWithin(std::uint32_t slot, std::int64_t value) override {
    const std::int64_t lower = mAll[2 * slot], upper = mAll[2 * slot + 1];
    if (value == lower && value == upper) return false;
    if (value == lower) return RaiseLower(slot, value + 1);
    if (value == upper) return DropUpper(slot, value - 1);
    if (mInfo[slot].hasSet) WordOf(mInfo[slot], value) &= ~BitOf(mInfo[slot], value);
    return true;
  }
  bool NarrowReals(std::uint32_t slot, double lower, double upper) override {
    lower = std::max(lower, std::bit_cast<double>(mAll[2 * slot]));
    upper = std::min(upper, std::bit_cast<double>(mAll[2 * slot + 1]));
    if (!(lower <= upper)) return false;
    SetUp(slot, std::bit_cast<std::int64_t>(lower), std::bit_cast<std::int64_t>(upper));
    return true;
  }
  void SaveState(std::size_t word, std::int64_t value) override { mAll[word] = value; }

  std::vector<std::uint32_t> mSlotOf;
  std::vector<Slot> mInfo;
  Values mAll;
  std::uint32_t mStateSize;
};

class Explorer {
 public:
  Explorer(Instance instance, Draw& draw) : mInstance(std::move(instance)), mDraw(draw) {
    mPropagator = mInstance.call();
    const auto count = static_cast<std::uint32_t>(mInstance.variables.size());
    std::vector<std::uint32_t> slots(count);
    for (std::uint32_t i = 0; i < count; ++i) slots[i] = i;
    if (mDraw.Chance(20)) Unite(slots);
    mPromises = !mIsUnited;
    mDomains = std::make_unique<WordDomains>(slots, count, mPropagator->GetStateSize());
    const bool isOpen = mDraw.Chance(20), isWithoutSets = mDraw.Chance(10);
    mPromises = mPromises && !isOpen && !isWithoutSets;
    for (std::uint32_t i = 0; i < count; ++i)
      if (slots[i] == i) SetUp(i, isOpen && mDraw.Chance(50), isWithoutSets);
    for (std::uint32_t i = 0; i < count; ++i)
      mInstance.variables[i].values = mInstance.variables[slots[i]].values;
    mDomains->Finish();
  }

  void Run() {
    std::vector<Values> solutions;
    Values values(mInstance.variables.size());
    Enumerate(0, values, [&] {
      if (mInstance.holds(values)) solutions.push_back(values);
    });
    Explore(solutions, true, false);
  }

 private:
  const Variable& At(std::size_t i) const { return mInstance.variables[i]; }

  /// Two arguments become one.
  void Unite(std::vector<std::uint32_t>& slots) {
    const std::size_t last = slots.size() - 1, second = mDraw.Size(0, last);
    const std::size_t first = mDraw.Size(0, second);
    Values both;
    std::set_intersection(At(first).values.begin(), At(first).values.end(),
                          At(second).values.begin(), At(second).values.end(),
                          std::back_inserter(both));
    if (first == second || both.empty() || At(first).isReal != At(second).isReal) return;
    mInstance.variables[first].values = both;
    slots[second] = static_cast<std::uint32_t>(first);
    mIsUnited = true;
  }

  void SetUp(std::uint32_t i, bool isOpen, bool isWithoutSets) {
    Variable& argument = mInstance.variables[i];
    Values& values = argument.values;
    const std::int64_t lower = values.front(), upper = values.back();
    if (argument.isReal) {
      mDomains->SetUp(i, std::bit_cast<std::int64_t>(static_cast<double>(lower)),
                      std::bit_cast<std::int64_t>(static_cast<double>(upper)));
    } else if (isOpen && !argument.isTruth) {
      const auto side = mDraw.Between(0, 2);
      mDomains->SetUp(i, side == 0 ? lower : ZULTaVoDomains::kNoLower,
                      side == 1 ? upper : ZULTaVoDomains::kNoUpper);
    } else if (!isWithoutSets && IsSetKept(i)) {
      mDomains->SetUp(i, values, lower < 0 ? lower : lower - mDraw.Between(0, 70));
    } else {
      values.clear();
      for (std::int64_t value = lower; value <= upper; ++value) values.push_back(value);
      mDomains->SetUp(i, lower, upper);
    }
  }
  bool IsSetKept(std::uint32_t slot) const {
    for (std::uint32_t i = 0; i < mInstance.variables.size(); ++i)
      if (mDomains->Slots()[i] == slot && mPropagator->WantsValues(i)) return true;
    return false;
  }

  /// Each combination of what is left of the values that are tried.
  template <class Use>
  void Enumerate(std::uint32_t i, Values& values, const Use& use) const {
    if (i == values.size()) return use();
    const std::uint32_t same = mDomains->Slots()[i];
    for (const std::int64_t value : At(i).values)
      if (Contains(i, value) && (same == i || values[same] == value)) {
        values[i] = value;
        Enumerate(i + 1, values, use);
      }
  }
  bool Contains(std::uint32_t i, std::int64_t value) const {
    const auto real = static_cast<double>(value);
    return At(i).isReal ? mDomains->GetRealLower(i) <= real && real <= mDomains->GetRealUpper(i)
                        : mDomains->Contains(i, value);
  }
  bool Contains(const Values& values) const {
    for (std::uint32_t i = 0; i < values.size(); ++i)
      if (!Contains(i, values[i])) return false;
    return true;
  }
  bool IsFixed(std::uint32_t i) const {
    return At(i).isReal ? mDomains->GetRealLower(i) == mDomains->GetRealUpper(i)
                        : mDomains->IsFixed(i);
  }

  /// To the fixpoint, as an engine would: it does not call again for the propagator's own changes,
  /// but where an argument stands in two places.
  Outcome Propagate() {
    // Bounds that have none on their other side may go on for ever, as of x >= x + 1.
    for (int run = 0; run < 100; ++run) {
      const Values before = mDomains->Save();
      const Outcome outcome = mPropagator->Propagate(*mDomains);
      if (outcome == Outcome::kFailed || outcome == Outcome::kEntailed) return outcome;
      const bool isSame = std::ranges::equal(mDomains->Domains(),
                                             std::span(before).first(mDomains->Domains().size()));
      if (outcome == Outcome::kFixpoint && (isSame || !mIsUnited)) return outcome;
      if (isSame && before == mDomains->Save()) {
        ADD_FAILURE() << "calls itself again for nothing";
        return Outcome::kFixpoint;
      }
    }
    return Outcome::kAgain;
  }

  void Explore(const std::vector<Values>& solutions, bool isWoken, bool isEntailed) {
    if (testing::Test::HasFailure() || ++mNodes > 150) return;
    if (isWoken && !isEntailed) {
      if (mDraw.Chance(10)) mDomains->ForgetState();
      const Outcome outcome = Propagate();
      if (outcome == Outcome::kFailed) {
        EXPECT_TRUE(solutions.empty()) << "loses " << Show(solutions.front());
        return;
      }
      for (const Values& solution : solutions)
        ASSERT_TRUE(Contains(solution)) << "loses " << Show(solution);
      isEntailed = outcome == Outcome::kEntailed;
      if (isEntailed) CheckEntailed();
      if (outcome == Outcome::kFixpoint) CheckFixpoint();
      if (mPromises) CheckStrength(solutions);
    }
    Branch(solutions, isEntailed);
  }

  void CheckEntailed() const {
    Values values(mInstance.variables.size());
    Enumerate(0, values,
              [&] { ASSERT_TRUE(mInstance.holds(values)) << "entails " << Show(values); });
  }
  void CheckFixpoint() {
    const Values before = mDomains->Save();
    ASSERT_NE(mPropagator->Propagate(*mDomains), Outcome::kFailed) << "fails at its fixpoint";
    ASSERT_TRUE(std::ranges::equal(mDomains->Domains(),
                                   std::span(before).first(mDomains->Domains().size())))
        << "narrows at its fixpoint";
    mDomains->Restore(before);
  }
  void CheckStrength(const std::vector<Values>& solutions) const {
    for (std::uint32_t i = 0; i < mInstance.variables.size(); ++i) {
      const Variable& argument = At(i);
      Values left;
      for (const std::int64_t value : argument.values)
        if (Contains(i, value)) left.push_back(value);
      for (const std::int64_t value : left) {
        if (argument.strength == Strength::kSound) continue;
        if (argument.strength == Strength::kBounds && value != left.front() && value != left.back())
          continue;
        ASSERT_TRUE(std::ranges::any_of(
            solutions, [&](const Values& solution) { return solution[i] == value; }))
            << "keeps " << value << " of argument " << i << Show(left);
      }
    }
  }

  /// One argument takes each of its values in turn, or loses one.
  void Branch(const std::vector<Values>& solutions, bool isEntailed) {
    std::vector<std::uint32_t> open;
    for (std::uint32_t i = 0; i < mInstance.variables.size(); ++i)
      if (!IsFixed(i)) open.push_back(i);
    if (open.empty()) {
      ASSERT_TRUE(mInstance.holds(Fixed())) << "accepts " << Show(Fixed());
      return;
    }
    const std::uint32_t i = open[mDraw.Size(0, open.size() - 1)];
    const Values before = mDomains->Save();
    Values values;
    for (const std::int64_t value : At(i).values)
      if (Contains(i, value)) values.push_back(value);
    if (values.empty()) return;  // what is left was not meant to be tried
    if (mDomains->HasSet(i) && mDraw.Chance(50)) {
      const std::int64_t value = values[mDraw.Size(0, values.size() - 1)];
      Descend(solutions, isEntailed, i, [&] { return mDomains->Remove(i, value); });
      mDomains->Restore(before);
      values.assign(1, value);
    }
    for (const std::int64_t value : values) {
      Descend(solutions, isEntailed, i, [&] {
        const auto real = static_cast<double>(value);
        return At(i).isReal ? mDomains->Intersect(i, real, real) : mDomains->Fix(i, value);
      });
      mDomains->Restore(before);
    }
  }
  template <class Narrow>
  void Descend(const std::vector<Values>& solutions, bool isEntailed, std::uint32_t changed,
               const Narrow& narrow) {
    const std::int64_t lower = mDomains->GetLower(changed), upper = mDomains->GetUpper(changed);
    if (!narrow()) return;
    std::vector<Values> left;
    for (const Values& solution : solutions)
      if (Contains(solution)) left.push_back(solution);
    const Wake event =
        IsFixed(changed) ? Wake::kOnFixed
        : lower != mDomains->GetLower(changed) || upper != mDomains->GetUpper(changed)
            ? Wake::kOnBounds
            : Wake::kOnValues;
    bool isWoken = false;
    for (std::uint32_t i = 0; i < mInstance.variables.size(); ++i)
      if (mDomains->Slots()[i] == mDomains->Slots()[changed])
        isWoken = isWoken || mPropagator->GetWake(i) >= event;
    Explore(left, isWoken, isEntailed);
  }

  static std::string Show(const Values& values) {
    std::string text = " (";
    for (const std::int64_t value : values) text += std::to_string(value) + " ";
    return text + ")";
  }
  Values Fixed() const {
    Values values;
    for (std::uint32_t i = 0; i < mInstance.variables.size(); ++i)
      values.push_back(At(i).isReal ? static_cast<std::int64_t>(mDomains->GetRealLower(i))
                                    : mDomains->GetLower(i));
    return values;
  }

  Instance mInstance;
  Draw& mDraw;
  std::unique_ptr<ZULTaVoPropagator> mPropagator;
  std::unique_ptr<WordDomains> mDomains;
  bool mIsUnited = false, mPromises = true;
  int mNodes = 0;
};

}  // namespace

void CheckRelation(const RelationCase& row, int instances) {
  for (int seed = 1; seed <= instances && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE(row.name + ", instance " + std::to_string(seed));
    Draw draw(static_cast<std::uint64_t>(seed));
    Explorer(row.draw(draw), draw).Run();
  }
}

}  // namespace zultav::relations
