// Each propagator against all combinations of small domains.

#include "relations/Relations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "tests/relations/propagator_harness.h"
#include "tests/search/search_world.h"

namespace zultav::relations {
namespace {

using Row = std::span<const std::int64_t>;

std::vector<Variable> DrawList(Draw& draw, std::size_t size, std::int64_t least,
                               std::int64_t greatest, Strength strength) {
  std::vector<Variable> list(size);
  for (Variable& x : list) x = {draw.Set(least, greatest, 4), strength};
  return list;
}

// --- Orders and differences ---------------------------------------------------------------------

std::vector<Variable> operator+(std::vector<Variable> first, const std::vector<Variable>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

template <bool Strictly>
Instance DrawIncreasing(Draw& draw) {
  const std::int64_t base = draw.Base();
  const std::size_t size = draw.Size(1, 5);
  return Instance{DrawList(draw, size, base, base + 7, Strength::kDomain),
                  [](Row x) {
                    return std::ranges::adjacent_find(x, [](std::int64_t a, std::int64_t b) {
                             return Strictly ? a >= b : a > b;
                           }) == x.end();
                  },
                  Call(Strictly ? DescribeStrictlyIncreasing : DescribeIncreasing).Values(size)};
}

template <bool Strictly>
Instance DrawLexicographic(Draw& draw) {
  const std::int64_t base = draw.Base();
  const std::size_t first = draw.Size(1, 3), second = draw.Size(1, 3);
  return Instance{
      DrawList(draw, first + second, base, base + 4, Strength::kDomain),
      [=](Row x) {
        const Row a = x.first(first), b = x.subspan(first);
        return Strictly ? std::ranges::lexicographical_compare(a, b)
                        : !std::ranges::lexicographical_compare(b, a);
      },
      Call(Strictly ? DescribeLexLess : DescribeLexLesseq).Values(first).Values(second)};
}

Instance DrawAllDifferentValues(Draw& draw) {
  const std::int64_t base = draw.Base();
  const std::size_t size = draw.Size(1, 6);
  return Instance{
      DrawList(draw, size, base, base + draw.Between(3, 12), Strength::kDomain),
      [](Row x) { return std::set<std::int64_t>(x.begin(), x.end()).size() == x.size(); },
      Call(DescribeAllDifferentValues).Values(size)};
}

// --- Tasks --------------------------------------------------------------------------------------

/// Whether a task is over at a time not before its start, exactly.
bool IsOver(std::int64_t start, std::int64_t duration, std::int64_t time) {
  return static_cast<std::uint64_t>(time) - static_cast<std::uint64_t>(start) >=
         static_cast<std::uint64_t>(duration);
}
bool AreApart(std::int64_t a, std::int64_t aLength, std::int64_t b, std::int64_t bLength) {
  return a <= b ? IsOver(a, aLength, b) : IsOver(b, bLength, a);
}
bool HasNegative(Row x) {
  return std::ranges::any_of(x, [](std::int64_t y) { return y < 0; });
}

/// Durations, needs and the like, most of them fixed.
std::vector<Variable> DrawAmounts(Draw& draw, std::size_t size) {
  const std::int64_t least = draw.Chance(10) ? -1 : 0;
  const std::size_t most = draw.Chance(size > 5 ? 90 : 60) ? 1 : 2;
  std::vector<Variable> amounts(size);
  for (Variable& x : amounts) x = {draw.Set(least, 4, most)};
  return amounts;
}

template <bool AreOptional>
Instance DrawDisjunctive(Draw& draw) {
  const std::int64_t base = draw.Base();
  const std::size_t size = draw.Size(1, AreOptional ? 3 : 4);
  std::vector<Variable> variables =
      DrawList(draw, size, base, base + 8, Strength::kSound) + DrawAmounts(draw, size);
  Call call = Call(AreOptional ? DescribeDisjunctiveOptional : DescribeDisjunctive)
                  .Values(size)
                  .Values(size);
  if (AreOptional) {
    call.Values(size);
    for (std::size_t i = 0; i < size; ++i)
      variables.push_back({draw.Set(0, 1, 2), Strength::kSound, false, true});
  }
  return Instance{
      variables,
      [=](Row x) {
        const auto takesTime = [&](std::size_t i) {
          return x[size + i] > 0 && !(AreOptional && x[2 * size + i] == 0);
        };
        for (std::size_t i = 0; i < size; ++i)
          for (std::size_t j = 0; j < i; ++j)
            if (takesTime(i) && takesTime(j) && !AreApart(x[i], x[size + i], x[j], x[size + j]))
              return false;
        return !HasNegative(x.subspan(size, size));
      },
      call};
}

Instance DrawCumulative(Draw& draw) {
  const std::int64_t base = draw.Base();
  const std::size_t size = draw.Size(1, 3);
  return Instance{
      DrawList(draw, size, base, base + 6, Strength::kSound) + DrawAmounts(draw, 2 * size + 1),
      [=](Row x) {
        if (HasNegative(x.subspan(size))) return false;
        for (std::size_t i = 0; i < size; ++i) {
          std::int64_t needs = 0;
          for (std::size_t j = 0; j < size; ++j)
            if (x[j] <= x[i] && !IsOver(x[j], x[size + j], x[i])) needs += x[2 * size + j];
          if (needs > x[3 * size]) return false;
        }
        return true;
      },
      Call(DescribeCumulative).Values(size).Values(size).Values(size).Values(1)};
}

Instance DrawDiffn(Draw& draw) {
  const std::int64_t left = draw.Base(), bottom = draw.Base();
  const std::size_t size = draw.Size(1, 3);
  return Instance{DrawList(draw, size, left, left + 3, Strength::kSound) +
                      DrawList(draw, size, bottom, bottom + 3, Strength::kSound) +
                      DrawAmounts(draw, 2 * size),
                  [=](Row x) {
                    const Row width = x.subspan(2 * size), height = x.subspan(3 * size);
                    for (std::size_t i = 0; i < size; ++i)
                      for (std::size_t j = 0; j < i; ++j)
                        if (std::min({width[i], width[j], height[i], height[j]}) > 0 &&
                            !AreApart(x[i], width[i], x[j], width[j]) &&
                            !AreApart(x[size + i], height[i], x[size + j], height[j]))
                          return false;
                    return !HasNegative(width);
                  },
                  Call(DescribeDiffn).Values(size).Values(size).Values(size).Values(size)};
}

const RelationCase kRelations[] = {
    {"alldifferent_values",  DrawAllDifferentValues  },
    {"cumulative",           DrawCumulative          },
    {"diffn",                DrawDiffn               },
    {"disjunctive",          DrawDisjunctive<false>  },
    {"disjunctive_optional", DrawDisjunctive<true>   },
    {"increasing",           DrawIncreasing<false>   },
    {"lex_less",             DrawLexicographic<true> },
    {"lex_lesseq",           DrawLexicographic<false>},
    {"strictly_increasing",  DrawIncreasing<true>    },
};

class RelationTest : public testing::TestWithParam<RelationCase> {};

TEST_P(RelationTest, AgreesWithAllCombinations) { CheckRelation(GetParam()); }

INSTANTIATE_TEST_SUITE_P(Relations, RelationTest, testing::ValuesIn(kRelations),
                         [](const auto& row) { return row.param.name; });

// --- In models --------------------------------------------------------------------------------

struct CallCase {
  const char* text;
  bool (*holds)(Row x);
};
const CallCase kCalls[] = {
    {"alldifferent_values(x)",                             [](Row x) { return std::set(x.begin(), x.end()).size() == 4; }},
    {"increasing(x)",                                      [](Row x) { return std::ranges::is_sorted(x); }               },
    {"lex_less(x[1..2], [x[3], x[4]])",
     [](Row x) { return std::ranges::lexicographical_compare(x.first(2), x.last(2)); }                                   },
    {"lex_lesseq(x[1..2], x[3..4])",
     [](Row x) { return !std::ranges::lexicographical_compare(x.last(2), x.first(2)); }                                  },
    {"disjunctive(x[1..2], [2, x[3]], [x[4] >> 1, true])",
     [](Row x) { return x[3] <= 1 || x[2] == 0 || AreApart(x[0], 2, x[1], x[2]); }                                       },
    {"cumulative(x[1..3], [2, 1, 1], [1, 1, x[4]], 2)",
     [](Row x) {
       const auto during = [](std::int64_t time, std::int64_t start) { return time == start; };
       for (std::int64_t time = 0; time < 5; ++time)
         if (during(time, x[0]) + during(time, x[0] + 1) + during(time, x[1]) +
                 during(time, x[2]) * x[3] >
             2)
           return false;
       return true;
     }                                                                                                                   },
    {"diffn(x[1..2], x[3..4], [2, 1], [1, 2])",
     [](Row x) { return AreApart(x[0], 2, x[1], 1) || AreApart(x[2], 1, x[3], 2); }                                      },
};

/// Stated, denied, and as a truth that something else decides, beside the first module's operators.
TEST(RelationsTest, AreTruthsInModels) {
  for (const CallCase& call : kCalls) {
    Solutions expected;
    for (int i = 0; i < 512; ++i) {
      const Values x = {i >> 7, i >> 5 & 3, i >> 3 & 3, i >> 1 & 3};
      const bool p = (i & 1) != 0;
      if (call.holds(x) == p && x[0] * x[1] <= x[2] + x[3] && (!p || x[3] >= 1))
        expected.push_back({double(x[0]), double(x[1]), double(x[2]), double(x[3]), double(p)});
    }
    const std::string rest = "x[1] * x[2] <= x[3] + x[4]; p -> (x[4] >== 1);";
    const std::string variables = "x[1..4] : int = [0, 3]; p : bool; ";
    for (std::uint64_t seed = 0; seed < 12; ++seed)
      EXPECT_EQ(WrongSolutions(variables + "p == " + call.text + "; " + rest, seed, expected), "")
          << call.text;
    for (const bool p : {false, true}) {
      Solutions part;
      std::ranges::copy_if(expected, std::back_inserter(part),
                           [&](const auto& values) { return (values[4] != 0) == p; });
      const std::string stated =
          p ? "p; " + std::string(call.text) : "~p; ~" + std::string(call.text);
      EXPECT_EQ(WrongSolutions(variables + stated + "; " + rest, 1, part), "") << stated;
    }
  }
}

}  // namespace
}  // namespace zultav::relations
