#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <thread>

#include "tests/solve/resumed_run.h"
#include "tests/solve/zultav_program.h"

namespace {

constexpr int kInterrupted = 4, kUnusable = 2;

/// A file name of this test's own; the file is removed with it.
class TemporaryFile {
 public:
  TemporaryFile() {
    static int made = 0;
    mName = testing::TempDir() + "zultav_run_" + std::to_string(getpid()) + '_' +
            std::to_string(made++);
    std::filesystem::remove(mName);
  }
  ~TemporaryFile() { std::filesystem::remove(mName); }
  const std::string& Name() const { return mName; }
  bool Exists() const { return std::filesystem::exists(mName); }
  std::string Bytes() const {
    std::ifstream in(mName, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  void Set(std::string_view bytes) const { std::ofstream(mName, std::ios::binary) << bytes; }

 private:
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

// --- Interrupted and resumed --------------------------------------------------------------------

struct RunCase {
  std::string example;
  std::vector<int> nodes;  // after so many a part of the run ends
  std::string arguments;
};
void PrintTo(const RunCase& row, std::ostream* out) { *out << row.example; }

class ResumeTest : public testing::TestWithParam<RunCase> {};

TEST_P(ResumeTest, PartsAreTogetherTheWholeRun) {
  const auto& [example, steps, arguments] = GetParam();
  const std::string run = "solve " + Example(example) + " -a --digits full " + arguments;
  const std::string whole = Solutions(Zultav(run));
  for (const int nodes : steps) {
    SCOPED_TRACE(nodes);
    const TemporaryFile file;
    const std::string limit = " --max-nodes " + std::to_string(nodes);
    Result part = Zultav(run + limit + " --checkpoint " + file.Name());
    std::string parts = Solutions(part);
    for (int i = 0; part.status == kInterrupted && i < 200; ++i) {
      part = Zultav("resume " + file.Name() + " --digits full" + limit);
      parts += Solutions(part);
    }
    EXPECT_EQ(part.status, 0) << part.err;
    EXPECT_EQ(parts, whole);
    EXPECT_EQ(Solutions(Zultav("show --digits full " + file.Name())), whole);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Examples, ResumeTest,
    testing::Values(
        RunCase{
            "broyden", {1, 2},
             ""
},
        RunCase{"broyden_banded", {1, 4}, ""}, RunCase{"caprasse", {60, 333}, ""},
        RunCase{"change_making", {20, 101}, ""}, RunCase{"chinese_remainder", {1, 2}, ""},
        RunCase{"circle_parabola", {1}, ""}, RunCase{"combustion", {1, 3}, "--eps 1e-30,1e-9"},
        RunCase{"compound_interest", {1}, ""}, RunCase{"continuum", {300, 999}, "--eps 1e-2"},
        RunCase{"cyclohexane", {3, 50}, ""}, RunCase{"folium", {1, 2}, ""},
        RunCase{"gear_train", {5, 31}, ""}, RunCase{"kepler", {1}, ""},
        RunCase{"kinematics", {1, 10}, ""}, RunCase{"logic_puzzle", {1}, ""},
        RunCase{"magic_square", {60}, ""}, RunCase{"no_contact", {1}, ""},
        RunCase{"party", {1}, ""}, RunCase{"pythagorean", {1, 9}, ""},
        RunCase{"queens8", {13, 200}, ""}, RunCase{"robot_arm", {1}, ""},
        RunCase{"rounding", {1}, ""}, RunCase{"scheduling", {1, 3}, ""},
        RunCase{"send_more_money", {1, 5}, ""}, RunCase{"sphere_cylinder_plane", {1, 2}, ""},
        RunCase{"squares", {500}, ""}, RunCase{"thermostat", {1}, "-D hours=8"},
        RunCase{"trigexp", {1}, "-D n=20"}, RunCase{"twin_primes", {10}, ""},
        RunCase{"two_circles", {1}, ""}, RunCase{"unsatisfiable", {1}, ""}),
    [](const auto& row) { return row.param.example; });

TEST(CheckpointTest, CoversEveryExample) {
  std::size_t models = 0;
  for (const auto& entry :
       std::filesystem::directory_iterator(std::filesystem::path(Example("x")).parent_path()))
    models += entry.path().extension() == ".zul";
  EXPECT_EQ(models, 31u + 1) << "one is misspelt on purpose; add new ones above";
}

TEST(CheckpointTest, SolutionsAreCountedOn) {
  for (const char* example : {"queens8", "squares"}) {  // the second one ends between mirror images
    SCOPED_TRACE(example);
    const TemporaryFile file;
    const std::string first =
        Solutions(Zultav("solve " + Example(example) + " -n 5 --checkpoint " + file.Name()));
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
  const TemporaryFile file;
  for (const char* signal : {"INT", "TERM"}) {
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
  model.Set("b[1..12] : bool;");
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
  const std::string run = "solve " + Example("queens8") + " -a -D n=9";
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
    std::filesystem::remove(file.Name() + ".part");
    if (!file.Exists()) continue;  // killed before it had begun
    std::string recorded = Solutions(Zultav("show " + file.Name()));
    if (const auto end = recorded.rfind("==========\n"); end != std::string::npos)
      recorded.resize(end);
    const Result rest = Zultav("resume " + file.Name());
    EXPECT_EQ(rest.status, 0) << rest.err;
    EXPECT_EQ(recorded + Solutions(rest), whole) << moment;
    ++resumed;
  }
  EXPECT_GT(resumed, 30);
}

TEST(CheckpointTest, ACheckpointThatCannotBeWrittenDoesNotEndTheRun) {
  const std::string run = "solve -a " + Example("queens8");
  const std::string whole = Solutions(Zultav(run));
  const std::pair<std::string, const char*> rows[] = {
      {"/nowhere/run",          "No such file or directory"},
      {testing::TempDir(),      "directory"                },
      {"/proc/zultav_test_run", "No such file or directory"},
  };
  for (const auto& [place, reason] : rows) {
    SCOPED_TRACE(place);
    const Result result = Zultav(run + " --every 0.001 --checkpoint " + place);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(Solutions(result), whole);
    EXPECT_NE(result.err.find(reason), std::string::npos) << result.err;
  }
  const TemporaryFile file;
  Zultav(run + " --max-nodes 100 --checkpoint " + file.Name());
  const std::string before = file.Bytes();
  const Result full = Zultav("resume --max-nodes 3 " + file.Name(), "", "ulimit -f 1;");
  EXPECT_EQ(full.status, kInterrupted);
  EXPECT_NE(full.err.find("File too large"), std::string::npos) << full.err;
  EXPECT_EQ(file.Bytes(), before);
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

TEST_F(HostileCheckpointTest, DamageIsFound) {
  for (std::size_t size = 0; size < mBytes.size(); ++size) {
    mFile.Set(mBytes.substr(0, size));
    ASSERT_FALSE(GoesOn(mFile.Name())) << size;
  }
  std::mt19937 random(7);
  for (std::size_t i = 0; i < mBytes.size(); ++i) {
    std::string bytes = mBytes;
    bytes[i] = static_cast<char>(bytes[i] ^ (1 << random() % 8));
    mFile.Set(bytes);
    ASSERT_FALSE(GoesOn(mFile.Name())) << i;
  }
}

// Where the checksum was made to fit, the reader must still take nothing for granted.
TEST_F(HostileCheckpointTest, ForgeriesDoNoHarm) {
  const std::string content = mBytes.substr(0, mBytes.size() - 8);
  int refused = 0;
  for (std::size_t i = 0; i < content.size(); ++i) {
    for (int bit = 0; bit < 8; ++bit) {
      std::string bytes = content;
      bytes[i] = static_cast<char>(bytes[i] ^ (1 << bit));
      mFile.Set(WithChecksum(bytes));
      refused += !GoesOn(mFile.Name());
    }
    mFile.Set(WithChecksum(content.substr(0, i)));
    ASSERT_FALSE(GoesOn(mFile.Name())) << i;
  }
  EXPECT_GT(refused, static_cast<int>(content.size()));
}

TEST_F(HostileCheckpointTest, TheProgramSaysWhatIsWrong) {
  const struct {
    std::string bytes, reason;
  } rows[] = {
      {"",                       "cannot read checkpoint"},
      {"x : int;",               "damaged"               },
      {mBytes.substr(1),         "damaged"               },
      {WithChecksum("x : int;"), "not an object stream"  },
  };
  for (const auto& [bytes, reason] : rows) {
    mFile.Set(bytes);
    for (const char* command : {"resume ", "show "}) {
      const Result result = Zultav(command + mFile.Name());
      EXPECT_EQ(result.status, kUnusable);
      EXPECT_NE(result.err.find(reason), std::string::npos) << result.err;
    }
  }
}

}  // namespace
