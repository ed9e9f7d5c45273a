// Systems of equations over reals: all solutions to a width of 1e-6 (relative for combustion, whose
// unknowns are tiny), beside Gecode's FloatVar on the same equations with the same branching; and
// how the cost of propagation grows with the number of unknowns.
//
//   systems_bench [--limit SECONDS] [NAME …]     rows whose name contains one of the words

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <gecode/float.hh>
#include <gecode/minimodel.hh>
#include <gecode/search.hh>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "bench/fixture.h"
#include "framework/search/ZULTavUtilities.h"

namespace {

double limit = 20;            // seconds for a search
double absoluteWidth = 1e-6;  // a box is narrow enough for one of the two
double relativeWidth = 0;

using bench::Clock;
using bench::Definitions;
using bench::Read;
using bench::Since;
using bench::ValuesOf;

struct System {
  const char* name;
  const char* file;  // in examples/
  Definitions definitions = {};
  bool relative = false;  // its unknowns are too small for an absolute width
};
// clang-format off
const System kSystems[] = {
    {"two circles",             "two_circles"},
    {"circle, parabola",        "circle_parabola"},
    {"folium, circle",          "folium"},
    {"sphere, cylinder",        "sphere_cylinder_plane"},
    {"combustion",              "combustion", {}, true},
    {"Broyden tri. 10",         "broyden", {{"n", "10"}}},
    {"Broyden tri. 10, [-2,2]", "broyden", {{"n", "10"}, {"limit", "2"}}},
    {"Broyden tri. 20",         "broyden", {{"n", "20"}}},
    {"Broyden banded 10",       "broyden_banded", {{"n", "10"}}},
    {"Caprasse",                "caprasse"},
    {"cyclohexane",             "cyclohexane"},
    {"kinematics",              "kinematics"},
    {"Trigexp1 100",            "trigexp", {{"n", "100"}}},
    {"ten squares",             "squares"},
};
// clang-format on

struct Range {
  double lower, upper;
};
using Box = std::vector<Range>;

Range RangeOf(const ZULTaVoAny& value) {
  if (const auto* integer = ZULTaVoCast<ZULTaVoInteger>(&value))
    return {static_cast<double>(integer->GetLowerBound()),
            static_cast<double>(integer->GetUpperBound())};
  const auto* real = ZULTaVoCast<ZULTaVoReal>(&value);
  return {real->GetLowerBound(), real->GetUpperBound()};
}

/// What a search came to.
struct Run {
  std::uint64_t boxes = 0, nodes = 0;
  std::vector<Box> proven;  // of Gecode: those of the other one that its boxes meet
  bool complete = false;
  double seconds = HUGE_VAL;
};

/// From the network as it was read to the last solution.
Run Solve(const std::string& text, const Definitions& definitions, bool first) {
  const auto model = Read(text, definitions);
  const std::vector<ZULTaVoAny*> values = ValuesOf(*model);
  const Clock::time_point begin = Clock::now();
  ZULTavSearch::Options options;
  options.limits.solutions = ZULTavSearch::kUnlimited;
  options.absoluteWidth = absoluteWidth;
  options.relativeWidth = relativeWidth;
  if (first) options.limits.seconds = limit;
  ZULTavSearch search(model->Network(), values, options);
  Run run;
  run.complete = search.Run([&](const ZULTavSolution& solution) {
    ++run.boxes;
    if (!first || !solution.IsProven()) return true;
    run.proven.emplace_back();
    for (std::size_t i = 0; i < solution.GetSize(); ++i)
      run.proven.back().push_back(RangeOf(solution.GetValue(i)));
    return true;
  }) == ZULTavSearch::Outcome::kExhausted;
  run.seconds = Since(begin);
  run.nodes = search.GetStatistics().nodes;
  return run;
}

// --- The peer -------------------------------------------------------------------------------

/// Halves the variables in turn until none is too wide.
class HalveInTurn : public Gecode::Brancher {
 public:
  using Views = Gecode::ViewArray<Gecode::Float::FloatView>;

  HalveInTurn(Gecode::Home home, Views& views) : Gecode::Brancher(home), mViews(views) {}
  HalveInTurn(Gecode::Space& home, HalveInTurn& other)
      : Gecode::Brancher(home, other), mNext(other.mNext) {
    mViews.update(home, other.mViews);
  }
  static void Post(Gecode::Home home, const Gecode::FloatVarArgs& variables) {
    Views views(home, variables);
    new (home) HalveInTurn(home, views);
  }

  bool status(const Gecode::Space&) const override { return FindWide() >= 0; }
  const Gecode::Choice* choice(Gecode::Space&) override {
    const int place = FindWide();
    return new Half(*this, place, mViews[place].med());
  }
  const Gecode::Choice* choice(const Gecode::Space&, Gecode::Archive&) override { return nullptr; }
  Gecode::ExecStatus commit(Gecode::Space& home, const Gecode::Choice& choice,
                            unsigned int alternative) override {
    const auto& half = static_cast<const Half&>(choice);
    mNext = (half.place + 1) % mViews.size();
    const Gecode::ModEvent event = alternative == 0 ? mViews[half.place].lq(home, half.middle)
                                                    : mViews[half.place].gq(home, half.middle);
    return Gecode::me_failed(event) ? Gecode::ES_FAILED : Gecode::ES_OK;
  }
  Gecode::Actor* copy(Gecode::Space& home) override { return new (home) HalveInTurn(home, *this); }

 private:
  struct Half : Gecode::Choice {
    Half(const Gecode::Brancher& brancher, int where, double value)
        : Gecode::Choice(brancher, 2), place(where), middle(value) {}
    int place;
    double middle;
  };

  int FindWide() const {
    for (int i = 0; i < mViews.size(); ++i) {
      const int place = (mNext + i) % mViews.size();
      if (IsWide(mViews[place])) return place;
    }
    return -1;
  }
  static bool IsWide(const Gecode::Float::FloatView& x) {
    const double magnitude = std::max(std::fabs(x.min()), std::fabs(x.max()));
    return x.size() > absoluteWidth && x.size() > relativeWidth * magnitude && !x.assigned();
  }

  Views mViews;
  int mNext = 0;
};

/// The statements of a model, posted as they stand.
class Peer : public Gecode::Space {
 public:
  explicit Peer(const ZULTavModel& model) : mModel(&model) {
    const std::vector<ZULTaVoAny*> values = ValuesOf(model);
    mVariables = Gecode::FloatVarArray(*this, static_cast<int>(values.size()));
    int next = 0;
    for (const auto& variable : model.Variables()) {
      mFirsts.push_back(next);
      for (const ZULTaVoAny* value : variable.values) {
        const auto [lower, upper] = RangeOf(*value);
        mVariables[next++] = Gecode::FloatVar(*this, lower, upper);
      }
    }
    for (const auto& statement : model.Statements()) {
      using Kind = ZULTavModel::Statement::Kind;
      if (statement.kind != Kind::kEqual) Refuse("a statement that is no equation");
      Gecode::rel(*this, Make(statement.left) == Make(statement.right));
    }
    mProducts.clear();
    HalveInTurn::Post(*this, mVariables);
  }
  Peer(Peer& other) : Gecode::Space(other) { mVariables.update(*this, other.mVariables); }
  Gecode::Space* copy() override { return new Peer(*this); }

  bool Meets(const Box& box) const {
    for (int i = 0; i < mVariables.size(); ++i) {
      const Range& range = box[static_cast<std::size_t>(i)];
      if (mVariables[i].max() < range.lower || mVariables[i].min() > range.upper) return false;
    }
    return true;
  }

 private:
  using Expression = Gecode::LinFloatExpr;

  [[noreturn]] static void Refuse(const std::string& what) {
    std::cerr << "the peer is not told " << what << '\n';
    std::exit(1);
  }

  /// Sums stay linear expressions, each posted as one constraint.
  Expression Make(std::uint32_t index) {
    const ZULTavModel::Expression& e = mModel->Expressions()[index];
    if (e.IsVariable()) return mVariables[mFirsts[e.operands[0]] + static_cast<int>(e.operands[1])];
    if (e.IsConstant()) return ConstantOf(index);
    const std::string_view name = e.op->GetName();
    if (name == "+") return Make(e.operands[0]) + Make(e.operands[1]);
    if (name == "-" && e.op->GetNumberOfArguments() == 2)
      return Make(e.operands[0]) - Make(e.operands[1]);
    if (name == "-") return -Make(e.operands[0]);
    if (name == "*" && mModel->Expressions()[e.operands[0]].IsConstant())
      return ConstantOf(e.operands[0]) * Make(e.operands[1]);
    const auto known = mProducts.find(index);
    if (known != mProducts.end()) return known->second;
    // Without these bounds, coefficients let sums overflow, which is an error to the peer.
    const Gecode::FloatVar value = Gecode::expr(*this, MakeProduct(e));
    Gecode::rel(*this, value, Gecode::FRT_GQ, -1e100);
    Gecode::rel(*this, value, Gecode::FRT_LQ, 1e100);
    mProducts.emplace(index, value);
    return value;
  }
  Expression MakeProduct(const ZULTavModel::Expression& e) {
    const std::string_view name = e.op->GetName();
    const Expression left = Make(e.operands[0]);
    if (e.op->GetNumberOfArguments() == 1) {
      using Function = Expression (*)(const Expression&);
      static const std::map<std::string_view, Function> kFunctions = {
          {"sqrt", [](const Expression& x) { return Gecode::sqrt(x); }},
          {"exp",  [](const Expression& x) { return Gecode::exp(x); } },
          {"ln",   [](const Expression& x) { return Gecode::log(x); } },
          {"sin",  [](const Expression& x) { return Gecode::sin(x); } },
          {"cos",  [](const Expression& x) { return Gecode::cos(x); } },
          {"tan",  [](const Expression& x) { return Gecode::tan(x); } },
      };
      const auto function = kFunctions.find(name);
      if (function == kFunctions.end()) Refuse(std::string(name));
      return function->second(left);
    }
    if (name == "*") return left * Make(e.operands[1]);
    if (name == "/") return left / Make(e.operands[1]);
    if (name != "^") Refuse(std::string(name));
    const double exponent = ConstantOf(e.operands[1]).min();
    if (exponent != std::floor(exponent) || exponent < 2) Refuse("such a power");
    return exponent == 2 ? Gecode::sqr(left) : Gecode::pow(left, static_cast<int>(exponent));
  }
  Gecode::FloatVal ConstantOf(std::uint32_t index) const {
    const auto [lower, upper] = RangeOf(*mModel->Expressions()[index].object);
    return {lower, upper};
  }

  // To set up the root only:
  const ZULTavModel* mModel = nullptr;
  std::vector<int> mFirsts;  // by variable, where its values lie
  std::map<std::uint32_t, Gecode::FloatVar> mProducts;

  Gecode::FloatVarArray mVariables;
};

/// From the root with all constraints posted to the last solution.
Run SolveByPeer(const std::string& text, const Definitions& definitions,
                const std::vector<Box>& solutions, bool first) {
  const auto model = Read(text, definitions);
  const auto root = std::make_unique<Peer>(*model);
  Gecode::Search::TimeStop stop(limit * 1000);
  Gecode::Search::Options options;
  options.threads = 1;
  if (first) options.stop = &stop;
  Run run;
  std::vector<bool> met(solutions.size());
  const Clock::time_point begin = Clock::now();
  Gecode::DFS<Peer> search(root.get(), options);
  while (const std::unique_ptr<Peer> box{search.next()}) {
    ++run.boxes;
    for (std::size_t i = 0; first && i < solutions.size(); ++i)
      met[i] = met[i] || box->Meets(solutions[i]);
  }
  run.seconds = Since(begin);
  run.complete = !search.stopped();
  run.nodes = search.statistics().node;
  std::fesetround(FE_TONEAREST);  // which FloatVar leaves as it pleases
  for (std::size_t i = 0; i < solutions.size(); ++i)
    if (met[i]) run.proven.push_back(solutions[i]);
  return run;
}

// --- Tables -----------------------------------------------------------------------------------

void CompareSystem(const System& system) {
  const std::string text = bench::TextOf(std::string(ZULTAV_EXAMPLES) + "/" + system.file + ".zul");
  absoluteWidth = system.relative ? 1e-30 : 1e-6;
  relativeWidth = system.relative ? 1e-6 : 0;
  const Run ours =
      bench::Fastest(limit, [&](bool first) { return Solve(text, system.definitions, first); });
  const Run theirs = bench::Fastest(
      limit, [&](bool first) { return SolveByPeer(text, system.definitions, ours.proven, first); });
  const auto sign = [](bool complete) { return complete ? ' ' : '>'; };
  const auto count = [](auto number) { return static_cast<unsigned long long>(number); };
  std::printf("| %-23s | %5llu | %5llu | %7llu | %c%10.7f | %6llu | %5llu | %8llu | %c%10.7f | ",
              system.name, count(ours.boxes), count(ours.proven.size()), count(ours.nodes),
              sign(ours.complete), ours.seconds, count(theirs.boxes), count(theirs.proven.size()),
              count(theirs.nodes), sign(theirs.complete), theirs.seconds);
  if (theirs.complete && theirs.proven.size() < ours.proven.size())
    std::printf("loses %3llu |\n", count(ours.proven.size() - theirs.proven.size()));
  else
    std::printf("%c%8.1f |\n", sign(theirs.complete), theirs.seconds / ours.seconds);
  std::fflush(stdout);
}

constexpr char kBroyden[] = R"(
let n = 10;
x[0..n+1] : real = [-1, 0];
x[0] = 0;
x[n+1] = 0;
for i in 1..n : (3 - 2 * x[i]) * x[i] - x[i-1] - 2 * x[i+1] + 1 = 0;
)";

void Scale(int unknowns) {
  const Definitions definitions = {
      {"n", std::to_string(unknowns)}
  };
  double reading = HUGE_VAL, propagating = HUGE_VAL, width = 0;
  std::uint64_t calls = 0;
  bool complete = true;
  for (int repetition = 0; repetition < 5 && complete; ++repetition) {
    Clock::time_point begin = Clock::now();
    const auto model = Read(kBroyden, definitions);
    reading = std::min(reading, Since(begin));
    const std::vector<ZULTaVoAny*> values = ValuesOf(*model);
    begin = Clock::now();
    ZULTavSearch::Options options;
    options.limits.seconds = limit;
    ZULTavSearch search(model->Network(), values, options);
    ZULTavSearch::Verdict verdict;
    complete = search.Propagate(verdict) == ZULTavSearch::Outcome::kExhausted;
    propagating = std::min(propagating, Since(begin));
    calls = search.GetStatistics().propagations;
    width = 0;
    for (const ZULTaVoAny* value : values) width = std::max(width, value->GetWidth());
  }
  std::printf("| %8d | %9.6f | %c%10.7f | %9.3f | %9.1f | %9.3g |\n", unknowns, reading,
              complete ? ' ' : '>', propagating, propagating / unknowns * 1e6,
              static_cast<double>(calls) / unknowns, width);
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> words;
  for (int i = 1; i < argc; ++i) {
    if (std::string_view(argv[i]) == "--limit" && i + 1 < argc)
      limit = std::atof(argv[++i]);
    else
      words.emplace_back(argv[i]);
  }
  const auto wanted = [&](std::string_view name) {
    return words.empty() || std::any_of(words.begin(), words.end(), [&](const std::string& word) {
             return name.find(word) != name.npos;
           });
  };

  std::printf(
      "All solutions to a width of 1e-6, %g s at most: boxes, how many of them are proven,\n"
      "nodes and seconds; of the peer: boxes, how many proven ones they meet, the same.\n"
      "| system                  | boxes | prov. |   nodes |    seconds |  boxes | meets |"
      "    nodes |    seconds |     ratio |\n",
      limit);
  for (const System& system : kSystems)
    if (wanted(system.name)) CompareSystem(system);

  if (!wanted("scaling")) return 0;
  std::printf("\nBroyden tridiagonal, propagate-only from [-1, 0]\n");
  std::printf("| unknowns | s to read |  s to prop | us/unkn.  | calls/un. | max width |\n");
  for (const int unknowns : {10, 100, 1000, 10000}) Scale(unknowns);
}
