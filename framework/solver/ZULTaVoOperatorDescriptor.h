#ifndef ZULTAV_SOLVER_ZULTAVO_OPERATOR_DESCRIPTOR_H
#define ZULTAV_SOLVER_ZULTAVO_OPERATOR_DESCRIPTOR_H

#include <array>

#include "framework/solver/ZULTaVoConstraintDescriptor.h"

class ZULTaVoNetwork;
class ZULTaVoObject;

/// An operator over value types: a name, the types of its operands and its result, and how it is
/// linked by a constraint. Made by the factories below and added to a module.
class ZULTAV_TYPES_API ZULTaVoOperatorDescriptor : public ZULTaVoObjectDescriptor {
 public:
  /// How operands (L, R or X), result Z and buffer W become arguments of the constraint C.
  /// A buffer is a hidden variable that is equal to the operand; it is made only where the
  /// operand's registered type is not W already (BufferedUnary: always).
  enum class Shape {
    kBinary,            ///< (L, R, Z):    C(Z, L, R)
    kSymBinary,         ///< (L, R, Z):    C(Z, R, L)
    kFirstInverse,      ///< (L, R, Z, W): C(L as W, Z, R)
    kSecondInverse,     ///< (L, R, Z, W): C(R as W, L, Z)
    kSecondInverseSym,  ///< (L, R, Z, W): C(L as W, R, Z)
    kUnary,             ///< (X, Z):       C(Z, X)
    kInverseUnary,      ///< (X, Z, W):    C(X as W, Z)
    kBufferedUnary,     ///< (X, W, Z):    C(Z, X as W)
    kConstant           ///< (Z):          C(Z)
  };
  static constexpr unsigned int kMaxTypes = 4;
  using Types = std::array<const ZULTaVoObjectDescriptor*, kMaxTypes>;

  /// `types` in the order of the shape; unused ones null.
  ZULTaVoOperatorDescriptor(const ZULString& name, Shape shape, const Types& types,
                            const ZULTaVoConstraintDescriptor* constraint);
  explicit ZULTaVoOperatorDescriptor(ZULStreamableInit init) : ZULTaVoObjectDescriptor(init) {}

  const char* CastableID() const override { return "ZULTaVoOperatorDescriptor"; }
  void Write(ZULopstream& out) const override;
  void Read(ZULipstream& in) override;
  Kind GetKind() const override { return Kind::kOperator; }
  unsigned int GetNumberOfArguments() const override;
  /// Like "+ (A, B) -> A", with the names of types.
  void PrintOn(std::ostream& out) const override;

  Shape GetShape() const { return mShape; }
  /// "Binary", "SymBinary", … "Constant".
  const char* GetShapeName() const;
  /// The types as registered, in the order of the shape.
  const Types& GetTypes() const { return mTypes; }
  unsigned int GetNumberOfTypes() const;
  /// Whether the constraint and all types that the shape needs are there.
  bool IsComplete() const;
  const ZULTaVoConstraintDescriptor* GetConstraint() const { return mConstraint; }

  /// The type that operand 0 or 1 must match; null for an operand that the shape does not have.
  const ZULTaVoObjectDescriptor* GetOperandType(unsigned int operand) const;
  const ZULTaVoObjectDescriptor* GetResultType() const;

  /// Adds to the network what makes `result` the value of the operator over `operands`
  /// (GetNumberOfArguments() of them, matching the registered types; all of them objects of that
  /// network): hidden buffers and constraints. Answers 1, or 0 when an argument does not match
  /// or memory ran out.
  int Post(ZULTaVoNetwork& network, ZULTaVoObject* const* operands, ZULTaVoObject* result) const;

 private:
  Shape mShape = Shape::kConstant;
  Types mTypes = {};
  const ZULTaVoConstraintDescriptor* mConstraint = nullptr;
};

// The factories answer a new descriptor for ZULTaVoModule::AddObjectDescriptor, or null when
// memory ran out or a descriptor is null.
#define ZULTAV_TYPE const ZULTaVoObjectDescriptor*
ZULTAV_TYPES_API ZULTaVoOperatorDescriptor* ZULTaVoCreateBinaryOperator(const ZULString& name,
                                                                        ZULTAV_TYPE left,
                                                                        ZULTAV_TYPE right,
                                                                        ZULTAV_TYPE result,
                                                                        ZULTAV_TYPE constraint);
ZULTAV_TYPES_API ZULTaVoOperatorDescriptor* ZULTaVoCreateSymmetricBinaryOperator(
    const ZULString& name, ZULTAV_TYPE left, ZULTAV_TYPE right, ZULTAV_TYPE result,
    ZULTAV_TYPE constraint);
ZULTAV_TYPES_API ZULTaVoOperatorDescriptor* ZULTaVoCreateFirstInverseBinaryOperator(
    const ZULString& name, ZULTAV_TYPE left, ZULTAV_TYPE right, ZULTAV_TYPE result,
    ZULTAV_TYPE wider, ZULTAV_TYPE constraint);
ZULTAV_TYPES_API ZULTaVoOperatorDescriptor* ZULTaVoCreateSecondInverseBinaryOperator(
    const ZULString& name, ZULTAV_TYPE left, ZULTAV_TYPE right, ZULTAV_TYPE result,
    ZULTAV_TYPE wider, ZULTAV_TYPE constraint);
ZULTAV_TYPES_API ZULTaVoOperatorDescriptor* ZULTaVoCreateSecondInverseSymmetricBinaryOperator(
    const ZULString& name, ZULTAV_TYPE left, ZULTAV_TYPE right, ZULTAV_TYPE result,
    ZULTAV_TYPE wider, ZULTAV_TYPE constraint);
ZULTAV_TYPES_API ZULTaVoOperatorDescriptor* ZULTaVoCreateUnaryOperator(const ZULString& name,
                                                                       ZULTAV_TYPE operand,
                                                                       ZULTAV_TYPE result,
                                                                       ZULTAV_TYPE constraint);
ZULTAV_TYPES_API ZULTaVoOperatorDescriptor* ZULTaVoCreateInverseUnaryOperator(
    const ZULString& name, ZULTAV_TYPE operand, ZULTAV_TYPE result, ZULTAV_TYPE buffer,
    ZULTAV_TYPE constraint);
ZULTAV_TYPES_API ZULTaVoOperatorDescriptor* ZULTaVoCreateBufferedUnaryOperator(
    const ZULString& name, ZULTAV_TYPE operand, ZULTAV_TYPE buffer, ZULTAV_TYPE result,
    ZULTAV_TYPE constraint);
ZULTAV_TYPES_API ZULTaVoOperatorDescriptor* ZULTaVoCreateConstant(const ZULString& name,
                                                                  ZULTAV_TYPE result,
                                                                  ZULTAV_TYPE constraint);
#undef ZULTAV_TYPE

#endif
