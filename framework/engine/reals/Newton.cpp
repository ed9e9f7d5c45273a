#include "framework/engine/reals/Newton.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <utility>

#include "framework/engine/reals/HansenSengupta.h"
#include "framework/engine/reals/LinearHull.h"
#include "framework/engine/reals/Linearization.h"
#include "framework/engine/reals/Prover.h"
#include "framework/engine/reals/Shaving.h"

namespace zultav::engine {

namespace {

// A contraction must take this share of a width, so that the effort is not wasted on crumbs.
constexpr double kWorthwhile = 0.1;
// A change by this share makes another contraction of the same node worthwhile.
constexpr double kMuch = 0.05;
// Steps and the hull of the equations in turn, before shaving, which takes more time.
constexpr int kRounds = 10;
// The dense matrix of a proof limits proofs to so many unknowns.
constexpr std::size_t kMaxProven = 1000;

}  // namespace

class Newton::Work {
 public:
  Work(Engine& engine, const RealSystem& system)
      : mEngine(engine),
        mSystem(system),
        mLinear(engine, system),
        mSteps(engine, mLinear),
        mHull(engine, mLinear),
        mShaving(engine, system),
        mRelations(engine, system),
        mProver(mLinear, mRelations) {
    const Program& program = engine.GetProgram();
    std::vector<std::uint32_t> unknownOf(program.GetNumberOfSlots(), kNone);
    for (std::uint32_t i = 0; i < system.GetUnknowns().size(); ++i)
      unknownOf[SlotOf(system.GetUnknowns()[i])] = i;
    std::vector<bool> isNamed(program.GetNumberOfSlots(), false);
    for (const auto* slots : {&program.GetDeclared(), &program.GetObserved()})
      for (const Slot slot : *slots) {
        mUnknownOf.push_back(unknownOf[slot]);
        isNamed[slot] = true;
      }
    std::vector<bool> matters(program.GetNumberOfSlots(), false);
    for (Slot slot = 0; slot < program.GetNumberOfSlots(); ++slot)
      matters[slot] = program.GetSlot(slot).isSearched;
    const auto note = [&](Slot slot, bool isOfEquation = true) {
      matters[slot] = true;
      mIsClosed = mIsClosed && (isNamed[slot] || !isOfEquation);
    };
    for (const std::uint32_t term : system.GetUnknowns()) note(SlotOf(term));
    for (const RealSystem::Statement& statement : system.GetStatements()) {
      for (const std::uint32_t leaf : statement.leaves) note(SlotOf(leaf));
      if (statement.truth != kNone) note(statement.truth, statement.IsEquation());
      mHasEquations = mHasEquations || (statement.IsEquation() && !statement.unknowns.empty());
    }
    for (Slot slot = 0; slot < program.GetNumberOfSlots(); ++slot)
      if (matters[slot] && program.GetSlot(slot).kind != Kind::kReal) mDiscrete.push_back(slot);
    mApproached.resize(system.GetUnknowns().size());
    mAfter.resize(system.GetUnknowns().size());
    mDiscreteAfter.resize(mDiscrete.size());
  }

  bool HasEquations() const { return mHasEquations; }
  bool Approach();
  Answer Contract();
  void Forget() { mIsContracted = false; }
  Finding Prove(std::span<RealRange> box, std::span<RealRange> region);
  bool HoldsForIntegers();
  std::vector<std::uint32_t> FindSignless() const;
  bool IsBeyondDoubles();
  void CalcSmears(Smears which, std::span<double> smears);

 private:
  Slot SlotOf(std::uint32_t term) const { return mSystem.GetTerms()[term].slot; }
  bool HasChanged() const;
  void Remember();
  void ReadRound();
  bool IsMuchNarrowerThan(const std::vector<RealRange>& before, double share) const;
  bool AreIntegersFixed() const;
  bool IsDecided() const;

  Engine& mEngine;
  const RealSystem& mSystem;
  Linearization mLinear;
  HansenSengupta mSteps;
  LinearHull mHull;
  Shaving mShaving;
  RealRelations mRelations;
  Prover mProver;
  std::vector<std::uint32_t> mUnknownOf;  // of each declared and each observed value, or kNone
  std::vector<Slot> mDiscrete;            // whose values proofs depend on
  bool mHasEquations = false;
  bool mIsClosed = true;        // equations depend on declared and observed values alone
  bool mIsContracted = false;   // what comes last: mAfter and mDiscreteAfter
  bool mHasApproached = false;  // since the last contraction
  std::vector<RealRange> mApproached, mBefore, mRound, mAfter;  // of the unknowns
  std::vector<double> mSmearOf;
  std::vector<IntegerRange> mDiscreteAfter;
};

// --- Contraction ------------------------------------------------------------------------------

bool Newton::Work::Approach() {
  mHasApproached = mHasEquations && HasChanged();
  if (!mHasApproached) return true;
  if (!mSteps.Narrow()) return false;
  for (std::size_t i = 0; i < mApproached.size(); ++i) mApproached[i] = mLinear.GetPresent(i);
  return true;
}

Newton::Answer Newton::Work::Contract() {
  const bool hasApproached = std::exchange(mHasApproached, false);
  if (!mHasEquations || !HasChanged()) return Answer::kNothing;
  mLinear.ReadBox();
  mBefore = mLinear.box;
  bool isWorthwhile = true;
  for (int i = 0; i < kRounds && isWorthwhile; ++i) {
    ReadRound();
    const bool isDone = i == 0 && hasApproached && !IsMuchNarrowerThan(mApproached, kMuch);
    if ((!isDone && !mSteps.Narrow()) || !mHull.Narrow()) return Answer::kFailed;
    isWorthwhile = IsMuchNarrowerThan(mRound, kWorthwhile);
  }
  ReadRound();
  if (!mShaving.Shave()) return Answer::kFailed;
  if (IsMuchNarrowerThan(mRound, kWorthwhile) && !mSteps.Narrow()) return Answer::kFailed;
  Remember();
  return IsMuchNarrowerThan(mBefore, kWorthwhile) ? Answer::kNarrowed : Answer::kNothing;
}

bool Newton::Work::IsMuchNarrowerThan(const std::vector<RealRange>& before, double share) const {
  for (std::size_t i = 0; i < before.size(); ++i)
    if (IsMuchNarrower(mLinear.GetPresent(i), before[i], share)) return true;
  return false;
}

/// Whether the state is another one than that in which the node's last contraction has ended, or
/// much narrower.
bool Newton::Work::HasChanged() const {
  if (!mIsContracted) return true;
  for (std::size_t i = 0; i < mDiscrete.size(); ++i)
    if (!(mEngine.GetIntegers(mDiscrete[i]) == mDiscreteAfter[i])) return true;
  for (std::size_t i = 0; i < mAfter.size(); ++i) {
    const RealRange now = mLinear.GetPresent(i);
    if (now.lower < mAfter[i].lower || mAfter[i].upper < now.upper) return true;
  }
  return IsMuchNarrowerThan(mAfter, kMuch);
}

void Newton::Work::ReadRound() {
  mLinear.ReadBox();
  mRound = mLinear.box;
}

void Newton::Work::Remember() {
  for (std::size_t i = 0; i < mAfter.size(); ++i) mAfter[i] = mLinear.GetPresent(i);
  for (std::size_t i = 0; i < mDiscrete.size(); ++i)
    mDiscreteAfter[i] = mEngine.GetIntegers(mDiscrete[i]);
  mIsContracted = true;
}

bool Newton::Work::IsBeyondDoubles() {
  mLinear.ReadBox();
  if (!IsDecided() || !mLinear.evaluation.SetBox(mLinear.box, RealEvaluation::Mode::kSolutions))
    return false;
  const auto isBeyond = [this](std::uint32_t operation) {
    const RealRange& value = mLinear.evaluation.GetValue(mSystem.GetOperations()[operation].target);
    return value.lower >= DBL_MAX || value.upper <= -DBL_MAX;
  };
  bool isBeyondAny = false;
  for (const RealSystem::Statement& statement : mSystem.GetStatements()) {
    const auto& unknowns = statement.unknowns;
    if (std::all_of(unknowns.begin(), unknowns.end(),
                    [this](std::uint32_t i) { return mLinear.box[i].IsScalar(); }))
      continue;
    isBeyondAny = true;
    if (std::none_of(statement.operations.begin(), statement.operations.end(), isBeyond))
      return false;
  }
  return isBeyondAny;
}

/// An equation's smears are taken relative to their sum: what is large in all of them decides
/// nothing.
void Newton::Work::CalcSmears(Smears which, std::span<double> smears) {
  std::fill(smears.begin(), smears.end(), 0.0);
  mLinear.ReadBox();
  mLinear.SelectColumns(Linearization::Left::kNothing);
  if (!mHasEquations || !mLinear.SelectRows(RealEvaluation::Mode::kSolutions)) return;
  mSmearOf.assign(mLinear.box.size(), 0.0);
  for (const Linearization::Row& row : mLinear.rows) {
    const auto& unknowns = row.equation->unknowns;
    const auto smear = [&](std::size_t k) {
      const RealRange& x = mLinear.box[unknowns[k]];
      return mLinear.entries[row.first + k].GetMagnitude() * (x.upper - x.lower);
    };
    double sum = 0;
    for (std::size_t k = 0; k < unknowns.size(); ++k) sum += smear(k);
    if (!(sum > 0) || std::isinf(sum)) continue;
    for (std::size_t k = 0; k < unknowns.size(); ++k) {
      double& total = mSmearOf[unknowns[k]];
      const double share = smear(k) / sum;
      total = which == Smears::kSum ? total + share : std::max(total, share);
    }
  }
  for (std::size_t i = 0; i < smears.size(); ++i)
    if (mUnknownOf[i] != kNone) smears[i] = mSmearOf[mUnknownOf[i]];
}

// --- Proof ------------------------------------------------------------------------------------

bool Newton::Work::AreIntegersFixed() const {
  return std::all_of(mDiscrete.begin(), mDiscrete.end(),
                     [this](Slot slot) { return mEngine.IsFixed(slot); });
}

bool Newton::Work::IsDecided() const {
  return !mEngine.GetProgram().HasFilters() && AreIntegersFixed();
}

Newton::Finding Newton::Work::Prove(std::span<RealRange> box, std::span<RealRange> region) {
  if (!IsDecided() || mSystem.GetUnknowns().size() > kMaxProven) return Finding::kNothing;
  const Finding finding = mProver.Prove(mIsClosed);
  const auto assign = [this](std::span<const RealRange> from, std::span<RealRange> to) {
    for (std::size_t i = 0; i < to.size() && !from.empty(); ++i)
      if (mUnknownOf[i] != kNone) to[i] = from[mUnknownOf[i]];
  };
  assign(mProver.GetCertified(), box);
  assign(mProver.GetRegion(), region);
  return finding;
}

bool Newton::Work::HoldsForIntegers() {
  if (!AreIntegersFixed()) return false;
  if (!mSystem.GetUnknowns().empty()) {  // which relations between reals have
    if (mEngine.GetProgram().IsComplete() || !IsDecided() ||
        mSystem.GetUnknowns().size() > kMaxProven)
      return false;
    const Finding finding = mProver.Prove(false);
    return finding == Finding::kSolution || finding == Finding::kOnlySolution;
  }
  RealEvaluation& evaluation = mLinear.evaluation;
  if (!evaluation.SetBox({}, RealEvaluation::Mode::kDefined)) return false;
  const auto& statements = mSystem.GetStatements();
  return std::all_of(statements.begin(), statements.end(),
                     [&](const auto& statement) {
                       RealSystem::Claim claim;
                       return mLinear.GetClaim(statement, claim) &&
                              Holds(claim.relation, evaluation.GetValue(claim.left),
                                    evaluation.GetValue(claim.right));
                     }) &&
         mRelations.AreEntailed(evaluation);
}

std::vector<std::uint32_t> Newton::Work::FindSignless() const {
  std::vector<std::uint32_t> signless;
  if (!mEngine.GetProgram().IsComplete()) return signless;
  const std::vector<bool> even = mSystem.FindEven();
  // Equal values have one sign, and what is observed has the sign that it is observed with.
  std::vector<unsigned int> shares(even.size(), 0);
  for (const std::uint32_t unknown : mUnknownOf)
    if (unknown != kNone) ++shares[unknown];
  for (std::uint32_t i = 0; i < mEngine.GetProgram().GetDeclared().size(); ++i)
    if (const std::uint32_t unknown = mUnknownOf[i];
        unknown != kNone && even[unknown] && shares[unknown] == 1)
      signless.push_back(i);
  return signless;
}

// --- Newton -----------------------------------------------------------------------------------

Newton::Newton(Engine& engine) {
  if (const RealSystem* system = engine.GetProgram().GetReals())
    mWork = std::make_unique<Work>(engine, *system);
}

Newton::~Newton() = default;

bool Newton::HasEquations() const { return mWork != nullptr && mWork->HasEquations(); }

bool Newton::Approach() { return mWork == nullptr || mWork->Approach(); }

Newton::Answer Newton::Contract() {
  return mWork == nullptr ? Answer::kNothing : mWork->Contract();
}

void Newton::Forget() {
  if (mWork != nullptr) mWork->Forget();
}

Newton::Finding Newton::Prove(std::span<RealRange> box, std::span<RealRange> region) {
  return mWork == nullptr ? Finding::kNothing : mWork->Prove(box, region);
}

bool Newton::HoldsForIntegers() { return mWork == nullptr || mWork->HoldsForIntegers(); }

std::vector<std::uint32_t> Newton::FindSignless() const {
  return mWork == nullptr ? std::vector<std::uint32_t>() : mWork->FindSignless();
}

bool Newton::IsBeyondDoubles() { return mWork != nullptr && mWork->IsBeyondDoubles(); }

void Newton::CalcSmears(Smears which, std::span<double> smears) {
  if (mWork == nullptr)
    std::fill(smears.begin(), smears.end(), 0.0);
  else
    mWork->CalcSmears(which, smears);
}

}  // namespace zultav::engine
