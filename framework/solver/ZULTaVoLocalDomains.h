#ifndef ZULTAV_SOLVER_ZULTAVO_LOCAL_DOMAINS_H
#define ZULTAV_SOLVER_ZULTAVO_LOCAL_DOMAINS_H

#include <vector>

#include "framework/solver/ZULTaVoPropagator.h"

/// Values outside of any search, for a propagator to be run on: what if these were the values?
/// Nothing is taken back. Allocates only while it grows.
class ZULTAV_TYPES_API ZULTaVoLocalDomains final : public ZULTaVoDomains {
 public:
  /// The widest range of which a set of values is kept.
  static constexpr std::uint64_t kWidestSet = 1 << 16;

  /// Of `values` arguments, all of them integers without bounds, and `state` words of a propagator.
  ZULTaVoLocalDomains(std::uint32_t values, std::uint32_t state);
  ZULTaVoLocalDomains(const ZULTaVoLocalDomains&) = delete;
  ZULTaVoLocalDomains& operator=(const ZULTaVoLocalDomains&) = delete;

  std::uint32_t GetNumberOfValues() const { return static_cast<std::uint32_t>(mSets.size()); }
  /// All integers, or reals, between the bounds.
  void SetIntegers(std::uint32_t x, std::int64_t lower, std::int64_t upper);
  void SetReals(std::uint32_t x, double lower, double upper);
  /// Keeps the set of values of an integer from now on, unless its range is too wide.
  void KeepValues(std::uint32_t x);
  /// Takes over the values of the first arguments of others, as many as there are here, with their
  /// sets. The propagator remembers nothing.
  void CopyFrom(const ZULTaVoDomains& others);
  void ForgetState();
  /// Whether anything was narrowed since the last ForgetNarrowing.
  bool HasNarrowed() const { return mNarrowed; }
  void ForgetNarrowing() { mNarrowed = false; }

 private:
  /// Where the bits of an argument stand: bit i for base + i.
  struct Set {
    std::size_t first = 0;
    std::size_t words = 0;
    std::int64_t base = 0;
  };
  bool HasValue(std::uint32_t slot, std::int64_t value) const override;
  std::int64_t FindNext(std::uint32_t slot, std::int64_t value) const override;
  std::int64_t FindPrevious(std::uint32_t slot, std::int64_t value) const override;
  std::uint64_t CountValues(std::uint32_t slot) const override;
  const std::uint64_t* FindBits(std::uint32_t slot, std::int64_t& base) const override;
  bool RaiseLower(std::uint32_t slot, std::int64_t bound) override;
  bool DropUpper(std::uint32_t slot, std::int64_t bound) override;
  bool RemoveWithin(std::uint32_t slot, std::int64_t value) override;
  bool NarrowReals(std::uint32_t slot, double lower, double upper) override;
  void SaveState(std::size_t word, std::int64_t value) override;

  void SetWords(std::uint32_t x, std::int64_t lower, std::int64_t upper);
  bool HasBit(const Set& set, std::int64_t value) const;

  std::vector<std::int64_t> mOwn;  // two words of each argument, then the state
  std::vector<std::uint32_t> mNumbers;
  std::vector<Set> mSets;
  std::vector<std::uint64_t> mBits;
  bool mNarrowed = false;
};

#endif
