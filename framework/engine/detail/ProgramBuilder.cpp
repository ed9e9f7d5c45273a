#include "framework/engine/detail/ProgramBuilder.h"

#include <algorithm>
#include <utility>

#include "framework/engine/detail/Relations.h"
#include "framework/engine/reals/RealSystem.h"
#include "framework/solver/ZULTaVoNetwork.h"
#include "framework/solver/ZULTaVoRelation.h"

namespace zultav::engine {

namespace {

constexpr std::size_t kBits = 64;  // of a word
constexpr std::size_t kFew = 4;    // slots that are compared with each other

}  // namespace

Slot ProgramBuilder::AddSlot(const SlotInfo& info, const IntegerRange& range) {
  mProgram.mSlots.push_back(info);
  mProgram.mInitial.push_back(range.lower);
  mProgram.mInitial.push_back(range.upper);
  return static_cast<Slot>(mProgram.mSlots.size() - 1);
}

Slot ProgramBuilder::AddSlot(const SlotInfo& info, const RealRange& range) {
  return AddSlot(info, IntegerRange(std::bit_cast<std::int64_t>(range.lower),
                                    std::bit_cast<std::int64_t>(range.upper)));
}

void ProgramBuilder::KeepValues(Slot x) {
  SlotInfo& info = mProgram.mSlots[x];
  if (info.holes != kNone) return;
  const IntegerRange range = mProgram.GetInitialIntegers(x);
  const auto width =
      static_cast<std::uint64_t>(range.upper) - static_cast<std::uint64_t>(range.lower);
  info.holes = static_cast<std::uint32_t>(mProgram.mHoleWords);
  info.holeWords = static_cast<std::uint32_t>(width / kBits + 1);
  mProgram.mHoleWords += info.holeWords;
}

// --- Rules ------------------------------------------------------------------------------------

void ProgramBuilder::AddFunction(Function function, Slot z, Slot x, Slot y) {
  if (function == Function::kPower && mProgram.GetInitialIntegers(y) == IntegerRange::Only(2)) {
    function = Function::kSquare;
    y = x;
  }
  const Slot arguments[] = {z, x, y};
  AddRule(Code::kFunction, kCostOfFunction, arguments).data = static_cast<std::uint32_t>(function);
}

void ProgramBuilder::AddLinear(Relation relation, std::span<const Slot> x,
                               std::span<const std::int64_t> coefficients, std::int64_t c0,
                               Slot truth) {
  const std::uint32_t numbers = AddNumbers(c0, coefficients);
  Rule& rule = AddRule(Code::kLinear, x.size() <= 3 ? kCostOfPair : kCostOfSum, x);
  rule.relation = relation;
  rule.data = numbers;
  rule.isIdempotent = !HasDuplicates(x);
  if (truth == kNone) return;
  rule.isReified = true;
  rule.isIdempotent = rule.isIdempotent && std::find(x.begin(), x.end(), truth) == x.end();
  mProgram.mArguments.push_back(truth);
  ++rule.count;
}

void ProgramBuilder::AddConditional(Literal condition, Relation relation, std::span<const Slot> x,
                                    std::span<const std::int64_t> coefficients, std::int64_t c0) {
  AddLinear(relation, x, coefficients, c0, condition.slot);
  mProgram.mRules.back().isHalf = true;
  mProgram.mRules.back().isNegated = condition.negated;
}

void ProgramBuilder::AddUnequal(Slot x, Slot y, std::int64_t c0) {
  const std::uint32_t numbers = AddNumbers(c0, {});
  const Slot arguments[] = {x, y};
  Rule& rule = AddRule(Code::kUnequal, kCostOfUnit, arguments);
  rule.data = numbers;
  rule.isIdempotent = true;
}

void ProgramBuilder::AddClause(std::span<const Literal> literals) {
  std::vector<Slot> x;
  std::vector<std::int64_t> negated;
  for (const Literal& literal : literals) {
    x.push_back(literal.slot);
    negated.push_back(literal.negated ? 1 : 0);
  }
  const std::uint32_t numbers =
      negated.empty() ? 0 : AddNumbers(negated[0], std::span(negated).subspan(1));
  Rule& rule = AddRule(Code::kClause, kCostOfUnit, x);
  rule.data = numbers;
  rule.isIdempotent = true;
}

bool ProgramBuilder::AddAllDifferent(std::span<const Slot> x) {
  Rule& values = AddRule(Code::kAllDifferent, kCostOfSum, x);
  values.isIdempotent = true;
  Rule& bounds = AddRule(Code::kAllDifferent, kCostOfBounds, x);
  bounds.isIdempotent = !HasDuplicates(x);
  bounds.data = 1;
  return bounds.isIdempotent;
}

void ProgramBuilder::AddCount(Slot z, std::span<const Slot> truths) {
  Rule& rule = AddRule(Code::kCount, kCostOfSum, {&z, 1});
  mProgram.mArguments.insert(mProgram.mArguments.end(), truths.begin(), truths.end());
  rule.count += static_cast<std::uint32_t>(truths.size());
  rule.isIdempotent = !HasDuplicates(mProgram.GetArguments(rule));
}

void ProgramBuilder::AddPrimality(Slot truth, Slot x) {
  const Slot arguments[] = {truth, x};
  AddRule(Code::kPrimality, kCostOfPrimality, arguments).isIdempotent = truth != x;
}

void ProgramBuilder::AddReals() {
  const auto isReal = [](const SlotInfo& info) { return info.kind == Kind::kReal; };
  if (std::none_of(mProgram.mSlots.begin(), mProgram.mSlots.end(), isReal)) return;
  auto reals = std::make_shared<const RealSystem>(mProgram);
  const auto& statements = reals->GetStatements();
  for (std::uint32_t i = 0; i < statements.size(); ++i)
    AddStatement(i, reals->GetSlots(statements[i]));
  mProgram.mInfeasible = mProgram.mInfeasible || reals->IsInfeasible();
  if (!reals->GetTerms().empty()) mProgram.mReals = std::move(reals);
}

/// The slots are those whose change calls for it.
void ProgramBuilder::AddStatement(std::uint32_t statement, std::span<const Slot> x) {
  Rule& rule = AddRule(Code::kStatement, kCostOfStatement, x);
  rule.data = statement;
  rule.isIdempotent = true;  // nearly: another run right away hardly ever narrows much
}

void ProgramBuilder::AddRelation(std::uint32_t constraint, std::span<const Slot> x) {
  const auto propagator = Relations::MakePropagator(mProgram.mNetwork, constraint);
  std::vector<std::int64_t> numbers = {propagator->GetStateSize()};
  for (std::uint32_t i = 0; i < x.size(); ++i) numbers.push_back(Relations::CallOf(*propagator, i));
  const std::uint32_t data = AddNumbers(constraint, numbers);
  Rule& rule = AddRule(Code::kRelation, Relations::CostOf(*propagator), x);
  rule.data = data;
  rule.isIdempotent = !HasDuplicates(x);
  mProgram.mHasRelations = true;
  // Where it has a rule, formulas say the same.
  if (mProgram.mNetwork.GetRule(constraint) != ZULTaVoRule::kNone) return;
  for (const Slot slot : x)
    if (mProgram.mSlots[slot].kind == Kind::kReal) mProgram.mHasRealRelations = true;
}

void ProgramBuilder::AddFilter(std::uint32_t constraint, std::span<const Slot> x) {
  AddRule(Code::kFilter, kCostOfFilter, x).data = constraint;
  ++mProgram.mFilters;
}

/// Whether a slot stands twice among them.
bool ProgramBuilder::HasDuplicates(std::span<const Slot> x) {
  if (x.size() <= kFew) {
    for (std::size_t i = 1; i < x.size(); ++i)
      if (const auto before = x.first(i);
          std::find(before.begin(), before.end(), x[i]) != before.end())
        return true;
    return false;
  }
  mSeen.resize(mProgram.mSlots.size(), 0);
  ++mList;
  return std::any_of(x.begin(), x.end(),
                     [this](Slot slot) { return std::exchange(mSeen[slot], mList) == mList; });
}

Rule& ProgramBuilder::AddRule(Code code, Cost cost, std::span<const Slot> x) {
  Rule rule;
  rule.code = code;
  rule.cost = cost;
  rule.first = static_cast<std::uint32_t>(mProgram.mArguments.size());
  rule.count = static_cast<std::uint32_t>(x.size());
  mProgram.mArguments.insert(mProgram.mArguments.end(), x.begin(), x.end());
  return mProgram.mRules.emplace_back(rule);
}

/// Where the numbers stand. Many rules in turn have the same ones, which then stand once.
std::uint32_t ProgramBuilder::AddNumbers(std::int64_t first, std::span<const std::int64_t> rest) {
  std::vector<std::int64_t>& numbers = mProgram.mNumbers;
  const std::size_t count = rest.size() + 1;
  if (numbers.size() >= count) {
    const auto last = numbers.end() - static_cast<std::ptrdiff_t>(count);
    if (*last == first && std::equal(rest.begin(), rest.end(), last + 1))
      return static_cast<std::uint32_t>(last - numbers.begin());
  }
  const auto at = static_cast<std::uint32_t>(numbers.size());
  numbers.push_back(first);
  numbers.insert(numbers.end(), rest.begin(), rest.end());
  return at;
}

// --- Watches ----------------------------------------------------------------------------------

/// The changes of an argument after which the rule may find something.
unsigned int ProgramBuilder::GetEvents(const Rule& rule, std::size_t argument) const {
  const bool keepsValues =
      mProgram.mSlots[mProgram.mArguments[rule.first + argument]].holes != kNone;
  switch (rule.code) {
    case Code::kLinear: {
      if (rule.isReified && argument + 1 == rule.count) return kFixed;
      if (rule.relation == Relation::kLessOrEqual && (!rule.isReified || rule.isHalf))
        return mProgram.GetNumbers(rule)[argument + 1] > 0 ? kLowerRaised : kUpperLowered;
      if (rule.relation == Relation::kUnequal && !rule.isReified)
        return keepsValues ? kFixed : kBoundMoved;
      // Whether x = c can still become true: a hole decides.
      const bool single = rule.count == 2 && rule.isReified;
      return single && keepsValues && rule.relation != Relation::kLessOrEqual ? kAnyChange
                                                                              : kBoundMoved;
    }
    case Code::kUnequal:
      return keepsValues ? kFixed : kBoundMoved;
    case Code::kAllDifferent:
      return rule.data == 0 && keepsValues ? kFixed : kBoundMoved;
    case Code::kClause:
      return 0;  // the engine moves its watches from literal to literal
    case Code::kRelation:
      return Relations::EventsOf(mProgram.GetNumbers(rule)[argument + 2], keepsValues);
    case Code::kFilter:
      return kAnyChange;
    default:
      return kBoundMoved;
  }
}

void ProgramBuilder::Finish() {
  // What waits for a fixed value stands behind the rest, so that other changes pass it by.
  const auto isLast = [](unsigned int events) { return events == kFixed; };
  std::vector<std::uint8_t> events(mProgram.mArguments.size());  // of each argument
  for (const Rule& rule : mProgram.mRules)
    for (std::size_t j = 0; j < rule.count; ++j)
      events[rule.first + j] = static_cast<std::uint8_t>(GetEvents(rule, j));
  const auto forEach = [&](auto use) {
    for (auto i = static_cast<std::uint32_t>(mProgram.mRules.size()); i-- > 0;) {
      const Rule& rule = mProgram.mRules[i];
      for (std::uint32_t at = rule.first + rule.count; at-- > rule.first;)
        if (events[at] != 0) use(mProgram.mArguments[at], Watch{i, events[at]});
    }
  };
  std::vector<std::uint32_t>& first = mProgram.mFirstWatch;
  std::vector<std::uint32_t>& patient = mProgram.mFirstPatientWatch;
  const std::size_t slots = mProgram.mSlots.size();
  first.assign(slots + 1, 0);
  patient.assign(slots, 0);
  forEach([&](Slot x, Watch watch) { ++(isLast(watch.events) ? patient[x] : first[x]); });
  // Where the watches of a slot end, until they are filled in from behind.
  std::uint32_t end = 0;
  for (std::size_t x = 0; x < slots; ++x) {
    first[x] = end += first[x];
    patient[x] = end += patient[x];
  }
  first[slots] = end;
  mProgram.mWatches.resize(end);
  forEach([&](Slot x, Watch watch) {
    mProgram.mWatches[--(isLast(watch.events) ? patient[x] : first[x])] = watch;
  });
}

}  // namespace zultav::engine
