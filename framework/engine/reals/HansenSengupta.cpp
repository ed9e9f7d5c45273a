#include "framework/engine/reals/HansenSengupta.h"

#include <algorithm>
#include <cfloat>
#include <utility>

namespace zultav::engine {

namespace {

constexpr std::size_t kNoColumn = Linearization::kNoColumn;
// A step must take this share of a width to be followed by another one at once.
constexpr double kConverging = 0.3;
// Equations of more unknowns are left to the preconditioned system.
constexpr std::size_t kMaxSparse = 16;
constexpr int kSteps = 20;

}  // namespace

bool HansenSengupta::Narrow() {
  for (int step = 0; step < kSteps; ++step) {
    mLinear.ReadBox();
    mLinear.SelectColumns(Linearization::Left::kNarrow);
    if (mLinear.columns.empty()) return true;
    if (!mLinear.SelectRows(RealEvaluation::Mode::kSolutions)) return false;
    // The single equations have had their say after one step.
    if (step == 0 && !NarrowByRows()) return false;
    if (!(mLinear.columns.size() > kMaxDense ? NarrowByWindows() : NarrowByInverse())) return false;
    bool worthwhile = false;
    for (const std::size_t i : mLinear.columns) {
      const RealRange& now = mLinear.box[i];
      worthwhile = worthwhile || IsMuchNarrower(now, mLinear.GetPresent(i), kConverging);
      const Slot slot = mLinear.system.GetTerms()[mLinear.system.GetUnknowns()[i]].slot;
      if (!mEngine.Narrow(slot, now)) return false;
    }
    if (mEngine.Propagate() == Engine::Status::kFailed) return false;
    if (!worthwhile) break;
  }
  return true;
}

/// Solves each equation for each of its unknowns.
bool HansenSengupta::NarrowByRows() {
  for (const Linearization::Row& row : mLinear.rows) {
    const auto& unknowns = row.equation->unknowns;
    if (unknowns.size() > kMaxSparse) continue;
    const RealRange* slopes = mLinear.entries.data() + row.first;
    const auto distance = [this](std::uint32_t unknown) {
      return mLinear.box[unknown] - RealRange::Point(mLinear.middle[unknown]);
    };
    for (std::size_t j = 0; j < unknowns.size(); ++j) {
      if (mLinear.columnOf[unknowns[j]] == kNoColumn) continue;
      RealRange rest = row.defect;
      for (std::size_t k = 0; k < unknowns.size(); ++k)
        if (k != j && mLinear.columnOf[unknowns[k]] != kNoColumn)
          rest = rest + slopes[k] * distance(unknowns[k]);
      RealRange& x = mLinear.box[unknowns[j]];
      x = Solve(x, mLinear.middle[unknowns[j]], slopes[j], rest);
      if (x.IsEmpty()) return false;
    }
  }
  return true;
}

/// Solves the preconditioned system.
bool HansenSengupta::NarrowByInverse() {
  const auto& columns = mLinear.columns;
  mWeights.resize(columns.size());
  for (std::size_t j = 0; j < columns.size(); ++j) {
    const RealRange& x = mLinear.box[columns[j]];
    mWeights[j] = x.IsBounded() ? std::clamp(x.upper - x.lower, 1e-300, DBL_MAX) : 0;
  }
  mLinear.Invert(mWeights);
  const PivotedInverse& inverse = mLinear.inverse;
  for (std::size_t i = 0; i < inverse.GetRank(); ++i) {
    const auto [rows, weights] = inverse.GetRow(i);
    mLinear.Combine(rows, weights);
    if (!mLinear.SolveCombined(inverse.GetColumns()[i])) return false;
  }
  return true;
}

/// The same for one window after the other, each with the equations that have no unknowns outside.
bool HansenSengupta::NarrowByWindows() {
  auto& columnOf = mLinear.columnOf;
  const std::vector<std::size_t> allColumns = mLinear.columns;
  const std::vector<std::size_t> allColumnOf =
      std::exchange(columnOf, std::vector<std::size_t>(columnOf.size(), kNoColumn));
  const std::vector<Linearization::Row> allRows = mLinear.rows;
  struct Reach {
    std::size_t first, last;  // columns
    std::size_t row;
  };
  std::vector<Reach> reaches;
  for (std::size_t i = 0; i < allRows.size(); ++i) {
    Reach reach = {kNoColumn, 0, i};
    for (const std::uint32_t unknown : allRows[i].equation->unknowns) {
      if (allColumnOf[unknown] == kNoColumn) continue;
      reach.first = std::min(reach.first, allColumnOf[unknown]);
      reach.last = std::max(reach.last, allColumnOf[unknown]);
    }
    if (reach.first != kNoColumn) reaches.push_back(reach);
  }
  std::sort(reaches.begin(), reaches.end(), [](const Reach& a, const Reach& b) {
    return a.first != b.first ? a.first < b.first : a.row < b.row;
  });
  auto next = reaches.begin();
  for (std::size_t begin = 0; begin + kWindow / 2 < allColumns.size(); begin += kWindow / 2) {
    const std::size_t end = std::min(begin + kWindow, allColumns.size());
    while (next != reaches.end() && next->first < begin) ++next;
    mLinear.rows.clear();
    for (auto reach = next; reach != reaches.end() && reach->first < end; ++reach)
      if (reach->last < end) mLinear.rows.push_back(allRows[reach->row]);
    mLinear.columns.assign(allColumns.begin() + static_cast<std::ptrdiff_t>(begin),
                           allColumns.begin() + static_cast<std::ptrdiff_t>(end));
    for (std::size_t j = 0; j < mLinear.columns.size(); ++j) columnOf[mLinear.columns[j]] = j;
    if (!NarrowByInverse()) return false;
    for (const std::size_t unknown : mLinear.columns) columnOf[unknown] = kNoColumn;
  }
  mLinear.columns = allColumns;
  return true;
}

}  // namespace zultav::engine
