#include "framework/solver/ZULTaVoOperatorDescriptor.h"

#include <algorithm>
#include <ostream>

#include "framework/solver/FrameworkConstraints.h"
#include "framework/solver/ZULTaVoNetwork.h"
#include "framework/solver/ZULTaVoReal.h"

namespace {

constexpr int kNoType = -1;

/// What the registered types of a shape mean, and how the constraint gets its arguments.
struct ShapeRow {
  const char* name;
  int operands[2];  // positions of the operand types
  int result;       // position of the result type
  int buffer;       // position of the buffer type
  int buffered;     // the operand (0 or 1) that the buffer carries
  bool always;      // a buffer even where the types are equal already
  char order[4];    // the constraint's arguments: 'L', 'R' operands, 'Z' result
};

constexpr ShapeRow kShapes[] = {
    {"Binary",           {0, 1},             2, kNoType, 0, false, "ZLR"},
    {"SymBinary",        {0, 1},             2, kNoType, 0, false, "ZRL"},
    {"FirstInverse",     {0, 1},             2, 3,       0, false, "LZR"},
    {"SecondInverse",    {0, 1},             2, 3,       1, false, "RLZ"},
    {"SecondInverseSym", {0, 1},             2, 3,       0, false, "LRZ"},
    {"Unary",            {0, kNoType},       1, kNoType, 0, false, "ZL" },
    {"InverseUnary",     {0, kNoType},       1, 2,       0, false, "LZ" },
    {"BufferedUnary",    {0, kNoType},       2, 1,       0, true,  "ZL" },
    {"Constant",         {kNoType, kNoType}, 0, kNoType, 0, false, "Z"  },
};

/// The inverse of an equality is the equality itself; its conversion operators are registered as
/// (result, operand, result) and need no buffer.
constexpr ShapeRow kInverseEqual = {
    "InverseUnary", {1, kNoType},
     0, kNoType, 0, false, "LZ"
};

const ShapeRow& RowOf(ZULTaVoOperatorDescriptor::Shape shape,
                      const ZULTaVoConstraintDescriptor* constraint) {
  if (shape == ZULTaVoOperatorDescriptor::Shape::kInverseUnary &&
      constraint == ZULTaVoEqualConstraint::sDescriptor)
    return kInverseEqual;
  return kShapes[static_cast<std::size_t>(shape)];
}

/// Between integers a quotient is what the multiplication says, whatever the divisor; a real one by
/// zero has no value.
bool IsRealQuotient(const ZULTaVoOperatorDescriptor& op) {
  return op.GetShape() == ZULTaVoOperatorDescriptor::Shape::kFirstInverse &&
         op.GetConstraint()->GetRule() == ZULTaVoRule::kProduct &&
         ZULTaVoReal::sDescriptor->IsMatched(op.GetResultType());
}

}  // namespace

ZULTaVoOperatorDescriptor::ZULTaVoOperatorDescriptor(const ZULString& name, Shape shape,
                                                     const Types& types,
                                                     const ZULTaVoConstraintDescriptor* constraint)
    : ZULTaVoObjectDescriptor(name, nullptr, 1),
      mShape(shape),
      mTypes(types),
      mConstraint(constraint) {}

void ZULTaVoOperatorDescriptor::Write(ZULopstream& out) const {
  ZULTaVoObjectDescriptor::Write(out);
  out << static_cast<int>(mShape);
}

void ZULTaVoOperatorDescriptor::Read(ZULipstream& in) {
  ZULTaVoObjectDescriptor::Read(in);
  int shape = 0;
  in >> shape;
  if (shape < 0 || shape > static_cast<int>(Shape::kConstant))
    return in.Fail("an operator has an unknown shape");
  mShape = static_cast<Shape>(shape);
}

unsigned int ZULTaVoOperatorDescriptor::GetNumberOfArguments() const {
  const ShapeRow& row = RowOf(mShape, mConstraint);
  return (row.operands[0] != kNoType ? 1U : 0U) + (row.operands[1] != kNoType ? 1U : 0U);
}

void ZULTaVoOperatorDescriptor::PrintOn(std::ostream& out) const {
  out << GetName() << " (";
  for (unsigned int i = 0; i < GetNumberOfArguments(); ++i)
    out << (i == 0 ? "" : ", ") << GetOperandType(i)->GetName();
  out << ") -> " << GetResultType()->GetName();
}

const char* ZULTaVoOperatorDescriptor::GetShapeName() const {
  return RowOf(mShape, mConstraint).name;
}

unsigned int ZULTaVoOperatorDescriptor::GetNumberOfTypes() const {
  unsigned int count = 0;
  while (count < kMaxTypes && mTypes[count] != nullptr) ++count;
  return count;
}

bool ZULTaVoOperatorDescriptor::IsComplete() const {
  const ShapeRow& row = RowOf(mShape, mConstraint);
  const int last = std::max({row.operands[0], row.operands[1], row.result, row.buffer});
  return mConstraint != nullptr && static_cast<int>(GetNumberOfTypes()) > last;
}

const ZULTaVoObjectDescriptor* ZULTaVoOperatorDescriptor::GetOperandType(
    unsigned int operand) const {
  const int position = operand < 2 ? RowOf(mShape, mConstraint).operands[operand] : kNoType;
  return position == kNoType ? nullptr : mTypes[static_cast<std::size_t>(position)];
}

const ZULTaVoObjectDescriptor* ZULTaVoOperatorDescriptor::GetResultType() const {
  return mTypes[static_cast<std::size_t>(RowOf(mShape, mConstraint).result)];
}

int ZULTaVoOperatorDescriptor::Post(ZULTaVoNetwork& network, ZULTaVoObject* const* operands,
                                    ZULTaVoObject* result) const {
  const unsigned int count = GetNumberOfArguments();
  ZULTaVoObject* carried[2] = {};
  for (unsigned int i = 0; i < count; ++i) {
    carried[i] = operands[i];
    if (!GetOperandType(i)->IsMatched(network.GetType(operands[i]))) return 0;
  }
  if (!GetResultType()->IsMatched(network.GetType(result))) return 0;

  const ShapeRow& row = RowOf(mShape, mConstraint);
  if (row.buffer != kNoType) {
    const auto buffered = static_cast<unsigned int>(row.buffered);
    const ZULTaVoObjectDescriptor* type = mTypes[static_cast<std::size_t>(row.buffer)];
    if (row.always || type != GetOperandType(buffered)) {
      ZULTaVoObject* equal[2] = {network.AddObject(type), operands[buffered]};
      const auto* equality =
          static_cast<const ZULTaVoConstraintDescriptor*>(ZULTaVoEqualConstraint::sDescriptor);
      if (equal[0] == nullptr || !network.AddConstraint(equality, equal, 2)) return 0;
      carried[buffered] = equal[0];
    }
  }
  ZULTaVoObject* arguments[3] = {};
  unsigned int used = 0;
  for (const char* role = row.order; *role != 0; ++role)
    arguments[used++] = *role == 'Z' ? result : carried[*role == 'L' ? 0 : 1];
  if (!network.AddConstraint(mConstraint, arguments, used)) return 0;
  if (IsRealQuotient(*this))
    network.SetRule(network.GetNumberOfConstraints() - 1, ZULTaVoRule::kQuotient);
  return 1;
}

// --- Factories --------------------------------------------------------------------------------

namespace {

using Type = const ZULTaVoObjectDescriptor*;
using Shape = ZULTaVoOperatorDescriptor::Shape;

ZULTaVoOperatorDescriptor* Create(const ZULString& name, Shape shape, Type constraint,
                                  std::initializer_list<Type> types) {
  if (constraint == nullptr || constraint->GetKind() != ZULTaVoObjectDescriptor::Kind::kConstraint)
    return nullptr;
  ZULTaVoOperatorDescriptor::Types all = {};
  std::size_t used = 0;
  for (Type type : types) {
    if (type == nullptr) return nullptr;
    all[used++] = type;
  }
  return new ZULTaVoOperatorDescriptor(name, shape, all,
                                       static_cast<const ZULTaVoConstraintDescriptor*>(constraint));
}

}  // namespace

ZULTaVoOperatorDescriptor* ZULTaVoCreateBinaryOperator(const ZULString& name, Type left, Type right,
                                                       Type result, Type constraint) {
  return Create(name, Shape::kBinary, constraint, {left, right, result});
}

ZULTaVoOperatorDescriptor* ZULTaVoCreateSymmetricBinaryOperator(const ZULString& name, Type left,
                                                                Type right, Type result,
                                                                Type constraint) {
  return Create(name, Shape::kSymBinary, constraint, {left, right, result});
}

ZULTaVoOperatorDescriptor* ZULTaVoCreateFirstInverseBinaryOperator(const ZULString& name, Type left,
                                                                   Type right, Type result,
                                                                   Type wider, Type constraint) {
  return Create(name, Shape::kFirstInverse, constraint, {left, right, result, wider});
}

ZULTaVoOperatorDescriptor* ZULTaVoCreateSecondInverseBinaryOperator(const ZULString& name,
                                                                    Type left, Type right,
                                                                    Type result, Type wider,
                                                                    Type constraint) {
  return Create(name, Shape::kSecondInverse, constraint, {left, right, result, wider});
}

ZULTaVoOperatorDescriptor* ZULTaVoCreateSecondInverseSymmetricBinaryOperator(
    const ZULString& name, Type left, Type right, Type result, Type wider, Type constraint) {
  return Create(name, Shape::kSecondInverseSym, constraint, {left, right, result, wider});
}

ZULTaVoOperatorDescriptor* ZULTaVoCreateUnaryOperator(const ZULString& name, Type operand,
                                                      Type result, Type constraint) {
  return Create(name, Shape::kUnary, constraint, {operand, result});
}

ZULTaVoOperatorDescriptor* ZULTaVoCreateInverseUnaryOperator(const ZULString& name, Type operand,
                                                             Type result, Type buffer,
                                                             Type constraint) {
  return Create(name, Shape::kInverseUnary, constraint, {operand, result, buffer});
}

ZULTaVoOperatorDescriptor* ZULTaVoCreateBufferedUnaryOperator(const ZULString& name, Type operand,
                                                              Type buffer, Type result,
                                                              Type constraint) {
  return Create(name, Shape::kBufferedUnary, constraint, {operand, buffer, result});
}

ZULTaVoOperatorDescriptor* ZULTaVoCreateConstant(const ZULString& name, Type result,
                                                 Type constraint) {
  return Create(name, Shape::kConstant, constraint, {result});
}
