#include "framework/solver/ZULTaVoRelation.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "framework/solver/ZULTaVoBoolean.h"
#include "framework/solver/ZULTaVoLocalDomains.h"
#include "framework/solver/ZULTaVoNetwork.h"
#include "framework/solver/ZULTaVoObjectEnvironment.h"
#include "framework/solver/detail/KeepBetween.h"
#include "framework/solver/detail/Reification.h"

using zultav::detail::KeepBetween;

namespace {

constexpr std::uint64_t kMostEntries = std::numeric_limits<std::uint32_t>::max();

ZULStreamable* Refuse(ZULStreamable* existing) { return existing; }

/// Signed numbers near 0 become small ones.
std::uint64_t Fold(std::int64_t value) {
  return static_cast<std::uint64_t>(value) << 1 ^ (value < 0 ? UINT64_MAX : 0);
}
std::int64_t Unfold(std::uint64_t value) {
  return static_cast<std::int64_t>(value >> 1 ^ -(value & 1));
}

std::uint32_t ReadSize(ZULipstream& in) {
  std::uint64_t size = 0;
  in.ReadUnsigned(size, kMostEntries);
  return static_cast<std::uint32_t>(size);
}

bool ReadFlag(ZULipstream& in) {
  std::uint64_t flag = 0;
  in.ReadUnsigned(flag, 1);
  return flag != 0;
}

/// The number as a double, rounded toward `outward`.
double AsReal(long number, double outward) {
  const auto real = static_cast<double>(number);
  return std::fabs(real) < 0x1p53 ? real : std::nextafter(real, outward);
}

/// Whether a whole number can surely be one; beyond, bounds are left alone.
bool IsLong(double whole) {
  return std::fabs(whole) < static_cast<double>(std::numeric_limits<long>::max()) / 2;
}

}  // namespace

// Relations are read in place alone, by those who know their type.
static ZULStreamableClass rZULTaVoRelation("ZULTaVoRelation", Refuse, 1);

/// The relation as a filter runs it: the values of the objects in numbers.
class ZULTaVoRelation::Work {
 public:
  explicit Work(const ZULTaVoRelation& relation)
      : mRelation(relation),
        mPropagator(relation.MakePropagator()),
        mDomains(relation.GetNumberOfValues(), mPropagator->GetStateSize()) {}

  int Run(const ZULTaVoObjectEnvironment& environment) {
    const std::uint32_t count = mRelation.GetNumberOfValues();
    for (std::uint32_t x = 0; x < count; ++x)
      if (!Load(x, *static_cast<ZULTaVoAny*>(environment.GetArgument(x))))
        return kFilterContradiction;
    mDomains.ForgetState();
    mDomains.ForgetNarrowing();
    auto outcome = ZULTaVoPropagator::Outcome::kAgain;
    for (int run = 0; run < kMostRuns && outcome == ZULTaVoPropagator::Outcome::kAgain; ++run)
      outcome = mPropagator->Propagate(mDomains);
    if (outcome == ZULTaVoPropagator::Outcome::kFailed) return kFilterContradiction;
    ZULTaVoNetwork* network = environment.GetNetwork();
    for (std::uint32_t x = 0; x < count && mDomains.HasNarrowed(); ++x) {
      auto& object = *static_cast<ZULTaVoAny*>(environment.GetArgument(x));
      if (!Store(x, object)) continue;
      if (object.IsNil() != 0) return kFilterContradiction;
      if (network != nullptr) network->PropagateValue(&object);
    }
    if (outcome == ZULTaVoPropagator::Outcome::kEntailed && network != nullptr) network->Retire();
    return kFilterConsistent;
  }

 private:
  static constexpr int kMostRuns = 100;

  bool Load(std::uint32_t x, const ZULTaVoAny& object) {
    if (object.IsNil() != 0) return false;
    const auto* whole = mRelation.IsReal(x) ? ZULTaVoCast<const ZULTaVoInteger>(&object) : nullptr;
    if (whole != nullptr) {
      mDomains.SetReals(x, AsReal(whole->GetLowerBound(), -HUGE_VAL),
                        AsReal(whole->GetUpperBound(), HUGE_VAL));
    } else if (mRelation.IsReal(x)) {
      const auto& real = static_cast<const ZULTaVoReal&>(object);
      mDomains.SetReals(x, real.GetLowerBound(), real.GetUpperBound());
    } else if (mRelation.IsTruth(x)) {
      const auto& truth = static_cast<const ZULTaVoBoolean&>(object);
      mDomains.SetIntegers(x, truth.IsTrue() != 0 ? 1 : 0, truth.IsFalse() != 0 ? 0 : 1);
    } else {
      const auto& integer = static_cast<const ZULTaVoInteger&>(object);
      mDomains.SetIntegers(x, integer.GetLowerBound(), integer.GetUpperBound());
    }
    return true;
  }

  /// Whether the object was narrowed.
  bool Store(std::uint32_t x, ZULTaVoAny& object) const {
    if (auto* whole = mRelation.IsReal(x) ? ZULTaVoCast<ZULTaVoInteger>(&object) : nullptr) {
      const double lower = std::ceil(mDomains.GetRealLower(x));
      const double upper = std::floor(mDomains.GetRealUpper(x));
      return KeepBetween(*whole, IsLong(lower) ? static_cast<long>(lower) : whole->GetLowerBound(),
                         IsLong(upper) ? static_cast<long>(upper) : whole->GetUpperBound());
    }
    if (mRelation.IsReal(x))
      return KeepBetween(static_cast<ZULTaVoReal&>(object), mDomains.GetRealLower(x),
                         mDomains.GetRealUpper(x));
    if (!mRelation.IsTruth(x))
      return KeepBetween(static_cast<ZULTaVoInteger&>(object),
                         static_cast<long>(mDomains.GetLower(x)),
                         static_cast<long>(mDomains.GetUpper(x)));
    auto& truth = static_cast<ZULTaVoBoolean&>(object);
    if (mDomains.IsTrue(x)) return truth.SetTrue() != 0;
    return mDomains.IsFalse(x) && truth.SetFalse() != 0;
  }

  const ZULTaVoRelation& mRelation;
  std::unique_ptr<ZULTaVoPropagator> mPropagator;
  ZULTaVoLocalDomains mDomains;
};

ZULTaVoRelation::ZULTaVoRelation(const ZULTaVoRelationDescriptor* type) : mType(type) {
  if (!type->IsPlain()) return;
  const auto add = [this](const ZULTaVoRelationDescriptor::Parameter& parameter) {
    mParts.emplace_back().isReal = parameter.element == ZULTaVoRelationDescriptor::Element::kReal;
  };
  const auto& definition = type->GetDefinition();
  add(*definition.result);
  std::for_each(definition.parameters.begin(), definition.parameters.end(), add);
  Arrange();
}

ZULTaVoRelation::ZULTaVoRelation(const ZULTaVoRelationDescriptor* type, std::vector<Part> parts,
                                 bool isReified)
    : mType(type), mParts(std::move(parts)), mIsReified(isReified) {
  Arrange();
}

ZULTaVoRelation::ZULTaVoRelation(const ZULTaVoRelation& other)
    : ZULTaVoConstraint(other),
      mType(other.mType),
      mParts(other.mParts),
      mIsReified(other.mIsReified),
      mArguments(other.mArguments),
      mValues(other.mValues) {}

ZULTaVoRelation::~ZULTaVoRelation() = default;

/// Numbers the values.
void ZULTaVoRelation::Arrange() {
  mArguments.clear();
  mValues = 0;
  for (const Part& part : mParts) {
    ZULTaVoRelationArgument argument;
    argument.rows = part.rows;
    argument.columns = part.columns;
    argument.isKnown = part.isKnown;
    argument.isReal = part.isReal;
    argument.first = mValues;
    argument.firstIndex = part.firstIndex;
    if (part.integers != nullptr) argument.integers = *part.integers;
    if (part.reals != nullptr) argument.reals = *part.reals;
    if (!part.isKnown) mValues += static_cast<std::uint32_t>(argument.GetSize());
    mArguments.push_back(argument);
  }
}

std::uint32_t ZULTaVoRelation::FindPart(std::uint32_t argument) const {
  // Known parts take no numbers: of those that begin at the same one, the last has values.
  const auto next =
      std::upper_bound(mArguments.begin(), mArguments.end(), argument,
                       [](std::uint32_t number, const auto& part) { return number < part.first; });
  auto part = static_cast<std::uint32_t>(next - mArguments.begin()) - 1;
  while (mArguments[part].isKnown || mArguments[part].GetSize() == 0) --part;
  return part;
}

bool ZULTaVoRelation::IsReal(std::uint32_t argument) const {
  return argument < mValues && mArguments[FindPart(argument)].isReal;
}

bool ZULTaVoRelation::IsTruth(std::uint32_t argument) const {
  if (argument >= mValues) return true;
  const auto& definition = mType->GetDefinition();
  const auto& result = definition.result;
  const std::uint32_t part = FindPart(argument);
  const auto& parameter =
      result && part == 0 ? *result : definition.parameters[part - (result ? 1 : 0)];
  return parameter.element == ZULTaVoRelationDescriptor::Element::kTruth;
}

std::unique_ptr<ZULTaVoPropagator> ZULTaVoRelation::MakePropagator() const {
  auto propagator = mType->GetDefinition().make(mArguments);
  if (!mIsReified) return propagator;
  std::vector<bool> isReal(mValues);
  for (std::uint32_t x = 0; x < mValues; ++x) isReal[x] = IsReal(x);
  return std::make_unique<zultav::detail::Reification>(std::move(propagator), std::move(isReal));
}

int ZULTaVoRelation::Filter(const ZULTaVoObjectEnvironment& environment, int) {
  if (environment.GetNumberOfArguments() != GetNumberOfValues() ||
      !environment.AreArgumentsChecked())
    return kFilterBadArguments;
  if (mWork == nullptr) mWork = std::make_unique<Work>(*this);
  return mWork->Run(environment);
}

// --- Streams ----------------------------------------------------------------------------------

void ZULTaVoRelation::Write(ZULopstream& out) const {
  ZULTaVoConstraint::Write(out);
  out.WriteUnsigned(mIsReified);
  out.WriteUnsigned(mParts.size());
  for (const ZULTaVoRelationArgument& part : mArguments) {
    out.WriteUnsigned(part.rows);
    out.WriteUnsigned(part.columns);
    out.WriteUnsigned(part.isReal);
    out.WriteUnsigned(Fold(part.firstIndex));
    out.WriteUnsigned(part.isKnown);
    if (!part.isKnown) continue;
    for (const std::int64_t number : part.integers) out.WriteUnsigned(Fold(number));
    for (const double number : part.reals) out << number;
  }
}

void ZULTaVoRelation::Read(ZULipstream& in) {
  ZULTaVoConstraint::Read(in);
  mIsReified = ReadFlag(in);
  mParts.clear();
  std::uint64_t values = 0;
  for (std::uint32_t count = ReadSize(in); count > 0 && in.Good(); --count) {
    Part part;
    part.rows = ReadSize(in);
    part.columns = ReadSize(in);
    part.isReal = ReadFlag(in);
    std::uint64_t index = 0;
    in.ReadUnsigned(index);
    part.firstIndex = Unfold(index);
    part.isKnown = ReadFlag(in);
    const std::uint64_t size = std::uint64_t{part.rows} * part.columns;
    if (!part.isKnown) values += size;
    if (size > kMostEntries || values > kMostEntries)
      return in.Fail("a relation has too many arguments");
    std::vector<std::int64_t> integers;
    std::vector<double> reals;
    for (std::uint64_t i = 0; part.isKnown && i < size && in.Good(); ++i) {
      if (part.isReal) {
        double lower = 0, upper = 0;
        in >> lower >> upper;
        if (!(lower <= upper)) return in.Fail("a number of a relation is none");
        reals.insert(reals.end(), {lower, upper});
      } else {
        std::uint64_t number = 0;
        in.ReadUnsigned(number);
        integers.push_back(Unfold(number));
      }
    }
    if (part.isKnown && part.isReal)
      part.reals = std::make_shared<const std::vector<double>>(std::move(reals));
    else if (part.isKnown)
      part.integers = std::make_shared<const std::vector<std::int64_t>>(std::move(integers));
    mParts.push_back(std::move(part));
  }
  if (!in.Good()) return;
  Arrange();
  if (!Check().empty()) in.Fail("a relation does not take its arguments");
}
