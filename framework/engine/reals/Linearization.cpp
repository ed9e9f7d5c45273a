#include "framework/engine/reals/Linearization.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zultav::engine {

namespace {

constexpr RealRange kZero = {0, 0};
// Unknowns that are narrower, relative to their magnitude, gain nothing by another step.
constexpr double kNarrowest = 0x1p-48;

}  // namespace

double Middle(const RealRange& x) {
  return x.IsBounded() ? std::clamp(0.5 * x.lower + 0.5 * x.upper, x.lower, x.upper)
                       : x.GetMiddle();
}

RealRange Solve(const RealRange& x, double middle, const RealRange& slope, const RealRange& rest) {
  const RealRange center = RealRange::Point(middle);
  return Intersection(x, Quotients(x - center, -rest, slope) + center);
}

Linearization::Linearization(const Engine& theEngine, const RealSystem& theSystem)
    : engine(theEngine), system(theSystem), evaluation(theEngine, theSystem) {
  const std::size_t count = system.GetUnknowns().size();
  box.resize(count);
  middle.resize(count);
  columnOf.resize(count);
  mSlopes.resize(count);
}

void Linearization::ReadBox() {
  for (std::size_t i = 0; i < box.size(); ++i) {
    box[i] = GetPresent(i);
    middle[i] = Middle(box[i]);
  }
}

bool Linearization::GetClaim(const RealSystem::Statement& statement,
                             RealSystem::Claim& claim) const {
  claim = statement.claim;
  if (statement.truth == kNone || engine.IsTrue(statement.truth)) return true;
  claim = claim.GetNegation();
  return engine.IsFalse(statement.truth);
}

bool Linearization::IsActive(const RealSystem::Statement& statement) const {
  if (!statement.IsEquation()) return false;
  if (statement.truth == kNone) return true;
  return statement.claim.relation == Relation::kEqual ? engine.IsTrue(statement.truth)
                                                      : engine.IsFalse(statement.truth);
}

void Linearization::SelectColumns(Left left) {
  const auto isLeft = [left](const RealRange& x) {
    if (left == Left::kNarrow) return x.upper - x.lower <= kNarrowest * x.GetMagnitude();
    return left == Left::kPoints && x.IsScalar();
  };
  columns.clear();
  for (std::size_t i = 0; i < box.size(); ++i) {
    columnOf[i] = isLeft(box[i]) ? kNoColumn : columns.size();
    if (columnOf[i] != kNoColumn) columns.push_back(i);
  }
}

/// What the equation's unknowns without a column contribute becomes part of the defect. Answers
/// whether there are others.
bool Linearization::AbsorbOthers(const RealSystem::Statement& equation, RealRange& defect) {
  bool others = false;
  for (std::size_t k = 0; k < equation.unknowns.size(); ++k) {
    const std::uint32_t unknown = equation.unknowns[k];
    if (columnOf[unknown] != kNoColumn)
      others = true;
    else if (!box[unknown].IsScalar())
      defect = defect + mSlopes[k] * (box[unknown] - RealRange::Point(middle[unknown]));
  }
  return others;
}

bool Linearization::SelectRows(RealEvaluation::Mode mode) {
  if (!evaluation.SetBox(box, mode)) return false;
  evaluation.SetPoint(middle);
  TakeRows();
  return true;
}

bool Linearization::SelectRows(RealEvaluation::Mode mode, std::span<const RealRange> center) {
  if (!evaluation.SetBox(box, mode)) return false;
  evaluation.SetCenter(center);
  TakeRows();
  return true;
}

void Linearization::TakeRows() {
  evaluation.CalcSlopes();
  rows.clear();
  entries.clear();
  for (const RealSystem::Statement& equation : system.GetStatements()) {
    if (!IsActive(equation)) continue;
    RealRange defect = evaluation.GetDefect(equation.claim);
    if (!defect.IsBounded() || !evaluation.GetSlopes(equation, mSlopes.data())) continue;
    const bool bounded = std::all_of(equation.unknowns.begin(), equation.unknowns.end(),
                                     [&](std::uint32_t i) { return box[i].IsBounded(); });
    if (!bounded || !AbsorbOthers(equation, defect)) continue;
    rows.push_back({&equation, defect, entries.size()});
    entries.insert(entries.end(), mSlopes.begin(),
                   mSlopes.begin() + static_cast<std::ptrdiff_t>(equation.unknowns.size()));
  }
}

void Linearization::Invert(std::span<const double> columnWeights) {
  mMatrix.Clear();
  for (const Row& row : rows) {
    const auto& unknowns = row.equation->unknowns;
    for (std::size_t k = 0; k < unknowns.size(); ++k)
      if (const std::size_t column = columnOf[unknowns[k]]; column != kNoColumn)
        mMatrix.Add(column, Middle(entries[row.first + k]));
    mMatrix.EndRow();
  }
  inverse.Compute(mMatrix, columnWeights);
}

void Linearization::Combine(std::span<const std::size_t> of, std::span<const double> rowWeights) {
  for (const std::size_t column : combinedColumns) {
    combined[column] = kZero;
    mIsCombined[column] = false;
  }
  combinedColumns.clear();
  combined.resize(columns.size(), kZero);
  mIsCombined.resize(columns.size(), false);
  combinedDefect = kZero;
  for (std::size_t k = 0; k < rowWeights.size(); ++k) {
    if (rowWeights[k] == 0) continue;
    const Row& row = rows[of[k]];
    const RealRange weight = RealRange::Point(rowWeights[k]);
    combinedDefect = combinedDefect + weight * row.defect;
    const auto& unknowns = row.equation->unknowns;
    for (std::size_t l = 0; l < unknowns.size(); ++l) {
      const std::size_t column = columnOf[unknowns[l]];
      if (column == kNoColumn) continue;
      combined[column] = combined[column] + weight * entries[row.first + l];
      if (!std::exchange(mIsCombined[column], 1)) combinedColumns.push_back(column);
    }
  }
}

bool Linearization::SolveCombined(std::size_t column) {
  RealRange rest = combinedDefect;
  for (const std::size_t j : combinedColumns)
    if (j != column)
      rest = rest + combined[j] * (box[columns[j]] - RealRange::Point(middle[columns[j]]));
  RealRange& x = box[columns[column]];
  x = Solve(x, middle[columns[column]], combined[column], rest);
  return !x.IsEmpty();
}

}  // namespace zultav::engine
