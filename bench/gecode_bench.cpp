// Models over integers beside Gecode: the same variables, constraints and branching (the first
// undecided variable, lower half first), all solutions. Gecode's linear equations and alldifferent
// are bounds consistent as ours are, and its other relations of the consistency of ours. Hard
// rows ask for the first solution, by the variable of the most failures for its values, ours with
// restarts as the command line has them.
//
//   gecode_bench [--limit SECONDS] [NAME …]     rows whose name contains one of the words

#include <cstdio>
#include <functional>
#include <gecode/int.hh>
#include <gecode/minimodel.hh>
#include <gecode/search.hh>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bench/fixture.h"
#include "framework/search/ZULTavUtilities.h"

namespace {

double limit = 20;  // seconds for a search

// --- The peer's models --------------------------------------------------------------------------

using Gecode::IntVar;
using Gecode::IntVarArgs;
using Gecode::IntVarArray;
using Gecode::IPL_BND;
using Gecode::IPL_DOM;
using Gecode::LinIntExpr;

/// Variables in the order in which bench/models declares them.
class Peer : public Gecode::Space {
 public:
  Peer(const std::function<void(Peer&)>& post, bool byFailures) {
    post(*this);
    Gecode::branch(*this, truths, byFailures ? Gecode::BOOL_VAR_AFC_MAX() : Gecode::BOOL_VAR_NONE(),
                   Gecode::BOOL_VAL_MIN());
    Gecode::branch(*this, x, byFailures ? Gecode::INT_VAR_AFC_SIZE_MAX() : Gecode::INT_VAR_NONE(),
                   Gecode::INT_VAL_SPLIT_MIN());
  }
  Peer(Peer& other) : Gecode::Space(other) {
    truths.update(*this, other.truths);
    x.update(*this, other.x);
  }
  Gecode::Space* copy() override { return new Peer(*this); }

  IntVarArray& Make(int count, int low, int high) {
    return x = IntVarArray(*this, count, low, high);
  }
  void State(const Gecode::LinIntRel& relation) { Gecode::rel(*this, relation, IPL_BND); }
  void AllDifferent(const IntVarArgs& values) { Gecode::distinct(*this, values, IPL_BND); }
  void AllDifferentValues(const IntVarArgs& values) { Gecode::distinct(*this, values, IPL_DOM); }

  Gecode::BoolVarArray truths;
  IntVarArray x;
};

/// `count` of the values, from one of them on in equal steps.
IntVarArgs Every(const IntVarArray& x, int first, int step, int count) {
  IntVarArgs values;
  for (int i = 0; i < count; ++i) values << x[first + i * step];
  return values;
}

void PostQueens(Peer& peer, int n) {
  const auto& q = peer.Make(n, 1, n);
  for (int i = 0; i < n; ++i)
    for (int j = i + 1; j < n; ++j) {
      peer.State(q[i] != q[j]);
      peer.State(q[i] + i != q[j] + j);
      peer.State(q[i] - i != q[j] - j);
    }
}

void PostSendMore(Peer& peer) {
  const auto& x = peer.Make(8, 0, 9);
  const IntVar S = x[0], M = x[1], E = x[2], N = x[3], D = x[4], O = x[5], R = x[6], Y = x[7];
  peer.State(S >= 1);
  peer.State(M >= 1);
  peer.AllDifferent(x);
  peer.State(1000 * S + 100 * E + 10 * N + D + 1000 * M + 100 * O + 10 * R + E ==
             10000 * M + 1000 * O + 100 * N + 10 * E + Y);
}

void PostPythagoras(Peer& peer) {
  const auto& x = peer.Make(3, 1, 200);
  peer.State(x[0] < x[1]);
  peer.State(Gecode::sqr(x[0]) + Gecode::sqr(x[1]) == Gecode::sqr(x[2]));
}

void PostSudoku(Peer& peer) {
  constexpr char kClues[] =
      "000000010400000000020000000000050407008000300001090000300400200050100000000806000";
  const auto& s = peer.Make(81, 1, 9);
  for (int i = 0; i < 9; ++i) {
    peer.AllDifferent(Every(s, 9 * i, 1, 9));
    peer.AllDifferent(Every(s, i, 9, 9));
    IntVarArgs block;
    for (int row = 0; row < 3; ++row) block << Every(s, 27 * (i / 3) + 3 * (i % 3) + 9 * row, 1, 3);
    peer.AllDifferent(block);
  }
  for (int i = 0; i < 81; ++i)
    if (kClues[i] != '0') peer.State(s[i] == kClues[i] - '0');
}

void PostMagicSquare(Peer& peer) {
  constexpr int n = 4;
  const auto& s = peer.Make(n * n, 1, n * n);
  peer.AllDifferent(s);
  const auto line = [&](int first, int step) {
    peer.State(Gecode::sum(Every(s, first, step, n)) == n * (n * n + 1) / 2);
  };
  for (int i = 0; i < n; ++i) line(n * i, 1);
  for (int i = 0; i < n; ++i) line(i, n);
  line(0, n + 1);
  line(n - 1, n - 1);
  peer.State(s[0] < s[n - 1]);
  peer.State(s[0] < s[n * n - 1]);
  peer.State(s[0] < s[n * n - n]);
  peer.State(s[n - 1] < s[n * n - n]);
}

void PostLatinSquares(Peer& peer) {
  constexpr int n = 5;
  const auto& s = peer.Make(n * n, 1, n);
  for (int i = 0; i < n; ++i) {
    peer.State(s[i] == i + 1);
    peer.AllDifferent(Every(s, n * i, 1, n));
    peer.AllDifferent(Every(s, i, n, n));
  }
}

void PostLangford(Peer& peer, bool byValues) {
  constexpr int n = 8;
  const auto& x = peer.Make(2 * n, 1, 2 * n);
  for (int k = 1; k <= n; ++k) peer.State(x[k - 1] + k + 1 == x[n + k - 1]);
  Gecode::distinct(peer, x, byValues ? IPL_DOM : IPL_BND);
}

void PostCostas(Peer& peer) {
  constexpr int n = 9;
  const auto& mark = peer.Make(n, 1, n);
  peer.AllDifferentValues(mark);
  for (int gap = 1; gap + 1 < n; ++gap) {
    IntVarArgs steps;
    for (int i = 0; i + gap < n; ++i) steps << Gecode::expr(peer, mark[i + gap] - mark[i], IPL_BND);
    peer.AllDifferent(steps);
  }
}

void PostAllInterval(Peer& peer) {
  constexpr int n = 10;
  auto& x = peer.Make(2 * n - 1, 0, n - 1);
  const IntVarArgs series = Every(x, 0, 1, n), distances = Every(x, n, 1, n - 1);
  Gecode::dom(peer, distances, 1, n - 1);
  for (int i = 0; i + 1 < n; ++i)
    Gecode::rel(peer, distances[i] == abs(series[i + 1] - series[i]), IPL_BND);
  peer.AllDifferentValues(series);
  peer.AllDifferentValues(distances);
}

void PostMagicSequence(Peer& peer) {
  constexpr int n = 50;
  const auto& s = peer.Make(n, 0, n - 1);
  for (int i = 0; i < n; ++i) Gecode::count(peer, s, i, Gecode::IRT_EQ, s[i]);
  peer.State(Gecode::sum(s) == n);
  peer.State(Gecode::sum(Gecode::IntArgs::create(n, 0), s) == n);
}

void PostQuasigroup(Peer& peer) {
  constexpr int n = 20, holes = 40;
  const auto& s = peer.Make(n * n, 1, n);
  for (int i = 0; i < n; ++i) {
    peer.AllDifferentValues(Every(s, n * i, 1, n));
    peer.AllDifferentValues(Every(s, i, n, n));
  }
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j)
      if ((i * i * 37 + j * j * 71 + i * j * 53 + i + 3 * j) % 101 >= holes)
        peer.State(s[n * i + j] == (i + j) % n + 1);
}

void PostGolfers(Peer& peer, int size, int weeks) {
  const int groups = 3, players = groups * size;
  const auto& player = peer.Make(weeks * players, 1, players);
  const auto at = [&](int week, int i) { return player[week * players + i]; };
  IntVarArgs meetings;
  for (int week = 0; week < weeks; ++week) {
    peer.AllDifferentValues(Every(player, week * players, 1, players));
    for (int group = 0; group < groups; ++group) {
      Gecode::rel(peer, Every(player, week * players + group * size, 1, size), Gecode::IRT_LE);
      for (int a = 0; a < size; ++a)
        for (int b = a + 1; b < size; ++b)
          meetings << Gecode::expr(
              peer, players * at(week, group * size + a) + at(week, group * size + b), IPL_BND);
    }
    Gecode::rel(peer, Every(player, week * players, size, groups), Gecode::IRT_LE);
    if (week > 0)
      Gecode::rel(peer, Every(player, (week - 1) * players, 1, players), Gecode::IRT_LE,
                  Every(player, week * players, 1, players));
  }
  peer.AllDifferent(meetings);
}

void PostGolomb(Peer& peer) {
  constexpr int n = 8, length = 34;
  const auto& mark = peer.Make(n, 0, length);
  peer.State(mark[0] == 0);
  IntVarArgs gaps;
  for (int i = 0; i + 1 < n; ++i) peer.State(mark[i] < mark[i + 1]);
  for (int i = 0; i < n; ++i)
    for (int j = i + 1; j < n; ++j) gaps << Gecode::expr(peer, mark[j] - mark[i], IPL_BND);
  peer.AllDifferent(gaps);
  peer.State(mark[1] - mark[0] < mark[n - 1] - mark[n - 2]);
}

struct Step {
  int machine, hours;
};
using Jobs = std::vector<std::vector<Step>>;
const Jobs kFt06 = {
    {{2, 1}, {0, 3}, {1, 6},  {3, 7},  {5, 3},  {4, 6}},
    {{1, 8}, {2, 5}, {4, 10}, {5, 10}, {0, 10}, {3, 4}},
    {{2, 5}, {3, 4}, {5, 8},  {0, 9},  {1, 1},  {4, 7}},
    {{1, 5}, {0, 5}, {2, 5},  {3, 3},  {4, 8},  {5, 9}},
    {{2, 9}, {1, 3}, {4, 5},  {5, 4},  {0, 3},  {3, 1}},
    {{1, 3}, {3, 3}, {5, 9},  {0, 10}, {4, 4},  {2, 1}},
};
const Jobs kFt10 = {
    {{0, 29}, {1, 78}, {2, 9},  {3, 36}, {4, 49}, {5, 11}, {6, 62}, {7, 56}, {8, 44}, {9, 21}},
    {{0, 43}, {2, 90}, {4, 75}, {9, 11}, {3, 69}, {1, 28}, {6, 46}, {5, 46}, {7, 72}, {8, 30}},
    {{1, 91}, {0, 85}, {3, 39}, {2, 74}, {8, 90}, {5, 10}, {7, 12}, {6, 89}, {9, 45}, {4, 33}},
    {{1, 81}, {2, 95}, {0, 71}, {4, 99}, {6, 9},  {8, 52}, {7, 85}, {3, 98}, {9, 22}, {5, 43}},
    {{2, 14}, {0, 6},  {1, 22}, {5, 61}, {3, 26}, {4, 69}, {8, 21}, {7, 49}, {9, 72}, {6, 53}},
    {{2, 84}, {1, 2},  {5, 52}, {3, 95}, {8, 48}, {9, 72}, {0, 47}, {6, 65}, {4, 6},  {7, 25}},
    {{1, 46}, {0, 37}, {3, 61}, {2, 13}, {6, 32}, {5, 21}, {9, 32}, {8, 89}, {7, 30}, {4, 55}},
    {{2, 31}, {0, 86}, {1, 46}, {5, 74}, {4, 32}, {6, 88}, {8, 19}, {9, 48}, {7, 36}, {3, 79}},
    {{0, 76}, {1, 69}, {3, 76}, {5, 51}, {2, 85}, {9, 11}, {6, 40}, {7, 89}, {4, 26}, {8, 74}},
    {{1, 85}, {0, 13}, {2, 61}, {6, 7},  {8, 64}, {9, 76}, {5, 47}, {3, 52}, {4, 90}, {7, 45}},
};

/// @param machines  whether each machine is one constraint, too, and not only its pairs
void PostJobs(Peer& peer, const Jobs& jobs, int deadline, bool machines) {
  const int n = static_cast<int>(jobs.size());
  const auto& start = peer.Make(n * n, 0, deadline);
  peer.truths = Gecode::BoolVarArray(peer, n * n * (n - 1) / 2, 0, 1);
  for (int job = 0; job < n; ++job)
    for (int k = 0; k < n; ++k) {
      const LinIntExpr end = start[n * job + k] + jobs[job][k].hours;
      peer.State(k + 1 < n ? end <= start[n * job + k + 1] : end <= deadline);
    }
  int pair = 0;
  for (int machine = 0; machine < n; ++machine) {
    IntVarArgs starts;
    Gecode::IntArgs hours;
    for (int job = 0; job < n; ++job)
      for (int k = 0; k < n; ++k)
        if (jobs[job][k].machine == machine) {
          starts << start[n * job + k];
          hours << jobs[job][k].hours;
        }
    if (machines) {
      constexpr auto kAll = Gecode::IPL_BASIC | Gecode::IPL_ADVANCED;
      Gecode::unary(peer, starts, hours, static_cast<Gecode::IntPropLevel>(kAll));
    }
    for (int a = 0; a < n; ++a)
      for (int b = a + 1; b < n; ++b)
        // A truth says that a goes first, the peer's that b does not.
        Gecode::order(peer, starts[b], hours[b], starts[a], hours[a], peer.truths[pair++]);
  }
}

void PostPigeons(Peer& peer) { peer.AllDifferent(peer.Make(10, 1, 9)); }

// --- Comparison ---------------------------------------------------------------------------------

struct Row {
  const char* name;
  const char* file;  // in bench/models
  bench::Definitions definitions;
  std::function<void(Peer&)> post;
  bool isHard = false;  // the first solution is enough, and found by failures
};
const std::vector<Row> kRows = {
    {"8 queens",                                     "queens",          {},                              [](Peer& p) { PostQueens(p, 8); }                                                           },
    {"10 queens",                                    "queens",          {{"n", "10"}},                   [](Peer& p) { PostQueens(p, 10); }                                                          },
    {"12 queens",                                    "queens",          {{"n", "12"}},                   [](Peer& p) { PostQueens(p, 12); }                                                          },
    {"SEND + MORE",                                  "send_more",       {},                              PostSendMore                                                                                },
    {"Pythagoras to 200",                            "pythagoras",      {},                              PostPythagoras                                                                              },
    {"sudoku of 17 clues",                           "sudoku",          {},                              PostSudoku                                                                                  },
    {"magic square 4x4",                             "magic_square",    {},                              PostMagicSquare                                                                             },
    {"Latin squares 5",                              "latin_squares",   {},                              PostLatinSquares                                                                            },
    {"Langford 8",                                   "langford",        {},                              [](Peer& p) { PostLangford(p, false); }                                                     },
    {"Langford 8 by values",                         "langford_values", {},                              [](Peer& p) { PostLangford(p, true); }                                                      },
    {"Costas arrays 9",                              "costas",          {},                              PostCostas                                                                                  },
    {"golfers 3-2-5",                                "golfers",         {},                              [](Peer& p) { PostGolfers(p, 2, 5); }                                                       },
    {"golfers 3-3-4",
     "golfers",                                                         {{"size", "3"}, {"weeks", "4"}},
     [](Peer& p) { PostGolfers(p, 3, 4); }                                                                                                                                                           },
    {"all-interval 10",                              "all_interval",    {},                              PostAllInterval                                                                             },
    {"magic sequence 50",                            "magic_sequence",  {},                              PostMagicSequence                                                                           },
    {"quasigroup 20",                                "quasigroup",      {},                              PostQuasigroup                                                                              },
    {"ft06 within 54",                               "ft06",            {},                              [](Peer& p) { PostJobs(p, kFt06, 54, false); }                                              },
    {"ft06, machines, 54",                           "ft06_machines",   {},                              [](Peer& p) { PostJobs(p, kFt06, 54, true); }                                               },
    {"ft06, machines, 55",
     "ft06_machines",                                                   {{"deadline", "55"}},
     [](Peer& p) { PostJobs(p, kFt06, 55, true); },
     true},
    {"ft10, machines, 929",
     "ft10_machines",                                           {{"deadline", "929"}},
     [](Peer& p) { PostJobs(p, kFt10, 929, true); },
     true},
    {"ft10, machines, 930",
     "ft10_machines",                                                            {},
     [](Peer& p) { PostJobs(p, kFt10, 930, true); },
     true},
    {"Golomb 8 within 34", "golomb",                                                              {},                                                                                             PostGolomb                                                                                                                                                                     },
    {"10 pigeons, 9 holes",                                            "pigeons",{},PostPigeons},
};

/// What a search came to.
struct Run {
  std::uint64_t solutions = 0, nodes = 0;
  bool complete = false;
  double seconds = HUGE_VAL;
};

/// From the network as it was read to the last solution, and all memory given back.
Run Solve(ZULTavModel& model, const Row& row, bool first) {
  using Choice = ZULTavSearch::VariableChoice;
  ZULTavSearch::Options options;
  options.choice = row.isHard ? Choice::kAdaptive : Choice::kFirst;
  options.limits.solutions = row.isHard ? 1 : ZULTavSearch::kUnlimited;
  options.restartAfter = row.isHard ? 250 : 0;
  if (first) options.limits.seconds = limit;
  std::vector<ZULTaVoAny*> values = bench::ValuesOf(model);
  Run run;
  const bench::Stopwatch watch;
  {
    ZULTavSearch search(model.Network(), std::move(values), options);
    const auto outcome = search.Run([](const ZULTavSolution&) { return true; });
    run.solutions = search.GetStatistics().solutions;
    run.nodes = search.GetStatistics().nodes;
    run.complete = outcome <= ZULTavSearch::Outcome::kSolutionLimit;
  }
  run.seconds = watch.GetSeconds();
  return run;
}

/// From an empty space to the last solution, and all memory given back.
Run SolveByPeer(const Row& row, bool first) {
  Gecode::Search::TimeStop stop(limit * 1000);
  Gecode::Search::Options options;
  options.threads = 1;
  options.clone = false;
  if (first) options.stop = &stop;
  Run run;
  const bench::Stopwatch watch;
  {
    Gecode::DFS<Peer> search(new Peer(row.post, row.isHard), options);  // which takes it over
    while (const std::unique_ptr<Peer> solution{search.next()})
      if (++run.solutions == 1 && row.isHard) break;
    run.nodes = search.statistics().node;
    run.complete = !search.stopped();
  }
  run.seconds = watch.GetSeconds();
  return run;
}

/// False where both end with different numbers of solutions.
bool Compare(const Row& row) {
  const std::string text = bench::TextOf(std::string(ZULTAV_MODELS) + "/" + row.file + ".zul");
  const auto model = bench::Read(text, row.definitions);
  const auto [ours, theirs] = bench::FastestInTurn(
      limit, [&](bool first) { return Solve(*model, row, first); },
      [&](bool first) { return SolveByPeer(row, first); });
  const auto print = [](const Run& run) {
    std::printf(" %9llu | %c%10.7f |", static_cast<unsigned long long>(run.nodes),
                run.complete ? ' ' : '>', run.seconds);
  };
  std::printf("| %-20s | %9llu |", row.name, static_cast<unsigned long long>(ours.solutions));
  print(ours);
  print(theirs);
  const bool same = !ours.complete || !theirs.complete || ours.solutions == theirs.solutions;
  std::printf(" %8.2f |%s\n", ours.seconds / theirs.seconds, same ? "" : " NOT THE SAME SOLUTIONS");
  std::fflush(stdout);
  return same;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string_view> words;
  for (int i = 1; i < argc; ++i) {
    if (std::string_view(argv[i]) == "--limit" && i + 1 < argc)
      limit = std::atof(argv[++i]);
    else
      words.emplace_back(argv[i]);
  }
  std::printf(
      "All solutions, %g s at most: nodes and seconds of ours and of Gecode, and the ratio "
      "of the times.\n"
      "| model                | solutions |     nodes |     seconds |     nodes |     seconds "
      "|    ratio |\n",
      limit);
  bool same = true;
  for (const Row& row : kRows) {
    bool wanted = words.empty();
    for (const std::string_view word : words)
      wanted = wanted || std::string_view(row.name).find(word) != std::string_view::npos;
    if (wanted) same = Compare(row) && same;
  }
  return same ? 0 : 1;
}
