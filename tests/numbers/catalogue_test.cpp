#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "tests/number_module.h"

namespace {

// The catalogue, written a second time. An operator is its name, shape, constraint and the tuples
// of its types, a set of this map or tuples like SI-SR.

const std::map<std::string, std::string> kSets = {
    {"N16",
     "SI-SI-SI II-SI-II SI-II-II II-II-II SI-SR-SR SR-SI-SR SR-SR-SR II-SR-IR SR-II-IR "
     "SI-IR-IR II-IR-IR SR-IR-IR IR-IR-IR IR-SI-IR IR-II-IR IR-SR-IR"},
    {"N10",
     "SI-Int-II Int-SI-II II-Int-II Int-II-II Int-Int-II "
     "SR-Real-IR Real-SR-IR IR-Real-IR Real-IR-IR Real-Real-IR"      },
    {"Quotients",
     "SI-SI-SI-SI II-SI-II-II SI-II-II-II II-II-II-II SI-SR-SR-SR SR-SI-SR-SR "
     "SR-SR-SR-SR II-SR-IR-IR SR-II-IR-IR SI-IR-IR-IR II-IR-IR-IR SR-IR-IR-IR "
     "IR-IR-IR-IR IR-SI-IR-IR IR-II-IR-IR IR-SR-IR-IR"               },
    {"Truths",
     "SB-SB-SB-SB SI-SI-SB-SI II-SI-SB-II SI-II-SB-II II-II-SB-II SI-SR-SB-SR "
     "SR-SI-SB-SR SR-SR-SB-SR SI-IR-SB-IR II-IR-SB-IR SR-IR-SB-IR IR-IR-SB-IR "
     "IR-SI-SB-IR IR-II-SB-IR IR-SR-SB-IR"                           },
    {"Reals",     "SR-SR IR-IR"                                      },
    {"Buffered",  "SI-SR-SR II-IR-IR"                                },
    {"Same",      "SI-SI II-II SR-SR IR-IR"                          },
    {"Arcs",      "SR-IR-IR IR-IR-IR SI-IR-IR II-IR-IR"              }
};

const char kOperators[] = R"(
+ Binary Addition N16 N10; * Binary Multiplication N16 N10; ^ Binary Power N16;
= Binary EqualTernary N16 N10; <> Binary UnequalTernary N16 N10;
>= Binary LessOrEqualTernary N16 N10; /\ Binary Minimum N16 N10; \/ Binary Maximum N16 N10;
> Binary LessTernary N16 N10;
= Binary EqualTernary SB-SB-SB; <> Binary UnequalTernary SB-SB-SB;
>= Binary LessOrEqualTernary SB-SB-SB; /\ Binary Minimum SB-SB-SB; \/ Binary Maximum SB-SB-SB;
&& Binary Minimum SB-SB-SB; || Binary Maximum SB-SB-SB; > Binary LessTernary SB-SB-SB;
<= SymBinary LessOrEqualTernary N16; < SymBinary LessTernary N16;
<= SymBinary LessOrEqualTernary SB-SB-SB; < SymBinary LessTernary SB-SB-SB;
- FirstInverse Addition Quotients; / FirstInverse Multiplication Quotients;
exp Unary Exponent Reals; exp BufferedUnary Exponent Buffered;
sqrt Unary Sqrt Reals; sqrt BufferedUnary Sqrt Buffered;
sin Unary Sine Reals; sin BufferedUnary Sine Buffered;
cos Unary Cosine Reals; cos BufferedUnary Cosine Buffered;
tan Unary Tangent Reals; tan BufferedUnary Tangent Buffered;
abs Unary Absolute Same; - Unary NumberNegation Same;
sign InverseUnary Signum SI-SI-SI SR-SI-SR II-II-II IR-II-IR;
next Unary Next Same SB-SB; ~ Unary BooleanNegation SB-SB;
ln InverseUnary Exponent SR-SR-SR IR-IR-IR SI-SR-SR II-IR-IR;
asin InverseUnary Sine Arcs; acos InverseUnary Cosine Arcs; atan InverseUnary Tangent Arcs;
round Unary Round Reals; round BufferedUnary Round Buffered;
floor Unary Floor Reals; floor BufferedUnary Floor Buffered;
ceil Unary Ceil Reals; ceil BufferedUnary Ceil Buffered;
prev InverseUnary Next SI-SI-SI II-II-II SR-SR-SR IR-IR-IR SB-SB-SB;
Pi Constant PiValue IR; E Constant EValue IR;
(real) Unary Equal SI-SR SI-IR II-IR; (int) InverseUnary Equal SI-SR-SI SI-IR-SI II-IR-II;
== SecondInverse BooleanEqual Truths; >> SecondInverse BooleanLess Truths;
>== SecondInverse BooleanLessOrEqual Truths; <<>> SecondInverse BooleanUnequal Truths;
<< SecondInverseSym BooleanLess Truths; <== SecondInverseSym BooleanLessOrEqual Truths;
-> SecondInverseSym BooleanLessOrEqual SB-SB-SB-SB;
PrimeNumber Unary PrimeNumber II-SB; mod Binary Remainder N16 N10;)";

std::vector<std::string> ExpectedDescriptors() {
  std::vector<std::string> all = {
      "single bool: ZULTaVoBoolean",  "single int: ZULTaVoInteger",
      "interval int: ZULTaVoInteger", "single real: ZULTaVoReal",
      "interval real: ZULTaVoReal",   "interval positive: interval real",
      "interval angle: interval real"};
  std::istringstream operators(kOperators);
  for (std::string text; std::getline(operators >> std::ws, text, ';');) {
    std::istringstream row(text);
    std::string name, shape, constraint;
    row >> name >> shape >> constraint;
    if (name == "PrimeNumber") all.push_back("PrimeNumber, a constraint");
    for (std::string set; row >> set;) {
      std::istringstream tuples(kSets.contains(set) ? kSets.at(set) : set);
      for (std::string tuple; tuples >> tuple;)
        all.push_back(name + ' ' + shape + ' ' + constraint + ' ' + tuple);
    }
  }
  return all;
}

std::string Describe(const ZULTaVoObjectDescriptor& descriptor) {
  static const std::map<std::string, std::string> kLabels = {
      {"single bool",    "SB"  },
      {"single int",     "SI"  },
      {"interval int",   "II"  },
      {"single real",    "SR"  },
      {"interval real",  "IR"  },
      {"ZULTaVoInteger", "Int" },
      {"ZULTaVoReal",    "Real"}
  };
  using Kind = ZULTaVoObjectDescriptor::Kind;
  const std::string name = descriptor.GetName();
  if (descriptor.GetKind() == Kind::kType) return name + ": " + descriptor.GetBase()->GetName();
  if (descriptor.GetKind() == Kind::kConstraint) return name + ", a constraint";
  const auto& op = static_cast<const ZULTaVoOperatorDescriptor&>(descriptor);
  std::string constraint = op.GetConstraint()->GetName();
  if (constraint.starts_with("ZULTaVo"))
    constraint = constraint.substr(7, constraint.size() - 7 - sizeof("Constraint") + 1);
  std::string text = name + ' ' + op.GetShapeName() + ' ' + constraint;
  for (unsigned int i = 0; i < op.GetNumberOfTypes(); ++i)
    text += (i == 0 ? ' ' : '-') + kLabels.at(op.GetTypes()[i]->GetName());
  return text;
}

TEST(CatalogueTest, RegistersEverythingInOrder) {
  const std::vector<std::string> expected = ExpectedDescriptors();
  const auto& registered = NumberModule().GetDescriptors();
  ASSERT_EQ(expected.size(), 503U);
  ASSERT_EQ(registered.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i)
    EXPECT_EQ(Describe(*registered[i]), expected[i]) << "at " << i;
}

}  // namespace
