// What a model becomes: the rules of its program, in words.

#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "framework/calculator/ZULTavCalculator.h"
#include "framework/engine/ZULTavEngine.h"
#include "framework/solver/ZULTavAbstractTypes.h"
#include "tests/number_module.h"

namespace zultav::engine {
namespace {

/// A program with the names of its model; hidden values are h1, h2, … as they turn up.
class ProgramText {
 public:
  explicit ProgramText(const std::string& text) {
    std::vector<ZULTavDiagnostic> errors;
    const auto model = ZULTavCalculator({&NumberModule()}).Read(text, "text", {}, errors);
    if (model == nullptr) {
      mText = errors.front().message;
      return;
    }
    std::vector<ZULTaVoAny*> declared;
    std::vector<std::string> names;
    for (const auto& variable : model->Variables())
      for (ZULTaVoAny* value : variable.values) {
        declared.push_back(value);
        names.push_back(variable.name +
                        (variable.values.size() == 1 ? "" : std::to_string(names.size() + 1)));
      }
    const Program program(model->Network(), declared);
    for (std::size_t i = 0; i < names.size(); ++i)
      mNames.try_emplace(program.GetDeclared()[i], names[i]);
    if (program.IsInfeasible()) mText = "infeasible; ";
    for (const Rule& rule : program.GetRules()) mText += RuleText(program, rule) + "; ";
  }
  const std::string& Get() const { return mText; }

 private:
  std::string Name(const Program& program, Slot slot) {
    if (program.GetSlot(slot).isConstant)
      return std::to_string(program.GetInitialIntegers(slot).lower);
    const auto [name, isNew] = mNames.try_emplace(slot);
    if (isNew) name->second = "h" + std::to_string(++mHidden);
    return name->second;
  }

  std::string RuleText(const Program& program, const Rule& rule) {
    const auto slots = program.GetArguments(rule);
    const std::int64_t* numbers = program.GetNumbers(rule);
    const char* const kRelations[] = {" = ", " <> ", " < ", " <= "};
    std::ostringstream out;
    switch (rule.code) {
      case Code::kFunction:
        out << Name(program, slots[0]) << " = " << RowOf(static_cast<Function>(rule.data)).name
            << '(' << Name(program, slots[1]) << ", " << Name(program, slots[2]) << ')';
        break;
      case Code::kLinear: {
        const std::size_t count = slots.size() - (rule.isReified ? 1 : 0);
        if (rule.isReified)
          out << (rule.isNegated ? "~" : "") << Name(program, slots[count])
              << (rule.isHalf ? " -> " : " == ");
        for (std::size_t i = 0; i < count; ++i) {
          const std::int64_t factor = numbers[i + 1];
          out << (factor < 0 ? "-" : i == 0 ? "" : "+");
          if (factor != 1 && factor != -1) out << std::abs(factor) << '*';
          out << Name(program, slots[i]);
        }
        out << kRelations[static_cast<int>(rule.relation)] << numbers[0];
        break;
      }
      case Code::kUnequal:
        out << Name(program, slots[0]) << " <> " << Name(program, slots[1]);
        if (numbers[0] != 0) out << std::showpos << numbers[0];
        break;
      case Code::kClause:
        for (std::size_t i = 0; i < slots.size(); ++i)
          out << (i == 0 ? "" : " | ") << (numbers[i] != 0 ? "~" : "") << Name(program, slots[i]);
        break;
      default:
        out << "rule " << static_cast<int>(rule.code) << '/' << slots.size();
    }
    return out.str();
  }

  std::map<Slot, std::string> mNames;
  int mHidden = 0;
  std::string mText;
};

struct Case {
  const char* model;
  const char* rules;
};

TEST(Compiler, SaysTheSameWithLess) {
  const Case kCases[] = {
  // Sums of sums are one row, and what is moved or mirrored gives way.
      {"x, y, z : int = [0, 9]; 2*x + (y - z) + 3 = y + y - 7;",         "2*x-y-z = -10; "                },
      {"x, y : int = [0, 9]; x + 1 <> y + 3;",                           "x <> y+2; "                     },
      {"x, y, z : int = [0, 9]; x + 1 < y + z;",                         "x-y-z <= -2; "                  },
      {"x, y : int = [0, 9]; 4*x + 6*y <= 13;",                          "2*x+3*y <= 6; "                 },
      {"x, y : int = [0, 9]; 4*x + 6*y = 13;",                           "infeasible; "                   },
      {"x, y : int = [0, 9]; x - x + y - y = 1;",                        "infeasible; "                   },
      {"x, y : int = [0, 9]; p : bool; p == (2*x + 1 << y);",            "p == 2*x-y <= -2; "             },
      {"p, q, r, s : bool; 3 = int(p) + int(q) + int(r) + int(s) + 1;",  "rule 5/5; "                     },
      {"n : int; p, q, r : bool; 2 + n - int(p) - int(q) = int(r) + 2;", "rule 5/4; "                     },
      {"n : int; p, q, r : bool; n - int(p) - int(q) = int(r) + 2;",     "n-p-q-r = 2; "                  },
 // Equal values are one, whatever says so.
      {"x, y, z : int = [0, 9]; x = y; y = z; x + z <= 7;",              ""                               },
      {"x, y : int; x = 5; y = x + 2;",                                  ""                               },
      {"x, y : int = [0, 9]; x * y = y * x;",                            ""                               },
      {"x, y : int = [-9, 9]; x * x = x ^ 2 + y;",                       "h1 = square(x, x); "            },
      {"x, y : int = [0, 9]; y = x * x * x;",                            "y = power(x, 3); "              },
 // Connectives of connectives are clauses; what is known decides.
      {"p, q, r, s : bool; p || q || ~r || s;",                          "p | q | ~r | s; "               },
      {"p, q, r : bool; p -> (q || r);",                                 "~p | q | r; "                   },
      {"p, q, r : bool; p && q && ~r;",                                  ""                               },
      {"p, q, r : bool; p; p -> q; ~q || r;",                            ""                               },
      {"p, q : bool; p; p -> q; ~q;",                                    "infeasible; "                   },
      {"p, q : bool; p == ~q;",                                          "p | q; ~p | ~q; "               },
      {"x : int = [0, 9]; p : bool; p; p -> (x >> 3);",                  ""                               },
      {"x, y : int = [0, 9]; (x << 3) || (y >> 5);",                     "~h1 -> x <= 2; h1 == -y <= -6; "},
      {"x, y : int = [0, 9]; p : bool; p -> (x << y); ~p -> (x == 7);",
       "p -> x-y <= -1; ~p -> -x = -7; "                                                                  },
      {"x : int = [0, 9]; p : bool; p -> ~(x << 3);",                    "p -> -x <= -3; "                },
      {"x : int = [0, 9]; ~(x << 3);",                                   ""                               },
  };
  for (const Case& each : kCases)
    EXPECT_EQ(ProgramText(each.model).Get(), each.rules) << each.model;
}

}  // namespace
}  // namespace zultav::engine
