#include "solve/ValueText.h"

#include <charconv>
#include <memory>
#include <ostream>
#include <type_traits>

#include "framework/solver/ZULTavAbstractTypes.h"

namespace {

template <class T>
struct Bounds {
  T lower, upper;
};

template <class Number>
auto BoundsOf(const Number& value) {
  return Bounds<decltype(value.GetLowerBound())>{value.GetLowerBound(), value.GetUpperBound()};
}

/// The bounds of the value's type when nothing is known: what lies there is an infinite side.
template <class Number>
auto InfiniteBounds(const Number& value) {
  const ZULTaVoObjectDescriptor* type = value.GetDescriptor();
  const std::size_t units = type->GetObjectSize() / sizeof(std::max_align_t) + 1;
  const auto memory = std::make_unique<std::max_align_t[]>(units);
  auto* any = static_cast<Number*>(static_cast<ZULTaVoAny*>(type->InitObject(memory.get())));
  any->SetAny();
  const auto bounds = BoundsOf<Number>(*any);
  type->DestroyObject(any);
  return bounds;
}

template <class T>
std::string Shortest(T number) {
  char text[64];
  return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

/// A number that its reader takes for a real.
std::string RealText(double number) {
  std::string text = Shortest(number);
  return text.find_first_of(".e") == std::string::npos ? text + ".0" : text;
}

void PrintFullReal(std::ostream& out, const ZULTaVoReal& real) {
  const auto [lower, upper] = BoundsOf(real);
  const auto infinite = InfiniteBounds(real);
  if (lower == upper) {
    out << RealText(lower);
    return;
  }
  out << '[' << (lower <= infinite.lower ? " Min" : RealText(lower)) << ','
      << (upper >= infinite.upper ? " Max" : RealText(upper)) << ']';
}

template <class Number>
std::string JsonNumber(const Number& value) {
  const auto [lower, upper] = BoundsOf(value);
  if (lower == upper) return Shortest(lower);
  const auto infinite = InfiniteBounds(value);
  return "{\"lo\": " + (lower <= infinite.lower ? "null" : Shortest(lower)) +
         ", \"hi\": " + (upper >= infinite.upper ? "null" : Shortest(upper)) + "}";
}

}  // namespace

void PrintValue(std::ostream& out, const ZULTaVoAny& value, Digits digits) {
  const auto* real = ZULTaVoCast<const ZULTaVoReal>(&value);
  if (digits == Digits::kFull && real != nullptr && !value.IsNil() && !value.IsAny()) {
    PrintFullReal(out, *real);
  } else {
    value.PrintOn(out);
  }
}

std::string JsonValue(const ZULTaVoAny& value) {
  constexpr long kSingleAny = -1;  // how a single-value type counts Any
  if (value.IsNil()) return "\"Nil\"";
  if (const auto* boolean = ZULTaVoCast<const ZULTaVoBoolean>(&value))
    return boolean->IsTrue() ? "true" : boolean->IsFalse() ? "false" : "\"Any\"";
  if (value.IsAny() && value.GetCardinality() == kSingleAny) return "\"Any\"";
  if (const auto* integer = ZULTaVoCast<const ZULTaVoInteger>(&value)) return JsonNumber(*integer);
  if (const auto* real = ZULTaVoCast<const ZULTaVoReal>(&value)) return JsonNumber(*real);
  return "\"Any\"";
}
