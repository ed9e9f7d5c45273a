#include "framework/search/ZULTavNewton.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "framework/intervals/ZULTavIntervals.h"
#include "framework/search/ZULTavSolution.h"
#include "framework/search/detail/PivotedInverse.h"
#include "framework/search/detail/RealContractor.h"
#include "framework/search/detail/RealEvaluation.h"
#include "framework/search/detail/RealFunction.h"
#include "framework/search/detail/RealSystem.h"
#include "framework/search/detail/SearchVariable.h"
#include "framework/solver/SingleValue.h"

using namespace zultav::detail;

namespace {

using Relation = RealSystem::Relation;

constexpr RealInterval kZero = {0, 0};
constexpr RealInterval kOne = {1, 1};
// A contraction must take this share of a width, so that the effort is not wasted on crumbs.
constexpr double kWorthwhile = 0.1;
// A Newton step must take this share of a width to be followed by another one at once.
constexpr double kConverging = 0.3;
// Unknowns that are narrower, relative to their magnitude, gain nothing by another step.
constexpr double kNarrowest = 0x1p-48;
// Equations of more unknowns are left to the preconditioned system.
constexpr std::size_t kMaxSparse = 16;
// More unknowns are solved for in windows of so many neighbours, which overlap by half: what
// is farther away decides little in most large systems, and the cost stays linear.
constexpr std::size_t kMaxDense = 100;
constexpr std::size_t kWindow = 48;
constexpr int kNewtonSteps = 20;
// Of an unknown beside that of the largest one, when a point is looked for.
constexpr double kLeastWeight = 1e-8;
// A step to a point this short, relative to the magnitudes, leaves an error of its square.
constexpr double kExact = 1e-12;
constexpr int kInflations = 8;
// How often, and by how much, a region of uniqueness is tried to be made larger.
constexpr int kGrowths = 20;
constexpr double kGrowth = 16;
// Where in its box a solution is looked for when the equations leave a choice. Splits are in the
// middle, and solutions that are as simple lie on the edges of other boxes often.
constexpr double kPlaces[] = {0.5, 0.46};

double Middle(const RealInterval& x) {
  return std::clamp(0.5 * x.lower + 0.5 * x.upper, x.lower, x.upper);
}

bool IsWithin(const RealInterval& inner, const RealInterval& outer) {
  return outer.lower <= inner.lower && inner.upper <= outer.upper;
}

bool IsInside(const RealInterval& inner, const RealInterval& outer) {
  return outer.lower < inner.lower && inner.upper < outer.upper;
}

bool AreWithin(const std::vector<RealInterval>& inner, const std::vector<RealInterval>& outer) {
  return std::equal(inner.begin(), inner.end(), outer.begin(), IsWithin);
}

// Always in line: a call would pass both bounds through memory, and their next use would wait.
[[gnu::always_inline]] inline RealInterval Add(const RealInterval& x, const RealInterval& y) {
  return x.AddIntToInt(y);
}
[[gnu::always_inline]] inline RealInterval Multiply(const RealInterval& x, const RealInterval& y) {
  return x.MultIntByInt(y);
}
RealInterval Point(double x) { return {x, x}; }
double Magnitude(const RealInterval& x) { return std::max(std::fabs(x.lower), std::fabs(x.upper)); }

/// The hull of the t in x - middle with slope * t + rest = 0, as part of x.
RealInterval Solve(const RealInterval& x, double middle, const RealInterval& slope,
                   const RealInterval& rest) {
  const RealInterval step =
      QuotientsWithin(x.subNumFromInt(middle), rest.mf_Neg(), slope).AddNumToInt(middle);
  RealInterval result = x;
  result.Intersect(step);
  return result;
}

bool Holds(Relation relation, const RealInterval& x, const RealInterval& y) {
  switch (relation) {
    case Relation::kEqual:
      return x.IsScalar() && x == y;
    case Relation::kUnequal:
      return x.upper < y.lower || y.upper < x.lower;
    case Relation::kLess:
      return x.upper < y.lower;
    case Relation::kLessOrEqual:
      return x.upper <= y.lower;
    case Relation::kSignIs: {
      const auto sign = [](double value) { return static_cast<double>((value > 0) - (value < 0)); };
      return sign(x.lower) == sign(x.upper) && y == Point(sign(x.lower));
    }
  }
  return false;
}

}  // namespace

class ZULTavNewton::Work {
 public:
  Work(const ZULTaVoNetwork& network, std::span<ZULTaVoAny* const> declared)
      : mDeclared(declared.begin(), declared.end()),
        mSystem(network, declared),
        mEvaluation(mSystem),
        mContractor(mSystem) {
    const std::size_t count = mSystem.GetUnknowns().size();
    mBox.resize(count);
    mMiddle.resize(count);
    mColumnOf.resize(count);
    mSlopes.resize(count);
    for (const RealSystem::Statement& equation : mSystem.GetEquations())
      if (mWitness == kNone && !equation.unknowns.empty()) mWitness = equation.unknowns.front();
    mDependsOnDeclared = DependsOnDeclared();
  }

  int Contract(ZULTaVoNetwork& network, bool again);
  Finding Prove(ZULTavSolution& box, ZULTavSolution& region);
  std::vector<std::uint32_t> FindSignless() const;

 private:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
  /// An equation with its slopes from mEntries[first] on, one for each of its unknowns.
  struct Row {
    const RealSystem::Statement* equation;
    RealInterval defect;
    std::size_t first;
  };
  /// What is not solved for: nothing, unknowns that are single points, narrow ones.
  enum class Left { kNothing, kPoints, kNarrow };

  ZULTaVoReal& Object(std::size_t unknown) const {
    return *mSystem.GetSlots()[mSystem.GetUnknowns()[unknown]].real;
  }
  void ReadBox();
  void SetMiddle(double place);
  void ReadContractor();
  bool Newton();
  bool HasShaved() const;
  void SelectColumns(Left left);
  void SelectRows();
  bool AbsorbOthers(const RealSystem::Statement& equation, RealInterval& defect);
  void FillMatrix();
  bool NarrowByRows();
  bool NarrowByInverse();
  bool NarrowByWindows();
  void Combine(std::span<const double> weights);
  int Store(ZULTaVoNetwork& network);
  int Refute(ZULTaVoNetwork& network);

  bool IsDecided() const;
  bool FindPoint();
  double StepToPoint();
  bool Krawczyk();
  bool Inflate(double factor);
  bool HoldsOnCertified();
  bool DependsOnDeclared() const;
  bool FindRegion();
  bool IsUniqueIn(double reach);
  bool IsApart() const;
  void LeavePoints();
  void Assign(ZULTavSolution& box, std::span<const RealInterval> values) const;

  std::vector<ZULTaVoAny*> mDeclared;
  RealSystem mSystem;
  RealEvaluation mEvaluation;
  RealContractor mContractor;
  PivotedInverse mInverse;
  std::vector<RealInterval> mBox;      // of the unknowns
  std::vector<double> mMiddle;         // a point of it
  std::vector<std::size_t> mColumns;   // unknowns that are no single points
  std::vector<std::size_t> mColumnOf;  // the column of each unknown, or kNone
  std::vector<Row> mRows;
  std::vector<RealInterval> mEntries, mSlopes;
  std::vector<double> mMatrix, mWeights;
  std::vector<RealInterval> mCombined;  // a preconditioned row
  RealInterval mCombinedDefect;
  std::vector<RealInterval> mOriginal, mCertified;
  std::vector<RealInterval> mRegion;  // holds both, and no solution that mCertified does not hold
  std::vector<double> mRadii;         // of the box to be certified, by row of the inverse
  std::size_t mWitness = kNone;       // an unknown that a constraint looks at
  bool mDependsOnDeclared;            // the equations, on nothing else that may vary
};

void ZULTavNewton::Work::ReadBox() {
  for (std::size_t i = 0; i < mBox.size(); ++i) {
    mBox[i] = {Object(i).GetLowerBound(), Object(i).GetUpperBound()};
    mMiddle[i] = Middle(mBox[i]);
  }
  mOriginal = mBox;
}

void ZULTavNewton::Work::SetMiddle(double place) {
  for (std::size_t i = 0; i < mBox.size(); ++i)
    mMiddle[i] = std::clamp((1 - place) * mBox[i].lower + place * mBox[i].upper, mBox[i].lower,
                            mBox[i].upper);
}

void ZULTavNewton::Work::SelectColumns(Left left) {
  const auto isLeft = [left](const RealInterval& x) {
    if (left == Left::kNarrow) return x.upper - x.lower <= kNarrowest * Magnitude(x);
    return left == Left::kPoints && x.IsScalar();
  };
  mColumns.clear();
  for (std::size_t i = 0; i < mBox.size(); ++i) {
    mColumnOf[i] = isLeft(mBox[i]) ? kNone : mColumns.size();
    if (mColumnOf[i] != kNone) mColumns.push_back(i);
  }
}

/// What the equation's unknowns without a column contribute becomes part of the defect. Answers
/// whether there are others.
bool ZULTavNewton::Work::AbsorbOthers(const RealSystem::Statement& equation, RealInterval& defect) {
  bool others = false;
  for (std::size_t k = 0; k < equation.unknowns.size(); ++k) {
    const std::uint32_t unknown = equation.unknowns[k];
    if (mColumnOf[unknown] != kNone)
      others = true;
    else if (!mBox[unknown].IsScalar())
      defect = Add(defect, Multiply(mSlopes[k], mBox[unknown].subNumFromInt(mMiddle[unknown])));
  }
  return others;
}

/// The equations whose slopes are known, and their slopes.
void ZULTavNewton::Work::SelectRows() {
  mRows.clear();
  mEntries.clear();
  for (const RealSystem::Statement& equation : mSystem.GetEquations()) {
    if (!equation.guard.Holds()) continue;
    RealInterval defect = mEvaluation.GetDefect(equation);
    if (!IsFinite(defect) || !mEvaluation.GetSlopes(equation, mSlopes.data())) continue;
    const bool bounded = std::all_of(equation.unknowns.begin(), equation.unknowns.end(),
                                     [&](std::uint32_t i) { return IsFinite(mBox[i]); });
    if (!bounded || !AbsorbOthers(equation, defect)) continue;
    mRows.push_back({&equation, defect, mEntries.size()});
    mEntries.insert(mEntries.end(), mSlopes.begin(),
                    mSlopes.begin() + static_cast<std::ptrdiff_t>(equation.unknowns.size()));
  }
}

void ZULTavNewton::Work::FillMatrix() {
  mMatrix.assign(mRows.size() * mColumns.size(), 0.0);
  for (std::size_t i = 0; i < mRows.size(); ++i) {
    const auto& unknowns = mRows[i].equation->unknowns;
    for (std::size_t k = 0; k < unknowns.size(); ++k)
      if (const std::size_t column = mColumnOf[unknowns[k]]; column != kNone)
        mMatrix[i * mColumns.size() + column] = Middle(mEntries[mRows[i].first + k]);
  }
}

// --- Contraction ------------------------------------------------------------------------------

int ZULTavNewton::Work::Contract(ZULTaVoNetwork& network, bool again) {
  if (mWitness == kNone) return 0;
  ReadBox();
  if (again && !mContractor.HasChanged()) return 0;
  mContractor.Begin();
  if (!mContractor.Propagate() || !Newton()) return Refute(network);
  ReadContractor();
  if (!mContractor.Shave() || (HasShaved() && !Newton())) return Refute(network);
  ReadContractor();
  return Store(network);
}

void ZULTavNewton::Work::ReadContractor() {
  for (std::size_t i = 0; i < mBox.size(); ++i) {
    mBox[i] = mContractor.GetValue(i);
    mMiddle[i] = Middle(mBox[i]);
  }
}

bool ZULTavNewton::Work::HasShaved() const {
  for (std::size_t i = 0; i < mBox.size(); ++i)
    if (IsMuchNarrower(mContractor.GetValue(i), mBox[i], kWorthwhile)) return true;
  return false;
}

/// Newton steps and propagation in turn, as long as they are worth it.
bool ZULTavNewton::Work::Newton() {
  for (int step = 0; step < kNewtonSteps; ++step) {
    ReadContractor();
    SelectColumns(Left::kNarrow);
    if (mColumns.empty()) return true;
    if (!mEvaluation.SetBox(mBox, RealEvaluation::Mode::kSolutions)) return false;
    mEvaluation.SetPoint(mMiddle);
    mEvaluation.CalcSlopes();
    SelectRows();
    // The single equations have had their say after one step.
    if (step == 0 && !NarrowByRows()) return false;
    if (!(mColumns.size() > kMaxDense ? NarrowByWindows() : NarrowByInverse())) return false;
    bool worthwhile = false;
    for (const std::size_t i : mColumns) {
      const RealInterval before = mContractor.GetValue(i);
      worthwhile = worthwhile || IsMuchNarrower(mBox[i], before, kConverging);
      mContractor.Narrow(i, mBox[i]);
    }
    if (!mContractor.Propagate()) return false;
    if (!worthwhile) break;
  }
  return true;
}

/// Solves each equation for each of its unknowns. False when there is no solution.
bool ZULTavNewton::Work::NarrowByRows() {
  for (const Row& row : mRows) {
    const auto& unknowns = row.equation->unknowns;
    if (unknowns.size() > kMaxSparse) continue;
    const RealInterval* slopes = mEntries.data() + row.first;
    for (std::size_t j = 0; j < unknowns.size(); ++j) {
      if (mColumnOf[unknowns[j]] == kNone) continue;
      RealInterval rest = row.defect;
      for (std::size_t k = 0; k < unknowns.size(); ++k)
        if (k != j && mColumnOf[unknowns[k]] != kNone)
          rest =
              Add(rest, Multiply(slopes[k], mBox[unknowns[k]].subNumFromInt(mMiddle[unknowns[k]])));
      RealInterval& x = mBox[unknowns[j]];
      x = Solve(x, mMiddle[unknowns[j]], slopes[j], rest);
      if (x.IsEmpty()) return false;
    }
  }
  return true;
}

/// One row of the preconditioned system: the sum of the equations with weights.
void ZULTavNewton::Work::Combine(std::span<const double> weights) {
  mCombined.assign(mColumns.size(), kZero);
  mCombinedDefect = kZero;
  for (std::size_t k = 0; k < weights.size(); ++k) {
    if (weights[k] == 0) continue;
    const Row& row = mRows[mInverse.GetRows()[k]];
    const RealInterval weight = Point(weights[k]);
    mCombinedDefect = Add(mCombinedDefect, Multiply(weight, row.defect));
    const auto& unknowns = row.equation->unknowns;
    for (std::size_t l = 0; l < unknowns.size(); ++l)
      if (const std::size_t column = mColumnOf[unknowns[l]]; column != kNone)
        mCombined[column] = Add(mCombined[column], Multiply(weight, mEntries[row.first + l]));
  }
}

/// A Hansen-Sengupta step. False when there is no solution.
bool ZULTavNewton::Work::NarrowByInverse() {
  FillMatrix();
  mWeights.resize(mColumns.size());
  for (std::size_t j = 0; j < mColumns.size(); ++j) {
    const RealInterval& x = mBox[mColumns[j]];
    mWeights[j] = IsFinite(x) ? std::max(x.upper - x.lower, 1e-300) : 0;
  }
  mInverse.Compute(mMatrix, mColumns.size(), mWeights);
  for (std::size_t i = 0; i < mInverse.GetRank(); ++i) {
    Combine(mInverse.GetRow(i));
    const std::size_t pivot = mInverse.GetColumns()[i];
    RealInterval rest = mCombinedDefect;
    for (std::size_t j = 0; j < mColumns.size(); ++j)
      if (j != pivot && !(mCombined[j] == kZero))
        rest = Add(rest,
                   Multiply(mCombined[j], mBox[mColumns[j]].subNumFromInt(mMiddle[mColumns[j]])));
    RealInterval& x = mBox[mColumns[pivot]];
    x = Solve(x, mMiddle[mColumns[pivot]], mCombined[pivot], rest);
    if (x.IsEmpty()) return false;
  }
  return true;
}

/// The same for one window after the other, each with the equations that have no unknowns outside.
bool ZULTavNewton::Work::NarrowByWindows() {
  const std::vector<std::size_t> columns = mColumns;
  const std::vector<std::size_t> columnOf =
      std::exchange(mColumnOf, std::vector<std::size_t>(mColumnOf.size(), kNone));
  const std::vector<Row> rows = mRows;
  struct Reach {
    std::size_t first, last;  // columns
    std::size_t row;
  };
  std::vector<Reach> reaches;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    Reach reach = {kNone, 0, i};
    for (const std::uint32_t unknown : rows[i].equation->unknowns) {
      if (columnOf[unknown] == kNone) continue;
      reach.first = std::min(reach.first, columnOf[unknown]);
      reach.last = std::max(reach.last, columnOf[unknown]);
    }
    if (reach.first != kNone) reaches.push_back(reach);
  }
  std::sort(reaches.begin(), reaches.end(), [](const Reach& a, const Reach& b) {
    return a.first != b.first ? a.first < b.first : a.row < b.row;
  });
  auto next = reaches.begin();
  for (std::size_t begin = 0; begin + kWindow / 2 < columns.size(); begin += kWindow / 2) {
    const std::size_t end = std::min(begin + kWindow, columns.size());
    while (next != reaches.end() && next->first < begin) ++next;
    mRows.clear();
    for (auto reach = next; reach != reaches.end() && reach->first < end; ++reach)
      if (reach->last < end) mRows.push_back(rows[reach->row]);
    mColumns.assign(columns.begin() + static_cast<std::ptrdiff_t>(begin),
                    columns.begin() + static_cast<std::ptrdiff_t>(end));
    for (std::size_t j = 0; j < mColumns.size(); ++j) mColumnOf[mColumns[j]] = j;
    if (!NarrowByInverse()) return false;
    for (const std::size_t unknown : mColumns) mColumnOf[unknown] = kNone;
  }
  mColumns = columns;
  return true;
}

/// Answers 1 when much was narrowed.
int ZULTavNewton::Work::Store(ZULTaVoNetwork& network) {
  bool worthwhile = false;
  for (std::size_t i = 0; i < mBox.size(); ++i) {
    if (mBox[i] == mOriginal[i]) continue;
    worthwhile = worthwhile || IsMuchNarrower(mBox[i], mOriginal[i], kWorthwhile);
    ZULTaVoReal& value = Object(i);
    SaveOrThrow(network, value);
    if (mBox[i].lower != mOriginal[i].lower) value.SetLowerBound(mBox[i].lower);
    if (mBox[i].upper != mOriginal[i].upper) value.SetUpperBound(mBox[i].upper);
    network.PropagateValue(&value);
  }
  return worthwhile;
}

int ZULTavNewton::Work::Refute(ZULTaVoNetwork& network) {
  ZULTaVoReal& value = Object(mWitness);
  SaveOrThrow(network, value);
  value.SetNil();
  network.PropagateValue(&value);
  return 1;
}

// --- Proof ------------------------------------------------------------------------------------

bool ZULTavNewton::Work::IsDecided() const {
  const auto& discrete = mSystem.GetDiscrete();
  return mSystem.IsComplete() &&
         std::all_of(discrete.begin(), discrete.end(),
                     [](const auto* each) { return zultav::IsSingleValue(*each); });
}

ZULTavProver::Finding ZULTavNewton::Work::Prove(ZULTavSolution& box, ZULTavSolution& region) {
  if (!IsDecided() || mBox.size() > kMaxProven) return Finding::kNothing;
  Finding finding = Finding::kNothing;
  // Bounds that are single points may be exact, or what rounding has left of an interval.
  for (const Left left : {Left::kPoints, Left::kNothing})
    for (const double place : kPlaces) {
      ReadBox();
      SetMiddle(place);
      SelectColumns(left);
      const bool isFound = FindPoint() && Krawczyk();
      const bool holds = isFound && HoldsOnCertified();
      const bool isOnly = isFound && FindRegion();
      if (isOnly && IsApart()) return Finding::kNoSolution;
      if (holds) {
        Assign(box, mCertified);
        finding = isOnly ? Finding::kOnlySolution : Finding::kSolution;
      }
      if (holds && isOnly) {
        if (left == Left::kPoints && mColumns.size() < mBox.size()) LeavePoints();
        Assign(region, mRegion);
      }
      if (holds && (isOnly || AreWithin(mCertified, mOriginal))) return finding;
      if (mRows.size() >= mColumns.size()) break;  // there is no choice
    }
  return finding;
}

/// Looks for a region that is wider than a point in each unknown: in other boxes around the
/// solution rounding may have left more than a point.
void ZULTavNewton::Work::LeavePoints() {
  const std::vector<RealInterval> certified = mCertified, region = mRegion;
  ReadBox();
  SelectColumns(Left::kNothing);
  const bool isFound = FindPoint() && Krawczyk() && FindRegion();
  if (!isFound || !AreWithin(certified, mRegion)) mRegion = region;
}

/// Newton's method; mMiddle becomes an approximate solution.
bool ZULTavNewton::Work::FindPoint() {
  double last = HUGE_VAL;
  for (int i = 0; i < kNewtonSteps; ++i) {
    const double step = StepToPoint();
    if (step < 0) return false;
    if (step <= kExact || (step < 1e-10 && step >= 0.5 * last)) break;
    last = step;
  }
  return true;
}

/// Answers the length of the step, relative to the magnitude; negative when there is none.
double ZULTavNewton::Work::StepToPoint() {
  for (std::size_t i = 0; i < mBox.size(); ++i) mBox[i] = Point(mMiddle[i]);
  if (!mEvaluation.SetBox(mBox, RealEvaluation::Mode::kBox)) return -1;
  mEvaluation.SetPoint(mMiddle);
  mEvaluation.CalcSlopes();
  SelectRows();
  // Where there is a choice, unknowns are solved for that have room to move in.
  const bool hasChoice = mRows.size() < mColumns.size();
  mWeights.resize(mColumns.size());
  for (std::size_t j = 0; j < mColumns.size(); ++j) {
    const RealInterval& x = mOriginal[mColumns[j]];
    const double scale = hasChoice ? 0 : std::fabs(mMiddle[mColumns[j]]);
    mWeights[j] = std::max(scale, x.upper - x.lower) + 1e-300;
  }
  // An unknown that is exactly 0 has no scale of its own, but is one to solve for.
  const double largest = mWeights.empty() ? 0 : *std::max_element(mWeights.begin(), mWeights.end());
  for (double& weight : mWeights) weight = std::max(weight, kLeastWeight * largest);
  FillMatrix();
  mInverse.Compute(mMatrix, mColumns.size(), mWeights);
  double longest = 0;
  for (std::size_t i = 0; i < mInverse.GetRank(); ++i) {
    double step = 0;
    for (std::size_t k = 0; k < mInverse.GetRank(); ++k)
      step -= mInverse.GetRow(i)[k] * Middle(mRows[mInverse.GetRows()[k]].defect);
    const std::size_t unknown = mColumns[mInverse.GetColumns()[i]];
    mMiddle[unknown] += step;
    if (!IsFinite(Point(mMiddle[unknown]))) return -1;
    longest = std::max(longest, std::fabs(step) / mWeights[mInverse.GetColumns()[i]]);
  }
  return longest;
}

/// Boxes around mMiddle, of ever greater size, until the Krawczyk operator maps one into its
/// inside. By Brouwer's theorem there is a solution in the image then.
bool ZULTavNewton::Work::Krawczyk() {
  for (std::size_t i = 0; i < mBox.size(); ++i) mBox[i] = Point(mMiddle[i]);
  const std::size_t rank = mInverse.GetRank();
  mCertified = mBox;
  if (rank == 0) return true;
  // The error of the point, as far as it is known, and some units in the last place.
  mRadii.resize(rank);
  for (std::size_t i = 0; i < rank; ++i) {
    const double middle = mMiddle[mColumns[mInverse.GetColumns()[i]]];
    mRadii[i] = std::fabs(middle) * std::numeric_limits<double>::epsilon() + 1e-280;
    for (std::size_t k = 0; k < rank; ++k)
      mRadii[i] +=
          std::fabs(mInverse.GetRow(i)[k]) * Magnitude(mRows[mInverse.GetRows()[k]].defect);
  }
  double factor = 2;
  for (int i = 0; i < kInflations; ++i, factor *= 16)
    if (Inflate(factor)) return true;
  return false;
}

/// One attempt. Where the image sticks out, the next box is at least as large as the image: an
/// unknown that is exactly 0 has no size of its own.
bool ZULTavNewton::Work::Inflate(double factor) {
  const std::size_t rank = mInverse.GetRank();
  for (std::size_t i = 0; i < rank; ++i) {
    const std::size_t unknown = mColumns[mInverse.GetColumns()[i]];
    mBox[unknown] = {mMiddle[unknown] - factor * mRadii[i], mMiddle[unknown] + factor * mRadii[i]};
    if (!IsFinite(mBox[unknown])) return false;
  }
  if (!mEvaluation.SetBox(mBox, RealEvaluation::Mode::kBox)) return false;
  mEvaluation.SetPoint(mMiddle);
  mEvaluation.CalcSlopes();
  const std::size_t before = mRows.size();
  SelectRows();
  if (mRows.size() != before) return false;
  bool isInside = true;
  for (std::size_t i = 0; i < rank; ++i) {
    Combine(mInverse.GetRow(i));
    const std::size_t unknown = mColumns[mInverse.GetColumns()[i]];
    RealInterval image = mCombinedDefect.mf_Neg();
    for (std::size_t j = 0; j < rank; ++j) {
      const std::size_t column = mInverse.GetColumns()[j];
      const RealInterval& slope = mCombined[column];
      const RealInterval rest = (i == j ? kOne : kZero).SubIntFromInt(slope);
      const double middle = mMiddle[mColumns[column]];
      image = Add(image, Multiply(rest, mBox[mColumns[column]].subNumFromInt(middle)));
    }
    mCertified[unknown] = image.AddNumToInt(mMiddle[unknown]);
    if (IsInside(mCertified[unknown], mBox[unknown])) continue;
    isInside = false;
    mRadii[i] = std::max(mRadii[i], Magnitude(image));
  }
  return isInside;
}

/// Whether everything but the square part of the equations holds wherever in mCertified the
/// solution is.
bool ZULTavNewton::Work::HoldsOnCertified() {
  if (!mEvaluation.SetBox(mCertified, RealEvaluation::Mode::kBox)) return false;
  const auto& slots = mSystem.GetSlots();
  for (std::uint32_t i = 0; i < slots.size(); ++i)
    if (slots[i].real != nullptr && !slots[i].constant &&
        !IsWithin(mEvaluation.GetValue(i), slots[i].initial))
      return false;
  for (const RealSystem::Statement& condition : mSystem.GetConditions())
    if (condition.guard.Holds() && !Holds(condition.relation, mEvaluation.GetValue(condition.left),
                                          mEvaluation.GetValue(condition.right)))
      return false;
  const auto isSolved = [&](const RealSystem::Statement& equation) {
    const auto rows = mInverse.GetRows();
    return std::any_of(rows.begin(), rows.end(),
                       [&](std::size_t row) { return mRows[row].equation == &equation; });
  };
  for (const RealSystem::Statement& equation : mSystem.GetEquations())
    if (equation.guard.Holds() && !isSolved(equation) &&
        !Holds(Relation::kEqual, mEvaluation.GetValue(equation.left),
               mEvaluation.GetValue(equation.right)))
      return false;
  return true;
}

/// Whether equal values of the declared variables mean the same equations for other boxes, too.
bool ZULTavNewton::Work::DependsOnDeclared() const {
  const auto isGiven = [this](const ZULTaVoAny* value) {
    return value == nullptr || zultav::IsSingleValue(*value) ||
           std::find(mDeclared.begin(), mDeclared.end(), value) != mDeclared.end();
  };
  const auto& unknowns = mSystem.GetUnknowns();
  const auto& slots = mSystem.GetSlots();
  const auto& equations = mSystem.GetEquations();
  return std::all_of(unknowns.begin(), unknowns.end(),
                     [&](std::uint32_t slot) { return isGiven(slots[slot].real); }) &&
         std::all_of(slots.begin(), slots.end(),
                     [&](const RealSystem::Slot& slot) { return isGiven(slot.integer); }) &&
         std::all_of(equations.begin(), equations.end(),
                     [&](const auto& equation) { return isGiven(equation.guard.truth); });
}

/// Whether the equations have no other solution near the box and the certified one; mRegion becomes
/// the largest box of those tried in which this holds.
bool ZULTavNewton::Work::FindRegion() {
  if (!mDependsOnDeclared || mInverse.GetRank() < mColumns.size()) return false;
  double reach = 0;
  for (int i = 0; i < kGrowths && IsUniqueIn(reach); ++i) {
    mRegion = mBox;
    reach = i == 0 ? 1 : reach * kGrowth;
  }
  return reach > 0;
}

/// Whether the slopes between the certified box and one that holds it and the original one, mBox,
/// form regular matrices only: preconditioned they are diagonally dominant. Two solutions would
/// differ by a vector that one of these matrices makes 0.
/// @param reach  how far mBox extends beyond both, in multiples of their extent
bool ZULTavNewton::Work::IsUniqueIn(double reach) {
  mWeights.resize(mColumns.size());
  for (std::size_t i = 0; i < mBox.size(); ++i) {
    RealInterval& x = mBox[i];
    x = mCertified[i].mf_Union(mOriginal[i]);
    if (mColumnOf[i] == kNone) continue;
    double& weight = mWeights[mColumnOf[i]];
    weight =
        std::max(x.upper - x.lower, Magnitude(x) * std::numeric_limits<double>::epsilon() + 1e-280);
    x = {x.lower - reach * weight, x.upper + reach * weight};
    if (!IsFinite(x)) return false;
  }
  if (!mEvaluation.SetBox(mBox, RealEvaluation::Mode::kBox)) return false;
  mEvaluation.SetCenter(mCertified);
  mEvaluation.CalcSlopes();
  const std::size_t before = mRows.size();
  SelectRows();
  if (mRows.size() != before) return false;
  for (std::size_t i = 0; i < mInverse.GetRank(); ++i) {
    Combine(mInverse.GetRow(i));
    const std::size_t pivot = mInverse.GetColumns()[i];
    RealInterval others = kZero;
    for (std::size_t j = 0; j < mColumns.size(); ++j)
      if (j != pivot)
        others = Add(others, Multiply(Point(Magnitude(mCombined[j])), Point(mWeights[j])));
    const RealInterval own = Multiply(mCombined[pivot], Point(mWeights[pivot]));
    if (!(others.upper < std::max(own.lower, -own.upper))) return false;
  }
  return true;
}

/// Whether the certified solution is none of the box.
bool ZULTavNewton::Work::IsApart() const {
  for (std::size_t i = 0; i < mCertified.size(); ++i)
    if (mCertified[i].upper < mOriginal[i].lower || mOriginal[i].upper < mCertified[i].lower)
      return true;
  return false;
}

void ZULTavNewton::Work::Assign(ZULTavSolution& box, std::span<const RealInterval> values) const {
  for (std::size_t i = 0, unknown = 0; i < mDeclared.size(); ++i) {
    if (unknown == values.size() || mDeclared[i] != &Object(unknown)) continue;
    box.SetBounds(i, values[unknown].lower, values[unknown].upper);
    ++unknown;
  }
}

std::vector<std::uint32_t> ZULTavNewton::Work::FindSignless() const {
  std::vector<std::uint32_t> signless;
  const std::vector<bool> even = mSystem.FindEven();
  for (std::uint32_t i = 0, unknown = 0; i < mDeclared.size() && unknown < even.size(); ++i)
    if (mDeclared[i] == &Object(unknown) && even[unknown++]) signless.push_back(i);
  return signless;
}

// --- ZULTavNewton -----------------------------------------------------------------------------

ZULTavNewton::ZULTavNewton(const ZULTaVoNetwork& network, std::span<ZULTaVoAny* const> declared)
    : mWork(std::make_unique<Work>(network, declared)) {}

ZULTavNewton::~ZULTavNewton() = default;

int ZULTavNewton::Contract(ZULTaVoNetwork& network, bool again) {
  const SDErrorScope errors;
  return mWork->Contract(network, again);
}

ZULTavProver::Finding ZULTavNewton::Prove(const ZULTaVoNetwork&, ZULTavSolution& box,
                                          ZULTavSolution& region) {
  const SDErrorScope errors;
  return mWork->Prove(box, region);
}

std::vector<std::uint32_t> ZULTavNewton::FindSignless() const { return mWork->FindSignless(); }
