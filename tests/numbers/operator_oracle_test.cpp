// Every registered operator over integers and booleans against brute force: neither the network nor
// the engine may lose a solution or, where it can be asked for, keep a bound that no solution
// reaches.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <random>
#include <set>
#include <sstream>

#include "framework/engine/Engine.h"
#include "framework/intervals/ZULTavIntervals.h"
#include "framework/solver/ZULTavAbstractTypes.h"
#include "tests/oracle/operators.h"

namespace {

using Value = std::int64_t;
using Point = std::array<Value, 3>;  // left (or only) operand, right operand, result
constexpr Value kMax = 2147483646;

/// What is asked of the network besides soundness, and a contradiction where three fixed values
/// are no solution.
enum class Promise {
  kHull,         // the hull of the solutions
  kHullOfKnown,  // the same, unless a single integer is Any: two solutions are none to it
  kEachInverse,  // no domain beyond the hull of its values that have partners in the other two
  kNothing
};

Promise PromiseOf(std::string_view name, bool hasSingles) {
  if (name == "*" || name == "/" || (name == "^" && !hasSingles)) return Promise::kEachInverse;
  if (name == "mod" || name == "^" || name == "PrimeNumber") return Promise::kNothing;
  return name == "abs" ? Promise::kHullOfKnown : Promise::kHull;
}

// --- Domains ------------------------------------------------------------------------------------

/// A domain as the oracle sees it. `any`: a single integer that may be everything.
struct Set {
  Value low = 0, high = 0;
  bool any = false;
  bool Contains(Value v) const { return any || (low <= v && v <= high); }
  bool operator==(const Set& other) const {
    return any == other.any && (any || (low == other.low && high == other.high));
  }
};
using Box = std::array<Set, 3>;

std::ostream& operator<<(std::ostream& out, const Set& set) {
  if (set.any) return out << "Any";
  return out << '[' << set.low << ", " << set.high << ']';
}

/// The values tried for an Any: more than the small sets of the other places can reach.
constexpr Value kWindow = 60;

enum class Kind { kSingleInteger, kIntervalInteger, kBoolean, kForeign };

struct Place {
  ZULTaVoAny* value = nullptr;
  Kind kind = Kind::kBoolean;

  void Store(const Set& set) const {
    value->SetAny();
    if (set.any) return;
    if (auto* boolean = ZULTaVoCast<ZULTaVoBoolean>(value)) {
      if (set.low == set.high) boolean->SetExactValue(static_cast<int>(set.low));
      return;
    }
    auto* integer = ZULTaVoCast<ZULTaVoInteger>(value);
    integer->SetLowerBound(static_cast<long>(set.low));
    integer->SetUpperBound(static_cast<long>(set.high));
  }
  Set Load() const {
    if (const auto* boolean = ZULTaVoCast<ZULTaVoBoolean>(value))
      return {boolean->IsTrue() ? 1 : 0, boolean->IsFalse() ? 0 : 1, false};
    const auto* integer = ZULTaVoCast<ZULTaVoInteger>(value);
    return {integer->GetLowerBound(), integer->GetUpperBound(), value->GetCardinality() == -1};
  }
  /// All sets of this kind within [-size, size].
  std::vector<Set> AllSets(Value size) const {
    std::vector<Set> all;
    const Value least = kind == Kind::kBoolean ? 0 : -size;
    const Value greatest = kind == Kind::kBoolean ? 1 : size;
    for (Value low = least; low <= greatest; ++low)
      for (Value high = low; high <= greatest; ++high)
        if (kind != Kind::kSingleInteger || low == high) all.push_back({low, high, false});
    if (kind == Kind::kSingleInteger) all.push_back({0, 0, true});
    return all;
  }
};

// --- One operator in a network ------------------------------------------------------------------

class Subject {
 public:
  Subject(ZULTaVoModule& numbers, const ZULTaVoObjectDescriptor* foreign,
          const ZULTaVoOperatorDescriptor& op)
      : mOperator(op), mMeaning(oracle::Find(op.GetName(), op.GetNumberOfArguments())) {
    const auto add = [&](const ZULTaVoObjectDescriptor* type, Place& place) {
      const std::string_view name = type->GetName();
      place.kind = name == "single int"     ? Kind::kSingleInteger
                   : name == "interval int" ? Kind::kIntervalInteger
                   : name == "single bool"  ? Kind::kBoolean
                                            : Kind::kForeign;
      place.value =
          mNetwork.AddObject(place.kind == Kind::kForeign ? foreign : numbers.FindType(name));
    };
    ZULTaVoObject* operands[2] = {};
    for (unsigned i = 0; i < op.GetNumberOfArguments(); ++i) {
      add(op.GetOperandType(i), mPlaces[i]);
      operands[i] = mPlaces[i].value;
    }
    add(op.GetResultType(), mPlaces[2]);
    const bool hasSingles = std::any_of(mPlaces.begin(), mPlaces.end(), [](const Place& place) {
      return place.kind == Kind::kSingleInteger;
    });
    mPromise = PromiseOf(op.GetName(), hasSingles);
    mUsable = mMeaning != nullptr && op.Post(mNetwork, operands, mPlaces[2].value) != 0;
    EXPECT_TRUE(mUsable) << op.GetName() << " has no meaning here or cannot be posted";
    for (std::size_t i = 0; i < 3; ++i) mInitial[i] = Has(i) ? mPlaces[i].Load() : Set{};
  }

  bool IsUsable() const { return mUsable; }
  bool Has(std::size_t i) const { return mPlaces[i].value != nullptr; }
  const Place& GetPlace(std::size_t i) const { return mPlaces[i]; }
  const oracle::Operator& GetMeaning() const { return *mMeaning; }

  bool Holds(const Point& x) const {
    return oracle::Holds(*mMeaning, static_cast<double>(x[0]), static_cast<double>(x[1]),
                         static_cast<double>(x[2]));
  }

  /// Propagates from the box. Fails the test, and answers false, on what is wrong whatever the
  /// operator means.
  bool Propagate(const Box& before) {
    mBefore = before;
    EXPECT_TRUE(mNetwork.PushState());
    for (std::size_t i = 0; i < 3; ++i) {
      if (!Has(i)) continue;
      EXPECT_TRUE(mNetwork.SaveValue(mPlaces[i].value));
      mPlaces[i].Store(before[i]);
    }
    mNetwork.ScheduleAll();
    const auto status = mNetwork.Propagate();
    mConsistent = status == ZULTaVoNetwork::Status::kConsistent;
    for (std::size_t i = 0; i < 3; ++i) mAfter[i] = Has(i) ? mPlaces[i].Load() : before[i];
    Box again = mAfter;
    if (mConsistent && ++mRuns % 8 == 0) {
      mNetwork.ScheduleAll();
      mNetwork.Propagate();
      for (std::size_t i = 0; i < 3; ++i) again[i] = Has(i) ? mPlaces[i].Load() : before[i];
    }
    const bool flag = SDCheckError() != 0;
    SDClearError();
    mNetwork.PopState();
    for (std::size_t i = 0; i < 3; ++i)
      if (Has(i) && !(mPlaces[i].Load() == mInitial[i])) return Fail("is not restored");
    if (flag) return Fail("leaves the error flag up");
    if (!mConsistent && status != ZULTaVoNetwork::Status::kContradiction)
      return Fail("ends with status " + std::to_string(static_cast<int>(status)));
    for (std::size_t i = 0; mConsistent && i < 3; ++i) {
      if (!(again[i] == mAfter[i])) return Fail("is no fixpoint");
      if (!before[i].any && (mAfter[i].low < before[i].low || mAfter[i].high > before[i].high))
        return Fail("widens a domain");
    }
    return true;
  }

  /// The same by the engine, for values that it knows.
  bool IsKnownToEngine() const {
    return std::none_of(mPlaces.begin(), mPlaces.end(),
                        [](const Place& place) { return place.kind == Kind::kForeign; });
  }
  void PropagateByEngine(const Box& before) {
    if (!mEngine) {
      std::vector<ZULTaVoAny*> declared;
      for (const Place& place : mPlaces)
        if (place.value != nullptr) declared.push_back(place.value);
      mProgram.emplace(mNetwork, declared);
      mEngine.emplace(*mProgram, &mNetwork);
      mEngine->Propagate();
    }
    mBefore = mAfter = before;
    mEngine->Push();
    mConsistent = true;
    for (std::size_t i = 0; i < 3; ++i)
      if (Has(i) && mConsistent && !before[i].any)
        mConsistent =
            mEngine->Narrow(SlotOf(i), zultav::IntegerRange(before[i].low, before[i].high));
    mConsistent = mConsistent && mEngine->Propagate() != zultav::engine::Engine::Status::kFailed;
    for (std::size_t i = 0; mConsistent && i < 3; ++i)
      if (Has(i) && (!before[i].any || mEngine->IsFixed(SlotOf(i))))
        mAfter[i] = {mEngine->GetLower(SlotOf(i)), mEngine->GetUpper(SlotOf(i)), false};
    mEngine->Pop();
  }

  /// Whether the solution is still there.
  bool Keeps(const Point& solution) const {
    for (std::size_t i = 0; i < 3; ++i)
      if (!mConsistent || !mAfter[i].Contains(solution[i])) return Fail("loses", &solution);
    return true;
  }

  /// Compares with all solutions in the box.
  bool MatchesAllSolutions() const {
    Box solutions;
    bool found = false, keepsAll = true;
    ForEachSolution(mBefore, [&](const Point& solution) {
      keepsAll = keepsAll && Keeps(solution);
      for (std::size_t i = 0; i < 3; ++i) {
        solutions[i].low = found ? std::min(solutions[i].low, solution[i]) : solution[i];
        solutions[i].high = found ? std::max(solutions[i].high, solution[i]) : solution[i];
      }
      found = true;
    });
    if (!keepsAll) return false;
    if (!mConsistent) return true;
    const auto isAny = [](const Set& set) { return set.any; };
    const bool hull =
        mPromise == Promise::kHull ||
        (mPromise == Promise::kHullOfKnown && std::none_of(mBefore.begin(), mBefore.end(), isAny));
    if (hull && !found) return Fail("does not see that there is no solution");
    if (hull) return IsHull(solutions);
    const bool fixed = std::all_of(mAfter.begin(), mAfter.end(),
                                   [](const Set& set) { return !set.any && set.low == set.high; });
    // Nothing is said of a division by zero: single integers let it pass.
    const bool undefined = mMeaning->name == "mod" && mAfter[1].low == 0;
    if (fixed && !undefined && !Holds({mAfter[0].low, mAfter[1].low, mAfter[2].low}))
      return Fail("ends in what is no solution");
    return mPromise != Promise::kEachInverse || HasPartners();
  }

 private:
  zultav::engine::Slot SlotOf(std::size_t i) const {
    return mProgram->GetDeclared()[i == 2 ? mProgram->GetDeclared().size() - 1 : i];
  }
  template <class Use>
  void ForEachSolution(const Box& box, Use use) const {
    const auto low = [](const Set& set) { return set.any ? -kWindow : set.low; };
    const auto high = [](const Set& set) { return set.any ? kWindow : set.high; };
    for (Value l = low(box[0]); l <= high(box[0]); ++l)
      for (Value r = low(box[1]); r <= high(box[1]); ++r) {
        // One value, none, or all.
        const double value = mMeaning->exact(static_cast<double>(l), static_cast<double>(r));
        const bool all = l == 0 && r == 0 && mMeaning->name == "/";
        if (!all && !(std::fabs(value) <= kMax)) continue;
        const Value only = all ? 0 : static_cast<Value>(value);
        for (Value z = std::max(low(box[2]), all ? -kMax : only);
             z <= std::min(high(box[2]), all ? kMax : only); ++z)
          use(Point{l, r, z});
      }
  }

  bool IsHull(const Box& hull) const {
    for (std::size_t i = 0; i < 3; ++i) {
      const Set& set = mAfter[i];
      const bool tight =
          set.any ? hull[i].low < hull[i].high : set.low == hull[i].low && set.high == hull[i].high;
      if (Has(i) && !tight) {
        std::ostringstream wanted;
        wanted << "is wider than the solutions, which are " << hull[0] << ' ' << hull[1] << ' '
               << hull[2];
        return Fail(wanted.str());
      }
    }
    return true;
  }

  /// Each place by itself: let it be anything, and it must not lie beyond the values that have
  /// partners in the two other places.
  bool HasPartners() const {
    for (std::size_t i = 0; i < 3; ++i) {
      if (mAfter[i].any || mAfter[i].low == mAfter[i].high) continue;
      Box open = mAfter;
      open[i].any = true;
      Value low = kWindow, high = -kWindow;
      ForEachSolution(open, [&](const Point& solution) {
        low = std::min(low, solution[i]);
        high = std::max(high, solution[i]);
      });
      if (mAfter[i].low < low || mAfter[i].high > high)
        return Fail("keeps a bound without partner");
    }
    return true;
  }

  bool Fail(const std::string& what, const Point* point = nullptr) const {
    std::ostringstream text;
    mOperator.PrintOn(text);
    text << ' ' << what;
    if (point != nullptr) {
      text << " (";
      for (std::size_t i = 0; i < 3; ++i) text << (i == 0 ? "" : ", ") << (*point)[i];
      text << ')';
    }
    text << ":\n  before ";
    for (std::size_t i = 0; i < 3; ++i) text << (Has(i) ? "" : "-") << mBefore[i] << ' ';
    text << "\n  after  ";
    for (const Set& set : mAfter) text << set << ' ';
    if (!mConsistent) text << "contradiction";
    ADD_FAILURE() << text.str();
    return false;
  }

  const ZULTaVoOperatorDescriptor& mOperator;
  const oracle::Operator* mMeaning;
  Promise mPromise = Promise::kNothing;
  ZULTaVoNetwork mNetwork;
  std::array<Place, 3> mPlaces;
  bool mUsable = false;
  Box mInitial, mBefore, mAfter;
  bool mConsistent = false;
  unsigned mRuns = 0;
  std::optional<zultav::engine::Program> mProgram;
  std::optional<zultav::engine::Engine> mEngine;
};

class OperatorOracleTest : public testing::Test {
 protected:
  OperatorOracleTest() {
    manager.AddSearchDirectory(TEST_MODULES);
    numbers = manager.OpenModule("ZULTavNumbers");
    bits = manager.OpenModule("BitModule");
  }

  /// Calls `check` with each operator whose types are all integer or boolean.
  template <class Check>
  void ForEachOperator(Check check) {
    ASSERT_TRUE(numbers != nullptr && bits != nullptr) << manager.GetReason();
    const std::set<std::string_view> wanted = {"single int", "interval int", "single bool",
                                               "ZULTaVoInteger"};
    int count = 0;
    for (const auto* descriptor : numbers->GetDescriptors()) {
      if (descriptor->GetKind() != ZULTaVoObjectDescriptor::Kind::kOperator) continue;
      const auto& op = static_cast<const ZULTaVoOperatorDescriptor&>(*descriptor);
      bool discrete = true;
      for (unsigned i = 0; i < op.GetNumberOfTypes(); ++i)
        discrete = discrete && wanted.count(op.GetTypes()[i]->GetName()) != 0;
      if (!discrete) continue;
      ++count;
      Subject subject(*numbers, bits->FindType("bit int"), op);
      if (subject.IsUsable()) check(subject);
    }
    EXPECT_EQ(count, 156);
  }

  ZULTaVoModuleManager manager;
  ZULTaVoModule* numbers = nullptr;
  ZULTaVoModule* bits = nullptr;
};

}  // namespace

TEST_F(OperatorOracleTest, EverySmallBoxKeepsItsSolutionsAndNoMoreThanPromised) {
  std::mt19937 random(20240611);
  ForEachOperator([&](Subject& subject) {
    std::array<std::vector<Set>, 3> sets;
    bool foreign = false;
    for (std::size_t i = 0; i < 3; ++i) {
      sets[i] = subject.Has(i) ? subject.GetPlace(i).AllSets(4) : std::vector<Set>{{}};
      foreign = foreign || subject.GetPlace(i).kind == Kind::kForeign;
    }
    const auto passes = [&](const Box& box) {
      if (!subject.Propagate(box) || !subject.MatchesAllSolutions()) return false;
      if (!subject.IsKnownToEngine()) return true;
      SCOPED_TRACE("by the engine");
      subject.PropagateByEngine(box);
      return subject.MatchesAllSolutions();
    };
    // An operand of another module is known by its bounds, so that samples are enough.
    for (const Set& l : sets[0])
      for (const Set& r : sets[1])
        for (const Set& z : sets[2])
          if ((!foreign || random() % 16 == 0) && !passes({l, r, z})) return;
    for (std::size_t i = 0; i < 3; ++i)
      if (subject.Has(i)) sets[i] = subject.GetPlace(i).AllSets(7);
    const auto pick = [&](std::size_t i) { return sets[i][random() % sets[i].size()]; };
    for (int i = 0; i < 2000; ++i)
      if (!passes({pick(0), pick(1), pick(2)})) return;
  });
}
