#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <ostream>

#include "tests/solve/zultav_program.h"

namespace {

using nlohmann::json;
using Expected = std::map<std::string, double>;

/// The values of variables in one solution, known to a relative 1e-9 from computations in higher
/// precision. An element of an array is named like "x[2]", the first one being 1.
struct RealCase {
  std::string name, arguments;
  std::vector<Expected> solutions;
};

void PrintTo(const RealCase& row, std::ostream* out) { *out << row.name << ' ' << row.arguments; }

class RealExampleTest : public testing::TestWithParam<RealCase> {};

const json& ValueOf(const json& solution, const std::string& name) {
  const std::size_t bracket = name.find('[');
  const json& value = solution["values"][name.substr(0, bracket)];
  return bracket == std::string::npos ? value : value[std::stoul(name.substr(bracket + 1)) - 1];
}

bool Holds(const json& value, double number) {
  const double slack = 1e-9 * std::abs(number) + 1e-20;
  if (!value.is_object()) return std::abs(value.get<double>() - number) <= slack;
  return value["lo"].get<double>() - slack <= number && number <= value["hi"].get<double>() + slack;
}

bool Agrees(const json& solution, const Expected& expected) {
  return std::all_of(expected.begin(), expected.end(), [&](const auto& item) {
    return Holds(ValueOf(solution, item.first), item.second);
  });
}

TEST_P(RealExampleTest, EverySolutionIsFoundNarrowAndProven) {
  const auto& [name, arguments, expected] = GetParam();
  const Result result = Zultav("solve " + Example(name) + " -a --format json " + arguments);
  EXPECT_EQ(result.status, 0) << result.err;
  const json document = result.Json();
  ASSERT_TRUE(document.is_object()) << result.out;
  EXPECT_EQ(document["status"], expected.empty() ? "UNSATISFIABLE" : "ALL_SOLUTIONS");
  EXPECT_EQ(document["solutions"].size(), expected.size());
  for (const json& solution : document["solutions"]) EXPECT_EQ(solution["proven"], true);
  for (const Expected& values : expected) {
    const auto agrees = [&](const json& solution) { return Agrees(solution, values); };
    EXPECT_EQ(std::count_if(document["solutions"].begin(), document["solutions"].end(), agrees), 1)
        << json(values);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Reals, RealExampleTest,
    testing::Values(
        RealCase{
            "two_circles",
            "",
            {{{"x", 0.5}, {"y", -1.9364916731}}, {{"x", 0.5}, {"y", 1.9364916731}}}
},
        RealCase{"circle_parabola",
                 "",
                 {{{"x", -1.5174899136}, {"y", 1.3027756377}},
                  {{"x", 1.5174899136}, {"y", 1.3027756377}}}},
        RealCase{"divider", "", {{{"upper", 1800}, {"lower", 3300}, {"voltage", 3.2352941176471}}}},
        RealCase{"kepler", "", {{{"E", 1.4987011335178}, {"distance", 0.96398362278056}}}},
        RealCase{"sphere_cylinder_plane",
                 "",
                 {{{"x", 0.6398429017632}, {"z", 1.649337502294}},
                  {{"x", 1.306236945544}, {"z", -1.177932981503}},
                  {{"x", 1.836705454947}, {"z", -0.571479737266}},
                  {{"x", 1.994992475524}, {"z", 0.1000752164749}}}},
        RealCase{"broyden",
                 "",
                 {{{"x[2]", -0.570722132011}, {"x[11]", -0.416412257529}},
                  {{"x[2]", 1.83260040126}, {"x[11]", -0.416411212556}}}},
        RealCase{"broyden", "-D limit=2", {{{"x[2]", -0.570722132011}}, {{"x[2]", 1.83260040126}}}},
        RealCase{"broyden",
                 "-D n=50 -D limit=1",
                 {{{"x[2]", -0.5707611929748}, {"x[51]", -0.4164123011668}}}},
        RealCase{"broyden",
                 "-D n=300 -D limit=1",
                 {{{"x[2]", -0.5707611929748}, {"x[301]", -0.4164123011668}}}},
        RealCase{"robot_arm",
                 "",
                 {{{"shoulder", 0.29870320832}, {"elbow", 1.69612415796}},
                  {{"shoulder", 1.27209311847}, {"elbow", 4.58706114922}}}},
        RealCase{"combustion",
                 "--eps 1e-30,1e-9",
                 {{{"x[1]", 1.545515474486e-7}, {"x[4]", 6.25149147668e-11}},
                  {{"x[1]", 1.545515474486e-7}, {"x[4]", -6.25153055807e-11}},
                  {{"x[1]", 1.470901327715e-7}, {"x[4]", 6.25149147668e-11}},
                  {{"x[1]", 1.470901327715e-7}, {"x[4]", -6.25153055807e-11}}}},
        RealCase{"combustion",
                 "--eps 1e-30,1e-9 -D least=0",
                 {{{"x[1]", 1.470901327715e-7}, {"x[4]", 6.25149147668e-11}}}},
        RealCase{"gear_train",
                 "",
                 {{{"driver[1]", 13}, {"driver[2]", 20}, {"driven[1]", 34}, {"driven[2]", 53}},
                  {{"driver[1]", 13}, {"driver[2]", 30}, {"driven[1]", 51}, {"driven[2]", 53}},
                  {{"driver[1]", 15}, {"driver[2]", 26}, {"driven[1]", 51}, {"driven[2]", 53}},
                  {{"driver[1]", 16}, {"driver[2]", 19}, {"driven[1]", 43}, {"driven[2]", 49}}}},
        RealCase{"compound_interest",
                 "",
                 {{{"years", 14.2066990829},
                   {"rate", 0.07177346253629},
                   {"continuous", 0.04879016416943}}}},
        RealCase{"rounding", "", {{{"t", 26.25}}}},
        RealCase{"catenary",
                 "",
                 {{{"a", 46.95415231265}, {"sag", 29.23437976009}, {"slope", 0.906774654992649}}}},
        RealCase{"linkage",
                 "",
                 {{{"bx", -0.376413170451727}, {"angle", 1.760132105487134}},
                  {{"bx", 1.868928006068348}, {"angle", -0.364045614178702}}}},
        RealCase{"folium",
                 "",
                 {{{"x", -1.380552875917}, {"y", 0.5865780057233}},
                  {{"x", 0.5865780057233}, {"y", -1.380552875917}},
                  {{"x", 0.6746811897409}, {"y", 1.339703434425}},
                  {{"x", 1.339703434425}, {"y", 0.6746811897409}}}},
        RealCase{
            "broyden_banded", "", {{{"x[1]", -0.4283028635872503}, {"x[3]", -0.5196524636468618}}}},
        RealCase{"trigexp", "", {{{"x[1]", 1}, {"x[50]", 1}, {"x[100]", 1}}}},
        RealCase{"thermostat",
                 "-D hours=8",
                 {{{"temperature[4]", 19.168},
                   {"temperature[5]", 19.7512},
                   {"temperature[8]", 19.553624799999998}}}},
        RealCase{"no_contact", "", {}}),
    [](const auto& row) { return row.param.name + std::to_string(row.index); });

using Box = std::vector<std::pair<double, double>>;

Box BoxOf(const json& solution) {
  Box box;
  const auto append = [&](const json& value) { box.emplace_back(value["lo"], value["hi"]); };
  for (const json& value : solution["values"])
    if (value.is_array())
      std::for_each(value.begin(), value.end(), append);
    else
      append(value);
  return box;
}

bool AreDisjoint(const Box& one, const Box& other) {
  for (std::size_t i = 0; i < one.size(); ++i)
    if (one[i].second < other[i].first || other[i].second < one[i].first) return true;
  return false;
}

// How many solutions these systems have is known from algebra.
TEST(RealExamplesTest, AsManySolutionsAsThereAreAreProven) {
  const std::pair<const char*, std::size_t> rows[] = {
      {"caprasse",    18  },
      {"cyclohexane", 16  },
      {"kinematics",  16  },
      {"squares",     1024}
  };
  for (const auto& [name, count] : rows) {
    SCOPED_TRACE(name);
    const json document = Zultav("solve " + Example(name) + " -a --eps 1e-6 --format json").Json();
    EXPECT_EQ(document["status"], "ALL_SOLUTIONS");
    std::vector<Box> boxes;
    for (const json& solution : document["solutions"]) {
      EXPECT_EQ(solution["proven"], true);
      boxes.push_back(BoxOf(solution));
    }
    EXPECT_EQ(boxes.size(), count);
    for (std::size_t i = 0; i < boxes.size(); ++i)
      for (std::size_t k = 0; k < i; ++k) EXPECT_TRUE(AreDisjoint(boxes[i], boxes[k]));
  }
}

TEST(RealExamplesTest, AContinuumEndsAtTheLimitAndClaimsNoMore) {
  const Result result =
      Zultav("solve " + Example("continuum") + " -a --eps 1e-3 --max-nodes 1000 --format json");
  EXPECT_EQ(result.status, Zultav("solve - -a --max-nodes 1", "x : int = [1, 9];").status);
  const json document = result.Json();
  EXPECT_EQ(document["status"], "SATISFIED");
  EXPECT_GT(document["solutions"].size(), 100u);
  for (const json& solution : document["solutions"]) {
    EXPECT_EQ(solution["proven"], true);
    const json &x = solution["values"]["x"], &y = solution["values"]["y"];
    const auto square = [](const json& v, bool far) {
      const double a = std::abs(v["lo"].get<double>()), b = std::abs(v["hi"].get<double>());
      return far ? std::max(a, b) * std::max(a, b) : std::min(a, b) * std::min(a, b);
    };
    EXPECT_GE(square(x, true) + square(y, true), 1 - 1e-15);
    EXPECT_LE(square(x, false) + square(y, false), 1 + 1e-15);
  }
}

}  // namespace
