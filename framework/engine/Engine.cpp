#include "framework/engine/Engine.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "framework/engine/detail/AllDifferent.h"
#include "framework/engine/detail/Clauses.h"
#include "framework/engine/detail/Filters.h"
#include "framework/engine/detail/Relations.h"
#include "framework/engine/detail/Rules.h"
#include "framework/engine/reals/StatementRunner.h"
#include "framework/solver/SingleValue.h"
#include "framework/solver/ZULTaVoNetwork.h"

namespace zultav::engine {

namespace {

constexpr std::uint64_t kInterruptPeriod = 256;
constexpr std::uint64_t kRunsPerRule = 2000;
constexpr std::uint64_t kRunsAtLeast = 1000000;
constexpr int kBits = 64;  // of a word
// What the trail of a small program hardly ever exceeds.
constexpr std::size_t kFirstSaved = 64;

/// Whether so many integers are left that narrowing them one by one would never end.
bool IsWide(const IntegerRange& x) {
  constexpr std::uint64_t kWide = 1 << 16;
  return static_cast<std::uint64_t>(x.upper) - static_cast<std::uint64_t>(x.lower) > kWide;
}

/// Whether a bound of a wide domain has moved by that part of its magnitude. Magnitudes beyond any
/// ordinary unit are crossed in halves: hundreds of decades of small steps would never end.
bool HasMoved(double from, double to, double fraction) {
  if (from == to) return false;
  if (std::isinf(from)) return true;
  constexpr double kHuge = 1e19;
  const double magnitude = std::max(std::fabs(from), std::fabs(to));
  const bool ordinary = magnitude <= kHuge && magnitude >= 1 / kHuge;
  return std::fabs(to / magnitude - from / magnitude) >=
         (ordinary ? fraction : std::max(fraction, 0.5));
}

}  // namespace

Engine::Engine(const Program& program, ZULTaVoNetwork* network)
    : mProgram(program), mNetwork(network) {
  const std::size_t slots = program.GetNumberOfSlots(), rules = program.GetRules().size();
  bool isTold = false;
  for (Slot x = 0; x < slots; ++x) {
    const Kind kind = program.GetSlot(x).kind;
    mHasWide = mHasWide || (kind == Kind::kInteger && IsWide(program.GetInitialIntegers(x)));
    isTold = isTold || mHasWide || kind == Kind::kReal;
  }
  mHoleWords = 2 * slots;
  mRuleWords = mHoleWords + program.GetNumberOfHoleWords();
  mToldWords = mRuleWords + rules;
  const std::size_t clauseWords = mToldWords + (isTold ? 2 * slots : 0);
  const std::size_t orderWords = clauseWords + Clauses::CountStateWords(program);
  const std::size_t relationWords = orderWords + AllDifferent::CountStateWords(program);
  mWords.resize(relationWords + Relations::CountStateWords(program));
  mStamps.resize(mWords.size());
  mTrail.reserve(std::min(mWords.size(), kFirstSaved));
  for (Slot x = 0; x < slots; ++x) {
    const IntegerRange words = program.GetInitialIntegers(x);
    for (const std::size_t first : {std::size_t{0}, mToldWords}) {
      if (first != 0 && !isTold) continue;
      mWords[first + 2 * std::size_t{x}] = words.lower;
      mWords[first + 2 * std::size_t{x} + 1] = words.upper;
    }
  }
  std::fill_n(mWords.begin() + static_cast<std::ptrdiff_t>(mHoleWords),
              program.GetNumberOfHoleWords(), -1);

  mQueues.fill({kNone, kNone});
  mRules.resize(rules);
  for (std::size_t i = 0; i < rules; ++i) {
    const Rule& rule = program.GetRules()[i];
    mRules[i].cost = rule.cost;
    mRules[i].isSmall = rule.code == Code::kLinear && HasSmallSums(*this, rule);
  }
  if (orderWords != clauseWords) mClauses = std::make_unique<Clauses>(*this, clauseWords);
  if (relationWords != orderWords)
    mAllDifferent = std::make_unique<AllDifferent>(*this, orderWords);
  if (program.HasRelations()) mRelations = std::make_unique<Relations>(*this, relationWords);
  if (program.HasFilters() && network != nullptr) mFilters = std::make_unique<Filters>(program);
  if (program.GetReals() != nullptr)
    mStatements = std::make_unique<StatementRunner>(*program.GetReals());
  ScheduleAll();
  // What filters narrow at the outermost level is taken back in the end, too.
  if (mFilters != nullptr && !network->PushState()) throw std::bad_alloc();
}

Engine::~Engine() {
  while (!mLevels.empty()) Pop();
  if (mFilters != nullptr) mNetwork->PopState();
}

// --- What slots may be --------------------------------------------------------------------------

bool Engine::Contains(Slot x, std::int64_t value) const {
  if (value < GetLower(x) || value > GetUpper(x)) return false;
  const SlotInfo& info = mProgram.GetSlot(x);
  if (info.holes == kNone) return true;
  const std::uint64_t bit = GetBit(x, value);
  return (mWords[FindHoleWord(info, bit)] >> bit % kBits & 1) != 0;
}

std::uint64_t Engine::GetSize(Slot x) const {
  const SlotInfo& info = mProgram.GetSlot(x);
  const std::int64_t lower = GetLower(x), upper = GetUpper(x);
  if (info.holes == kNone) {
    const std::uint64_t width =
        static_cast<std::uint64_t>(upper) - static_cast<std::uint64_t>(lower);
    const bool endless = lower == IntegerRange::kMin || upper == IntegerRange::kMax;
    return endless ? UINT64_MAX : width + 1;
  }
  const std::uint64_t first = GetBit(x, lower), last = GetBit(x, upper);
  std::uint64_t size = 0;
  for (std::uint64_t word = first / kBits; word <= last / kBits; ++word) {
    auto bits = static_cast<std::uint64_t>(mWords[FindHoleWord(info, word * kBits)]);
    if (word == first / kBits) bits &= ~std::uint64_t{0} << first % kBits;
    if (word == last / kBits) bits &= ~std::uint64_t{0} >> (kBits - 1 - last % kBits);
    size += static_cast<std::uint64_t>(std::popcount(bits));
  }
  return size;
}

std::int64_t Engine::GetNext(Slot x, std::int64_t value) const {
  if (value < GetLower(x)) return GetLower(x);
  if (value >= GetUpper(x)) return value == IntegerRange::kMax ? value : value + 1;
  const SlotInfo& info = mProgram.GetSlot(x);
  return info.holes == kNone ? value + 1 : FindAbove(x, info, value + 1);
}

std::int64_t Engine::GetPrevious(Slot x, std::int64_t value) const {
  if (value > GetUpper(x)) return GetUpper(x);
  if (value <= GetLower(x)) return value == IntegerRange::kMin ? value : value - 1;
  const SlotInfo& info = mProgram.GetSlot(x);
  return info.holes == kNone ? value - 1 : FindBelow(x, info, value - 1);
}

/// The least value from this one on, which is no more than the upper bound.
std::int64_t Engine::FindAbove(Slot x, const SlotInfo& info, std::int64_t value) const {
  const std::uint64_t bit = GetBit(x, value);
  std::size_t word = FindHoleWord(info, bit);
  auto bits = static_cast<std::uint64_t>(mWords[word]) & ~std::uint64_t{0} << bit % kBits;
  if (bits != 0) return value + std::countr_zero(bits) - static_cast<int>(bit % kBits);
  value -= static_cast<int>(bit % kBits);
  do {
    value += kBits;
    bits = static_cast<std::uint64_t>(mWords[++word]);
  } while (bits == 0);
  return value + std::countr_zero(bits);
}

/// The greatest value up to this one, which is no less than the lower bound.
std::int64_t Engine::FindBelow(Slot x, const SlotInfo& info, std::int64_t value) const {
  const std::uint64_t bit = GetBit(x, value);
  std::size_t word = FindHoleWord(info, bit);
  auto bits =
      static_cast<std::uint64_t>(mWords[word]) & ~std::uint64_t{0} >> (kBits - 1 - bit % kBits);
  value += kBits - 1 - static_cast<int>(bit % kBits);
  while (bits == 0) {
    value -= kBits;
    bits = static_cast<std::uint64_t>(mWords[--word]);
  }
  return value - std::countl_zero(bits);
}

RealRange Engine::GetIntegersAsReals(Slot x) const {
  const IntegerRange range = GetIntegers(x);
  return {LowerAsDouble(range), UpperAsDouble(range)};
}

bool Engine::IsFixed(Slot x) const {
  switch (mProgram.GetSlot(x).kind) {
    case Kind::kInteger:
      return IsFixedInteger(x);
    case Kind::kReal:
      return GetReals(x).IsScalar();
    default:
      return IsSingleValue(GetObject(x));
  }
}

const ZULTaVoAny& Engine::GetObject(Slot x) const {
  return *mNetwork->GetObject(mProgram.GetSlot(x).object);
}

// --- Narrowing ----------------------------------------------------------------------------------

bool Engine::RaiseLower(Slot x, std::int64_t bound) {
  const std::int64_t upper = GetUpper(x);
  if (bound > upper) return false;
  const SlotInfo& info = mProgram.GetSlot(x);
  if (info.holes != kNone) bound = FindAbove(x, info, bound);
  Set(2 * std::size_t{x}, bound);
  TellBounds(x, bound == upper ? kLowerRaised | kFixed : kLowerRaised);
  return true;
}

bool Engine::DropUpper(Slot x, std::int64_t bound) {
  const std::int64_t lower = GetLower(x);
  if (bound < lower) return false;
  const SlotInfo& info = mProgram.GetSlot(x);
  if (info.holes != kNone) bound = FindBelow(x, info, bound);
  Set(2 * std::size_t{x} + 1, bound);
  TellBounds(x, bound == lower ? kUpperLowered | kFixed : kUpperLowered);
  return true;
}

bool Engine::RemoveWithin(Slot x, std::int64_t value) {
  const std::int64_t lower = GetLower(x), upper = GetUpper(x);
  // An end of the scale is no value.
  if (value == IntegerRange::kMin || value == IntegerRange::kMax) return true;
  if (value == lower) return RaiseLower(x, value + 1);
  if (value == upper) return DropUpper(x, value - 1);
  const SlotInfo& info = mProgram.GetSlot(x);
  if (info.holes == kNone) return true;
  const std::uint64_t bit = GetBit(x, value);
  const std::size_t word = FindHoleWord(info, bit);
  const auto mask = static_cast<std::int64_t>(std::uint64_t{1} << bit % kBits);
  if ((mWords[word] & mask) == 0) return true;
  Set(word, mWords[word] & ~mask);
  Tell(x, kHoleMade);
  return true;
}

bool Engine::Narrow(Slot x, const RealRange& range) {
  if (mProgram.GetSlot(x).kind == Kind::kReal) {
    const RealRange now = GetReals(x);
    const bool narrows = !(range.lower <= now.lower && now.upper <= range.upper);
    return !narrows || NarrowReal(x, range, false);
  }
  return !range.IsEmpty() && Narrow(x, IntegersWithin(range.lower, range.upper));
}

bool Engine::NarrowAndTell(Slot x, const RealRange& range) {
  return mProgram.GetSlot(x).kind == Kind::kReal ? NarrowReal(x, range, true) : Narrow(x, range);
}

bool Engine::NarrowReal(Slot x, const RealRange& range, bool always) {
  RealRange now = GetReals(x);
  const RealRange before = now;
  now.Intersect(range);
  if (now.IsEmpty()) return false;
  // A constant is any number of its enclosure: there is nothing to choose.
  if (mProgram.GetSlot(x).isConstant) return true;
  const std::size_t word = 2 * std::size_t{x};
  if (now.lower != before.lower) Set(word, std::bit_cast<std::int64_t>(now.lower));
  if (now.upper != before.upper) Set(word + 1, std::bit_cast<std::int64_t>(now.upper));
  const RealRange told = {std::bit_cast<double>(mWords[mToldWords + word]),
                          std::bit_cast<double>(mWords[mToldWords + word + 1])};
  if (now == told || !(always || IsWorthTelling(told, now))) return true;
  unsigned int events = now.IsScalar() ? kFixed : 0;
  if (now.lower != told.lower) {
    Set(mToldWords + word, std::bit_cast<std::int64_t>(now.lower));
    events |= kLowerRaised;
  }
  if (now.upper != told.upper) {
    Set(mToldWords + word + 1, std::bit_cast<std::int64_t>(now.upper));
    events |= kUpperLowered;
  }
  Tell(x, events);
  return true;
}

/// Whether the domain has narrowed enough since others were last told of it.
bool Engine::IsWorthTelling(const RealRange& told, const RealRange& now) const {
  constexpr double kWide = 1e19;
  if (now.IsScalar()) return true;
  const double width = told.upper - told.lower;
  if (width < kWide) return width - (now.upper - now.lower) >= mFraction * width;
  // The width of a wide domain says nothing of its bounds: each is measured by itself.
  return HasMoved(told.lower, now.lower, mFraction) || HasMoved(told.upper, now.upper, mFraction);
}

/// Tells of an integer's bounds, and of what was kept back before.
void Engine::TellBounds(Slot x, unsigned int events) {
  if (mHasWide && IsWide(mProgram.GetInitialIntegers(x))) [[unlikely]]
    events = TakeUntold(x, events, false);
  if (events != 0) Tell(x, events);
}

/// All that others have not been told of a wide integer; nothing while it is wide and has lost
/// little, unless it is to be told always.
unsigned int Engine::TakeUntold(Slot x, unsigned int events, bool always) {
  const std::size_t told = mToldWords + 2 * std::size_t{x};
  const IntegerRange before = {mWords[told], mWords[told + 1]}, now = GetIntegers(x);
  if (!always && IsWide(now) &&
      !IsWorthTelling({LowerAsDouble(before), UpperAsDouble(before)},
                      {LowerAsDouble(now), UpperAsDouble(now)}))
    return 0;
  if (now.lower != before.lower) events |= kLowerRaised;
  if (now.upper != before.upper) events |= kUpperLowered;
  Set(told, now.lower);
  Set(told + 1, now.upper);
  return events;
}

bool Engine::NarrowAndTell(Slot x, const IntegerRange& range) {
  if (!Narrow(x, range)) return false;
  if (!IsWide(mProgram.GetInitialIntegers(x))) return true;
  if (const unsigned int events = TakeUntold(x, 0, true); events != 0) Tell(x, events);
  return true;
}

void Engine::TellKeptBack() {
  const auto tell = [this](Slot x) {
    const Kind kind = mProgram.GetSlot(x).kind;
    if (kind == Kind::kReal)
      NarrowReal(x, GetReals(x), false);
    else if (kind == Kind::kInteger)
      TellBounds(x, 0);
  };
  if (!mLevels.empty()) return ForEachChanged(tell);
  for (Slot x = 0; x < mProgram.GetNumberOfSlots(); ++x) tell(x);
}

void Engine::Tell(Slot x, unsigned int events) {
  ++mStatistics.narrowings;
  const bool isFixed = (events & kFixed) != 0;
  const std::span<const Watch> watches =
      isFixed ? mProgram.GetWatches(x) : mProgram.GetEagerWatches(x);
  for (const Watch& watch : watches)
    if ((watch.events & events) != 0) Schedule(watch.rule);
  if (isFixed && mClauses != nullptr)
    mClauses->ForEachAffected(*this, x, IsTrue(x), [this](std::uint32_t rule) { Schedule(rule); });
}

void Engine::TellChanged(Slot x) { Tell(x, kAnyChange); }

// --- The queues ---------------------------------------------------------------------------------

void Engine::Schedule(std::uint32_t rule) {
  if (!mRules[rule].isQueued && !IsRetired(rule)) Enqueue(rule);
}

void Engine::Enqueue(std::uint32_t rule) {
  RuleState& state = mRules[rule];
  state.isQueued = true;
  state.next = kNone;
  Queue& queue = mQueues[state.cost];
  (queue.head == kNone ? queue.head : mRules[queue.tail].next) = rule;
  queue.tail = rule;
  mScheduled |= 1U << state.cost;
}

/// The cheapest rule that is scheduled; there is one. It still counts as queued.
std::uint32_t Engine::TakeNext() {
  const int cost = std::countr_zero(mScheduled);
  Queue& queue = mQueues[static_cast<std::size_t>(cost)];
  const std::uint32_t rule = queue.head;
  queue.head = mRules[rule].next;
  if (queue.head == kNone) mScheduled &= ~(1U << cost);
  return rule;
}

void Engine::ClearQueues() {
  while (mScheduled != 0) mRules[TakeNext()].isQueued = false;
}

void Engine::ScheduleAll() {
  for (std::uint32_t rule = 0; rule < mRules.size(); ++rule) Schedule(rule);
}

// --- Propagation --------------------------------------------------------------------------------

Engine::Status Engine::Propagate() {
  Status status = Status::kOutOfMemory;
  try {
    status = mProgram.IsInfeasible() ? Status::kFailed : RunScheduled();
  } catch (const std::bad_alloc&) {
    // A rule that counts as queued while it runs stands in no queue.
    if (mProgram.GetRules()[mRunning].isIdempotent) mRules[mRunning].isQueued = false;
    ScheduleAll();
  }
  mRunning = kNone;
  if (status == Status::kFailed || status == Status::kBadArguments) ClearQueues();
  return status;
}

Engine::Status Engine::RunScheduled() {
  const std::uint64_t limit =
      mStatistics.runs + (mRunLimit != 0 ? mRunLimit : kRunsAtLeast + kRunsPerRule * mRules.size());
  std::uint64_t pause = mStatistics.runs;  // when to look up from the work
  while (mScheduled != 0) {
    if (mStatistics.runs >= pause) {
      if (mStatistics.runs >= limit) return Status::kLimit;
      if (mInterrupt != nullptr && mInterrupt->load(std::memory_order_relaxed))
        return Status::kInterrupted;
      pause = std::min(limit, mStatistics.runs + kInterruptPeriod);
    }
    ++mStatistics.runs;
    mRunning = TakeNext();
    const Rule& rule = mProgram.GetRules()[mRunning];
    RuleState& state = mRules[mRunning];
    // What reaches its own fixpoint is not called by its own changes.
    state.isQueued = rule.isIdempotent;
    mRunAgain = false;
    const Status status = Run(rule, state);
    if (status != Status::kFixpoint) {
      state.isQueued = state.isQueued && !rule.isIdempotent;
      if (status == Status::kFailed) mFailed = mRunning;
      if (status == Status::kOutOfMemory) throw std::bad_alloc();
      return status;
    }
    if (rule.isIdempotent) state.isQueued = false;
    if (mRunAgain) Schedule(mRunning);
  }
  return Status::kFixpoint;
}

inline Engine::Status Engine::Run(const Rule& rule, RuleState& state) {
  const auto answer = [](bool consistent) {
    return consistent ? Status::kFixpoint : Status::kFailed;
  };
  switch (rule.code) {
    case Code::kFunction:
      return answer(RunFunction(*this, rule));
    case Code::kLinear:
      // At the outermost level nothing is taken back.
      if (!state.isSmall && mLevels.empty()) state.isSmall = HasSmallSums(*this, rule);
      return answer(RunLinear(*this, rule, state.isSmall));
    case Code::kUnequal:
      return answer(RunUnequal(*this, rule));
    case Code::kClause:
      return answer(mClauses->Run(*this, rule, mRunning));
    case Code::kAllDifferent:
      return answer(mAllDifferent->Run(*this, rule, mRunning));
    case Code::kCount:
      return answer(RunCount(*this, rule));
    case Code::kPrimality:
      return answer(RunPrimality(*this, rule));
    case Code::kStatement:
      return answer(mStatements->Run(*this, rule.data));
    case Code::kRelation:
      return answer(mRelations->Run(*this, mRunning));
    case Code::kFilter:
      break;
  }
  return mFilters != nullptr ? mFilters->Run(*this, *mNetwork, rule) : Status::kFixpoint;
}

void Engine::SetMemory(std::int64_t memory) { Set(mRuleWords + mRunning, memory); }

void Engine::Retire() { SetMemory(kRetired); }

// --- Levels -------------------------------------------------------------------------------------

void Engine::Push() {
  mLevels.push_back({mTrail.size(), mScheduled != 0});
  if (mFilters == nullptr || mNetwork->PushState()) return;
  mLevels.pop_back();
  throw std::bad_alloc();
}

void Engine::Pop() {
  if (mLevels.empty()) return;
  ClearQueues();
  const Level level = mLevels.back();
  for (std::size_t i = mTrail.size(); i > level.trail; --i) {
    const Saved& saved = mTrail[i - 1];
    mWords[saved.word] = saved.value;
    mStamps[saved.word] = saved.stamp;
  }
  mTrail.resize(level.trail);
  mLevels.pop_back();
  if (mFilters != nullptr) mNetwork->PopState();
  if (level.open) ScheduleAll();
}

std::size_t Engine::GetMemoryUsed() const {
  return mWords.capacity() * sizeof(std::int64_t) + mStamps.capacity() * sizeof(std::uint32_t) +
         mTrail.capacity() * sizeof(Saved) + mLevels.capacity() * sizeof(Level) +
         mRules.capacity() * sizeof(RuleState) +
         (mClauses != nullptr ? mClauses->GetMemoryUsed() : 0) +
         (mAllDifferent != nullptr ? mAllDifferent->GetMemoryUsed() : 0) +
         (mFilters != nullptr ? mFilters->GetMemoryUsed() : 0) +
         (mRelations != nullptr ? mRelations->GetMemoryUsed() : 0);
}

}  // namespace zultav::engine
