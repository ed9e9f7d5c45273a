#pragma once

#include <cfenv>
#include <cmath>
#include <sstream>
#include <vector>

#include "framework/intervals/ZULTavIntervals.h"
#include "framework/solver/ZULTavAbstractTypes.h"
#include "tests/fuzz/fuzz.h"

/// The domains that the module registered.
inline const std::vector<const ZULTaVoObjectDescriptor*>& ValueTypes() {
  static const auto types = [] {
    std::vector<const ZULTaVoObjectDescriptor*> found;
    for (const ZULTaVoObjectDescriptor* descriptor : Numbers().GetDescriptors())
      if (descriptor->GetKind() == ZULTaVoObjectDescriptor::Kind::kType)
        found.push_back(descriptor);
    REQUIRE(found.size() == 7, "seven domains");
    return found;
  }();
  return types;
}

inline std::string RecordOf(const ZULTaVoAny& value) {
  std::ostringstream bytes;
  ZULopstream out(bytes);
  out.WriteObject(value);
  REQUIRE(out.Good(), "a value can be written");
  return bytes.str();
}

inline std::string TextOf(const ZULTaVoAny& value) {
  std::ostringstream text;
  text << value.GetDescriptor()->GetName() << ' ' << std::hexfloat;
  if (const auto* real = ZULTaVoCast<ZULTaVoReal>(&value))
    text << real->GetLowerBound() << ", " << real->GetUpperBound() << " = ";
  text << value;
  return text.str();
}

/// What holds for every domain after every operation.
inline void RequireValue(const ZULTaVoAny& value) {
  double lower = 0, upper = 0;
  if (const auto* real = ZULTaVoCast<ZULTaVoReal>(&value)) {
    lower = real->GetLowerBound();
    upper = real->GetUpperBound();
  } else if (const auto* integer = ZULTaVoCast<ZULTaVoInteger>(&value)) {
    lower = static_cast<double>(integer->GetLowerBound());
    upper = static_cast<double>(integer->GetUpperBound());
  }
  REQUIRE(!std::isnan(lower) && !std::isnan(upper), "bounds are numbers", TextOf(value));
  REQUIRE((lower > upper) == (value.IsNil() != 0) || ZULTaVoCast<ZULTaVoBoolean>(&value),
          "bounds in order, or Nil", TextOf(value));
  REQUIRE(!(value.IsNil() && value.IsAny()), "not all and nothing", TextOf(value));
  REQUIRE(!std::isnan(value.GetWidth()) && value.GetWidth() >= 0, "a width", TextOf(value));
  REQUIRE(SDCheckError() == 0, "the error flag is down", TextOf(value));
  REQUIRE(std::fegetround() == FE_TONEAREST, "the rounding mode is untouched");
}
