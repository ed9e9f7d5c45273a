#include "numbers/ZULTavPrimeNumber.h"

#include <array>
#include <cmath>
#include <cstdint>

#include "framework/solver/ZULTaVoBoolean.h"
#include "framework/solver/ZULTaVoInteger.h"
#include "framework/solver/ZULTaVoNetwork.h"
#include "framework/solver/ZULTaVoObjectEnvironment.h"
#include "numbers/detail/PrimeSearch.h"
#include "numbers/detail/SingleDispatch.h"

using namespace zultav::detail;

template class ZULTaVoFrame<ZULTavPrimeNumber, ZULTaVoConstraint>;

ZULStreamableClass rZULTavPrimeNumber_Descriptor = ZULTavPrimeNumber::MakeDescriptorRecord();
ZULStreamableClass rZULTavPrimeNumber = ZULTavPrimeNumber::MakeRecord();

namespace {

constexpr unsigned short kPriority = 100;

constexpr std::int32_t kLargestPrime = 7919;
constexpr std::array<std::int32_t, 1000> kPrimes = [] {
  std::array<std::int32_t, 1000> primes{};
  std::array<bool, kLargestPrime + 1> composite{};
  std::size_t found = 0;
  for (std::size_t n = 2; n <= kLargestPrime; ++n) {
    if (composite[n]) continue;
    primes[found++] = static_cast<std::int32_t>(n);
    for (std::size_t multiple = n * n; multiple <= kLargestPrime; multiple += n)
      composite[multiple] = true;
  }
  return primes;
}();
static_assert(kPrimes.front() == 2 && kPrimes.back() == kLargestPrime);

constexpr unsigned int Prime(std::size_t index) {
  return static_cast<unsigned int>(kPrimes[index]);
}

/// Whether a number beyond the table, whose root is inside it, has no factor up to that root.
bool HasNoFactor(unsigned int n, unsigned int root) {
  for (std::size_t i = 0; i < kPrimes.size() && Prime(i) <= root; ++i)
    if (n % Prime(i) == 0) return false;
  return true;
}

}  // namespace

namespace zultav::detail {

unsigned int FindLowerBound(unsigned int n) {
  unsigned int low = 0;
  unsigned int high = kPrimes.size() - 1;
  unsigned int best = 1001;
  do {
    const unsigned int middle = (low + high) / 2;
    if (Prime(middle) == n) return middle;
    if (Prime(middle) < n) {
      best = middle;
      low = middle + 1;
    } else {
      high = middle == 0 ? 0 : middle - 1;
    }
  } while (low < high);
  return n < Prime(low) ? best : low;
}

int IsPrime(unsigned int n, int want) {
  if (n < 2) return !want;
  if (n <= kLargestPrime) return Prime(FindLowerBound(n)) == n ? want : !want;
  // Single precision on the way is part of the behaviour that models rely on.
  const auto root = static_cast<unsigned int>(std::sqrt(double{static_cast<float>(n)}));
  if (root > kLargestPrime) return 1;
  return HasNoFactor(n, root) ? want : !want;
}

int CalcInteger(ZULTaVoInteger* x, int want) {
  if (x == nullptr) return 0;
  const auto passes = [&](long value) { return IsPrime(static_cast<unsigned int>(value), want); };
  const int wasAny = x->IsAny();
  const long oldLow = x->GetLowerBound();
  const long oldHigh = x->GetUpperBound();

  long low = want != 0 && oldLow < 2 ? 2 : oldLow;
  long high = oldHigh;
  while (high >= low && !passes(high)) --high;
  while (low < high && !passes(low)) ++low;

  x->SetLowerBound(low);
  x->SetUpperBound(high);
  if (x->GetLowerBound() != low || x->GetUpperBound() != high) {
    // A domain of one value cannot hold two bounds.
    if (low > high) return Contradict(*x);
    if (wasAny) {
      x->SetAny();
      return 0;
    }
  }
  return low != oldLow || high != oldHigh;
}

int CalcBoolean(ZULTaVoInteger* x, ZULTaVoBoolean* b) {
  if (x == nullptr || b == nullptr) return 0;
  // As an unsigned number a negative bound is a large one, of which nothing is deduced either.
  if (static_cast<std::uint32_t>(x->GetUpperBound()) >= 2) return 0;
  b->SetFalse();
  return 1;
}

}  // namespace zultav::detail

void ZULTavPrimeNumber::AddArguments(ZULTaVoConstraintDescriptor& descriptor) {
  descriptor.AddArgument("Arg", ZULTaVoInteger::sDescriptor, kPriority);
  descriptor.AddArgument("Value", ZULTaVoBoolean::sDescriptor, kPriority);
  descriptor.SetRule(ZULTaVoRule::kPrimality);
}

int ZULTavPrimeNumber::Activate(ZULTaVoNetwork* network) {
  return ChangePriority(network, kPriority);
}

int ZULTavPrimeNumber::Filter(const ZULTaVoObjectEnvironment& environment, int) {
  auto* x = ZULTaVoCast<ZULTaVoInteger>(environment.GetArgument(1));
  auto* b = ZULTaVoCast<ZULTaVoBoolean>(environment.GetArgument(0));
  if (x == nullptr || b == nullptr) return kFilterBadArguments;
  if (x->IsNil() || b->IsNil()) {
    Passivate();
    return kFilterContradiction;
  }

  ZULTaVoAny* narrowed = nullptr;
  if (!environment.IsArgumentConstant(x) && !b->IsAny() && CalcInteger(x, b->IsTrue())) {
    narrowed = x;
  } else if (!environment.IsArgumentConstant(b) && CalcBoolean(x, b)) {
    narrowed = b;
  }
  if (narrowed != nullptr) {
    if (narrowed->IsNil()) return kFilterContradiction;
    environment.GetNetwork()->PropagateValue(narrowed);
  }
  Passivate();
  return kFilterConsistent;
}
