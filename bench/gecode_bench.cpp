// Models over integers beside Gecode: the same variables, constraints and branching (the first
// undecided variable, lower half first), all solutions. Gecode's linear equations and alldifferent
// are bounds consistent as ours are.
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
using Gecode::LinIntExpr;

/// Variables in the order in which bench/models declares them.
class Peer : public Gecode::Space {
 public:
  explicit Peer(const std::function<void(Peer&)>& post) {
    post(*this);
    Gecode::branch(*this, truths, Gecode::BOOL_VAR_NONE(), Gecode::BOOL_VAL_MIN());
    Gecode::branch(*this, x, Gecode::INT_VAR_NONE(), Gecode::INT_VAL_SPLIT_MIN());
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

void PostLangford(Peer& peer) {
  constexpr int n = 8;
  const auto& x = peer.Make(2 * n, 1, 2 * n);
  for (int k = 1; k <= n; ++k) peer.State(x[k - 1] + k + 1 == x[n + k - 1]);
  peer.AllDifferent(x);
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

void PostJobs(Peer& peer) {
  constexpr int n = 6, deadline = 54;
  struct Step {
    int machine, hours;
  };
  constexpr Step kJobs[n][n] = {
      {{2, 1}, {0, 3}, {1, 6},  {3, 7},  {5, 3},  {4, 6}},
      {{1, 8}, {2, 5}, {4, 10}, {5, 10}, {0, 10}, {3, 4}},
      {{2, 5}, {3, 4}, {5, 8},  {0, 9},  {1, 1},  {4, 7}},
      {{1, 5}, {0, 5}, {2, 5},  {3, 3},  {4, 8},  {5, 9}},
      {{2, 9}, {1, 3}, {4, 5},  {5, 4},  {0, 3},  {3, 1}},
      {{1, 3}, {3, 3}, {5, 9},  {0, 10}, {4, 4},  {2, 1}},
  };
  const auto& start = peer.Make(n * n, 0, deadline);
  peer.truths = Gecode::BoolVarArray(peer, 90, 0, 1);
  for (int job = 0; job < n; ++job)
    for (int k = 0; k < n; ++k) {
      const LinIntExpr end = start[n * job + k] + kJobs[job][k].hours;
      peer.State(k + 1 < n ? end <= start[n * job + k + 1] : end <= deadline);
    }
  int pair = 0;
  const auto find = [&](int job, int machine) {
    int k = 0;
    while (kJobs[job][k].machine != machine) ++k;
    return k;
  };
  for (int machine = 0; machine < n; ++machine)
    for (int a = 0; a < n; ++a)
      for (int b = a + 1; b < n; ++b) {
        const int i = find(a, machine), j = find(b, machine);
        // A truth says that a goes first, the peer's that b does not.
        Gecode::order(peer, start[n * b + j], kJobs[b][j].hours, start[n * a + i],
                      kJobs[a][i].hours, peer.truths[pair++]);
      }
}

void PostPigeons(Peer& peer) { peer.AllDifferent(peer.Make(10, 1, 9)); }

// --- Comparison ---------------------------------------------------------------------------------

struct Row {
  const char* name;
  const char* file;  // in bench/models
  bench::Definitions definitions;
  std::function<void(Peer&)> post;
};
const std::vector<Row> kRows = {
    {"8 queens",            "queens",        {},            [](Peer& p) { PostQueens(p, 8); } },
    {"10 queens",           "queens",        {{"n", "10"}}, [](Peer& p) { PostQueens(p, 10); }},
    {"12 queens",           "queens",        {{"n", "12"}}, [](Peer& p) { PostQueens(p, 12); }},
    {"SEND + MORE",         "send_more",     {},            PostSendMore                      },
    {"Pythagoras to 200",   "pythagoras",    {},            PostPythagoras                    },
    {"sudoku of 17 clues",  "sudoku",        {},            PostSudoku                        },
    {"magic square 4x4",    "magic_square",  {},            PostMagicSquare                   },
    {"Latin squares 5",     "latin_squares", {},            PostLatinSquares                  },
    {"Langford 8",          "langford",      {},            PostLangford                      },
    {"ft06 within 54",      "ft06",          {},            PostJobs                          },
    {"Golomb 8 within 34",  "golomb",        {},            PostGolomb                        },
    {"10 pigeons, 9 holes", "pigeons",       {},            PostPigeons                       },
};

/// What a search came to.
struct Run {
  std::uint64_t solutions = 0, nodes = 0;
  bool complete = false;
  double seconds = HUGE_VAL;
};

/// From the network as it was read to the last solution, and all memory given back.
Run Solve(const std::string& text, const bench::Definitions& definitions, bool first) {
  const auto model = bench::Read(text, definitions);
  ZULTavSearch::Options options;
  options.choice = ZULTavSearch::VariableChoice::kFirst;
  options.limits.solutions = ZULTavSearch::kUnlimited;
  if (first) options.limits.seconds = limit;
  std::vector<ZULTaVoAny*> values = bench::ValuesOf(*model);
  Run run;
  const auto begin = bench::Clock::now();
  {
    ZULTavSearch search(model->Network(), std::move(values), options);
    const auto outcome = search.Run([](const ZULTavSolution&) { return true; });
    run.solutions = search.GetStatistics().solutions;
    run.nodes = search.GetStatistics().nodes;
    run.complete = outcome == ZULTavSearch::Outcome::kExhausted;
  }
  run.seconds = bench::Since(begin);
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
  const auto begin = bench::Clock::now();
  {
    Gecode::DFS<Peer> search(new Peer(row.post), options);  // which takes the space over
    while (const std::unique_ptr<Peer> solution{search.next()}) ++run.solutions;
    run.nodes = search.statistics().node;
    run.complete = !search.stopped();
  }
  run.seconds = bench::Since(begin);
  return run;
}

/// False where both end with different numbers of solutions.
bool Compare(const Row& row) {
  const std::string text = bench::TextOf(std::string(ZULTAV_MODELS) + "/" + row.file + ".zul");
  const Run ours =
      bench::Fastest(limit, [&](bool first) { return Solve(text, row.definitions, first); });
  const Run theirs = bench::Fastest(limit, [&](bool first) { return SolveByPeer(row, first); });
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
