#ifndef ZULTAV_ENGINE_REALS_SIMPLEX_H
#define ZULTAV_ENGINE_REALS_SIMPLEX_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zultav::engine {

/// The simplex method for variables in [0, 1] under inequalities. Plain floating point: who needs a
/// guarantee checks what the weights that it answers are used for.
class Simplex {
 public:
  /// Begins a program of so many variables and no inequality.
  void Clear(std::size_t variables);
  /// sum of coefficients * variables <= bound.
  void Add(std::span<const double> coefficients, double bound);

  enum class Answer {
    kNothing,    ///< the inequalities do not narrow the variable, as far as was looked
    kNarrowed,   ///< the weighted sum of the inequalities bounds the variable
    kInfeasible  ///< no numbers fulfil the weighted sum of the inequalities
  };
  /// Looks for a vertex. Never kNarrowed.
  Answer FindVertex();
  /// After FindVertex: goes to a vertex where the variable is least, or greatest.
  Answer Optimize(std::size_t variable, bool isUpper);
  /// How far the variable is from a bound at the vertex.
  double GetDistance(std::size_t variable, bool isUpper) const;
  /// Of the inequalities, not negative.
  std::span<const double> GetWeights() const { return mWeights; }

 private:
  /// Where a name is.
  struct Place {
    bool isBasic;
    std::size_t index;
  };

  double* Row(std::size_t row) { return mTableau.data() + row * mNonbasic.size(); }
  bool IsSlack(std::size_t name) const { return name >= mNonbasic.size(); }
  double UpperOf(std::size_t name) const;
  std::size_t FindWorst(double& sense) const;
  bool Move(std::size_t column, double direction);
  void Pivot(std::size_t row, std::size_t column, bool leavesAtUpper);
  std::size_t FindEntering(std::size_t row, double sense);
  void TakeWeights(std::size_t row, double sense);

  // basic = constant - tableau * nonbasic, of variables and, named behind them, what is left of the
  // bounds (slacks, not negative).
  std::vector<double> mTableau;
  std::vector<std::size_t> mBasic, mNonbasic;  // names
  std::vector<Place> mPlaces;                  // of names
  std::vector<double> mValues;                 // of basic ones
  std::vector<std::uint8_t> mIsAtUpper;        // of nonbasic ones
  std::vector<double> mWeights;
  std::size_t mMoves = 0;  // that are left
};

}  // namespace zultav::engine

#endif
