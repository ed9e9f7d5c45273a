#include "framework/calculator/detail/Suggestion.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace zultav::detail {

namespace {

// Distances are counted in halves, so that a wrong letter case costs less than a wrong letter.
constexpr std::size_t kEdit = 2;
constexpr std::size_t kCase = 1;
constexpr std::size_t kLongest = 40;  // longer names are hardly mistyped, and costly to compare

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::size_t Replace(char a, char b) { return a == b ? 0 : Lower(a) == Lower(b) ? kCase : kEdit; }

constexpr std::string_view kLogarithm =
    "'ln(x)' is the natural logarithm; to the base 10 it is 'ln(x) / ln(10)'";
constexpr std::string_view kCondition =
    "a condition is an implication of truth values: 'p -> (x == 1)' for 'if', and "
    "'~p -> (x == 2)' for 'else'";
constexpr std::string_view kDeclaration =
    "a variable is declared as 'x : int;' or 'x : real = [0, 1];'";
constexpr std::string_view kConstraint = "a constraint stands by itself: 'x + y <= 10;'";
constexpr std::string_view kOptimum =
    "there is no optimisation: state a bound, such as 'cost <= 100;', and tighten it";

struct ForeignWord {
  std::string_view word;
  bool isKeyword;  // no operator with operands in parentheses
  std::string_view advice;
};
constexpr ForeignWord kForeignWords[] = {
    {"log",           false, kLogarithm                                                            },
    {"log10",         false, kLogarithm                                                            },
    {"log2",          false, kLogarithm                                                            },
    {"pow",           false, "a power is written 'x ^ y'"                                          },
    {"power",         false, "a power is written 'x ^ y'"                                          },
    {"sqr",           false, "a square is written 'x ^ 2'"                                         },
    {"square",        false, "a square is written 'x ^ 2'"                                         },
    {"cbrt",          false, "a root of degree 3 is a solution of 'y ^ 3 = x'"                     },
    {"arcsin",        false, "it is called 'asin'"                                                 },
    {"arccos",        false, "it is called 'acos'"                                                 },
    {"arctan",        false, "it is called 'atan'"                                                 },
    {"all_different", false, "it is called 'alldifferent'"                                         },
    {"mod",           false, "the remainder is written between its operands: 'x mod y'"            },
    {"div",           true,  "the quotient q without remainder r: 'x = y * q + r', r in [0, y - 1]"},
    {"and",           true,  "'and' is written '&&'"                                               },
    {"or",            true,  "'or' is written '||'"                                                },
    {"not",           true,  "'not' is written '~', 'not equal' is written '<>'"                   },
    {"xor",           true,  "'either a or b' is written 'a <<>> b'"                               },
    {"if",            true,  kCondition                                                            },
    {"then",          true,  kCondition                                                            },
    {"else",          true,  kCondition                                                            },
    {"elseif",        true,  kCondition                                                            },
    {"while",         true,  "a loop is written 'for i in 1..n : …;'"                            },
    {"var",           true,  kDeclaration                                                          },
    {"int",           true,  kDeclaration                                                          },
    {"real",          true,  kDeclaration                                                          },
    {"bool",          true,  kDeclaration                                                          },
    {"float",         true,  kDeclaration                                                          },
    {"double",        true,  kDeclaration                                                          },
    {"const",         true,  "a constant is named as 'let n = 8;'"                                 },
    {"constraint",    true,  kConstraint                                                           },
    {"subject",       true,  kConstraint                                                           },
    {"solve",         true,  "the solutions are looked for by 'zultav solve'"                      },
    {"minimize",      true,  kOptimum                                                              },
    {"minimise",      true,  kOptimum                                                              },
    {"maximize",      true,  kOptimum                                                              },
    {"maximise",      true,  kOptimum                                                              },
};

const ForeignWord* FindForeign(std::string_view word) {
  const auto* found = std::find_if(std::begin(kForeignWords), std::end(kForeignWords),
                                   [word](const ForeignWord& row) { return row.word == word; });
  return found != std::end(kForeignWords) ? found : nullptr;
}

std::size_t Distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> before;
  std::vector<std::size_t> above(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) above[j] = j * kEdit;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = i * kEdit;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      row[j] = std::min(
          {above[j] + kEdit, row[j - 1] + kEdit, above[j - 1] + Replace(a[i - 1], b[j - 1])});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
        row[j] = std::min(row[j], before[j - 2] + kEdit);
    }
    before = above;
    std::swap(above, row);
  }
  return above.back();
}

}  // namespace

Suggestion::Suggestion(std::string_view unknown)
    : mUnknown(unknown), mLeast((unknown.size() + 2) / 3 * kEdit + 1) {}

void Suggestion::Offer(std::string_view candidate) {
  const std::size_t shorter = std::min(mUnknown.size(), candidate.size());
  const std::size_t longer = std::max(mUnknown.size(), candidate.size());
  if (longer > kLongest || (longer - shorter) * kEdit >= mLeast || candidate == mUnknown) return;
  const std::size_t distance = Distance(mUnknown, candidate);
  if (distance >= mLeast) return;
  mLeast = distance;
  mBest = candidate;
}

std::string_view AdviceFor(std::string_view word) {
  const ForeignWord* foreign = FindForeign(word);
  return foreign != nullptr ? foreign->advice : std::string_view();
}

std::string_view AdviceForKeyword(std::string_view word) {
  const ForeignWord* foreign = FindForeign(word);
  return foreign != nullptr && foreign->isKeyword ? foreign->advice : std::string_view();
}

}  // namespace zultav::detail
