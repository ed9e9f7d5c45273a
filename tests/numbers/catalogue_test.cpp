#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "tests/numbers/numbers_module.h"

namespace {

// The catalogue, written a second time: name, shape, constraint, and the tuples of types.

const char kN16[] =
    "SI SI SI; II SI II; SI II II; II II II; SI SR SR; SR SI SR; SR SR SR; II SR IR; SR II IR; "
    "SI IR IR; II IR IR; SR IR IR; IR IR IR; IR SI IR; IR II IR; IR SR IR";
const char kN26[] =
    "SI SI SI; II SI II; SI II II; II II II; SI SR SR; SR SI SR; SR SR SR; II SR IR; SR II IR; "
    "SI IR IR; II IR IR; SR IR IR; IR IR IR; IR SI IR; IR II IR; IR SR IR; "
    "SI Int II; Int SI II; II Int II; Int II II; Int Int II; "
    "SR Real IR; Real SR IR; IR Real IR; Real IR IR; Real Real IR";
const char kQuotients[] =
    "SI SI SI SI; II SI II II; SI II II II; II II II II; SI SR SR SR; SR SI SR SR; SR SR SR SR; "
    "II SR IR IR; SR II IR IR; SI IR IR IR; II IR IR IR; SR IR IR IR; IR IR IR IR; IR SI IR IR; "
    "IR II IR IR; IR SR IR IR";
const char kTruths[] =
    "SB SB SB SB; SI SI SB SI; II SI SB II; SI II SB II; II II SB II; SI SR SB SR; SR SI SB SR; "
    "SR SR SB SR; SI IR SB IR; II IR SB IR; SR IR SB IR; IR IR SB IR; IR SI SB IR; IR II SB IR; "
    "IR SR SB IR";
const char kReals[] = "SR SR; IR IR";
const char kBuffered[] = "SI SR SR; II IR IR";
const char kSame[] = "SI SI; II II; SR SR; IR IR";
const char kArcs[] = "SR IR IR; IR IR IR; SI IR IR; II IR IR";

struct Row {
  const char* name;
  const char* shape;
  const char* constraint;
  const char* types;
};

const Row kRows[] = {
    {"+",           "Binary",           "Addition",           kN26                                              },
    {"*",           "Binary",           "Multiplication",     kN26                                              },
    {"^",           "Binary",           "Power",              kN16                                              },
    {"=",           "Binary",           "EqualTernary",       kN26                                              },
    {"<>",          "Binary",           "UnequalTernary",     kN26                                              },
    {">=",          "Binary",           "LessOrEqualTernary", kN26                                              },
    {"/\\",         "Binary",           "Minimum",            kN26                                              },
    {"\\/",         "Binary",           "Maximum",            kN26                                              },
    {">",           "Binary",           "LessTernary",        kN26                                              },
    {"=",           "Binary",           "EqualTernary",       "SB SB SB"                                        },
    {"<>",          "Binary",           "UnequalTernary",     "SB SB SB"                                        },
    {">=",          "Binary",           "LessOrEqualTernary", "SB SB SB"                                        },
    {"/\\",         "Binary",           "Minimum",            "SB SB SB"                                        },
    {"\\/",         "Binary",           "Maximum",            "SB SB SB"                                        },
    {"&&",          "Binary",           "Minimum",            "SB SB SB"                                        },
    {"||",          "Binary",           "Maximum",            "SB SB SB"                                        },
    {">",           "Binary",           "LessTernary",        "SB SB SB"                                        },
    {"<=",          "SymBinary",        "LessOrEqualTernary", kN16                                              },
    {"<",           "SymBinary",        "LessTernary",        kN16                                              },
    {"<=",          "SymBinary",        "LessOrEqualTernary", "SB SB SB"                                        },
    {"<",           "SymBinary",        "LessTernary",        "SB SB SB"                                        },
    {"-",           "FirstInverse",     "Addition",           kQuotients                                        },
    {"/",           "FirstInverse",     "Multiplication",     kQuotients                                        },
    {"exp",         "Unary",            "Exponent",           kReals                                            },
    {"exp",         "BufferedUnary",    "Exponent",           kBuffered                                         },
    {"sqrt",        "Unary",            "Sqrt",               kReals                                            },
    {"sqrt",        "BufferedUnary",    "Sqrt",               kBuffered                                         },
    {"sin",         "Unary",            "Sine",               kReals                                            },
    {"sin",         "BufferedUnary",    "Sine",               kBuffered                                         },
    {"cos",         "Unary",            "Cosine",             kReals                                            },
    {"cos",         "BufferedUnary",    "Cosine",             kBuffered                                         },
    {"tan",         "Unary",            "Tangent",            kReals                                            },
    {"tan",         "BufferedUnary",    "Tangent",            kBuffered                                         },
    {"abs",         "Unary",            "Absolute",           kSame                                             },
    {"-",           "Unary",            "NumberNegation",     kSame                                             },
    {"sign",        "InverseUnary",     "Signum",             "SI SI SI; SR SI SR; II II II; IR II IR"          },
    {"next",        "Unary",            "Next",               "SI SI; II II; SR SR; IR IR; SB SB"               },
    {"~",           "Unary",            "BooleanNegation",    "SB SB"                                           },
    {"ln",          "InverseUnary",     "Exponent",           "SR SR SR; IR IR IR; SI SR SR; II IR IR"          },
    {"asin",        "InverseUnary",     "Sine",               kArcs                                             },
    {"acos",        "InverseUnary",     "Cosine",             kArcs                                             },
    {"atan",        "InverseUnary",     "Tangent",            kArcs                                             },
    {"round",       "Unary",            "Round",              kReals                                            },
    {"round",       "BufferedUnary",    "Round",              kBuffered                                         },
    {"floor",       "Unary",            "Floor",              kReals                                            },
    {"floor",       "BufferedUnary",    "Floor",              kBuffered                                         },
    {"ceil",        "Unary",            "Ceil",               kReals                                            },
    {"ceil",        "BufferedUnary",    "Ceil",               kBuffered                                         },
    {"prev",        "InverseUnary",     "Next",               "SI SI SI; II II II; SR SR SR; IR IR IR; SB SB SB"},
    {"Pi",          "Constant",         "PiValue",            "IR"                                              },
    {"E",           "Constant",         "EValue",             "IR"                                              },
    {"(real)",      "Unary",            "Equal",              "SI SR; SI IR; II IR"                             },
    {"(int)",       "InverseUnary",     "Equal",              "SI SR SI; SI IR SI; II IR II"                    },
    {"==",          "SecondInverse",    "BooleanEqual",       kTruths                                           },
    {">>",          "SecondInverse",    "BooleanLess",        kTruths                                           },
    {">==",         "SecondInverse",    "BooleanLessOrEqual", kTruths                                           },
    {"<<>>",        "SecondInverse",    "BooleanUnequal",     kTruths                                           },
    {"<<",          "SecondInverseSym", "BooleanLess",        kTruths                                           },
    {"<==",         "SecondInverseSym", "BooleanLessOrEqual", kTruths                                           },
    {"->",          "SecondInverseSym", "BooleanLessOrEqual", "SB SB SB SB"                                     },
    {"PrimeNumber", "Unary",            "PrimeNumber",        "II SB"                                           },
    {"mod",         "Binary",           "Remainder",          kN26                                              },
};

std::vector<std::string> ExpectedDescriptors() {
  std::vector<std::string> all = {
      "type single bool",   "type single int",        "type interval int",  "type single real",
      "type interval real", "type interval positive", "type interval angle"};
  for (const Row& row : kRows) {
    const bool isOwn = std::string(row.constraint) == "PrimeNumber";
    if (isOwn) all.push_back("constraint PrimeNumber");
    std::istringstream tuples(row.types);
    for (std::string tuple; std::getline(tuples >> std::ws, tuple, ';');)
      all.push_back(
          std::string(row.name) + ' ' + row.shape + ' ' +
          (isOwn ? row.constraint : "ZULTaVo" + std::string(row.constraint) + "Constraint") + ' ' +
          tuple);
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
      {"ZULTaVoReal",    "Real"},
  };
  if (descriptor.GetKind() == ZULTaVoObjectDescriptor::Kind::kType)
    return std::string("type ") + descriptor.GetName();
  if (descriptor.GetKind() == ZULTaVoObjectDescriptor::Kind::kConstraint)
    return std::string("constraint ") + descriptor.GetName();
  const auto& op = static_cast<const ZULTaVoOperatorDescriptor&>(descriptor);
  std::string text =
      std::string(op.GetName()) + ' ' + op.GetShapeName() + ' ' + op.GetConstraint()->GetName();
  for (unsigned int i = 0; i < op.GetNumberOfTypes(); ++i)
    text += ' ' + kLabels.at(op.GetTypes()[i]->GetName());
  return text;
}

TEST(CatalogueTest, RegistersEverythingInOrder) {
  const std::vector<std::string> expected = ExpectedDescriptors();
  const auto& registered = NumbersModule().GetDescriptors();
  ASSERT_EQ(expected.size(), 503U);
  ASSERT_EQ(registered.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i)
    EXPECT_EQ(Describe(*registered[i]), expected[i]) << "at " << i;
}

TEST(CatalogueTest, CountsOfNames) {
  const std::map<std::string, std::size_t> counts = {
      {"=",    27},
      {"<",    17},
      {"-",    20},
      {"next", 5 },
      {"prev", 5 },
      {"^",    16},
      {"==",   15},
      {"mod",  26}
  };
  for (const auto& [name, count] : counts)
    EXPECT_EQ(NumbersModule().FindOperators(name).size(), count) << name;
}

TEST(CatalogueTest, TypesSpecialiseTheAbstractOnes) {
  const std::map<std::string, std::string> bases = {
      {"single bool",       "ZULTaVoBoolean"},
      {"single int",        "ZULTaVoInteger"},
      {"interval int",      "ZULTaVoInteger"},
      {"single real",       "ZULTaVoReal"   },
      {"interval real",     "ZULTaVoReal"   },
      {"interval positive", "interval real" },
      {"interval angle",    "interval real" }
  };
  for (const auto& [name, base] : bases) {
    const ZULTaVoObjectDescriptor* type = NumbersModule().FindType(name);
    ASSERT_NE(type, nullptr) << name;
    EXPECT_STREQ(type->GetBase()->GetName(), base.c_str()) << name;
    EXPECT_EQ(type->GetVersion(), 1);
  }
}

}  // namespace
