#include "framework/calculator/detail/ModelBuilder.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <new>
#include <sstream>

#include "framework/solver/FrameworkConstraints.h"
#include "framework/solver/ZULTaVoBoolean.h"
#include "framework/solver/ZULTaVoInteger.h"
#include "framework/solver/ZULTaVoReal.h"

namespace zultav::detail {

namespace {

std::size_t Mix(std::size_t hash, std::uint64_t value) {
  constexpr std::uint64_t kFactor = 0x9e3779b97f4a7c15u;
  std::uint64_t mixed = (hash ^ value) * kFactor;
  mixed ^= mixed >> 32;
  return static_cast<std::size_t>(mixed);
}

std::uint64_t AddressOf(const void* object) { return reinterpret_cast<std::uintptr_t>(object); }

/// The bounds of the integers that a type holds.
std::string RangeOf(const ZULTaVoObjectDescriptor& type) {
  const LocalValue least(type);
  const LocalValue greatest(type);
  least->SetAny();
  least->CalcMinValue();
  greatest->SetAny();
  greatest->CalcMaxValue();
  std::ostringstream text;
  text.imbue(std::locale::classic());
  if (const auto* integer = ZULTaVoCast<ZULTaVoInteger>(least.Get()))
    text << integer->GetLowerBound() << " to "
         << ZULTaVoCast<ZULTaVoInteger>(greatest.Get())->GetUpperBound();
  if (const auto* real = ZULTaVoCast<ZULTaVoReal>(least.Get()))
    text << real->GetLowerBound() << " to "
         << ZULTaVoCast<ZULTaVoReal>(greatest.Get())->GetUpperBound();
  return text.str();
}

/// Stores the integer; false when the type cannot hold it.
bool StoreInteger(ZULTaVoInteger& object, std::int64_t value) {
  const LocalValue any(*object.GetDescriptor());
  any->SetAny();
  const auto* limits = ZULTaVoCast<ZULTaVoInteger>(any.Get());
  const auto stored = static_cast<long>(value);
  if (stored != value || stored < limits->GetLowerBound() || stored > limits->GetUpperBound())
    return false;
  object.SetExactValue(stored);
  return !object.IsNil() && !object.IsAny() && object.GetLowerBound() == stored &&
         object.GetUpperBound() == stored;
}

bool StoreReal(ZULTaVoReal& object, double lower, double upper) {
  if (!std::isfinite(lower) || !std::isfinite(upper)) return false;
  if (lower == upper) {
    object.SetExactValue(lower);
  } else {
    object.SetLowerBound(lower);
    object.SetUpperBound(upper);
  }
  return !object.IsNil() && !object.IsAny() && object.GetLowerBound() <= lower &&
         object.GetUpperBound() >= upper;
}

/// The end of the type, for a number beyond it.
void Saturate(ZULTaVoAny& object, bool isNegative) {
  object.SetAny();
  isNegative ? object.CalcMinValue() : object.CalcMaxValue();
}

/// Whether all of the domain lies where its type does not tell numbers apart any more.
template <class Number>
bool IsBeyondLimits(const ZULTaVoAny& value) {
  const auto* number = ZULTaVoCast<const Number>(&value);
  if (number == nullptr) return false;
  const LocalValue any(*value.GetDescriptor());
  any->SetAny();
  const auto* limits = ZULTaVoCast<const Number>(any.Get());
  return number->GetLowerBound() >= limits->GetUpperBound() ||
         number->GetUpperBound() <= limits->GetLowerBound();
}

/// Kinds of statements stand in the order of the comparisons that they state.
ZULTavModel::Statement::Kind StatementKindOf(Op op) {
  return static_cast<ZULTavModel::Statement::Kind>(static_cast<int>(op) -
                                                   static_cast<int>(Op::kEqual));
}

}  // namespace

// --- Objects ----------------------------------------------------------------------------------

ZULTaVoAny* ModelBuilder::NewObject(Type type, const void* from) {
  ZULTaVoAny* object =
      from != nullptr ? mModel.mNetwork.AddObject(type, from) : mModel.mNetwork.AddObject(type);
  if (object == nullptr) throw std::bad_alloc();
  return object;
}

std::uint32_t ModelBuilder::Append(const ZULTavModel::Expression& expression) {
  if (mModel.mExpressions.size() >= kNone) throw std::bad_alloc();
  mModel.mExpressions.push_back(expression);
  return static_cast<std::uint32_t>(mModel.mExpressions.size() - 1);
}

std::uint32_t ModelBuilder::AddVariable(ZULTavModel::Variable variable, std::size_t count,
                                        const LocalValue& initial) {
  mElements += count;
  if (mElements > mLimits.variables)
    Fail({}, "more variables than the limit of " + std::to_string(mLimits.variables));
  const auto index = static_cast<std::uint32_t>(mModel.mVariables.size());
  mPositions.push_back(static_cast<std::uint32_t>(mElements - count));
  mLeaves.push_back(static_cast<std::uint32_t>(mModel.mExpressions.size()));
  variable.values.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    variable.values.push_back(NewObject(variable.type, initial.Get()));
    Append({
        nullptr, variable.values.back(), {index, static_cast<std::uint32_t>(i)}
    });
  }
  const Type type = variable.type;
  mModel.mVariables.push_back(std::move(variable));
  // Propagation sees an empty domain through the constraints on it.
  const auto* equality = mRegistry.FindOperator(kNone, "=", std::array{type, type}.data(), 2);
  if (initial->IsNil() && count > 0 && equality != nullptr) {
    const std::uint32_t leaf = mLeaves[index];
    Post(
        {
            equality, 2, {leaf, leaf}
    },
        ObjectOf(leaf), {});
  }
  return index;
}

ModelBuilder::Type ModelBuilder::TypeOf(const Value& value) const {
  return value.IsExpression() ? ObjectOf(value.index)->GetDescriptor() : nullptr;
}

std::optional<std::int64_t> ModelBuilder::FixedInteger(const Value& value) const {
  const auto* integer = ZULTaVoCast<const ZULTaVoInteger>(ObjectOf(value.index));
  if (integer == nullptr || integer->IsNil() || integer->IsAny() ||
      integer->GetLowerBound() != integer->GetUpperBound())
    return std::nullopt;
  return integer->GetLowerBound();
}

bool ModelBuilder::IsBoolean(const Value& value) const {
  return value.IsExpression() &&
         ZULTaVoCast<const ZULTaVoBoolean>(ObjectOf(value.index)) != nullptr;
}

bool ModelBuilder::TakesNumbers(const Value& value) const {
  if (!value.IsExpression()) return false;
  const ZULTavModel::Expression& expression = mModel.mExpressions[value.index];
  return std::all_of(std::begin(expression.operands), std::end(expression.operands),
                     [this](std::uint32_t operand) {
                       return operand != kNone &&
                              ZULTaVoCast<const ZULTaVoNumber>(ObjectOf(operand)) != nullptr;
                     });
}

void ModelBuilder::Warn(Span span, std::string message, std::vector<std::string> notes) {
  Warn({span, std::move(message), std::move(notes), mSource});
}

void ModelBuilder::Warn(const ModelError& warning) {
  if (mWarnings.size() >= mLimits.errors || warning.source == nullptr) return;
  const Place place = {warning.source->GetOrder(), warning.span.position};
  mWarnings.try_emplace(place, warning);
}

// --- Constants --------------------------------------------------------------------------------

std::size_t ModelBuilder::ConstantHash::operator()(const ConstantKey& key) const {
  const auto integer = static_cast<std::uint64_t>(key.integer);
  return Mix(Mix(Mix(Mix(0, AddressOf(key.type)), integer), key.lower), key.upper);
}

/// Stores the constant in an object of the type; false where it cannot hold it.
bool ModelBuilder::StoreConstant(ZULTaVoAny& object, const Constant& constant, Type type) const {
  if (auto* boolean = ZULTaVoCast<ZULTaVoBoolean>(&object)) {
    boolean->SetExactValue(constant.integer != 0 ? 1 : 0);
    return true;
  }
  if (auto* integer = ZULTaVoCast<ZULTaVoInteger>(&object))
    return StoreInteger(*integer, constant.integer);
  auto* real = ZULTaVoCast<ZULTaVoReal>(&object);
  const Constant number = constant.AsReal();
  if (mRegistry.IsSingle(type)) return StoreReal(*real, number.nearest, number.nearest);
  return StoreReal(*real, number.lower, number.upper);
}

void ModelBuilder::CheckRange(const Value& number, Type type) const {
  const LocalValue value(*type);
  if (!StoreConstant(*value.Get(), number.constant, type))
    Fail(number.span, number.constant.Describe() + " is beyond the limits of '" + type->GetName() +
                          "', " + RangeOf(*type));
}

/// Equal for equal numbers: 3 and 3.0 are one real, but not two integers between the same doubles.
ModelBuilder::ConstantKey ModelBuilder::KeyOf(const Constant& constant, Type type) const {
  if (!Registry::IsReal(type)) return {type, constant.integer, 0, 0};
  const Constant number = constant.AsReal();
  return {type, number.lower == number.upper ? 0 : constant.integer,
          std::bit_cast<std::uint64_t>(number.lower), std::bit_cast<std::uint64_t>(number.upper)};
}

/// The exact number that the constant is as a value of the type.
ZULTaVoConstant ModelBuilder::NumberOf(const Constant& constant, Type type) const {
  if (constant.IsInteger()) return ZULTaVoConstant::Integer(constant.integer);
  return mRegistry.IsSingle(type) ? ZULTaVoConstant::Real(constant.nearest, constant.nearest)
                                  : ZULTaVoConstant::Real(constant.lower, constant.upper);
}

/// The expression that is this constant as a value of the type.
std::uint32_t ModelBuilder::LeafFor(const Value& value, Type type) {
  const ConstantKey key = KeyOf(value.constant, type);
  const auto known = mConstants.find(key);
  if (known != mConstants.end()) return known->second;
  if (value.constant.IsReal() && !std::isfinite(value.constant.upper - value.constant.lower))
    Fail(value.span, "this constant is too large");
  const LocalValue local(*type);
  const bool stored = StoreConstant(*local.Get(), value.constant, type);
  if (!stored) Saturate(*local.Get(), value.constant.AsReal().nearest < 0);
  ZULTaVoAny* object = NewObject(type, local.Get());
  if (!stored) mSaturated.insert(object);
  if (!value.constant.IsBoolean() &&
      !mModel.mNetwork.SetConstant(object, NumberOf(value.constant, type)))
    throw std::bad_alloc();
  const std::uint32_t leaf = Append({
      nullptr, object, {kNone, kNone}
  });
  mConstants.emplace(key, leaf);
  return leaf;
}

// --- Operators --------------------------------------------------------------------------------

ModelBuilder::Application ModelBuilder::Resolve(const Operation& operation, const Value* operands,
                                                unsigned int count) {
  // An operand that is there already has one choice, and so has one that is missing.
  Type given[2] = {nullptr, nullptr};
  Registry::TypeChoice choices[2] = {
      {&given[0], 1},
      {&given[1], 1}
  };
  for (unsigned int i = 0; i < count; ++i) {
    given[i] = TypeOf(operands[i]);
    if (operands[i].IsExpression()) continue;
    Type other = count == 2 ? TypeOf(operands[1 - i]) : nullptr;
    // An integer exponent narrows a real base further than a real number of the same value.
    if (i == 1 && mNames.GetName(operation.name) == "^") other = mRegistry.IntegerTypeLike(other);
    choices[i] = mRegistry.ChooseTypes(operands[i].constant, other);
    RequireType(choices[i].empty() ? nullptr : choices[i][0], operands[i].constant.Describe(),
                operands[i].span);
  }
  const auto find = [&](const Type* types) {
    return mRegistry.FindOperator(operation.name, mNames.GetName(operation.name), types, count);
  };
  Application result = {
      nullptr, count, {kNone, kNone}
  };
  Type types[2] = {nullptr, nullptr};
  for (std::size_t i = 0; i < choices[0].size() && result.op == nullptr; ++i)
    for (std::size_t j = 0; j < choices[1].size() && result.op == nullptr; ++j) {
      types[0] = choices[0][i];
      types[1] = choices[1][j];
      result.op = find(types);
    }
  if (result.op == nullptr) FailToResolve(operation, operands, count);
  for (unsigned int i = 0; i < count; ++i)
    result.operands[i] =
        operands[i].IsExpression() ? operands[i].index : LeafFor(operands[i], types[i]);
  if (!mQuotients.empty()) WarnOfQuotients(result);
  return result;
}

/// Remembers a quotient of integers unless it is known to be one.
void ModelBuilder::NoteQuotient(std::uint32_t expression, Span span) {
  const std::uint32_t* operands = mModel.mExpressions[expression].operands;
  const auto* dividend = ZULTaVoCast<const ZULTaVoInteger>(ObjectOf(operands[0]));
  const auto* divisor = ZULTaVoCast<const ZULTaVoInteger>(ObjectOf(operands[1]));
  if (dividend == nullptr || divisor == nullptr) return;
  const long by = divisor->GetLowerBound();
  const bool isFixed = divisor->GetUpperBound() == by;
  if (isFixed && (by == 1 || by == -1)) return;
  const bool areFixed = isFixed && dividend->GetLowerBound() == dividend->GetUpperBound();
  if (areFixed && by != 0 && dividend->GetLowerBound() % by == 0) return;
  mQuotients.emplace(
      expression,
      ModelError{span,
                 "between integers '/' is exact: a remainder leaves no solution",
                 {"for a real quotient make an operand real, as in 'x / 2.0' or '(real) x / y'"},
                 mSource});
}

/// Warns where an operator on reals takes integers that were computed by division.
void ModelBuilder::WarnOfQuotients(const Application& application) {
  bool wantsReal = Registry::IsReal(application.op->GetResultType());
  for (unsigned int i = 0; i < application.count; ++i)
    wantsReal = wantsReal || Registry::IsReal(ObjectOf(application.operands[i])->GetDescriptor());
  if (!wantsReal) return;
  constexpr std::size_t kMostSteps = 100;
  std::vector<std::uint32_t> pending(application.operands,
                                     application.operands + application.count);
  for (std::size_t step = 0; !pending.empty() && step < kMostSteps; ++step) {
    const std::uint32_t next = pending.back();
    pending.pop_back();
    const ZULTavModel::Expression& expression = mModel.mExpressions[next];
    if (expression.op == nullptr || ZULTaVoCast<const ZULTaVoInteger>(expression.object) == nullptr)
      continue;
    if (const auto quotient = mQuotients.find(next); quotient != mQuotients.end())
      Warn(quotient->second);
    for (const std::uint32_t operand : expression.operands)
      if (operand != kNone) pending.push_back(operand);
  }
}

void ModelBuilder::FailToResolve(const Operation& operation, const Value* operands,
                                 unsigned int count) const {
  const std::string& name = mNames.GetName(operation.name);
  std::string message = "no operator '" + name + "' takes ";
  Type types[2] = {nullptr, nullptr};
  bool asserts = false;
  for (unsigned int i = 0; i < count; ++i) {
    types[i] = TypeOf(operands[i]);
    if (i > 0) message += " and ";
    message += types[i] != nullptr ? "'" + std::string(types[i]->GetName()) + "'"
                                   : operands[i].constant.Describe();
    asserts = asserts || operands[i].asserts;
  }
  std::vector<std::string> notes = mRegistry.DescribeOperators(name, types, count);
  if (asserts)
    notes.insert(notes.begin(),
                 "the value of '=', '<>', '<', … is a number; for truth values write '==', "
                 "'<<>>', '<<', '<==', '>>', '>=='");
  const bool computes = operation.op >= Op::kAdd && operation.op != Op::kNot;
  const auto isTruth = [&](const Value& value) {
    return value.IsConstant() ? value.constant.IsBoolean() : IsBoolean(value);
  };
  if (computes && std::any_of(operands, operands + count, isTruth))
    notes.insert(
        notes.begin(),
        "a truth value is no number; 'int(…)' is 1 where it is true and 0 where it is not");
  Fail(operation.span, message, notes);
}

// Applications are equal when their operators and the objects of their operands are.

std::uint32_t ModelBuilder::HashOf(const Application& application) const {
  std::size_t hash = Mix(0, AddressOf(application.op));
  for (unsigned int i = 0; i < application.count; ++i)
    hash = Mix(hash, AddressOf(ObjectOf(application.operands[i])));
  return static_cast<std::uint32_t>(hash);
}

/// The expression that is the same application, or none.
std::uint32_t ModelBuilder::Find(const Application& application, std::uint32_t hash) const {
  const auto isSame = [&](const ZULTavModel::Expression& known) {
    if (known.op != application.op) return false;
    for (unsigned int i = 0; i < application.count; ++i)
      if (ObjectOf(known.operands[i]) != ObjectOf(application.operands[i])) return false;
    return true;
  };
  for (std::size_t place = hash;; ++place) {
    const Entry& entry = mTable[place & (mTable.size() - 1)];
    if (entry.expression == kNone ||
        (entry.hash == hash && isSame(mModel.mExpressions[entry.expression])))
      return entry.expression;
  }
}

void ModelBuilder::Enter(std::uint32_t expression, std::uint32_t hash) {
  const auto put = [this](Entry entry) {
    std::size_t place = entry.hash;
    while (mTable[place & (mTable.size() - 1)].expression != kNone) ++place;
    mTable[place & (mTable.size() - 1)] = entry;
  };
  if (++mApplied * 2 > mTable.size()) {
    std::vector<Entry> old(mTable.size() * 2, Entry{0, kNone});
    old.swap(mTable);
    for (const Entry& entry : old)
      if (entry.expression != kNone) put(entry);
  }
  put({hash, expression});
}

/// An object of the network that may be the result: that of the target, or a new one.
ZULTaVoAny* ModelBuilder::ResultObject(Type type, std::span<const std::uint32_t> operands,
                                       const Value* target) {
  if (target != nullptr) {
    const Type literal =
        target->IsConstant() ? mRegistry.ChooseType(target->constant, type) : TypeOf(*target);
    if (literal != nullptr && type->IsMatched(literal)) {
      ZULTaVoAny* object =
          ObjectOf(target->IsConstant() ? LeafFor(*target, literal) : target->index);
      // A constraint that narrows the same object twice is weaker than one with a variable between.
      const bool isOperand =
          std::any_of(operands.begin(), operands.end(),
                      [&](std::uint32_t operand) { return ObjectOf(operand) == object; });
      if (!isOperand) return object;
    }
  }
  return NewObject(type);
}

void ModelBuilder::CountOperations(std::size_t operations, Span span) {
  mOperations += operations;
  if (mOperations > mLimits.operations)
    Fail(span, "more operations than the limit of " + std::to_string(mLimits.operations));
}

void ModelBuilder::Post(const Application& application, ZULTaVoAny* result, Span span) {
  CountOperations(1, span);
  ZULTaVoObject* operands[2] = {nullptr, nullptr};
  for (unsigned int i = 0; i < application.count; ++i)
    operands[i] = ObjectOf(application.operands[i]);
  if (!application.op->Post(mModel.mNetwork, operands, result))
    Fail(span, "the operator '" + std::string(application.op->GetName()) +
                   "' cannot be added: memory ran out, or its module described it wrongly");
}

Value ModelBuilder::Apply(const Operation& operation, const Value* operands, unsigned int count,
                          const Value* target) {
  const Application application = Resolve(operation, operands, count);
  const std::uint32_t hash = HashOf(application);
  if (const std::uint32_t known = Find(application, hash); known != kNone)
    return Value::OfExpression(known, operation.span);
  ZULTaVoAny* object =
      ResultObject(application.op->GetResultType(), {application.operands, count}, target);
  Post(application, object, operation.span);
  const std::uint32_t index = Append({
      application.op, object, {application.operands[0], application.operands[1]}
  });
  Enter(index, hash);
  if (operation.op == Op::kDivide) NoteQuotient(index, operation.span);
  return Value::OfExpression(index, operation.span);
}

Value ModelBuilder::ApplyToConstants(const Operation& operation, const Value* operands,
                                     unsigned int count) {
  const std::size_t known = mModel.mExpressions.size();
  Value result = Apply(operation, operands, count, nullptr);
  if (result.index >= known) Compute(result);
  const auto* integer = ZULTaVoCast<ZULTaVoInteger>(ObjectOf(result.index));
  if (integer == nullptr || integer->GetLowerBound() != integer->GetUpperBound()) return result;
  return Value::Of(Constant::Integer(integer->GetLowerBound()), operation.span);
}

void ModelBuilder::PostList(const ZULTaVoObjectDescriptor* constraint,
                            const std::vector<ZULTaVoObject*>& arguments, Span span) {
  CountOperations(arguments.size(), span);
  if (!mModel.mNetwork.AddConstraint(static_cast<const ZULTaVoConstraintDescriptor*>(constraint),
                                     arguments.data(), static_cast<unsigned int>(arguments.size())))
    throw std::bad_alloc();
}

std::uint32_t ModelBuilder::AppendList(const std::vector<std::uint32_t>& expressions) {
  std::vector<std::uint32_t>& lists = mModel.mLists;
  if (expressions.size() >= kNone - lists.size()) throw std::bad_alloc();
  const auto place = static_cast<std::uint32_t>(lists.size());
  lists.push_back(static_cast<std::uint32_t>(expressions.size()));
  lists.insert(lists.end(), expressions.begin(), expressions.end());
  return place;
}

/// The type, which no module has where it is null.
ModelBuilder::Type ModelBuilder::RequireType(Type type, const std::string& what, Span span) {
  if (type == nullptr) Fail(span, "no module that is open has a type for " + what);
  return type;
}

Value ModelBuilder::Count(const std::vector<Value>& terms, Span span, const Value* target) {
  std::vector<std::uint32_t> list;
  list.reserve(terms.size());
  for (const Value& term : terms)
    list.push_back(term.IsExpression()
                       ? term.index
                       : LeafFor(term, RequireType(mRegistry.ChooseType(term.constant, nullptr),
                                                   term.constant.Describe(), term.span)));
  const auto known = mCounts.find(list);
  if (known != mCounts.end()) return Value::OfExpression(known->second, span);
  const Type type = RequireType(mRegistry.GetIntegerType(), "integers", span);
  ZULTaVoAny* result = ResultObject(type, list, target);
  std::vector<ZULTaVoObject*> arguments = {result};
  for (const std::uint32_t expression : list) arguments.push_back(ObjectOf(expression));
  PostList(ZULTaVoCountConstraint::sDescriptor, arguments, span);
  const std::uint32_t index = Append({
      nullptr, result, {kNone, AppendList(list)}
  });
  mCounts.emplace(std::move(list), index);
  return Value::OfExpression(index, span);
}

/// What the module cannot compute within its limits stays open.
void ModelBuilder::Compute(const Value& value) {
  const ZULTavModel::Expression& expression = mModel.mExpressions[value.index];
  ZULTaVoNetwork network;
  ZULTaVoObject* operands[2] = {nullptr, nullptr};
  for (unsigned int i = 0; i < expression.op->GetNumberOfArguments(); ++i) {
    const ZULTaVoAny* operand = ObjectOf(expression.operands[i]);
    if (mSaturated.contains(operand)) return;
    operands[i] = network.AddObject(operand->GetDescriptor(), operand);
  }
  ZULTaVoAny* result = network.AddObject(expression.op->GetResultType());
  if (!expression.op->Post(network, operands, result)) throw std::bad_alloc();
  if (network.Propagate() == ZULTaVoNetwork::Status::kContradiction)
    Fail(value.span, "this constant has no value");
  if (!IsBeyondLimits<ZULTaVoReal>(*result) && !IsBeyondLimits<ZULTaVoInteger>(*result))
    expression.object->Assign(*result);
}

// --- Comparisons ------------------------------------------------------------------------------

Value ModelBuilder::Relate(const Operation& operation, const Value& left, const Value& right) {
  const Value operands[2] = {left, right};
  return RelateResolved(operation, Resolve(operation, operands, 2), true);
}

/// The result is equal to the constraint's last argument: to the right operand or, where the
/// operator presents them in reverse order, to the left one. An equality's is equal to both.
Value ModelBuilder::RelateResolved(const Operation& operation, const Application& application,
                                   bool record) {
  const Type type = application.op->GetResultType();
  const bool reversed = application.op->GetShape() == ZULTaVoOperatorDescriptor::Shape::kSymBinary;
  ZULTaVoAny* object = nullptr;
  for (const std::size_t operand : {reversed ? 0u : 1u, reversed ? 1u : 0u}) {
    ZULTaVoAny* candidate = ObjectOf(application.operands[operand]);
    if (object == nullptr && type->IsMatched(candidate->GetDescriptor())) object = candidate;
    if (operation.op != Op::kEqual) break;
  }
  if (object == nullptr) object = NewObject(type);
  Post(application, object, operation.span);
  Value result = Value::OfExpression(kNone, operation.span);
  result.asserts = true;
  if (record)
    result.index = Append({
        application.op, object, {application.operands[0], application.operands[1]}
    });
  return result;
}

void ModelBuilder::State(const Operation& operation, const Value& left, const Value& right,
                         std::uint32_t line) {
  const Value operands[2] = {left, right};
  const Application application = Resolve(operation, operands, 2);
  const bool holds = operation.op == Op::kEqual &&
                     ObjectOf(application.operands[0]) == ObjectOf(application.operands[1]);
  if (!holds) RelateResolved(operation, application, false);
  mModel.mStatements.push_back(
      {StatementKindOf(operation.op), application.operands[0], application.operands[1], line});
}

void ModelBuilder::StateTrue(const Operation& equality, const Value& value, std::uint32_t line) {
  const Value operands[2] = {value, Value::Of(Constant::Boolean(true), value.span)};
  const Application application = Resolve(equality, operands, 2);
  if (ObjectOf(application.operands[0]) != ObjectOf(application.operands[1]))
    RelateResolved(equality, application, false);
  mModel.mStatements.push_back({StatementKind::kTrue, application.operands[0], kNone, line});
}

void ModelBuilder::SetObjective(const Value& value, bool isMaximized) {
  const bool isBoolean = value.IsConstant() ? value.constant.IsBoolean() : IsBoolean(value);
  if (isBoolean)
    Fail(value.span, "an objective is a number; this is a truth value",
         {"how many of p, q and r are true is 'sum(p, q, r)'"});
  const Type type = RequireType(
      value.IsConstant() ? mRegistry.ChooseType(value.constant, nullptr) : TypeOf(value),
      "the objective", value.span);
  if (Registry::IsReal(type) && mRegistry.IsSingle(type))
    Fail(value.span,
         "values of type '" + std::string(type->GetName()) +
             "' are equal within a tolerance, and have no best one",
         {"declare variables of a type of intervals, such as 'x : real;'"});
  mModel.mObjective = ObjectOf(value.IsConstant() ? LeafFor(value, type) : value.index);
  mModel.mIsMaximized = isMaximized;
}

/// The type of integers that all terms have or, being literals, can have; null if there is none.
ModelBuilder::Type ModelBuilder::CommonIntegerType(const std::vector<Value>& terms) const {
  Type type = nullptr;
  for (const Value& term : terms)
    if (term.IsExpression()) type = TypeOf(term);
  if (!ZULTaVoInteger::sDescriptor->IsMatched(type)) return nullptr;
  const bool fit = std::all_of(terms.begin(), terms.end(), [&](const Value& term) {
    if (term.IsExpression()) return TypeOf(term) == type;
    return term.IsConstant() && term.constant.IsInteger() &&
           mRegistry.ChooseType(term.constant, type) == type;
  });
  return fit ? type : nullptr;
}

bool ModelBuilder::StateAllDifferent(const std::vector<Value>& terms, Span span,
                                     std::uint32_t line) {
  const Type type = CommonIntegerType(terms);
  if (type == nullptr) return false;
  std::vector<std::uint32_t> list;
  std::vector<ZULTaVoObject*> arguments;
  for (const Value& term : terms) {
    list.push_back(term.IsExpression() ? term.index : LeafFor(term, type));
    arguments.push_back(ObjectOf(list.back()));
  }
  PostList(ZULTaVoAllDifferentConstraint::sDescriptor, arguments, span);
  mModel.mStatements.push_back({StatementKind::kAllDifferent, AppendList(list), kNone, line});
  return true;
}

}  // namespace zultav::detail
