#include <algorithm>

#include "relations/Relations.h"
#include "relations/detail/Order.h"

namespace zultav::relations {

namespace {

/// A list of integers that comes before another one in the order of a dictionary, strictly or not:
/// the first place where they differ decides, and of two lists that differ in length alone the
/// shorter one comes first. Arguments: all of the first list, then all of the second. Domain
/// consistent.
class Lexicographic final : public ZULTaVoPropagator {
 public:
  Lexicographic(std::uint32_t first, std::uint32_t second, bool strictly);
  Wake GetWake(std::uint32_t) const override { return Wake::kOnBounds; }
  std::uint32_t GetStateSize() const override { return 1; }
  Outcome Propagate(ZULTaVoDomains& domains) override;

 private:
  bool AreEqual(const ZULTaVoDomains& domains, std::uint32_t place) const;
  bool CanBeDecidedBehind(const ZULTaVoDomains& domains, std::uint32_t place) const;
  bool IsDecidedFrom(const ZULTaVoDomains& domains, std::uint32_t place) const;

  std::uint32_t mFirst;   // numbers of the first list: where the second one begins
  std::uint32_t mCommon;  // places that both have
  bool mCanBeEqual;       // in all of these
};

Lexicographic::Lexicographic(std::uint32_t first, std::uint32_t second, bool strictly)
    : mFirst(first),
      mCommon(std::min(first, second)),
      mCanBeEqual(strictly ? first < second : first <= second) {}

/// The one state word is the number of places in front in which the lists are equal.
ZULTaVoPropagator::Outcome Lexicographic::Propagate(ZULTaVoDomains& domains) {
  auto place = static_cast<std::uint32_t>(domains.GetState(0));
  while (place < mCommon) {
    const std::uint32_t x = place, y = mFirst + place;
    if (AreEqual(domains, place)) {
      domains.SetState(0, ++place);
      continue;
    }
    const bool strictly = !CanBeDecidedBehind(domains, place);
    if (!NarrowToOrder(domains, x, y, strictly)) return Outcome::kFailed;
    if (IsDecidedFrom(domains, place)) return Outcome::kEntailed;
    if (!AreEqual(domains, place)) return Outcome::kFixpoint;
  }
  return mCanBeEqual ? Outcome::kEntailed : Outcome::kFailed;
}

bool Lexicographic::AreEqual(const ZULTaVoDomains& domains, std::uint32_t place) const {
  const std::uint32_t x = place, y = mFirst + place;
  return domains.AreSame(x, y) ||
         (domains.IsFixed(x) && domains.IsFixed(y) && domains.GetLower(x) == domains.GetLower(y));
}

/// Whether the lists may be equal here, and the places behind do what is asked.
bool Lexicographic::CanBeDecidedBehind(const ZULTaVoDomains& domains, std::uint32_t place) const {
  while (++place < mCommon) {
    if (domains.AreSame(place, mFirst + place)) continue;
    const std::int64_t least = domains.GetLower(place);
    const std::int64_t greatest = domains.GetUpper(mFirst + place);
    if (least != greatest) return least < greatest;
    // No bound, or both beyond the scale: anything may be.
    if (least == ZULTaVoDomains::kNoLower || least == ZULTaVoDomains::kNoUpper) return true;
  }
  return mCanBeEqual;
}

/// Whether the relation holds for all that is left from this place on.
bool Lexicographic::IsDecidedFrom(const ZULTaVoDomains& domains, std::uint32_t place) const {
  for (; place < mCommon; ++place) {
    if (domains.AreSame(place, mFirst + place)) continue;
    if (IsInOrder(domains, place, mFirst + place, true)) return true;
    if (!IsInOrder(domains, place, mFirst + place, false)) return false;
  }
  return mCanBeEqual;
}

template <bool Strictly>
std::unique_ptr<ZULTaVoPropagator> Make(Arguments arguments) {
  return std::make_unique<Lexicographic>(arguments[0].columns, arguments[1].columns, Strictly);
}

}  // namespace

Definition DescribeLexLess() {
  return {
      .name = "lex_less",
      .meaning = "the first list comes before the second one in the order of a dictionary",
      .parameters = {{.name = "first", .size = "m"}, {.name = "second", .size = "n"}},
      .make = &Make<true>
  };
}

Definition DescribeLexLesseq() {
  return {
      .name = "lex_lesseq",
      .meaning =
          "the first list comes before the second one in the order of a dictionary, or is it",
      .parameters = {{.name = "first", .size = "m"}, {.name = "second", .size = "n"}},
      .make = &Make<false>
  };
}

}  // namespace zultav::relations
