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

// --- Lists and tables ---------------------------------------------------------------------------

Values DrawValues(Draw& draw, std::size_t size, std::int64_t least, std::int64_t greatest) {
  Values values(size);
  for (std::int64_t& value : values) value = draw.Between(least, greatest);
  return values;
}

std::int64_t DrawFirst(Draw& draw) { return draw.Between(0, 1); }

Instance DrawElement(Draw& draw) {
  const std::int64_t base = draw.Base(), first = DrawFirst(draw);
  const Values list = DrawValues(draw, draw.Size(1, 8), base, base + 7);
  const auto size = static_cast<std::int64_t>(list.size());
  std::vector<Variable> variables = DrawList(draw, 2, base, base + 7, Strength::kDomain);
  variables[1].values = draw.Set(-1, size + 1, 9);
  return Instance{variables,
                  [=](Row x) {
                    const std::int64_t i = x[1] - first;
                    return i >= 0 && i < size && list[static_cast<std::size_t>(i)] == x[0];
                  },
                  Call(DescribeElement).Values(1).Values(1).Known(list, 1, first)};
}

Instance DrawElementOfIntegers(Draw& draw) {
  const std::int64_t base = draw.Base(), first = DrawFirst(draw);
  const auto size = draw.Between(1, 3);
  std::vector<Variable> variables =
      DrawList(draw, static_cast<std::size_t>(size) + 2, base, base + 6, Strength::kBounds);
  variables[1] = {draw.Set(-1, size + 1, 9), Strength::kDomain};
  return Instance{
      variables,
      [=](Row x) {
        const std::int64_t i = x[1] - first;
        return i >= 0 && i < size && x[static_cast<std::size_t>(i + 2)] == x[0];
      },
      Call(DescribeElement).Values(1).Values(1).Values(static_cast<std::size_t>(size), first)};
}

Instance DrawElementOfReals(Draw& draw) {
  const auto size = draw.Between(1, 3);
  std::vector<Variable> variables =
      DrawList(draw, static_cast<std::size_t>(size) + 2, 0, 5, Strength::kSound);
  for (Variable& x : variables) x.isReal = true;
  variables[1] = {draw.Set(1, size, 9)};
  return Instance{variables, [=](Row x) { return x[static_cast<std::size_t>(x[1] + 1)] == x[0]; },
                  Call(DescribeElement)
                      .Values(1, 1, true)
                      .Values(1)
                      .Values(static_cast<std::size_t>(size), 1, true)};
}

Instance DrawElementOfRealConstants(Draw& draw) {
  const Values list = DrawValues(draw, draw.Size(1, 6), 0, 9);
  std::vector<double> pairs;
  for (const std::int64_t value : list) pairs.insert(pairs.end(), 2, static_cast<double>(value));
  std::vector<Variable> variables = DrawList(draw, 2, 0, 9, Strength::kDomain);
  variables[0] = {
      {0, 1, 2, 3, 4, 5, 6, 7, 8, 9},
      Strength::kBounds, true
  };
  variables[1].values = draw.Set(1, static_cast<std::int64_t>(list.size()), 9);
  return Instance{variables,
                  [=](Row x) { return list[static_cast<std::size_t>(x[1] - 1)] == x[0]; },
                  Call(DescribeElement).Values(1, 1, true).Values(1).KnownReals(pairs)};
}

Instance DrawAmong(Draw& draw) {
  const std::int64_t base = draw.Base();
  const std::size_t size = draw.Size(1, 4);
  const Values values = draw.Set(base, base + 7, 5);
  std::vector<Variable> variables = DrawList(draw, size + 1, base, base + 7, Strength::kDomain);
  variables[0] = {draw.Set(-1, static_cast<std::int64_t>(size), 3), Strength::kBounds};
  return Instance{variables,
                  [=](Row x) {
                    return x[0] == std::ranges::count_if(x.subspan(1), [&](std::int64_t value) {
                             return std::ranges::binary_search(values, value);
                           });
                  },
                  Call(DescribeAmong).Values(1).Values(size).Known(values)};
}

Instance DrawCount(Draw& draw) {
  const std::int64_t base = draw.Base();
  const std::size_t size = draw.Size(1, 4);
  const bool isKnown = draw.Chance(40);
  std::vector<Variable> variables =
      DrawList(draw, size + 2, base, base + 5, isKnown ? Strength::kDomain : Strength::kSound);
  variables.front() = {draw.Set(-1, static_cast<std::int64_t>(size), 3), Strength::kBounds};
  variables.back() = {isKnown ? Values{base + 1} : draw.Set(base, base + 5, 3), Strength::kDomain};
  return Instance{variables,
                  [=](Row x) { return x[0] == std::ranges::count(x.subspan(1, size), x.back()); },
                  Call(DescribeCount).Values(1).Values(size).Values(1)};
}

Instance DrawNumberOfValues(Draw& draw) {
  const std::int64_t base = draw.Base();
  const std::size_t size = draw.Size(1, 4);
  std::vector<Variable> variables = DrawList(draw, size + 1, base, base + 5, Strength::kSound);
  variables[0] = {draw.Set(0, static_cast<std::int64_t>(size), 3)};
  return Instance{variables,
                  [](Row x) {
                    return x[0] == static_cast<std::int64_t>(
                                       std::set<std::int64_t>(x.begin() + 1, x.end()).size());
                  },
                  Call(DescribeNumberOfValues).Values(1).Values(size)};
}

Instance DrawInverse(Draw& draw) {
  const std::size_t size = draw.Size(1, 4);
  const std::int64_t firstOfX = DrawFirst(draw), firstOfY = DrawFirst(draw);
  const auto last = static_cast<std::int64_t>(size);
  return Instance{
      DrawList(draw, 2 * size, 0, last, Strength::kSound),
      [=](Row x) {
        for (std::size_t i = 0; i < size; ++i) {
          const std::int64_t y = x[i] - firstOfY;
          if (y < 0 || y >= last ||
              x[size + static_cast<std::size_t>(y)] != firstOfX + static_cast<std::int64_t>(i))
            return false;
        }
        return true;
      },
      Call(DescribeInverse).Values(size, firstOfX).Values(size, firstOfY)};
}

template <bool isPartial>
Instance DrawCircuit(Draw& draw) {
  const std::size_t size = draw.Size(1, 5);
  const std::int64_t first = DrawFirst(draw);
  return Instance{DrawList(draw, size, 0, static_cast<std::int64_t>(size), Strength::kSound),
                  [=](Row x) {
                    std::size_t start = 0, length = 0;
                    std::vector<bool> isTaken(size);
                    for (std::size_t i = 0; i < size; ++i) {
                      const auto next = static_cast<std::size_t>(x[i] - first);
                      if (next >= size || isTaken[next]) return false;
                      isTaken[next] = true;
                      if (next != i || !isPartial) {
                        start = i;
                        ++length;
                      }
                    }
                    for (std::size_t i = start; length > 0; --length) {
                      i = static_cast<std::size_t>(x[i] - first);
                      if (i == start) return length == 1;
                    }
                    return true;
                  },
                  Call(isPartial ? DescribeSubcircuit : DescribeCircuit).Values(size, first)};
}

Instance DrawRegular(Draw& draw) {
  const std::size_t size = draw.Size(1, 4), states = draw.Chance(20) ? 70 : draw.Size(1, 4);
  const std::size_t values = draw.Size(1, 3);
  Values transitions = DrawValues(draw, states * values, 0, static_cast<std::int64_t>(states));
  const std::int64_t start = draw.Between(1, static_cast<std::int64_t>(states));
  const Values accepting = draw.Set(1, static_cast<std::int64_t>(states), states / 2 + 1);
  return Instance{DrawList(draw, size, 0, 4, Strength::kDomain),
                  [=](Row x) {
                    std::int64_t state = start;
                    for (const std::int64_t value : x) {
                      if (value < 1 || value > static_cast<std::int64_t>(values)) return false;
                      state = transitions[static_cast<std::size_t>(state - 1) * values +
                                          static_cast<std::size_t>(value - 1)];
                      if (state == 0) return false;
                    }
                    return std::ranges::binary_search(accepting, state);
                  },
                  Call(DescribeRegular)
                      .Values(size)
                      .Known(transitions, states)
                      .Known({start})
                      .Known(accepting)};
}

Instance DrawPrecedence(Draw& draw) {
  const std::int64_t base = draw.Base();
  const std::size_t size = draw.Size(1, 5);
  return Instance{DrawList(draw, size, base, base + 3, Strength::kDomain),
                  [=](Row x) {
                    const auto first = std::ranges::find(x, base + 3);
                    return std::find(x.begin(), first, base + 1) == first;
                  },
                  Call(DescribePrecedence).Known({base + 3}).Known({base + 1}).Values(size)};
}

Instance DrawIndexOfExtreme(Draw& draw, bool isReal, bool isLeast) {
  const std::int64_t base = isReal ? 0 : draw.Base(), first = DrawFirst(draw);
  const std::size_t size = draw.Size(1, 4);
  std::vector<Variable> variables =
      DrawList(draw, size + 1, base, base + 6, isReal ? Strength::kSound : Strength::kBounds);
  for (Variable& x : variables) x.isReal = isReal;
  variables[0] = {draw.Set(0, static_cast<std::int64_t>(size), 5),
                  isReal ? Strength::kSound : Strength::kDomain};
  return Instance{variables,
                  [=](Row x) {
                    const Row list = x.subspan(1);
                    const auto found =
                        isLeast ? std::ranges::min_element(list) : std::ranges::max_element(list);
                    return x[0] - first == found - list.begin();
                  },
                  Call(isLeast ? DescribeIndexOfMinimum : DescribeIndexOfMaximum)
                      .Values(1)
                      .Values(size, first, isReal)};
}

template <bool isReal>
Instance DrawIndexOfMinimum(Draw& draw) {
  return DrawIndexOfExtreme(draw, isReal, true);
}
template <bool isReal>
Instance DrawIndexOfMaximum(Draw& draw) {
  return DrawIndexOfExtreme(draw, isReal, false);
}

template <bool isNegative>
Instance DrawTable(Draw& draw) {
  const std::int64_t base = draw.Base();
  const std::size_t columns = draw.Size(1, 4), rows = draw.Chance(10) ? 150 : draw.Size(1, 12);
  const bool hasStars = draw.Chance(40);
  Values numbers = DrawValues(draw, rows * columns, base, base + 3);
  for (std::int64_t& number : numbers)
    if (hasStars && draw.Chance(20)) number = ZULTaVoRelationArgument::kAnything;
  return Instance{
      DrawList(draw, columns, base, base + 4,
               isNegative && hasStars ? Strength::kSound : Strength::kDomain),
      [=](Row x) {
        bool isListed = false;
        for (std::size_t row = 0; row < rows; ++row) {
          bool isSame = true;
          for (std::size_t i = 0; i < columns; ++i) {
            const std::int64_t number = numbers[row * columns + i];
            isSame = isSame && (number == ZULTaVoRelationArgument::kAnything || number == x[i]);
          }
          isListed = isListed || isSame;
        }
        return isListed != isNegative;
      },
      Call(isNegative ? DescribeNoneOfTable : DescribeTable).Values(columns).Known(numbers, rows)};
}

Instance DrawRealTable(Draw& draw) {
  const std::size_t rows = draw.Size(1, 6);
  const Values numbers = DrawValues(draw, rows * 2, 0, 5);
  std::vector<double> pairs;
  for (const std::int64_t number : numbers)
    pairs.insert(pairs.end(), 2, static_cast<double>(number));
  std::vector<Variable> list(2, {
                                    {0, 1, 2, 3, 4, 5},
                                    Strength::kBounds, true
  });
  return Instance{list,
                  [=](Row x) {
                    for (std::size_t row = 0; row < rows; ++row)
                      if (std::ranges::equal(x, Row(numbers).subspan(2 * row, 2))) return true;
                    return false;
                  },
                  Call(DescribeTable).Values(2, 1, true).KnownReals(pairs, rows)};
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
    {"table",                     DrawTable<false>          },
    {"not_table",                 DrawTable<true>           },
    {"table_of_reals",            DrawRealTable             },
    {"element",                   DrawElement               },
    {"element_of_integers",       DrawElementOfIntegers     },
    {"element_of_reals",          DrawElementOfReals        },
    {"element_of_real_constants", DrawElementOfRealConstants},
    {"among",                     DrawAmong                 },
    {"count",                     DrawCount                 },
    {"number_of_values",          DrawNumberOfValues        },
    {"inverse",                   DrawInverse               },
    {"circuit",                   DrawCircuit<false>        },
    {"subcircuit",                DrawCircuit<true>         },
    {"regular",                   DrawRegular               },
    {"precedence",                DrawPrecedence            },
    {"index_of_minimum",          DrawIndexOfMinimum<false> },
    {"index_of_maximum",          DrawIndexOfMaximum<false> },
    {"index_of_minimum_of_reals", DrawIndexOfMinimum<true>  },
    {"index_of_maximum_of_reals", DrawIndexOfMaximum<true>  },
    {"alldifferent_values",       DrawAllDifferentValues    },
    {"cumulative",                DrawCumulative            },
    {"diffn",                     DrawDiffn                 },
    {"disjunctive",               DrawDisjunctive<false>    },
    {"disjunctive_optional",      DrawDisjunctive<true>     },
    {"increasing",                DrawIncreasing<false>     },
    {"lex_less",                  DrawLexicographic<true>   },
    {"lex_lesseq",                DrawLexicographic<false>  },
    {"strictly_increasing",       DrawIncreasing<true>      },
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
CallCase Means(const char* text, bool (*holds)(Row x)) { return {text, holds}; }

std::size_t Place(std::int64_t index) { return static_cast<std::size_t>(index); }

const CallCase kCalls[] = {
    Means("alldifferent_values(x)", [](Row x) { return std::set(x.begin(), x.end()).size() == 4; }),
    Means("increasing(x)", [](Row x) { return std::ranges::is_sorted(x); }),
    Means("lex_less(x[1..2], [x[3], x[4]])",
          [](Row x) { return std::ranges::lexicographical_compare(x.first(2), x.last(2)); }),
    Means("lex_lesseq(x[1..2], x[3..4])",
          [](Row x) { return !std::ranges::lexicographical_compare(x.last(2), x.first(2)); }),
    Means("lex_lesseq([], [])", [](Row) { return true; }),
    Means("disjunctive(x[1..2], [2, x[3]], [x[4] >> 1, true])",
          [](Row x) { return x[3] <= 1 || x[2] == 0 || AreApart(x[0], 2, x[1], x[2]); }),
    Means("cumulative(x[1..3], [2, 1, 1], [1, 1, x[4]], 2)",
          [](Row x) {
            const auto during = [](std::int64_t time, std::int64_t start) { return time == start; };
            for (std::int64_t time = 0; time < 5; ++time)
              if (during(time, x[0]) + during(time, x[0] + 1) + during(time, x[1]) +
                      during(time, x[2]) * x[3] >
                  2)
                return false;
            return true;
          }),
    Means("table(x[1..3], [[0, *, 1], [3, 2, *], [1, 1, 3]])",
          [](Row x) {
            return (x[0] == 0 && x[2] == 1) || (x[0] == 3 && x[1] == 2) ||
                   std::ranges::equal(x.first(3), Values{1, 1, 3});
          }),
    Means("not_table(x, [[0, *, 1, *], [3, 2, *, *]])",
          [](Row x) { return !(x[0] == 0 && x[2] == 1) && !(x[0] == 3 && x[1] == 2); }),
    Means("table([x[1], real(x[2])], [[0, 1.5], [1, 2.0], [*, 3.0]])",
          [](Row x) { return x[1] == 3 || (x[0] == 1 && x[1] == 2); }),
    Means("maximum_index([real(x[1]), 1.5, x[2]]) == x[3]",
          [](Row x) {
            return x[2] == (x[0] > 1 && x[0] >= x[1] ? 1 : x[1] > 1 ? 3 : 2);
          }),
    Means("element(x[1] + 1, [2, 0, 1, 3]) == x[2]",
          [](Row x) {
            return x[1] == (x[0] == 0 ? 2 : x[0] == 3 ? 3 : x[0] - 1);
          }),
    Means("element(4 - x[4], x) == x[2]",
          [](Row x) { return x[static_cast<std::size_t>(3 - x[3])] == x[1]; }),
    Means("count(x, 1) >== 2", [](Row x) { return std::ranges::count(x, 1) >= 2; }),
    Means("count([x[2], x[3], 0], x[1]) == x[4]",
          [](Row x) { return (x[1] == x[0]) + (x[2] == x[0]) + (x[0] == 0) == x[3]; }),
    Means("among(x[1..3], {0, 2..3}) == x[4]",
          [](Row x) { return std::ranges::count(x.first(3), 1) == 3 - x[3]; }),
    Means("nvalues(x) == 2", [](Row x) { return std::set(x.begin(), x.end()).size() == 2; }),
    Means("inverse(x[1..2], x[3..4])",
          [](Row x) {
            return (x[0] == 1 && x[1] == 2 && x[2] == 1 && x[3] == 2) ||
                   (x[0] == 2 && x[1] == 1 && x[2] == 2 && x[3] == 1);
          }),
    Means("circuit(x[1..3])",
          [](Row x) {
            return (x[0] == 2 && x[1] == 3 && x[2] == 1) || (x[0] == 3 && x[1] == 1 && x[2] == 2);
          }),
    Means("subcircuit([x[1], x[2], 3])",
          [](Row x) { return (x[0] == 1 && x[1] == 2) || (x[0] == 2 && x[1] == 1); }),
    Means("regular(x, [[1, 2, 0], [2, 0, 1]], 1, {2})",
          [](Row x) {
            const std::size_t next[3][4] = {
                { },
                {  0, 1, 2, 0},
                { 0, 2, 0, 1}
            };
            std::size_t state = 1;
            for (const std::int64_t value : x) state = next[state][value];
            return state == 2;
          }),
    Means("value_precede(2, 0, x)",
          [](Row x) {
            const auto first = std::ranges::find(x, 0);
            return first == x.end() || std::find(x.begin(), first, 2) != first;
          }),
    Means("minimum_index(x) == x[4]",
          [](Row x) { return x[3] == std::ranges::min_element(x) - x.begin() + 1; }),
    Means("maximum_index([x[1], 1, x[2]]) == x[3]",
          [](Row x) {
            return x[2] == (x[0] >= std::max<std::int64_t>(1, x[1]) ? 1 : x[1] > 1 ? 3 : 2);
          }),
    Means("a[x[1]] == x[4 - x[2]]",
          [](Row x) {
            return Values{2, 0, 1, 3}[Place(x[0])] == x[Place(3 - x[1])];
          }),
    Means("m[x[1], x[2]] == x[3]", [](Row x) { return (x[0] * x[1] + x[0]) % 4 == x[2]; }),
    Means("sum(m[x[1], ..]) >== m[2, x[2]] + max(m[5 - x[3] - 2, {0, 3}])",
          [](Row x) {
            const auto m = [](std::int64_t i, std::int64_t j) { return (i * j + i) % 4; };
            return m(x[0], 0) + m(x[0], 1) + m(x[0], 2) + m(x[0], 3) >=
                   m(2, x[1]) + std::max(m(3 - x[2], 0), m(3 - x[2], 3));
          }),
    Means("t[x[1]] -> (a[x[2]] == x[3])",
          [](Row x) {
            return x[0] == 1 || Values{2, 0, 1, 3}[Place(x[1])] == x[2];
          }),
    Means("diffn(x[1..2], x[3..4], [2, 1], [1, 2])",
          [](Row x) { return AreApart(x[0], 2, x[1], 1) || AreApart(x[2], 1, x[3], 2); }),
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
    const std::string variables =
        "x[1..4] : int = [0, 3]; p : bool; let a[0..3] = [2, 0, 1, 3];"
        "let m[0..3, 0..3] = [[0, 0, 0, 0], [1, 2, 3, 0], [2, 0, 2, 0], [3, 2, 1, 0]];"
        "let t[0..3] = [true, false, true, true];";
    for (std::uint64_t seed = 0; seed < 12; ++seed)
      EXPECT_EQ(WrongSolutions(variables + "p == (" + call.text + "); " + rest, seed, expected), "")
          << call.text;
    for (const bool p : {false, true}) {
      Solutions part;
      std::ranges::copy_if(expected, std::back_inserter(part),
                           [&](const auto& values) { return (values[4] != 0) == p; });
      const std::string stated =
          p ? "p; " + std::string(call.text) : "~p; ~(" + std::string(call.text) + ")";
      EXPECT_EQ(WrongSolutions(variables + stated + "; " + rest, 1, part), "") << stated;
    }
  }
}

/// Wherever an element stands, its index is one of the array.
TEST(RelationsTest, IndicesOutOfRangeHaveNoValue) {
  const std::string variables =
      "x[1..2] : int = [0, 3]; y : int = [0, 4]; p : bool; let a[1..2, 0..1] = [[0, 4], [1, 2]];";
  Solutions inList, inRows;
  for (int i = 0; i < 160; ++i) {
    const std::int64_t x[2] = {i / 40, i / 10 % 4}, y = i / 2 % 5, p = i % 2;
    const Solutions::value_type row = {double(x[0]), double(x[1]), double(y), double(p)};
    if (x[0] >= 1 && x[0] <= 2 && (x[x[0] - 1] == y) == (p != 0)) inList.push_back(row);
    if (x[0] >= 1 && x[0] <= 2 && x[1] <= 1 &&
        (Values{0, 4, 1, 2}[Place(2 * x[0] - 2 + x[1])] == y) == (p != 0))
      inRows.push_back(row);
  }
  for (std::uint64_t seed = 0; seed < 12; ++seed) {
    EXPECT_EQ(WrongSolutions(variables + "p == (x[x[1]] == y);", seed, inList), "");
    EXPECT_EQ(WrongSolutions(variables + "p == (a[x[1], x[2]] == y);", seed, inRows), "");
  }
}

/// A task that may be anywhere else takes no energy away from those that are together.
TEST(RelationsTest, KeepTasksThatAreFarApart) {
  const Solutions expected = {
      {0,     0, 5},
      {0,     5, 0},
      {40000, 0, 5},
      {40000, 5, 0}
  };
  EXPECT_EQ(WrongSolutions("a : int in {0, 40000}; x, y : int in {0, 5};"
                           "cumulative([a^4 - 288230376151711744, x, y], [5, 5, 5],"
                           "           [60, 60, 60], 100);",
                           1, expected),
            "");
}

/// A real that has no name of its own is no abbreviation where a relation speaks of it.
TEST(RelationsTest, NarrowHiddenReals) {
  for (const std::string element : {"element(x, [1.5, 2.25])", "r[x]"}) {
    TextModel read("x : int = [1, 2]; y : int = [0, 9]; let r = [1.5, 2.25]; y = 2 * " + element +
                   ";");
    ZULTavSearch::Options options;
    options.limits.solutions = 9;
    ZULTavSearch search(read.model->Network(), read.declared, options);
    Solutions found;
    search.Run([&](const ZULTavSolution& solution) {
      found.push_back({ValueOf(solution.GetValue(0)), ValueOf(solution.GetValue(1))});
      return true;
    });
    EXPECT_EQ(found, (Solutions{
                         {1, 3}
    }));
  }
}

/// The double next to 1/10 may or may not be it, as far as relations know.
TEST(RelationsTest, ProveNothingByNumbersThatAreNoDoubles) {
  const std::string nearTenth = "0.1000000000000000055511151231257827021181583404541015625";
  for (const std::string& call :
       {"table([" + nearTenth + "], [[0.1]])", "element(1, [0.1]) == " + nearTenth})
    EXPECT_NE(WrongSolutions("p : bool = True; p == (" + call + ");", 1, {}).find("1 ?"),
              std::string::npos)
        << call;
}

}  // namespace
}  // namespace zultav::relations
