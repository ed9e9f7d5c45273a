#include "numbers/InitModule.h"

#include "framework/intervals/IntervalControl.h"
#include "framework/intervals/SubdefInt.h"
#include "framework/intervals/SubdefReal.h"
#include "framework/solver/ZULTaVoModuleManager.h"
#include "numbers/ZULTavAngle.h"
#include "numbers/ZULTavIntervalInteger.h"
#include "numbers/ZULTavIntervalReal.h"
#include "numbers/ZULTavPositive.h"
#include "numbers/ZULTavSingleBoolean.h"
#include "numbers/ZULTavSingleInteger.h"
#include "numbers/ZULTavSingleReal.h"
#include "numbers/detail/Catalogue.h"

using namespace zultav::detail;

namespace {

constexpr double kOneByPi = 0.3183098861837907;

/// Passes the solver's window on to the interval library, while this module is loaded.
class TrigLimitsLink {
 public:
  TrigLimitsLink() {
    ZULTaVoReal::ListenToTrigLimits(
        [](double low, double high) { SetTrigLimits(low * kOneByPi, high * kOneByPi); });
  }
  ~TrigLimitsLink() { ZULTaVoReal::ListenToTrigLimits(nullptr); }
  TrigLimitsLink(const TrigLimitsLink&) = delete;
  TrigLimitsLink& operator=(const TrigLimitsLink&) = delete;
};
const TrigLimitsLink sLink;

using Descriptor = ZULTaVoObjectDescriptor;

/// The types, with what models call them and which literals are their values.
constexpr struct {
  Descriptor* (*make)();
  const char* shortName;
  int literals;
} kTypes[] = {
    {&ZULTavSingleBoolean::MakeDescriptor,   "bool",     Descriptor::kTruths                       },
    {&ZULTavSingleInteger::MakeDescriptor,   "",         Descriptor::kIntegers                     },
    {&ZULTavIntervalInteger::MakeDescriptor, "int",      Descriptor::kIntegers                     },
    {&ZULTavSingleReal::MakeDescriptor,      "",         Descriptor::kIntegers | Descriptor::kReals},
    {&ZULTavIntervalReal::MakeDescriptor,    "real",     Descriptor::kIntegers | Descriptor::kReals},
    {&ZULTavPositive::MakeDescriptor,        "positive", 0                                         },
    {&ZULTavAngle::MakeDescriptor,           "angle",    0                                         },
};

}  // namespace

int InitModule(ZULTaVoModule* module, ZULTaVoModuleManager* manager) {
  if (module == nullptr || manager == nullptr) return 0;
  ZULTaVoModule* abstractTypes = manager->OpenModule(ZULString("ZULTavAbstractTypes"));
  if (abstractTypes == nullptr) return 0;
  module->AddLoadedModule(abstractTypes);

  for (const auto& type : kTypes) {
    Descriptor* const made = type.make();
    if (made == nullptr) return 0;
    made->SetShortName(type.shortName);
    made->SetLiterals(type.literals);
    module->AddObjectDescriptor(made);
  }

  InitNumbers();
  return AddOperators(*module) ? 1 : 0;
}

void InitNumbers() {
  // The largest 32-bit integer is kept free: it encodes Any.
  constexpr long kMaxInteger = 2147483646;
  constexpr double kMaxReal = 1e19;
  double low = 0;
  double high = 0;
  ZULTaVoReal::GetTrigLimits(low, high);
  InitIntervals(kMaxInteger, kMaxReal, low * kOneByPi, high * kOneByPi,
                ZULTaVoReal::GetPrecision());

  ZULTavSingleReal::sNC_REAL_MAX = SubdefReal::sMaxValue;
  ZULTavSingleReal::sNC_REAL_MIN = -SubdefReal::sMaxValue;
  ZULTavSingleReal::sNC_REAL_NIL = -1e21;
  ZULTavSingleReal::sNC_REAL_ANY = +1e21;

  ZULTavSingleInteger::sNC_INT_MAX = SubdefInt::sMaxValue;
  ZULTavSingleInteger::sNC_INT_MIN = -SubdefInt::sMaxValue;
  ZULTavSingleInteger::sNC_INT_ANY = SubdefInt::sMaxValue + 1;
  ZULTavSingleInteger::sNC_INT_NIL = -SubdefInt::sMaxValue - 1;
}
