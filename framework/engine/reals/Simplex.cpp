#include "framework/engine/reals/Simplex.h"

#include <algorithm>
#include <cmath>

namespace zultav::engine {

namespace {

// Coefficients are at most about 1 in magnitude, and so are variables.
constexpr double kTiny = 1e-9;
// Moves for each row and variable: degenerate programs may go in circles.
constexpr std::size_t kMoves = 20;

// Of the width of a variable: it is hardly worth a move to bring one nearer to its bound.
constexpr double kNear = 1e-3;

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

}  // namespace

void Simplex::Clear(std::size_t variables) {
  mTableau.clear();
  mBasic.clear();
  mValues.clear();
  mNonbasic.resize(variables);
  mPlaces.resize(variables);
  for (std::size_t i = 0; i < variables; ++i) {
    mNonbasic[i] = i;
    mPlaces[i] = {false, i};
  }
  mIsAtUpper.assign(variables, 0);
}

void Simplex::Add(std::span<const double> coefficients, double bound) {
  mPlaces.push_back({true, mBasic.size()});
  mBasic.push_back(mNonbasic.size() + mBasic.size());
  mValues.push_back(bound);
  mTableau.insert(mTableau.end(), coefficients.begin(), coefficients.end());
}

double Simplex::UpperOf(std::size_t name) const { return IsSlack(name) ? HUGE_VAL : 1; }

/// The column that moves the row's basic variable most in the direction; kNone where none does.
std::size_t Simplex::FindEntering(std::size_t row, double sense) {
  const double* entries = Row(row);
  std::size_t best = kNone;
  double steepest = kTiny;
  for (std::size_t c = 0; c < mNonbasic.size(); ++c) {
    const double gain = (mIsAtUpper[c] != 0 ? entries[c] : -entries[c]) * sense;
    if (gain <= steepest) continue;
    steepest = gain;
    best = c;
  }
  return best;
}

/// Weights by which the inequalities add up to the row.
void Simplex::TakeWeights(std::size_t row, double sense) {
  const double* entries = Row(row);
  mWeights.assign(mBasic.size(), 0.0);
  for (std::size_t c = 0; c < mNonbasic.size(); ++c)
    if (IsSlack(mNonbasic[c]))
      mWeights[mNonbasic[c] - mNonbasic.size()] = std::max(0.0, sense * entries[c]);
  if (IsSlack(mBasic[row])) mWeights[mBasic[row] - mNonbasic.size()] = 1;
}

/// The row whose basic variable is farthest from where it may be, and the direction there.
std::size_t Simplex::FindWorst(double& sense) const {
  std::size_t worst = kNone;
  double farthest = kTiny;
  for (std::size_t i = 0; i < mBasic.size(); ++i) {
    const double below = -mValues[i], above = mValues[i] - UpperOf(mBasic[i]);
    if (!(std::max(below, above) > farthest)) continue;
    farthest = std::max(below, above);
    worst = i;
    sense = below > above ? 1 : -1;
  }
  return worst;
}

/// Every choice is as good as any other, as far as costs go: there are none.
Simplex::Answer Simplex::FindVertex() {
  for (mMoves = kMoves * (mBasic.size() + mNonbasic.size()); mMoves > 0; --mMoves) {
    double sense = 0;
    const std::size_t row = FindWorst(sense);
    if (row == kNone) break;
    const std::size_t column = FindEntering(row, sense);
    if (column == kNone) {
      TakeWeights(row, sense);
      return Answer::kInfeasible;
    }
    Pivot(row, column, sense < 0);
  }
  return Answer::kNothing;
}

double Simplex::GetDistance(std::size_t variable, bool isUpper) const {
  const auto [isBasic, index] = mPlaces[variable];
  const double value = isBasic ? mValues[index] : mIsAtUpper[index];
  return isUpper ? 1 - value : value;
}

Simplex::Answer Simplex::Optimize(std::size_t variable, bool isUpper) {
  const double sense = isUpper ? 1 : -1;
  for (; mMoves > 0 && GetDistance(variable, isUpper) > kNear; --mMoves) {
    std::size_t column = mPlaces[variable].index;
    if (mPlaces[variable].isBasic) {
      const std::size_t row = column;
      column = FindEntering(row, sense);
      if (column == kNone) {
        TakeWeights(row, sense);
        return Answer::kNarrowed;
      }
    }
    if (!Move(column, mIsAtUpper[column] != 0 ? -1 : 1)) break;
  }
  return Answer::kNothing;
}

/// Moves a nonbasic variable until a bound is met. False when there is none.
bool Simplex::Move(std::size_t column, double direction) {
  double length = UpperOf(mNonbasic[column]);
  std::size_t row = kNone;
  double pivot = 0;
  for (std::size_t i = 0; i < mBasic.size(); ++i) {
    const double rate = -Row(i)[column] * direction;
    if (std::fabs(rate) <= kTiny) continue;
    const double room = rate < 0 ? mValues[i] : UpperOf(mBasic[i]) - mValues[i];
    if (room > (length + kTiny) * std::fabs(rate)) continue;
    const double reach = std::max(room, 0.0) / std::fabs(rate);
    if (reach > length - kTiny && std::fabs(rate) <= pivot) continue;
    length = std::min(length, reach);
    row = i;
    pivot = std::fabs(rate);
  }
  if (std::isinf(length)) return false;
  if (row == kNone) {
    for (std::size_t i = 0; i < mBasic.size(); ++i)
      mValues[i] -= Row(i)[column] * direction * length;
    mIsAtUpper[column] ^= 1;
    return true;
  }
  Pivot(row, column, -Row(row)[column] * direction > 0);
  return true;
}

/// Exchanges the row's basic variable, which goes to a bound, and a nonbasic one.
void Simplex::Pivot(std::size_t row, std::size_t column, bool leavesAtUpper) {
  const std::size_t columns = mNonbasic.size();
  double* pivotRow = Row(row);
  const double pivot = pivotRow[column];
  const double bound = leavesAtUpper ? UpperOf(mBasic[row]) : 0;
  const double step = (mValues[row] - bound) / pivot;  // of the nonbasic one
  const double entered = (mIsAtUpper[column] != 0 ? UpperOf(mNonbasic[column]) : 0) + step;
  for (std::size_t c = 0; c < columns; ++c) pivotRow[c] /= pivot;
  pivotRow[column] = 1 / pivot;
  for (std::size_t i = 0; i < mBasic.size(); ++i) {
    double* entries = Row(i);
    const double factor = entries[column];
    if (i == row || factor == 0) continue;
    mValues[i] -= factor * step;
    for (std::size_t c = 0; c < columns; ++c) entries[c] -= factor * pivotRow[c];
    entries[column] = -factor * pivotRow[column];
  }
  mValues[row] = entered;
  std::swap(mBasic[row], mNonbasic[column]);
  std::swap(mPlaces[mBasic[row]], mPlaces[mNonbasic[column]]);
  mIsAtUpper[column] = leavesAtUpper ? 1 : 0;
}

}  // namespace zultav::engine
