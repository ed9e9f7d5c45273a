#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <thread>
#include <utility>
#include <vector>

#include "tests/counted_memory.h"
#include "tests/solve/resumed_run.h"
#include "tests/solve/zultav_program.h"

namespace {

constexpr int kInterrupted = 4, kUnusable = 2;

// A sanitizer takes memory of its own.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

/// A file name of this test's own; the file is removed with it.
class TemporaryFile {
 public:
  TemporaryFile() {
    static int made = 0;
    mName = testing::TempDir() + "zultav_run_" + std::to_string(getpid()) + '_' +
            std::to_string(made++);
    Remove();  // what an earlier process of this number has left
  }
  ~TemporaryFile() { Remove(); }
  const std::string& Name() const { return mName; }
  bool Exists() const { return std::filesystem::exists(mName); }
  std::string Bytes() const {
    std::ifstream in(mName, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  void Set(std::string_view bytes) const {
    std::filesystem::remove(mName);  // what is truncated some file systems bring to the disk
    std::ofstream(mName, std::ios::binary) << bytes;
  }

 private:
  /// The file, and the one that a writer was interrupted at.
  void Remove() const {
    for (const char* end : {"", ".part"}) std::filesystem::remove_all(mName + end);
  }

  std::string mName;
};

/// What is printed of solutions, and the last line unless a limit was reached.
std::string Solutions(const Result& result) {
  std::string text;
  if (const auto json = result.Json(); json.is_object()) {
    for (const auto& solution : json["solutions"]) text += solution.dump() + '\n';
    return text;
  }
  for (const std::string& line : result.Lines())
    if (line != "=====UNKNOWN=====" && (line.rfind("//", 0) != 0 || line == "// possible"))
      text += line + '\n';
  return text;
}

std::vector<std::string> ExampleModels() {
  std::vector<std::string> names;
  for (const auto& entry :
       std::filesystem::directory_iterator(std::filesystem::path(Example("x")).parent_path()))
    if (const std::string name = entry.path().stem();
        entry.path().extension() == ".zul" && !name.ends_with("_misspelt"))
      names.push_back(name);
  return names;
}

// --- Interrupted and resumed --------------------------------------------------------------------

/// Runs in pieces of 1, 1, 2, 3, 5, … nodes, which find the same in the same order by as many
/// nodes. Answers how often the search began anew.
int ExpectPartsToBeTheWhole(const std::string& run, const std::string& model = "") {
  const std::string output = " --format json --digits full";
  const Result whole = Zultav(run + output, model);
  const TemporaryFile file;
  Result part = Zultav(run + output + " --max-nodes 1 --checkpoint " + file.Name(), model);
  std::string parts = Solutions(part);
  for (int last = 1, nodes = 1; part.status == kInterrupted;
       last = std::exchange(nodes, last + nodes)) {
    part = Zultav("resume " + file.Name() + output + " --max-nodes " + std::to_string(nodes));
    parts += Solutions(part);
  }
  EXPECT_EQ(part.status, whole.status) << part.err;
  EXPECT_TRUE(parts == Solutions(whole));
  const Result shown = Zultav("show " + file.Name() + output);
  EXPECT_TRUE(Solutions(shown) == Solutions(whole));
  const auto now = shown.Json()["statistics"], before = whole.Json()["statistics"];
  for (const char* name : {"nodes", "fails", "restarts"})
    EXPECT_EQ(now[name], before[name]) << name;
  return before["restarts"];
}

class ResumeTest : public testing::TestWithParam<std::string> {
 protected:
  /// Those that would take long get a smaller size.
  std::string Solve() const {
    static const std::map<std::string, std::string> sizes = {
        {"combustion", " --eps 1e-30,1e-9"},
        {"continuum",  " --eps 1e-2"      },
        {"thermostat", " -D hours=8"      },
        {"trigexp",    " -D n=20"         }
    };
    const auto size = sizes.find(GetParam());
    return "solve " + Example(GetParam()) + (size != sizes.end() ? size->second : "");
  }
};

TEST_P(ResumeTest, PartsAreTogetherTheWholeRun) { ExpectPartsToBeTheWhole(Solve() + " -a"); }

TEST_P(ResumeTest, EveryOptionOfTheSearchIsKept) {
  for (const std::string options :
       {"--select by-kind",
        "--select first",
        "--select largest",
        "--select smallest",
        "--select round-robin",
        "--restarts on",
        "--select by-kind --restarts on --split upper",
        "--split lower",
        "--split upper",
        "--split least",
        "--split greatest",
        "--eps 0.5",
        "--eps 1e-3,1e-2",
        "--ratio 0",
        "--ratio 0.5",
        "-p 1e-3",
        "--trig-limits=-10,10",
        "-n 3",
        "-n 1",
        "--select largest --split greatest --eps 0.1 --ratio 0.1 -p 1e-4 -n 2"}) {
    for (const std::string output : {"", " --digits full", " --format json", " --format module"}) {
      if (!output.empty() && options != "--select largest") continue;
      SCOPED_TRACE(options + output);
      const std::string run =
          Solve() + (options.find("-n") == std::string::npos ? " -a " : " ") + options + output;
      const TemporaryFile once, twice;
      const Result whole = Zultav(run + " --max-nodes 14 --checkpoint " + once.Name());
      Result part = Zultav(run + " --max-nodes 5 --checkpoint " + twice.Name());
      std::string parts = Solutions(part);
      if (part.status == kInterrupted) {
        part = Zultav("resume --max-nodes 9 " + twice.Name() + output);
        parts += Solutions(part);
      }
      EXPECT_EQ(part.status, whole.status) << part.err;
      EXPECT_EQ(parts, Solutions(whole));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Examples, ResumeTest, testing::ValuesIn(ExampleModels()),
                         [](const auto& row) { return row.param; });

// Which rule fails first, of several that could, decides what is learnt and chosen next: nothing
// that a rule keeps beside the path may have a say.
TEST(CheckpointTest, PartsBlameTheSameRules) {
  std::mt19937 random(1);
  std::string clauses = "b[0..39] : bool;";
  for (int i = 0; i < 144; ++i) {
    for (int k = 0; k < 2 + i % 4; ++k) {
      clauses += k != 0 ? "||" : "";
      clauses += random() % 2 != 0 ? "~b[" : "b[";
      clauses += std::to_string(random() % 40) + ']';
    }
    clauses += ';';
  }
  const std::string costas =
      "let n = 7; x[1..n] : int = [1, n]; d[1..n-2, 1..n-1] : int = [-n, n];"
      "for k in 1..n-2, i in 1..n-1 where i + k <= n : d[k, i] = x[i+k] - x[i];"
      "for k in 1..n-2, i in 1..n-1 where i + k > n : d[k, i] = 0;";
  const std::string machines =
      "let n = 5; let h = 11; let t = [[2, 1, 3, 2, 2], [1, 3, 2, 2, 1], [2, 2, 1, 3, 2]];"
      "s[1..3, 1..n] : int = [0, h]; for m in 1..3, j in 1..n : s[m, j] <= h - t[m, j];"
      "for j in 1..n, k in 0..1 : s[1 + (j+k) mod 3, j] + t[1 + (j+k) mod 3, j] <="
      "                           s[1 + (j+k+1) mod 3, j];";
  int restarts = 0;
  for (const std::string& model : {
           clauses,
           costas + "alldifferent(x); for k in 1..n-2 : alldifferent(d[k, 1..n-k]);",
           costas + "alldifferent_values(x);"
                    "for k in 1..n-2 : alldifferent_values(d[k, 1..n-k]);",
           machines + "for m in 1..3 : disjunctive(s[m, ..], t[m, ..]);",
       }) {
    SCOPED_TRACE(model);
    ExpectPartsToBeTheWhole("solve - -a", model);
    restarts += ExpectPartsToBeTheWhole("solve - -n 1000", model);
  }
  EXPECT_GT(restarts, 0);
}

TEST(CheckpointTest, SolutionsAreCountedOn) {
  for (const char* example : {"queens8", "squares"}) {  // the second one ends between mirror images
    SCOPED_TRACE(example);
    const TemporaryFile file;
    const std::string first = Solutions(
        Zultav("solve " + Example(example) + " -n 5 --restarts off --checkpoint " + file.Name()));
    const std::string two = Solutions(Zultav("resume -n 2 " + file.Name()));
    const std::string rest = Solutions(Zultav("resume -a " + file.Name()));
    EXPECT_EQ(first + two + rest, Solutions(Zultav("solve -a " + Example(example))));
    EXPECT_EQ(Zultav("resume -a " + file.Name()).out, "==========\n");
  }
}

TEST(CheckpointTest, TimeEndsARunBetweenMirrorImages) {
  const TemporaryFile file;
  const std::string model = "x[1..40] : real = [-2, 2]; for i in 1..40 : x[i]^2 = 1;";  // 2^40
  const Result part = Zultav("solve - -a --timeout 0.1 --checkpoint " + file.Name(), model);
  EXPECT_EQ(part.status, kInterrupted);
  const std::string parts = Solutions(part) + Solutions(Zultav("resume -n 9 " + file.Name()));
  std::size_t count = 0;
  for (std::size_t at = 0; (at = parts.find("\n-----", at)) != std::string::npos; ++at) ++count;
  EXPECT_GT(count, 9u);
  EXPECT_EQ(parts, Solutions(Zultav("solve - -n " + std::to_string(count), model)));
}

TEST(CheckpointTest, ASignalSavesTheRunAndSaysHowToGoOn) {
  for (const char* signal : {"INT", "TERM"}) {
    const TemporaryFile file;
    const Result result =
        Zultav("solve " + Example("queens8") + " -a -D n=14 --checkpoint " + file.Name(), "",
               std::string("timeout -s ") + signal + " 0.3");
    EXPECT_NE(result.err.find("go on with: zultav resume " + file.Name()), std::string::npos)
        << result.err;
    const auto shown = Zultav("show --format json " + file.Name()).Json();
    EXPECT_GT(shown["open_decisions"], 0);
    EXPECT_EQ(shown["solutions"].size(), shown["statistics"]["solutions"]);
    EXPECT_EQ(Zultav("resume --max-nodes 100 " + file.Name()).status, kInterrupted);
  }
}

/// Runs the program with a reader who lets the pipe fill up while signals come.
Result InterruptedBeforeAFullPipe(const std::string& arguments, bool mayWait) {
  std::array<int, 2> ends{};
  EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
  fcntl(ends[1], F_SETPIPE_SZ, 4096);
  if (!mayWait) fcntl(ends[1], F_SETFL, O_WRONLY | O_NONBLOCK);
  const std::string command = "exec '" ZULTAV_TEST_PROGRAM "' " + arguments + " 2> /dev/null";
  const pid_t program = fork();
  if (program == 0) {
    dup2(ends[1], STDOUT_FILENO);
    execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
    _exit(127);
  }
  close(ends[1]);
  Result result;
  std::array<char, 1000> bytes;
  for (ssize_t count = 1; count > 0;) {
    if (result.out.size() < 5 * bytes.size()) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
      if (!result.out.empty()) kill(program, SIGINT);
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    count = read(ends[0], bytes.data(), bytes.size());
    if (count > 0) result.out.append(bytes.data(), static_cast<std::size_t>(count));
  }
  close(ends[0]);
  int answer = 0;
  waitpid(program, &answer, 0);
  if (WIFEXITED(answer)) result.status = WEXITSTATUS(answer);
  return result;
}

TEST(CheckpointTest, NothingIsLostToSignalsBeforeAFullPipe) {
  const TemporaryFile model;
  model.Set("b[1..3, 0..3] : bool;");
  for (const std::string format : {"text", "json"}) {
    const std::string output = " --format " + format;
    const std::string whole = Solutions(Zultav("solve -a " + model.Name() + output));
    for (int i = 0; i < 10; ++i) {
      const TemporaryFile file;
      const Result part = InterruptedBeforeAFullPipe(
          "solve -a " + model.Name() + " --checkpoint " + file.Name() + output, i % 2 == 0);
      EXPECT_EQ(part.status, kInterrupted);
      const Result rest = Zultav("resume " + file.Name() + output);
      EXPECT_TRUE(Solutions(part) + Solutions(rest) == whole) << format << ' ' << i;
    }
  }
}

TEST(CheckpointTest, AKilledRunCanBeResumed) {
  const std::string run = "solve " + Example("queens8") + " -a -D n=10";
  const auto start = std::chrono::steady_clock::now();
  const std::string whole = Solutions(Zultav(run));
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
  std::mt19937 random(4);
  int resumed = 0;
  for (int i = 0; i < 100; ++i) {
    const TemporaryFile file;
    const std::string moment =
        std::to_string(time.count() * 0.01 * static_cast<double>(1 + random() % 100));
    Zultav(run + " --every 0.001 --checkpoint " + file.Name(), "", "timeout -s KILL " + moment);
    if (!file.Exists()) continue;  // killed before it had begun
    std::string recorded = Solutions(Zultav("show " + file.Name()));
    if (const auto end = recorded.rfind("==========\n"); end != std::string::npos)
      recorded.resize(end);
    const Result rest = Zultav("resume " + file.Name());
    EXPECT_EQ(rest.status, 0) << rest.err;
    EXPECT_EQ(recorded + Solutions(rest), whole) << moment;
    ++resumed;
  }
  EXPECT_GT(resumed, 10);  // on a busy machine many are killed before they have begun
}

// --- The file ------------------------------------------------------------------------------------

TEST(CheckpointTest, WhatCannotBeSavedLeavesWhatWas) {
  const std::string run = "solve -a " + Example("queens8");
  const TemporaryFile file;
  Zultav(run + " --max-nodes 100 --checkpoint " + file.Name());
  const std::string before = file.Bytes();
  const Result full = Zultav("resume --max-nodes 3 " + file.Name(), "", "ulimit -f 1;");
  EXPECT_EQ(full.status, kInterrupted);
  EXPECT_NE(full.err.find("File too large"), std::string::npos) << full.err;
  EXPECT_EQ(full.err.find("the run is saved"), std::string::npos) << full.err;
  EXPECT_EQ(file.Bytes(), before);
  // What was not printed was not found: it is printed again.
  const Result unseen = Zultav("resume " + file.Name() + " > /dev/full; :");
  EXPECT_EQ(file.Bytes(), before);
}

TEST(CheckpointTest, MemoryThatRunsOutLeavesWhatWas) {
  const TemporaryFile file;
  Zultav("solve -a --max-nodes 50 " + Example("queens8") + " --checkpoint " + file.Name());
  std::string reason;
  auto run = GoingOn::From(file.Name(), Journal::Access::kWrite, reason);
  ASSERT_NE(run, nullptr) << reason;
  run->Run();
  std::uint64_t known = 50;
  bool saved = false;
  for (long n = 0; !saved; ++n) {
    gAllocationsUntilFailure = n;
    saved = run->GetCheckpoint().Save(run->GetSearch(), false, reason);
    gAllocationsUntilFailure = -1;
    if (saved) known += GoingOn::kNodes;
    const auto after = Checkpoint::Open(file.Name(), Journal::Access::kRead, reason);
    ASSERT_NE(after, nullptr) << reason;
    EXPECT_FALSE(after->IsTorn());
    EXPECT_EQ(after->GetBefore().nodes, known) << n;
    ASSERT_LT(n, 1000);
  }
  const auto whole = Solutions(Zultav("solve -a --max-nodes 55 " + Example("queens8")));
  EXPECT_EQ(Solutions(Zultav("show " + file.Name())), whole);
}

TEST(CheckpointTest, OnlyACheckpointIsReplaced) {
  const TemporaryFile model, place;
  const std::string text = "x : int = [1, 9]; x * x = 49;", name = place.Name();
  model.Set(text);
  const std::string solve = "solve -a " + model.Name() + " --force --checkpoint ";
  const std::pair<std::string, const char*> rows[] = {
      {"true",                                                     "No such file"        }, // name/ below
      {"mkdir " + name,                                            "folder"              },
      {"mkfifo " + name,                                           "no regular file"     },
      {"ln -s /dev/null " + name,                                  "no regular file"     },
      {"ln " + model.Name() + ' ' + name,                          "not an object stream"},
      {"ln -s " + model.Name() + ' ' + name,                       "not an object stream"},
      {": > " + name,                                              "it is empty"         },
      {"printf '\\211ZUL\\r\\n\\1\\0\\12zultav run\\3' > " + name, "it is of version 3"  },
      {"ln -s " + name + ' ' + name,                               "symbolic links"      },
  };
  for (const auto& [make, reason] : rows) {
    SCOPED_TRACE(make);
    ASSERT_EQ(std::system(make.c_str()), 0);
    struct stat before = {}, after = {};
    lstat(name.c_str(), &before);
    const bool nowhere = make == "true";
    const Result result = Zultav(solve + name + (nowhere ? "/below" : ""));
    EXPECT_EQ(result.status, kUnusable);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find(reason), std::string::npos) << result.err;
    for (const char* command : {"resume ", "show "}) {
      const Result other = Zultav(command + name);
      EXPECT_EQ(other.status, kUnusable) << other.err;
    }
    lstat(name.c_str(), &after);
    EXPECT_EQ(before.st_ino, after.st_ino);
    EXPECT_EQ(before.st_size, after.st_size);
    std::filesystem::remove(name);
  }
  EXPECT_EQ(model.Bytes(), text);
  EXPECT_EQ(Zultav(solve + "''").status, kUnusable);
}

TEST(CheckpointTest, AnUnfinishedRunIsReplacedByForceOnly) {
  const TemporaryFile file;
  const std::string run = "solve -a " + Example("queens8") + " --checkpoint " + file.Name();
  Zultav(run + " --max-nodes 9");
  const std::string before = file.Bytes();
  const Result refused = Zultav(run);
  EXPECT_EQ(refused.status, kUnusable);
  EXPECT_NE(refused.err.find("--force"), std::string::npos) << refused.err;
  EXPECT_EQ(file.Bytes(), before);
  EXPECT_EQ(Zultav(run + " --force").status, 0);
  EXPECT_EQ(Zultav(run).status, 0) << "one that has ended may be replaced";
}

TEST(CheckpointTest, LinksAndModesStay) {
  const TemporaryFile target, link;
  std::filesystem::create_symlink(target.Name(), link.Name());  // of a file that is still to come
  const std::string run = "solve -a " + Example("queens8") + " --checkpoint " + link.Name();
  Zultav(run);
  ASSERT_TRUE(target.Exists());
  constexpr auto kOwner = std::filesystem::perms::owner_read | std::filesystem::perms::owner_write;
  std::filesystem::permissions(target.Name(), kOwner);
  for (const std::string& command : {run + " --max-nodes 9", "resume " + link.Name()}) {
    EXPECT_NE(Zultav(command).status, kUnusable);
    EXPECT_TRUE(std::filesystem::is_symlink(link.Name()));
    EXPECT_EQ(std::filesystem::status(target.Name()).permissions(), kOwner);
  }
}

TEST(CheckpointTest, OneRunAtATime) {
  const TemporaryFile file, number;
  const std::string run =
      "solve -a -D n=14 " + Example("queens8") + " --every 0.01 --checkpoint " + file.Name();
  Zultav(run + " -t 60 > /dev/null 2>&1 & echo $! > " + number.Name() + "; :");
  while (!file.Exists()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  for (const std::string& second : {run + " --force", "resume " + file.Name()}) {
    const Result result = Zultav(second);
    EXPECT_EQ(result.status, kUnusable);
    EXPECT_NE(result.err.find("another run"), std::string::npos) << result.err;
  }
  EXPECT_EQ(Zultav("show " + file.Name()).status, 0);
  EXPECT_EQ(kill(std::stoi(number.Bytes()), SIGKILL), 0);
  EXPECT_EQ(Zultav("resume --max-nodes 9 " + file.Name()).status, kInterrupted) << "it was killed";
}

TEST(CheckpointTest, SavingDoesNotGrowWithWhatWasFound) {
  const TemporaryFile model, file;
  model.Set("b[1..12] : bool; n[1..500] : int = [7, 7];");
  const std::string run = "solve " + model.Name();
  const std::string little = kSanitized ? "" : "ulimit -d 32000;";  // KiB
  const Result first =
      Zultav(run + " -n 3000 --every 0.01 --checkpoint " + file.Name(), "", little);
  const std::string before = file.Bytes();
  EXPECT_GT(before.size(), 20'000'000u) << "more than there is memory for, all in all";
  const Result rest = Zultav("resume -a " + file.Name(), "", little);
  EXPECT_TRUE(file.Bytes().starts_with(before)) << "a saving only adds";
  const std::string whole = Zultav(run + " -a").out;
  EXPECT_TRUE(first.out + rest.out == whole);
  EXPECT_TRUE(Solutions(Zultav("show " + file.Name(), "", little)) == whole);
}

TEST(CheckpointTest, StatesThatOthersHaveFollowedGo) {
  const TemporaryFile model, file;
  model.Set("b[1..2000] : bool;");
  Zultav("solve --checkpoint " + file.Name() + ' ' + model.Name());
  std::string reason;
  const auto run = GoingOn::From(file.Name(), Journal::Access::kWrite, reason);
  ASSERT_NE(run, nullptr) << reason;
  run->Run();
  const std::size_t once = file.Bytes().size();
  std::size_t most = 0;
  for (int i = 0; i < 400; ++i) {
    ASSERT_TRUE(run->GetCheckpoint().Save(run->GetSearch(), false, reason)) << reason;
    most = std::max(most, file.Bytes().size());
  }
  EXPECT_LT(most, once + (1u << 20) + (1u << 16));
  EXPECT_LT(file.Bytes().size(), most);
  EXPECT_TRUE(GoesOn(file.Name(), reason)) << reason;
}

// --- Hostile files ------------------------------------------------------------------------------

bool GoesOn(const std::string& file) {
  std::string reason;
  const bool goesOn = ::GoesOn(file, reason);
  EXPECT_EQ(goesOn, reason.empty());
  return goesOn;
}

class HostileCheckpointTest : public testing::Test {
 protected:
  void SetUp() override {
    Zultav("solve - -a --max-nodes 9 --checkpoint " + mFile.Name(),
           "i, j : int = [1, 9]; s : single int; x : real = [0, 4]; a : angle; p : positive;"
           "b : bool; b == (i >> 4); s = i + j; x^2 = i; sin(a) = 0.5; p = x + 1; t : single real;"
           "t = 1.5;");
    mBytes = mFile.Bytes();
    ASSERT_GT(mBytes.size(), 500u);
    ASSERT_TRUE(GoesOn(mFile.Name()));
  }
  TemporaryFile mFile;
  std::string mBytes;
};

// A file that is cut off or has a wrong bit is refused, or goes on from an earlier state, and is
// known not to be whole unless it was cut between two records.
TEST_F(HostileCheckpointTest, DamageIsFound) {
  for (int i = 0; i < 2; ++i) Zultav("resume --max-nodes 4 " + mFile.Name());
  const std::string bytes = mFile.Bytes();
  std::set<std::uint64_t> states;
  int between = 0;
  const auto check = [&] {
    std::string reason;
    const auto checkpoint = Checkpoint::Open(mFile.Name(), Journal::Access::kRead, reason);
    if (checkpoint == nullptr) return;
    between += !checkpoint->IsTorn();
    const bool isNew = states.insert(checkpoint->GetBefore().nodes).second;
    EXPECT_TRUE(!isNew || GoesOn(mFile.Name()));
  };
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    mFile.Set(bytes.substr(0, size));
    check();
  }
  EXPECT_EQ(states, (std::set<std::uint64_t>{0, 9, 13}));
  EXPECT_EQ(between, 6) << "seven records: the run, and thrice what was found and a state";
  between = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    std::string flipped = bytes;
    flipped[i] = static_cast<char>(flipped[i] ^ (1 << i % 8));
    mFile.Set(flipped);
    check();
  }
  EXPECT_EQ(states, (std::set<std::uint64_t>{0, 9, 13}));
  EXPECT_EQ(between, 0);
}

// Where the checksums were made to fit, the reader must still take nothing for granted.
TEST_F(HostileCheckpointTest, ForgeriesDoNoHarm) {
  int refused = 0;
  for (std::size_t i = 0; i < mBytes.size(); ++i) {
    for (int bit = 0; bit < 8; ++bit) {
      std::string bytes = mBytes;
      bytes[i] = static_cast<char>(bytes[i] ^ (1 << bit));
      mFile.Set(WithChecksums(bytes));
      refused += !GoesOn(mFile.Name());
    }
  }
  EXPECT_GT(refused, static_cast<int>(mBytes.size()));
}

}  // namespace
