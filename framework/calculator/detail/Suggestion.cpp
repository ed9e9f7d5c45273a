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
    "a condition is written 'if p then x = 1; else x = 2;', or 'y = if p then 1 else 2;'";
constexpr std::string_view kDeclaration =
    "a variable is declared as 'x : int;' or 'x : real = [0, 1];'";
constexpr std::string_view kPower = "a power is written 'x ^ y'";
constexpr std::string_view kSquare = "a square is written 'x ^ 2'";
constexpr std::string_view kChange = "a variable has one value in a solution: nothing changes it";
constexpr std::string_view kInclusion = "another file is read by 'include \"file.zul\";'";
constexpr std::string_view kShowing = "what solutions print is stated by 'show \"x is \", x;'";
constexpr std::string_view kOptimum =
    "what is optimised is stated by 'minimize cost;' or 'maximize gain;'";

/// Where a word makes itself felt: where it stands, or also further on in its statement, or so when
/// it is the first word of one.
enum class Place { kHere, kBefore, kFirst };

constexpr struct {
  std::string_view word;
  Place place;
  std::string_view advice;
} kForeignWords[] = {
    {"log",           Place::kHere,   kLogarithm                                                   },
    {"log10",         Place::kHere,   kLogarithm                                                   },
    {"log2",          Place::kHere,   kLogarithm                                                   },
    {"pow",           Place::kHere,   kPower                                                       },
    {"power",         Place::kHere,   kPower                                                       },
    {"**",            Place::kHere,   kPower                                                       },
    {"sqr",           Place::kHere,   kSquare                                                      },
    {"square",        Place::kHere,   kSquare                                                      },
    {"cbrt",          Place::kHere,   "a cubic root y of x solves 'y ^ 3 = x'"                     },
    {"arcsin",        Place::kHere,   "it is called 'asin'"                                        },
    {"arccos",        Place::kHere,   "it is called 'acos'"                                        },
    {"arctan",        Place::kHere,   "it is called 'atan'"                                        },
    {"all_different", Place::kHere,   "it is called 'alldifferent'"                                },
    {"mod",           Place::kHere,   "the remainder is written between its operands: 'x mod y'"   },
    {"..",            Place::kHere,   "an interval is written '[0, 10]'"                           },
    {"in",            Place::kHere,   "a set is written 'x in 2..4' or 'x in {1, 3, 5..9}'"        },
    {"=<",            Place::kHere,   "'at most' is written '<='"                                  },
    {"=>",            Place::kHere,   "'at least' is written '>=', 'implies' is written '->'"      },
    {":=",            Place::kHere,   "that x is 3 is stated by 'x = 3;'"                          },
    {"++",            Place::kHere,   kChange                                                      },
    {"+=",            Place::kHere,   kChange                                                      },
    {"-=",            Place::kHere,   kChange                                                      },
    {"and",           Place::kBefore, "'and' is written '&&'"                                      },
    {"or",            Place::kBefore, "'or' is written '||'"                                       },
    {"not",           Place::kBefore, "'not' is written '~', 'not equal' is written '<>'"          },
    {"div",           Place::kBefore, "a quotient q with remainder r is stated by 'x = y * q + r'" },
    {"if",            Place::kBefore, kCondition                                                   },
    {"then",          Place::kBefore, kCondition                                                   },
    {"else",          Place::kBefore, kCondition                                                   },
    {"while",         Place::kFirst,  "a loop is written 'for i in 1..n : …;'"                   },
    {"var",           Place::kFirst,  kDeclaration                                                 },
    {"int",           Place::kFirst,  kDeclaration                                                 },
    {"integer",       Place::kFirst,  kDeclaration                                                 },
    {"real",          Place::kFirst,  kDeclaration                                                 },
    {"float",         Place::kFirst,  kDeclaration                                                 },
    {"double",        Place::kFirst,  kDeclaration                                                 },
    {"number",        Place::kFirst,  kDeclaration                                                 },
    {"bool",          Place::kFirst,  kDeclaration                                                 },
    {"boolean",       Place::kFirst,  kDeclaration                                                 },
    {"const",         Place::kFirst,  "a constant is named by 'let n = 8;'"                        },
    {"constraint",    Place::kFirst,  "a constraint stands by itself: 'x + y <= 10;'"              },
    {"include",       Place::kFirst,  kInclusion                                                   },
    {"import",        Place::kFirst,  kInclusion                                                   },
    {"show",          Place::kHere,   "what is shown begins with a text: 'show \"\", (x + y) / 2;'"},
    {"print",         Place::kHere,   kShowing                                                     },
    {"output",        Place::kFirst,  kShowing                                                     },
    {"solve",         Place::kFirst,  "solutions are looked for by the command 'zultav solve'"     },
    {"minimize",      Place::kFirst,  kOptimum                                                     },
    {"minimise",      Place::kFirst,  kOptimum                                                     },
    {"maximize",      Place::kFirst,  kOptimum                                                     },
    {"maximise",      Place::kFirst,  kOptimum                                                     },
};

/// The advice on a word that does harm at one of the places from `least` to `most`.
std::string_view FindAdvice(std::string_view word, Place least, Place most) {
  for (const auto& row : kForeignWords)
    if (row.word == word && row.place >= least && row.place <= most) return row.advice;
  return {};
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
    : mUnknown(unknown),
      mLeast(unknown.size() > 1 ? (unknown.size() + 2) / 3 * kEdit + 1 : kEdit) {}

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
  return FindAdvice(word, Place::kHere, Place::kFirst);
}

std::string_view AdviceForEarlier(std::string_view word, bool isFirst) {
  return FindAdvice(word, Place::kBefore, isFirst ? Place::kFirst : Place::kBefore);
}

}  // namespace zultav::detail
