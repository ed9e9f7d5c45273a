#ifndef ZULTAV_SOLVER_ZULTAVO_PROPAGATOR_H
#define ZULTAV_SOLVER_ZULTAVO_PROPAGATOR_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "framework/solver/Export.h"

/// What the arguments of a relation may still be, as its propagator reads and narrows them.
///
/// Arguments are numbered from 0. Integers have bounds of 64 bits, of which the least and the
/// greatest stand for no bound; a truth value is an integer of [0, 1]; reals have doubles. Where
/// the propagator asked for sets of values, integers may have holes between their bounds.
/// Whatever a narrowing function answers false to has no value left: the propagator answers
/// kFailed at once.
class ZULTAV_TYPES_API ZULTaVoDomains {
 public:
  static constexpr std::int64_t kNoLower = std::numeric_limits<std::int64_t>::min();
  static constexpr std::int64_t kNoUpper = std::numeric_limits<std::int64_t>::max();

  // --- Integers -------------------------------------------------------------------------------

  std::int64_t GetLower(std::uint32_t x) const { return mWords[2 * std::size_t{mSlots[x]}]; }
  std::int64_t GetUpper(std::uint32_t x) const { return mWords[2 * std::size_t{mSlots[x]} + 1]; }
  bool IsFixed(std::uint32_t x) const {
    const std::int64_t lower = GetLower(x);
    return lower == GetUpper(x) && lower != kNoLower && lower != kNoUpper;
  }
  bool IsTrue(std::uint32_t x) const { return GetLower(x) > 0; }
  bool IsFalse(std::uint32_t x) const { return GetUpper(x) <= 0; }
  bool Contains(std::uint32_t x, std::int64_t value) const {
    return value >= GetLower(x) && value <= GetUpper(x) && HasValue(mSlots[x], value);
  }
  /// The least value above, or the greatest one below, that is left; a number beyond the bound
  /// where there is none.
  std::int64_t GetNext(std::uint32_t x, std::int64_t value) const {
    return FindNext(mSlots[x], value);
  }
  std::int64_t GetPrevious(std::uint32_t x, std::int64_t value) const {
    return FindPrevious(mSlots[x], value);
  }
  /// Whether both arguments are one: what narrows one narrows the other.
  bool AreSame(std::uint32_t x, std::uint32_t y) const { return mSlots[x] == mSlots[y]; }
  /// How many values are left, at most UINT64_MAX.
  std::uint64_t GetSize(std::uint32_t x) const { return CountValues(mSlots[x]); }
  /// The set of values as bits, bit i for `base` + i, or null where only bounds are kept. Bits
  /// outside the present bounds mean nothing.
  const std::uint64_t* GetBits(std::uint32_t x, std::int64_t& base) const {
    return FindBits(mSlots[x], base);
  }

  bool SetLower(std::uint32_t x, std::int64_t bound) {
    return bound <= GetLower(x) || RaiseLower(mSlots[x], bound);
  }
  bool SetUpper(std::uint32_t x, std::int64_t bound) {
    return bound >= GetUpper(x) || DropUpper(mSlots[x], bound);
  }
  bool Fix(std::uint32_t x, std::int64_t value) {
    return Contains(x, value) && SetLower(x, value) && SetUpper(x, value);
  }
  /// Where no set of values is kept, only at a bound.
  bool Remove(std::uint32_t x, std::int64_t value) {
    return value < GetLower(x) || value > GetUpper(x) || RemoveWithin(mSlots[x], value);
  }

  // --- Reals ----------------------------------------------------------------------------------

  double GetRealLower(std::uint32_t x) const { return std::bit_cast<double>(GetLower(x)); }
  double GetRealUpper(std::uint32_t x) const { return std::bit_cast<double>(GetUpper(x)); }
  /// Keeps what lies within the bounds too.
  bool Intersect(std::uint32_t x, double lower, double upper) {
    return NarrowReals(mSlots[x], lower, upper);
  }

  // --- What the propagator remembers ----------------------------------------------------------

  /// Words of its own, initially 0, which are taken back with the domains.
  std::int64_t GetState(std::uint32_t word) const { return mWords[mState + word]; }
  void SetState(std::uint32_t word, std::int64_t value) {
    if (GetState(word) != value) SaveState(mState + word, value);
  }

 protected:
  ZULTaVoDomains() = default;
  ZULTaVoDomains(const ZULTaVoDomains&) = default;
  ZULTaVoDomains& operator=(const ZULTaVoDomains&) = default;
  ~ZULTaVoDomains() = default;

  // By slot: where the words of an argument stand.
  virtual bool HasValue(std::uint32_t slot, std::int64_t value) const = 0;
  virtual std::int64_t FindNext(std::uint32_t slot, std::int64_t value) const = 0;
  virtual std::int64_t FindPrevious(std::uint32_t slot, std::int64_t value) const = 0;
  virtual std::uint64_t CountValues(std::uint32_t slot) const = 0;
  virtual const std::uint64_t* FindBits(std::uint32_t slot, std::int64_t& base) const = 0;
  virtual bool RaiseLower(std::uint32_t slot, std::int64_t bound) = 0;
  virtual bool DropUpper(std::uint32_t slot, std::int64_t bound) = 0;
  virtual bool RemoveWithin(std::uint32_t slot, std::int64_t value) = 0;
  virtual bool NarrowReals(std::uint32_t slot, double lower, double upper) = 0;
  virtual void SaveState(std::size_t word, std::int64_t value) = 0;

  const std::int64_t* mWords = nullptr;   // two of each slot, its bounds
  const std::uint32_t* mSlots = nullptr;  // of the arguments
  std::size_t mState = 0;                 // the first word that is the propagator's own
};

/// Narrows the arguments of one relation by what it means. Made once for a search, with all the
/// memory that it will need: a run allocates nothing. It remembers what it learns about domains in
/// its state words alone, since these are taken back with them; whatever it keeps besides must be
/// right for any state that it had before, and for one that is all 0 at any time. Nor may that
/// decide what is narrowed, or in which order: a search that goes on from a checkpoint is without.
class ZULTAV_TYPES_API ZULTaVoPropagator {
 public:
  enum class Outcome : std::uint8_t {
    kFailed,    ///< no solution is left
    kFixpoint,  ///< nothing follows before an argument changes
    kAgain,     ///< a further run may narrow more
    kEntailed   ///< all that is left are solutions
  };
  /// When a run may narrow anything.
  enum class Wake : std::uint8_t {
    kOnFixed,   ///< an argument has one value left
    kOnBounds,  ///< or a bound moved
    kOnValues   ///< or a value was removed, of those whose sets are small enough to be kept
  };
  /// What runs of propagators cost; cheaper ones run sooner.
  enum class Cost : std::uint8_t { kConstant, kLinear, kQuadratic, kMore };

  virtual ~ZULTaVoPropagator();
  virtual Wake GetWake(std::uint32_t argument) const = 0;
  /// Whether sets of values are kept for the argument: without, only bounds can be narrowed.
  virtual bool WantsValues(std::uint32_t argument) const {
    return GetWake(argument) == Wake::kOnValues;
  }
  virtual Cost GetCost() const { return Cost::kLinear; }
  virtual std::uint32_t GetStateSize() const { return 0; }
  /// Loses no solution. Of integers with one value each the answer is exact, of reals kEntailed is.
  virtual Outcome Propagate(ZULTaVoDomains& domains) = 0;
};

#endif
