#include "numbers/detail/Catalogue.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "framework/solver/FrameworkConstraints.h"
#include "framework/solver/ZULTaVoModule.h"
#include "numbers/ZULTavIntervalInteger.h"
#include "numbers/ZULTavIntervalReal.h"
#include "numbers/ZULTavPrimeNumber.h"
#include "numbers/ZULTavSingleBoolean.h"
#include "numbers/ZULTavSingleInteger.h"
#include "numbers/ZULTavSingleReal.h"

namespace zultav::detail {

namespace {

using Descriptor = const ZULTaVoObjectDescriptor*;

// Types ----------------------------------------------------------------------------------------

/// Single or interval (S, I) boolean, integer, real (B, I, R), and the abstract types over them.
enum Type : std::uint8_t { SB, SI, II, SR, IR, Int, Real, None };

/// The types of one operator, in the order in which its shape wants them.
using Tuple = std::array<Type, 4>;
constexpr Tuple Of(Type a, Type b = None, Type c = None, Type d = None) { return {a, b, c, d}; }

/// Descriptors are made while the module starts, so the table holds where to find them.
constexpr const Descriptor* kDescriptors[] = {&ZULTavSingleBoolean::sDescriptor,
                                              &ZULTavSingleInteger::sDescriptor,
                                              &ZULTavIntervalInteger::sDescriptor,
                                              &ZULTavSingleReal::sDescriptor,
                                              &ZULTavIntervalReal::sDescriptor,
                                              &ZULTaVoInteger::sDescriptor,
                                              &ZULTaVoReal::sDescriptor};
static_assert(std::size(kDescriptors) == None);

// Combinations of types ------------------------------------------------------------------------

template <std::size_t N>
using Set = std::array<Tuple, N>;

template <std::size_t M, std::size_t N>
constexpr Set<M + N> operator+(const Set<M>& first, const Set<N>& second) {
  Set<M + N> all{};
  for (std::size_t i = 0; i < M + N; ++i) all[i] = i < M ? first[i] : second[i - M];
  return all;
}

/// Left, right, result. A result is single when both operands are single and of one kind, real as
/// soon as one is real, an interval as soon as one is an interval.
constexpr Set<16> kNumbers = {Of(SI, SI, SI), Of(II, SI, II), Of(SI, II, II), Of(II, II, II),
                              Of(SI, SR, SR), Of(SR, SI, SR), Of(SR, SR, SR), Of(II, SR, IR),
                              Of(SR, II, IR), Of(SI, IR, IR), Of(II, IR, IR), Of(SR, IR, IR),
                              Of(IR, IR, IR), Of(IR, SI, IR), Of(IR, II, IR), Of(IR, SR, IR)};

/// An operand known as an integer or a real only gives an interval.
constexpr Set<10> kAbstractNumbers = {
    Of(SI, Int, II),  Of(Int, SI, II),  Of(II, Int, II),  Of(Int, II, II),  Of(Int, Int, II),
    Of(SR, Real, IR), Of(Real, SR, IR), Of(IR, Real, IR), Of(Real, IR, IR), Of(Real, Real, IR)};
constexpr Set<26> kAllNumbers = kNumbers + kAbstractNumbers;

/// Left, right, result, and the wider operand type, which the result has anyway.
constexpr Set<16> kInverseNumbers = [] {
  Set<16> set = kNumbers;
  for (Tuple& tuple : set) tuple[3] = tuple[2];
  return set;
}();

constexpr bool MixesIntervalIntegerWithSingleReal(const Tuple& tuple) {
  return (tuple[0] == II && tuple[1] == SR) || (tuple[0] == SR && tuple[1] == II);
}

/// Left, right, boolean result, and the wider operand type. An interval integer is not compared
/// with a single real.
constexpr Set<15> kTruths = [] {
  Set<15> set = {Of(SB, SB, SB, SB)};
  std::size_t used = 1;
  for (const Tuple& numbers : kNumbers)
    if (!MixesIntervalIntegerWithSingleReal(numbers))
      set[used++] = Of(numbers[0], numbers[1], SB, numbers[2]);
  return set;
}();

constexpr Set<1> kBooleans = {Of(SB, SB, SB)};
constexpr Set<1> kImplication = {Of(SB, SB, SB, SB)};
constexpr Set<1> kNegation = {Of(SB, SB)};
constexpr Set<1> kPrimality = {Of(II, SB)};
constexpr Set<1> kIntervalConstant = {Of(IR)};
constexpr Set<4> kSameNumber = {Of(SI, SI), Of(II, II), Of(SR, SR), Of(IR, IR)};
constexpr Set<5> kSame = kSameNumber + Set<1>{Of(SB, SB)};
constexpr Set<3> kToReal = {Of(SI, SR), Of(SI, IR), Of(II, IR)};
/// Functions of reals, and of integers through a real buffer: operand, buffer, result.
constexpr Set<2> kReals = {Of(SR, SR), Of(IR, IR)};
constexpr Set<2> kBufferedReals = {Of(SI, SR, SR), Of(II, IR, IR)};

// Inverses: operand, result, buffer.
constexpr Set<4> kSigns = {Of(SI, SI, SI), Of(SR, SI, SR), Of(II, II, II), Of(IR, II, IR)};
constexpr Set<4> kLogarithms = {Of(SR, SR, SR), Of(IR, IR, IR), Of(SI, SR, SR), Of(II, IR, IR)};
constexpr Set<4> kArcs = {Of(SR, IR, IR), Of(IR, IR, IR), Of(SI, IR, IR), Of(II, IR, IR)};
constexpr Set<5> kPredecessors = {Of(SI, SI, SI), Of(II, II, II), Of(SR, SR, SR), Of(IR, IR, IR),
                                  Of(SB, SB, SB)};
constexpr Set<3> kToInteger = {Of(SI, SR, SI), Of(SI, IR, SI), Of(II, IR, II)};

// Operators ------------------------------------------------------------------------------------

using Shape = ZULTaVoOperatorDescriptor::Shape;
using enum ZULTaVoOperatorDescriptor::Shape;

struct Row {
  const char* name;
  Shape shape;
  const Descriptor* constraint;
  std::span<const Tuple> types;
};

#define CONSTRAINT(NAME) &ZULTaVo##NAME##Constraint::sDescriptor
constexpr Row kRows[] = {
    {"+",           kBinary,           CONSTRAINT(Addition),            kAllNumbers      },
    {"*",           kBinary,           CONSTRAINT(Multiplication),      kAllNumbers      },
    {"^",           kBinary,           CONSTRAINT(Power),               kNumbers         },
    {"=",           kBinary,           CONSTRAINT(EqualTernary),        kAllNumbers      },
    {"<>",          kBinary,           CONSTRAINT(UnequalTernary),      kAllNumbers      },
    {">=",          kBinary,           CONSTRAINT(LessOrEqualTernary),  kAllNumbers      },
    {"/\\",         kBinary,           CONSTRAINT(Minimum),             kAllNumbers      },
    {"\\/",         kBinary,           CONSTRAINT(Maximum),             kAllNumbers      },
    {">",           kBinary,           CONSTRAINT(LessTernary),         kAllNumbers      },
    {"=",           kBinary,           CONSTRAINT(EqualTernary),        kBooleans        },
    {"<>",          kBinary,           CONSTRAINT(UnequalTernary),      kBooleans        },
    {">=",          kBinary,           CONSTRAINT(LessOrEqualTernary),  kBooleans        },
    {"/\\",         kBinary,           CONSTRAINT(Minimum),             kBooleans        },
    {"\\/",         kBinary,           CONSTRAINT(Maximum),             kBooleans        },
    {"&&",          kBinary,           CONSTRAINT(Minimum),             kBooleans        },
    {"||",          kBinary,           CONSTRAINT(Maximum),             kBooleans        },
    {">",           kBinary,           CONSTRAINT(LessTernary),         kBooleans        },
    {"<=",          kSymBinary,        CONSTRAINT(LessOrEqualTernary),  kNumbers         },
    {"<",           kSymBinary,        CONSTRAINT(LessTernary),         kNumbers         },
    {"<=",          kSymBinary,        CONSTRAINT(LessOrEqualTernary),  kBooleans        },
    {"<",           kSymBinary,        CONSTRAINT(LessTernary),         kBooleans        },
    {"-",           kFirstInverse,     CONSTRAINT(Addition),            kInverseNumbers  },
    {"/",           kFirstInverse,     CONSTRAINT(Multiplication),      kInverseNumbers  },
    {"exp",         kUnary,            CONSTRAINT(Exponent),            kReals           },
    {"exp",         kBufferedUnary,    CONSTRAINT(Exponent),            kBufferedReals   },
    {"sqrt",        kUnary,            CONSTRAINT(Sqrt),                kReals           },
    {"sqrt",        kBufferedUnary,    CONSTRAINT(Sqrt),                kBufferedReals   },
    {"sin",         kUnary,            CONSTRAINT(Sine),                kReals           },
    {"sin",         kBufferedUnary,    CONSTRAINT(Sine),                kBufferedReals   },
    {"cos",         kUnary,            CONSTRAINT(Cosine),              kReals           },
    {"cos",         kBufferedUnary,    CONSTRAINT(Cosine),              kBufferedReals   },
    {"tan",         kUnary,            CONSTRAINT(Tangent),             kReals           },
    {"tan",         kBufferedUnary,    CONSTRAINT(Tangent),             kBufferedReals   },
    {"abs",         kUnary,            CONSTRAINT(Absolute),            kSameNumber      },
    {"-",           kUnary,            CONSTRAINT(NumberNegation),      kSameNumber      },
    {"sign",        kInverseUnary,     CONSTRAINT(Signum),              kSigns           },
    {"next",        kUnary,            CONSTRAINT(Next),                kSame            },
    {"~",           kUnary,            CONSTRAINT(BooleanNegation),     kNegation        },
    {"ln",          kInverseUnary,     CONSTRAINT(Exponent),            kLogarithms      },
    {"asin",        kInverseUnary,     CONSTRAINT(Sine),                kArcs            },
    {"acos",        kInverseUnary,     CONSTRAINT(Cosine),              kArcs            },
    {"atan",        kInverseUnary,     CONSTRAINT(Tangent),             kArcs            },
    {"round",       kUnary,            CONSTRAINT(Round),               kReals           },
    {"round",       kBufferedUnary,    CONSTRAINT(Round),               kBufferedReals   },
    {"floor",       kUnary,            CONSTRAINT(Floor),               kReals           },
    {"floor",       kBufferedUnary,    CONSTRAINT(Floor),               kBufferedReals   },
    {"ceil",        kUnary,            CONSTRAINT(Ceil),                kReals           },
    {"ceil",        kBufferedUnary,    CONSTRAINT(Ceil),                kBufferedReals   },
    {"prev",        kInverseUnary,     CONSTRAINT(Next),                kPredecessors    },
    {"Pi",          kConstant,         CONSTRAINT(PiValue),             kIntervalConstant},
    {"E",           kConstant,         CONSTRAINT(EValue),              kIntervalConstant},
    {"(real)",      kUnary,            CONSTRAINT(Equal),               kToReal          },
    {"(int)",       kInverseUnary,     CONSTRAINT(Equal),               kToInteger       },
    {"==",          kSecondInverse,    CONSTRAINT(BooleanEqual),        kTruths          },
    {">>",          kSecondInverse,    CONSTRAINT(BooleanLess),         kTruths          },
    {">==",         kSecondInverse,    CONSTRAINT(BooleanLessOrEqual),  kTruths          },
    {"<<>>",        kSecondInverse,    CONSTRAINT(BooleanUnequal),      kTruths          },
    {"<<",          kSecondInverseSym, CONSTRAINT(BooleanLess),         kTruths          },
    {"<==",         kSecondInverseSym, CONSTRAINT(BooleanLessOrEqual),  kTruths          },
    {"->",          kSecondInverseSym, CONSTRAINT(BooleanLessOrEqual),  kImplication     },
    {"PrimeNumber", kUnary,            &ZULTavPrimeNumber::sDescriptor, kPrimality       },
    {"mod",         kBinary,           CONSTRAINT(Remainder),           kAllNumbers      },
};
#undef CONSTRAINT

constexpr std::size_t CountOperators() {
  std::size_t count = 0;
  for (const Row& row : kRows) count += row.types.size();
  return count;
}
static_assert(CountOperators() == 495, "an operator was lost or is registered twice");

ZULTaVoOperatorDescriptor* Make(const ZULString& name, const Row& row, const Tuple& types) {
  const auto type = [&](std::size_t i) { return *kDescriptors[types[i]]; };
  const Descriptor constraint = *row.constraint;
  switch (row.shape) {
    case kBinary:
      return ZULTaVoCreateBinaryOperator(name, type(0), type(1), type(2), constraint);
    case kSymBinary:
      return ZULTaVoCreateSymmetricBinaryOperator(name, type(0), type(1), type(2), constraint);
    case kFirstInverse:
      return ZULTaVoCreateFirstInverseBinaryOperator(name, type(0), type(1), type(2), type(3),
                                                     constraint);
    case kSecondInverse:
      return ZULTaVoCreateSecondInverseBinaryOperator(name, type(0), type(1), type(2), type(3),
                                                      constraint);
    case kSecondInverseSym:
      return ZULTaVoCreateSecondInverseSymmetricBinaryOperator(name, type(0), type(1), type(2),
                                                               type(3), constraint);
    case kUnary:
      return ZULTaVoCreateUnaryOperator(name, type(0), type(1), constraint);
    case kInverseUnary:
      return ZULTaVoCreateInverseUnaryOperator(name, type(0), type(1), type(2), constraint);
    case kBufferedUnary:
      return ZULTaVoCreateBufferedUnaryOperator(name, type(0), type(1), type(2), constraint);
    case kConstant:
      return ZULTaVoCreateConstant(name, type(0), constraint);
  }
  return nullptr;
}

}  // namespace

bool AddOperators(ZULTaVoModule& module) {
  for (const Row& row : kRows) {
    if (row.constraint == &ZULTavPrimeNumber::sDescriptor)
      module.AddObjectDescriptor(ZULTavPrimeNumber::MakeDescriptor());
    const ZULString name(row.name);
    for (const Tuple& types : row.types) {
      const ZULTaVoObjectDescriptor* const made = Make(name, row, types);
      if (made == nullptr) return false;
      module.AddObjectDescriptor(made);
    }
  }
  return true;
}

}  // namespace zultav::detail
