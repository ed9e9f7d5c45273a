#include "framework/engine/reals/Prover.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace zultav::engine {

namespace {

using Finding = Newton::Finding;
using Left = Linearization::Left;
using Mode = RealEvaluation::Mode;

constexpr RealRange kZero = {0, 0};
constexpr RealRange kOne = {1, 1};
constexpr int kSteps = 20;
// Of an unknown beside that of the largest one, when a point is looked for.
constexpr double kLeastWeight = 1e-8;
// A step to a point this short, relative to the magnitudes, leaves an error of its square.
constexpr double kExact = 1e-12;
constexpr int kInflations = 8;
// How often at most, and by how much, a region of uniqueness grows.
constexpr int kGrowths = 20;
constexpr double kGrowth = 16;
// Where in its box a solution is looked for when the equations leave a choice. Splits are in the
// middle, and solutions that are as simple lie on the edges of other boxes often.
constexpr double kPlaces[] = {0.5, 0.46};

bool IsWithin(const RealRange& inner, const RealRange& outer) {
  return outer.lower <= inner.lower && inner.upper <= outer.upper;
}

bool IsInside(const RealRange& inner, const RealRange& outer) {
  return outer.lower < inner.lower && inner.upper < outer.upper;
}

bool AreWithin(const std::vector<RealRange>& inner, const std::vector<RealRange>& outer) {
  return std::equal(inner.begin(), inner.end(), outer.begin(), IsWithin);
}

RealRange Around(double middle, double radius) { return {middle - radius, middle + radius}; }

}  // namespace

Prover::Prover(Linearization& linear, RealRelations& relations)
    : mLinear(linear), mRelations(relations) {}

Finding Prover::Prove(bool isClosed) {
  mIsClosed = isClosed;
  mFound.clear();
  mFoundRegion.clear();
  mLinear.ReadBox();
  mOriginal = mLinear.box;
  Finding finding = Finding::kNothing;
  // Bounds that are single points may be exact, or what rounding has left of an interval.
  for (const Left left : {Left::kPoints, Left::kNothing})
    for (const double place : kPlaces) {
      mLinear.box = mOriginal;
      SetMiddle(place);
      mLinear.SelectColumns(left);
      const bool isFound = FindPoint() && Krawczyk();
      const bool holds = isFound && HoldsOnCertified();
      const bool isOnly = isFound && FindRegion();
      if (isOnly && IsApart()) return Finding::kNoSolution;
      if (holds) {
        mFound = mCertified;
        finding = isOnly ? Finding::kOnlySolution : Finding::kSolution;
      }
      if (holds && isOnly) {
        if (left == Left::kPoints && mLinear.columns.size() < mOriginal.size()) LeavePoints();
        mFoundRegion = mRegion;
      }
      if (holds && (isOnly || AreWithin(mCertified, mOriginal))) return finding;
      if (mLinear.rows.size() >= mLinear.columns.size()) break;  // there is no choice
    }
  return finding;
}

void Prover::SetMiddle(double place) {
  for (std::size_t i = 0; i < mOriginal.size(); ++i) {
    const RealRange& x = mOriginal[i];
    mLinear.middle[i] = x.IsBounded()
                            ? std::clamp((1 - place) * x.lower + place * x.upper, x.lower, x.upper)
                            : x.GetMiddle();
  }
}

/// Looks for a region that is wider than a point in each unknown: in other boxes around the
/// solution rounding may have left more than a point.
void Prover::LeavePoints() {
  const std::vector<RealRange> certified = mCertified, region = mRegion;
  mLinear.ReadBox();
  mLinear.SelectColumns(Left::kNothing);
  const bool isFound = FindPoint() && Krawczyk() && FindRegion();
  if (!isFound || !AreWithin(certified, mRegion)) mRegion = region;
}

/// Newton's method; the middle becomes an approximate solution.
bool Prover::FindPoint() {
  double last = HUGE_VAL;
  for (int i = 0; i < kSteps; ++i) {
    const double step = StepToPoint();
    if (step < 0) return false;
    if (step <= kExact || (step < 1e-10 && step >= 0.5 * last)) break;
    last = step;
  }
  return true;
}

/// Answers the length of the step, relative to the magnitude; negative when there is none.
double Prover::StepToPoint() {
  auto& middle = mLinear.middle;
  const auto& columns = mLinear.columns;
  for (std::size_t i = 0; i < middle.size(); ++i) mLinear.box[i] = RealRange::Point(middle[i]);
  if (!mLinear.SelectRows(Mode::kBox)) return -1;
  // Where there is a choice, unknowns are solved for that have room to move in.
  const bool hasChoice = mLinear.rows.size() < columns.size();
  mWeights.resize(columns.size());
  for (std::size_t j = 0; j < columns.size(); ++j) {
    const RealRange& x = mOriginal[columns[j]];
    const double scale = hasChoice ? 0 : std::fabs(middle[columns[j]]);
    mWeights[j] = std::clamp(x.upper - x.lower, scale, DBL_MAX) + 1e-300;
  }
  // An unknown that is exactly 0 has no scale of its own, but is one to solve for.
  const double largest = mWeights.empty() ? 0 : *std::max_element(mWeights.begin(), mWeights.end());
  for (double& weight : mWeights) weight = std::max(weight, kLeastWeight * largest);
  mLinear.Invert(mWeights);
  const PivotedInverse& inverse = mLinear.inverse;
  double longest = 0;
  for (std::size_t i = 0; i < inverse.GetRank(); ++i) {
    double step = 0;
    const auto [rows, weights] = inverse.GetRow(i);
    for (std::size_t k = 0; k < rows.size(); ++k)
      step -= weights[k] * Middle(mLinear.rows[rows[k]].defect);
    const std::size_t unknown = columns[inverse.GetColumns()[i]];
    middle[unknown] += step;
    if (!std::isfinite(middle[unknown])) return -1;
    longest = std::max(longest, std::fabs(step) / mWeights[inverse.GetColumns()[i]]);
  }
  return longest;
}

/// Boxes around the middle, of ever greater size, until the Krawczyk operator maps one into its
/// inside. By Brouwer's theorem there is a solution in the image then.
bool Prover::Krawczyk() {
  for (std::size_t i = 0; i < mLinear.box.size(); ++i)
    mLinear.box[i] = RealRange::Point(mLinear.middle[i]);
  const PivotedInverse& inverse = mLinear.inverse;
  const std::size_t rank = inverse.GetRank();
  mCertified = mLinear.box;
  if (rank == 0) return true;
  // The error of the point, as far as it is known, and some units in the last place.
  mRadii.resize(rank);
  for (std::size_t i = 0; i < rank; ++i) {
    const double middle = mLinear.middle[mLinear.columns[inverse.GetColumns()[i]]];
    mRadii[i] = std::fabs(middle) * DBL_EPSILON + 1e-280;
    const auto [rows, weights] = inverse.GetRow(i);
    for (std::size_t k = 0; k < rows.size(); ++k)
      mRadii[i] += std::fabs(weights[k]) * mLinear.rows[rows[k]].defect.GetMagnitude();
  }
  double factor = 2;
  for (int i = 0; i < kInflations; ++i, factor *= 16)
    if (Inflate(factor)) return true;
  return false;
}

/// One attempt. Where the image sticks out, the next box is at least as large as the image: an
/// unknown that is exactly 0 has no size of its own.
bool Prover::Inflate(double factor) {
  const PivotedInverse& inverse = mLinear.inverse;
  const auto& columns = mLinear.columns;
  auto& box = mLinear.box;
  const std::size_t rank = inverse.GetRank();
  for (std::size_t i = 0; i < rank; ++i) {
    const std::size_t unknown = columns[inverse.GetColumns()[i]];
    box[unknown] = Around(mLinear.middle[unknown], factor * mRadii[i]);
    if (!box[unknown].IsBounded()) return false;
  }
  const std::size_t before = mLinear.rows.size();
  if (!mLinear.SelectRows(Mode::kBox) || mLinear.rows.size() != before) return false;
  bool isInside = true;
  for (std::size_t i = 0; i < rank; ++i) {
    const auto [rows, weights] = inverse.GetRow(i);
    mLinear.Combine(rows, weights);
    const std::size_t pivot = inverse.GetColumns()[i], unknown = columns[pivot];
    const auto distance = [&](std::size_t column) {
      return box[columns[column]] - RealRange::Point(mLinear.middle[columns[column]]);
    };
    RealRange image = (kOne - mLinear.combined[pivot]) * distance(pivot) - mLinear.combinedDefect;
    for (const std::size_t column : mLinear.combinedColumns)
      if (column != pivot) image = image - mLinear.combined[column] * distance(column);
    mCertified[unknown] = image + RealRange::Point(mLinear.middle[unknown]);
    if (IsInside(mCertified[unknown], box[unknown])) continue;
    isInside = false;
    mRadii[i] = std::max(mRadii[i], image.GetMagnitude());
  }
  return isInside;
}

/// Whether everything but the square part of the equations holds wherever in mCertified the
/// solution is.
bool Prover::HoldsOnCertified() {
  RealEvaluation& evaluation = mLinear.evaluation;
  const RealSystem& system = mLinear.system;
  if (!evaluation.SetBox(mCertified, Mode::kBox)) return false;
  for (std::size_t i = 0; i < mCertified.size(); ++i)
    if (!IsWithin(mCertified[i], system.GetTerms()[system.GetUnknowns()[i]].initial)) return false;
  const auto& statements = system.GetStatements();
  std::vector<bool> isSolved(statements.size());
  for (const std::size_t row : mLinear.inverse.GetRows())
    isSolved[static_cast<std::size_t>(mLinear.rows[row].equation - statements.data())] = true;
  return std::all_of(statements.begin(), statements.end(),
                     [&](const auto& statement) {
                       RealSystem::Claim claim;
                       return mLinear.GetClaim(statement, claim) &&
                              (Holds(claim.relation, evaluation.GetValue(claim.left),
                                     evaluation.GetValue(claim.right)) ||
                               isSolved[static_cast<std::size_t>(&statement - statements.data())]);
                     }) &&
         mRelations.AreEntailed(evaluation);
}

/// Whether the equations have no other solution near the box and the certified one; mRegion becomes
/// the largest box of those tried in which this holds.
bool Prover::FindRegion() {
  if (!mIsClosed || mLinear.inverse.GetRank() < mLinear.columns.size()) return false;
  if (!IsUniqueIn(0)) return false;
  mRegion = mLinear.box;
  for (int known = 0, growths = kGrowths; growths - known > 1;) {
    const int tried = (known + growths) / 2;
    if (IsUniqueIn(std::pow(kGrowth, tried - 1))) {
      mRegion = mLinear.box;
      known = tried;
    } else {
      growths = tried;
    }
  }
  return true;
}

/// Whether the slopes between the certified box and one that holds it and the original one form
/// regular matrices only: preconditioned they are diagonally dominant. Two solutions would differ
/// by a vector that one of these matrices makes 0.
/// @param reach  how far the box extends beyond both, in multiples of their extent
bool Prover::IsUniqueIn(double reach) {
  mWeights.resize(mLinear.columns.size());
  for (std::size_t i = 0; i < mOriginal.size(); ++i) {
    RealRange& x = mLinear.box[i];
    x = Hull(mCertified[i], mOriginal[i]);
    if (mLinear.columnOf[i] == Linearization::kNoColumn) continue;
    mWeights[mLinear.columnOf[i]] =
        std::max(x.upper - x.lower, x.GetMagnitude() * DBL_EPSILON + 1e-280);
  }
  // An unknown that is known to far more digits than the others needs no room of its own size.
  double least = 0;
  for (const double weight : mWeights) least = std::max(least, kLeastWeight * weight);
  for (std::size_t i = 0; i < mOriginal.size(); ++i) {
    if (mLinear.columnOf[i] == Linearization::kNoColumn) continue;
    RealRange& x = mLinear.box[i];
    double& weight = mWeights[mLinear.columnOf[i]];
    weight = std::max(weight, least);
    x = {x.lower - reach * weight, x.upper + reach * weight};
    if (!x.IsBounded()) return false;
  }
  const std::size_t before = mLinear.rows.size();
  if (!mLinear.SelectRows(Mode::kBox, mCertified) || mLinear.rows.size() != before) return false;
  const PivotedInverse& inverse = mLinear.inverse;
  for (std::size_t i = 0; i < inverse.GetRank(); ++i) {
    const auto [rows, weights] = inverse.GetRow(i);
    mLinear.Combine(rows, weights);
    const std::size_t pivot = inverse.GetColumns()[i];
    RealRange others = kZero;
    for (const std::size_t j : mLinear.combinedColumns)
      if (j != pivot)
        others = others + RealRange::Point(mLinear.combined[j].GetMagnitude()) *
                              RealRange::Point(mWeights[j]);
    const RealRange own = mLinear.combined[pivot] * RealRange::Point(mWeights[pivot]);
    if (!(others.upper < std::max(own.lower, -own.upper))) return false;
  }
  return true;
}

/// Whether the certified solution is none of the box.
bool Prover::IsApart() const {
  for (std::size_t i = 0; i < mCertified.size(); ++i)
    if (Intersection(mCertified[i], mOriginal[i]).IsEmpty()) return true;
  return false;
}

}  // namespace zultav::engine
