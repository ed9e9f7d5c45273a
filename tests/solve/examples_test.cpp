#include <fnmatch.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "tests/solve/zultav_program.h"

namespace {

using nlohmann::json;

struct ExampleCase {
  std::string name, arguments;
  std::size_t count;
  /// Values that exactly one solution has.
  json values;
};

class ExampleTest : public testing::TestWithParam<ExampleCase> {};

bool Has(const json& solution, const json& values) {
  return std::all_of(values.items().begin(), values.items().end(), [&](const auto& item) {
    return solution["values"][item.key()] == item.value();
  });
}

TEST_P(ExampleTest, HasItsSolutionsInBothFormats) {
  const std::size_t count = GetParam().count;
  const json& values = GetParam().values;
  const std::string command = "solve " + Example(GetParam().name) + " -a " + GetParam().arguments;
  const Result text = Zultav(command);
  EXPECT_EQ(text.status, 0) << text.err;
  EXPECT_EQ(text.err, "");
  const auto lines = text.Lines();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "----------"), count);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "// possible"), 0);
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.back(), count == 0 ? "=====UNSATISFIABLE=====" : "==========");

  const Result structured = Zultav(command + " --format json");
  EXPECT_EQ(structured.status, 0);
  const json document = structured.Json();
  ASSERT_TRUE(document.is_object()) << structured.out;
  const char* all = document.contains("bounds") ? "OPTIMAL_SOLUTION" : "ALL_SOLUTIONS";
  EXPECT_EQ(document["status"], count == 0 ? "UNSATISFIABLE" : all);
  EXPECT_EQ(document["errors"], json::array());
  EXPECT_EQ(document["statistics"]["solutions"], count);
  const json& solutions = document["solutions"];
  ASSERT_EQ(solutions.size(), count);
  EXPECT_EQ(std::set<json>(solutions.begin(), solutions.end()).size(), count);
  for (const json& solution : solutions) EXPECT_EQ(solution["proven"], true);
  EXPECT_EQ(std::count_if(solutions.begin(), solutions.end(),
                          [&](const json& solution) { return Has(solution, values); }),
            std::min<std::size_t>(count, 1));
}

INSTANTIATE_TEST_SUITE_P(
    Integers, ExampleTest,
    testing::Values(
        ExampleCase{
            "send_more_money", "", 1, {{"send", 9567}, {"more", 1085}, {"money", 10652}}
},
        ExampleCase{"queens8", "", 92, {{"q", {1, 5, 8, 6, 3, 7, 2, 4}}}},
        ExampleCase{"queens8", "-D n=6", 4, {{"q", {2, 4, 6, 1, 3, 5}}}},
        ExampleCase{"magic_square", "", 8, {{"square", {2, 7, 6, 9, 5, 1, 4, 3, 8}}}},
        ExampleCase{"pythagorean", "", 18, {{"a", 20}, {"b", 21}, {"c", 29}}},
        ExampleCase{"chinese_remainder", "", 3, {{"x", 23}}},
        ExampleCase{"twin_primes", "", 35, {{"p", 881}, {"q", 883}}},
        ExampleCase{"change_making", "", 50, {{"pennies", 0}, {"nickels", 10}}},
        ExampleCase{"change_making", "-Damount=100", 292, {{"halves", 2}}},
        ExampleCase{"logic_puzzle",
                    "",
                    1,
                    {{"anna", true}, {"ben", true}, {"carl", false}, {"dora", true}}},
        ExampleCase{"scheduling", "", 3, {{"start", {2, 5, 7, 0, 5}}, {"makespan", 11}}},
        ExampleCase{"scheduling", "-D deadline=10", 0, {}}, ExampleCase{"ft06", "", 0, {}},
        ExampleCase{
            "bridge", "", 2, {{"start", {5, 0, 0, 12, 3, 8, 17, 9, 15, 23, 20, 26, 32, 31}}}},
        ExampleCase{"bridge", "-D days=33", 0, {}},
        ExampleCase{"langford", "", 150, {{"first", {4, 2, 12, 8, 9, 7, 3, 1}}}},
        ExampleCase{"langford", "-D n=3", 1, {{"first", {2, 3, 1}}}},
        ExampleCase{"langford", "-D n=6", 0, {}},
        ExampleCase{
            "social_golfers", "", 6, {{"player", {1, 2, 3, 5, 4, 6, 1, 3, 2, 6, 4, 5, 1, 4, 2,
                                                  3, 5, 6, 1, 5, 2, 4, 3, 6, 1, 6, 2, 5, 3, 4}}}},
        ExampleCase{"sums_of_cubes", "", 1, {{"a", 1332}, {"b", 1525}, {"c", 1408}, {"d", 1461}}},
        ExampleCase{"sudoku",
                    "--data " ZULTAV_TEST_EXAMPLES "/sudoku.json",
                    1,
                    {{"row",
                      {{5, 3, 4, 6, 7, 8, 9, 1, 2},
                       {6, 7, 2, 1, 9, 5, 3, 4, 8},
                       {1, 9, 8, 3, 4, 2, 5, 6, 7},
                       {8, 5, 9, 7, 6, 1, 4, 2, 3},
                       {4, 2, 6, 8, 5, 3, 7, 9, 1},
                       {7, 1, 3, 9, 2, 4, 8, 5, 6},
                       {9, 6, 1, 5, 3, 7, 2, 8, 4},
                       {2, 8, 7, 4, 1, 9, 6, 3, 5},
                       {3, 4, 5, 2, 8, 6, 1, 7, 9}}}}},
        ExampleCase{"zebra", "", 1, {{"water", 1}, {"zebra", 5}}},
        ExampleCase{"magic_sequence", "", 1, {{"s", {6, 2, 1, 0, 0, 0, 1, 0, 0, 0}}}},
        ExampleCase{"all_interval_series", "", 40, {{"s", {0, 7, 1, 6, 2, 5, 3, 4}}}},
        ExampleCase{"costas", "", 444, {{"p", {1, 2, 5, 7, 6, 4, 8, 3}}}},
        // Both ways round.
        ExampleCase{"tour", "--objective-limit 235", 2, {{"next", {5, 3, 8, 6, 4, 7, 2, 1}}}},
        ExampleCase{"tour", "-D longest=234", 0, {}},
        ExampleCase{"roster",
                    "",
                    11426,
                    {{"shift",
                      {{1, 1, 1, 2, 3, 3, 3},
                       {2, 2, 2, 2, 2, 2, 1},
                       {2, 2, 2, 3, 1, 2, 2},
                       {3, 3, 3, 1, 2, 1, 2}}}}},
        ExampleCase{"nonogram",
                    "",
                    1,
                    {{"square",
                      {{1, 2, 1, 2, 1},
                       {2, 2, 2, 2, 2},
                       {2, 2, 2, 2, 2},
                       {1, 2, 2, 2, 1},
                       {1, 1, 2, 1, 1}}}}},
        ExampleCase{"beam", "", 1, {{"beam", 4}}},
        ExampleCase{"knapsack", "-a --objective-limit 15", 1, {{"taken", {0, 1, 1, 1, 1}}}},
        ExampleCase{"unsatisfiable", "", 0, {}}),
    [](const auto& row) { return row.param.name + std::to_string(row.index); });

/// Each option beside each other one, with the formats, -D and --propagate-only in turn.
TEST(ExamplesTest, OptionsDoNotChangeWhatIsFound) {
  const std::string model =
      "let n = 2; x, y : int = [1, 5]; b : bool; r : real = [0, 9];"
      "x + n = y; b == (x >> 2); r^2 = x;";
  const std::vector<std::string> options = {
      "--select first",       "--select largest", "--select smallest",
      "--select round-robin", "--split lower",    "--split upper",
      "--split least",        "--split greatest", "-p 1e-4",
      "--eps 1e-5",           "--eps 0,1e-3",     "--ratio 0",
      "--ratio 0.5",          "--digits full",    "--module ZULTavNumbers",
      "--trig-limits=-10,10", "-t 1000",          "-s",
      "--max-nodes 100000"};
  unsigned turn = 0;
  for (const std::string& one : options)
    for (const std::string& other : options) {
      if (one.substr(0, one.find(' ')) == other.substr(0, other.find(' '))) continue;
      ++turn;
      const bool structured = turn % 2 != 0, propagates = turn % 4 > 1, defines = turn % 3 == 0;
      const std::string arguments = one + ' ' + other + (propagates ? " --propagate-only" : " -a") +
                                    (structured ? " --format json" : "") +
                                    (defines ? " -D n=3" : "");
      SCOPED_TRACE(arguments);
      const Result result = Zultav("solve - " + arguments, model);
      EXPECT_EQ(result.status, 0) << result.err;
      const int count = defines ? 2 : 3;
      if (!structured) {
        const auto lines = result.Lines();
        EXPECT_EQ(std::count(lines.begin(), lines.end(), "----------"), propagates ? 1 : count);
        EXPECT_EQ(result.out.find("// solutions") != std::string::npos,
                  arguments.find("-s ") != std::string::npos);
        continue;
      }
      const json document = result.Json();
      if (propagates) {
        EXPECT_EQ(document["domains"]["x"], json({
                                                {"lo", 1    },
                                                {"hi", count}
        }));
        continue;
      }
      std::set<int> found;
      for (const json& solution : document["solutions"]) {
        const json &values = solution["values"], &r = values["r"];
        const int x = values["x"];
        found.insert(x);
        EXPECT_EQ(values["y"], x + (defines ? 3 : 2));
        EXPECT_EQ(values["b"], x > 2);
        EXPECT_EQ(solution["proven"], true);
        EXPECT_LE(r.is_number() ? r : r["lo"], std::sqrt(x));
        EXPECT_GE(r.is_number() ? r : r["hi"], std::sqrt(x));
      }
      EXPECT_EQ(found.size(), static_cast<std::size_t>(count));
      EXPECT_EQ(document["solutions"].size(), found.size());
    }
}

TEST(ExamplesTest, AScheduleOfFt06UsesEachMachineForOneJobAtATime) {
  constexpr int kHours[6][6] = {
      {3, 10, 9, 5, 3, 10},
      {6, 8,  1, 5, 3, 3 },
      {1, 5,  5, 5, 9, 1 },
      {7, 4,  4, 3, 1, 3 },
      {6, 10, 7, 8, 5, 4 },
      {3, 10, 8, 9, 4, 9 }
  };
  const Result result = Zultav("solve " + Example("ft06") + " -D deadline=55 --format json");
  const json document = result.Json();
  ASSERT_EQ(document["solutions"].size(), 1u);
  const json& values = document["solutions"][0]["values"];
  for (std::size_t machine = 0; machine < 6; ++machine) {
    const json& start = values["m" + std::to_string(machine + 1)];
    std::set<int> busy;
    int hours = 0;
    for (std::size_t job = 0; job < 6; ++job)
      for (int hour = 0; hour < kHours[machine][job]; ++hour, ++hours)
        busy.insert(start[job].get<int>() + hour);
    EXPECT_EQ(busy.size(), static_cast<std::size_t>(hours));
    EXPECT_LT(*busy.rbegin(), 55);
  }
}

TEST(ExamplesTest, AMisspeltModelIsRefusedWithAdvice) {
  const std::string file = Example("send_more_money_misspelt");
  for (const std::string command : {"solve ", "check "}) {
    SCOPED_TRACE(command);
    const Result text = Zultav(command + file);
    EXPECT_EQ(text.status, 3);
    EXPECT_EQ(text.out, "");
    for (const char* part : {":13:1: error: ", "'alldiferent'", "alldifferent",
                             ":16:47: error: ", "    ^", "2 errors"})
      EXPECT_NE(text.err.find(part), std::string::npos) << part << " in\n" << text.err;

    const Result structured = Zultav(command + file + " --format json");
    EXPECT_EQ(structured.status, 3);
    EXPECT_EQ(structured.err, "");
    const json errors = structured.Json()["errors"];
    ASSERT_EQ(errors.size(), 2u);
    EXPECT_EQ(errors[0]["file"], file);
    EXPECT_EQ(errors[0]["line"], 13);
    EXPECT_EQ(errors[1]["column"], 47);
    EXPECT_NE(errors[1]["message"], "");
  }
}

// --- The pages ---------------------------------------------------------------------------------

namespace fs = std::filesystem;

/// All that a command prints, run in a folder where the program is found.
std::string Shell(const fs::path& folder, const std::string& command) {
  const std::string whole = "cd '" + folder.string() + "' && export PATH=\"" +
                            fs::path(ZULTAV_TEST_PROGRAM).parent_path().string() +
                            ":$PATH\" && { " + command + "; } 2>&1";
  FILE* pipe = popen(whole.c_str(), "r");
  std::string text;
  for (int c; pipe != nullptr && (c = std::fgetc(pipe)) != EOF;) text += static_cast<char>(c);
  if (pipe != nullptr) pclose(pipe);
  return text;
}

/// Whether the text is the shown one, where "..." stands for anything.
bool IsAsShown(const std::string& shown, const std::string& text) {
  std::string pattern;
  for (std::size_t i = 0; i < shown.size(); ++i) {
    const bool anything = shown.compare(i, 3, "...") == 0;
    if (anything) i += 2;
    if (std::string_view("*?[\\").find(shown[i]) != std::string_view::npos) pattern += '\\';
    pattern += anything ? '*' : shown[i];
  }
  return fnmatch(pattern.c_str(), text.c_str(), 0) == 0;
}

/// Commands stand behind "$ ", what they print below. A block without commands is the model.zul of
/// the next one.
TEST(ExamplesTest, ThePagesShowWhatTheProgramPrints) {
  const fs::path folder =
      fs::path(testing::TempDir()) / ("zultav_pages_" + std::to_string(getpid()));
  const fs::path root = fs::path(ZULTAV_TEST_EXAMPLES).parent_path();
  fs::remove_all(folder);
  fs::create_directories(folder);
  fs::create_directory_symlink(root / "examples", folder / "examples");
  std::size_t commands = 0;
  for (const char* page : {"README.md", "docs/usage.md", "docs/language.md", "docs/relations.md"}) {
    std::ifstream in(root / page);
    std::string line, block;
    for (bool inBlock = false; std::getline(in, line);) {
      if (line.compare(0, 3, "```") != 0) {
        if (inBlock) block += line + '\n';
        continue;
      }
      inBlock = !inBlock;
      if (!inBlock && block.compare(0, 2, "$ ") != 0) std::ofstream(folder / "model.zul") << block;
      for (std::size_t at = 0; !inBlock && block.compare(at, 2, "$ ") == 0; ++commands) {
        const std::size_t output = block.find('\n', at) + 1;
        const std::string command = block.substr(at + 2, output - at - 3);
        at = std::min(block.find("\n$ ", output - 1), block.size() - 1) + 1;
        const std::string text = Shell(folder, command);
        EXPECT_TRUE(IsAsShown(block.substr(output, at - output), text))
            << page << ": " << command << '\n'
            << text;
      }
      block.clear();
    }
  }
  EXPECT_GE(commands, 10U);
  fs::remove_all(folder);
}

}  // namespace
