// A module of one's own, to be dropped in beside the numbers: integers whose domain is
// any subset of [-32, 31], holes included. Every operation is a filter by its own definition.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <istream>
#include <ostream>
#include <utility>

#include "framework/solver/ZULTavAbstractTypes.h"

namespace {

constexpr long kLeast = -32, kGreatest = 31;

long Power(long base, long exponent) {
  long power = exponent < 0 && std::labs(base) != 1 ? kGreatest + 1 : 1;
  for (long i = 0; i < std::labs(exponent) && std::labs(power) <= kGreatest + 1; ++i) power *= base;
  return power;
}

}  // namespace

class BitInteger final : public ZULTaVoFrame<BitInteger, ZULTaVoInteger> {
 public:
  static constexpr char kClassName[] = "BitInteger";
  static constexpr char kTypeName[] = "bit int";
  BitInteger() = default;
  explicit BitInteger(ZULStreamableInit init) : ZULTaVoFrame(init) {}

  void Write(ZULopstream& out) const override {
    out << static_cast<long>(mSet & 0xffffffff) << static_cast<long>(mSet >> 32);
  }
  void Read(ZULipstream& in) override {
    long low = 0, high = 0;
    in >> low >> high;
    mSet =
        (static_cast<std::uint64_t>(high) << 32) | (static_cast<std::uint64_t>(low) & 0xffffffff);
  }
  void PrintOn(std::ostream& out) const override {
    Members([&](long v) { return out << v << ' ', true; });
  }
  void InputValue(std::istream& in) override {
    SetNil();
    for (long v = 0; in >> v;) InsertExactValue(v);
  }

  int Assign(const ZULTaVoAny& other) override {
    const auto* own = ZULTaVoCast<BitInteger>(&other);
    mSet = own != nullptr ? own->mSet : 0;
    return 1;
  }
  void SetNil() override { mSet = 0; }
  void SetAny() override { mSet = ~std::uint64_t{0}; }
  int IsNil() const override { return mSet == 0; }
  int IsAny() const override { return mSet == ~std::uint64_t{0}; }
  int IsIntersected(const ZULTaVoAny& other) const override {
    const auto* own = ZULTaVoCast<BitInteger>(&other);
    return own != nullptr && (own->mSet & mSet) != 0;
  }
  int Intersect(const ZULTaVoAny& other) override {
    const auto* own = ZULTaVoCast<BitInteger>(&other);
    return Take(own != nullptr ? mSet & own->mSet : 0);
  }
  int Unite(const ZULTaVoAny& other) override {
    const auto* own = ZULTaVoCast<BitInteger>(&other);
    return Take(own != nullptr ? mSet | own->mSet : ~std::uint64_t{0});
  }
  long GetCardinality() const override { return __builtin_popcountll(mSet); }
  void Bisect(ZULTaVoObject& other, ValueSelection) override {
    auto& half = static_cast<BitInteger&>(other);
    half.SetExactValue(GetLowerBound());
    mSet &= ~half.mSet;
  }

  void SetExactValue(long value) override { mSet = Bit(value); }
  void SetLowerBound(long value) override {
    mSet = Members([&](long v) { return v >= value; });
  }
  void SetUpperBound(long value) override {
    mSet = Members([&](long v) { return v <= value; });
  }
  int InsertExactValue(long value) override { return Take(mSet | Bit(value)); }
  int RemoveExactValue(long value) override { return Take(mSet & ~Bit(value)); }
  long GetLowerBound() const override {
    return IsNil() ? kGreatest : kLeast + __builtin_ctzll(mSet);
  }
  long GetUpperBound() const override {
    return IsNil() ? kLeast : kGreatest - __builtin_clzll(mSet);
  }
  long GetNextExactValue(long value) const override { return value + 1; }
  long GetPrevExactValue(long value) const override { return value - 1; }

  int CalcMinValue() override { return Take(mSet & Bit(kLeast)); }
  int CalcMaxValue() override { return Take(mSet & Bit(kGreatest)); }
  int CalcZeroValue() override { return Take(mSet & Bit(0)); }
  int CalcOneValue() override { return Take(mSet & Bit(1)); }

#define RELATION(NAME, BASE, HOLDS)                                \
  int Calc##NAME##Value(const BASE& y) override {                  \
    return Relate(*this, y, [](long r, long a) { return HOLDS; }); \
  }                                                                \
  int CalcInverse##NAME##Value(BASE& y) const override {           \
    return Relate(y, *this, [](long a, long r) { return HOLDS; }); \
  }
  RELATION(Equal, ZULTaVoAny, r == a)
  RELATION(LessOrEqual, ZULTaVoAny, r <= a)
  RELATION(NotLessAndUnequal, ZULTaVoAny, r > a)
  RELATION(Less, ZULTaVoScalar, r < a)
  RELATION(NotLess, ZULTaVoScalar, r >= a)
  RELATION(Next, ZULTaVoScalar, r == a + 1)
  RELATION(Absolute, ZULTaVoNumber, r == std::labs(a))
  RELATION(Negative, ZULTaVoNumber, r == -a)
#undef RELATION
  int CalcSignumValue(ZULTaVoInteger& sign) const override {
    return Relate(sign, *this, [](long s, long v) { return s == (v > 0) - (v < 0); });
  }
  int CalcInverseSignumValue(const ZULTaVoInteger& sign) override {
    return Relate(*this, sign, [](long v, long s) { return s == (v > 0) - (v < 0); });
  }

#define FUNCTION(NAME, BASE, HOLDS)                                           \
  int Calc##NAME##Value(const BASE& x, const BASE& y) override {              \
    return Relate(*this, x, y, [](long r, long a, long b) { return HOLDS; }); \
  }                                                                           \
  int CalcFirstInverse##NAME##Value(BASE& x, const BASE& y) const override {  \
    return Relate(x, *this, y, [](long a, long r, long b) { return HOLDS; }); \
  }
#define SECOND_INVERSE(NAME, HOLDS)                                                             \
  int CalcSecondInverse##NAME##Value(const ZULTaVoNumber& x, ZULTaVoNumber& y) const override { \
    return Relate(y, *this, x, [](long b, long r, long a) { return HOLDS; });                   \
  }
  FUNCTION(Min, ZULTaVoScalar, r == std::min(a, b))
  FUNCTION(Max, ZULTaVoScalar, r == std::max(a, b))
  FUNCTION(Sum, ZULTaVoNumber, r == a + b)
  FUNCTION(Prod, ZULTaVoNumber, r == a * b)
  FUNCTION(Mod, ZULTaVoNumber, b != 0 && r == a % b)
  SECOND_INVERSE(Mod, b != 0 && r == a % b)
  FUNCTION(Power, ZULTaVoNumber, r == Power(a, b))
  SECOND_INVERSE(Power, r == Power(a, b))
#undef FUNCTION
#undef SECOND_INVERSE

 private:
  static std::uint64_t Bit(long value) {
    return value < kLeast || value > kGreatest ? 0 : std::uint64_t{1} << (value - kLeast);
  }
  int Take(std::uint64_t set) { return std::exchange(mSet, set) != set; }
  /// The members that pass.
  template <class Passes>
  std::uint64_t Members(Passes passes) const {
    std::uint64_t kept = 0;
    for (long v = kLeast; v <= kGreatest; ++v)
      if ((mSet & Bit(v)) != 0 && passes(v)) kept |= Bit(v);
    return kept;
  }
  /// Keeps the members of `target` that have a partner in each other set.
  template <class Holds>
  static int Relate(ZULTaVoAny& target, const ZULTaVoAny& y, Holds holds) {
    auto* own = ZULTaVoCast<BitInteger>(&target);
    const auto* first = ZULTaVoCast<BitInteger>(&y);
    if (own == nullptr || first == nullptr) return 0;
    return own->Take(own->Members(
        [&](long v) { return first->Members([&](long w) { return holds(v, w); }) != 0; }));
  }
  template <class Holds>
  static int Relate(ZULTaVoAny& target, const ZULTaVoAny& x, const ZULTaVoAny& y, Holds holds) {
    auto* own = ZULTaVoCast<BitInteger>(&target);
    const auto* first = ZULTaVoCast<BitInteger>(&x);
    const auto* second = ZULTaVoCast<BitInteger>(&y);
    if (own == nullptr || first == nullptr || second == nullptr) return 0;
    return own->Take(own->Members([&](long v) {
      return first->Members([&](long w) {
        return second->Members([&](long u) { return holds(v, w, u); }) != 0;
      }) != 0;
    }));
  }

  std::uint64_t mSet = ~std::uint64_t{0};
};

template class ZULTaVoFrame<BitInteger, ZULTaVoInteger>;
static ZULStreamableClass rBitInteger_Descriptor = BitInteger::MakeDescriptorRecord();
static ZULStreamableClass rBitInteger = BitInteger::MakeRecord();

extern "C" ZULTAV_TYPES_API int InitModule(ZULTaVoModule* module, ZULTaVoModuleManager* manager) {
  ZULTaVoModule* types = manager->OpenModule("ZULTavAbstractTypes");
  if (types == nullptr) return 0;
  module->AddLoadedModule(types);
  ZULTaVoObjectDescriptor* bit = BitInteger::MakeDescriptor();
  if (bit == nullptr) return 0;
  bit->SetShortName("bits");
  bit->SetLiterals(ZULTaVoObjectDescriptor::kIntegers);
  module->AddObjectDescriptor(bit);
  const auto add = [&](const char* name, const ZULTaVoObjectDescriptor* constraint) {
    module->AddObjectDescriptor(ZULTaVoCreateBinaryOperator(name, bit, bit, bit, constraint));
  };
  add("+", ZULTaVoAdditionConstraint::sDescriptor);
  add("*", ZULTaVoMultiplicationConstraint::sDescriptor);
  add("mod", ZULTaVoRemainderConstraint::sDescriptor);
  add("=", ZULTaVoEqualTernaryConstraint::sDescriptor);
  add("<>", ZULTaVoUnequalTernaryConstraint::sDescriptor);
  add("/\\", ZULTaVoMinimumConstraint::sDescriptor);
  return 1;
}
