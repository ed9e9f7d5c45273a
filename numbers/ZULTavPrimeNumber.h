#ifndef ZULTAV_NUMBERS_ZULTAV_PRIME_NUMBER_H
#define ZULTAV_NUMBERS_ZULTAV_PRIME_NUMBER_H

#include "framework/solver/ZULTaVoFrame.h"
#include "numbers/Export.h"

/// Argument 0, a boolean, says whether argument 1, an integer, is a prime.
///
/// It works on any integer and boolean domains, through their abstract interfaces. Numbers beyond
/// 62.7 million are not checked: they may be prime or not. Whatever it deduces or not, it has
/// nothing more to say until an argument changes from outside, so it passivates itself.
class ZULTAV_NUMBERS_API ZULTavPrimeNumber final
    : public ZULTaVoFrame<ZULTavPrimeNumber, ZULTaVoConstraint> {
 public:
  static constexpr char kClassName[] = "ZULTavPrimeNumber";
  static constexpr char kTypeName[] = "PrimeNumber";
  static constexpr unsigned int kArguments = 2;
  static void AddArguments(ZULTaVoConstraintDescriptor& descriptor);

  explicit ZULTavPrimeNumber(const void* from = nullptr) : ZULTaVoFrame(from) {}
  explicit ZULTavPrimeNumber(ZULStreamableInit init) : ZULTaVoFrame(init) {}

  int Activate(ZULTaVoNetwork* network) override;
  int Filter(const ZULTaVoObjectEnvironment& environment, int event) override;
};

extern template class ZULTaVoFrame<ZULTavPrimeNumber, ZULTaVoConstraint>;

#endif
