#ifndef ZULTAV_SOLVER_ZULTAVO_CONSTRAINT_DESCRIPTOR_H
#define ZULTAV_SOLVER_ZULTAVO_CONSTRAINT_DESCRIPTOR_H

#include <array>

#include "framework/solver/ZULTaVoObjectDescriptor.h"
#include "framework/solver/ZULTaVoRule.h"

/// Describes a class of constraints: its name and its named, typed arguments.
///
/// Arguments are added operands first, result last; a constraint sees the result as number 0 and
/// the operands as 1, 2, … (ZULTaVoObjectEnvironment). The last operand may repeat, so that a
/// constraint takes argument lists of any length: that which counts true values announces two
/// arguments, a boolean, which repeats, and the number.
class ZULTAV_TYPES_API ZULTaVoConstraintDescriptor : public ZULTaVoObjectDescriptor {
 public:
  /// Of arguments that are announced.
  static constexpr unsigned int kMaxArguments = 4;

  /// What the network may spare a constraint and what it takes; a sum of these.
  enum Flags {
    /// One filter call reaches the constraint's own fixpoint when its arguments are distinct
    /// objects of one type other than a real: its own changes need not call it again.
    kIdempotent = 1,
    /// The same holds when the result stands in for the last operand, being the same object.
    kRelation = 2,
    /// And then the filter can do nothing before an argument is a single value.
    kWaitsForSingleValue = 4,
    /// The last operand may stand any number of times, from once on.
    kRepeatsOperand = 8
  };

  struct Argument {
    ZULString name;
    const ZULTaVoObjectDescriptor* type = nullptr;
    unsigned short priority = 0;
  };

  /// @param arguments  how many arguments will be added, at most kMaxArguments
  /// @param flags      a sum of Flags
  ZULTaVoConstraintDescriptor(const ZULString& name, const ZULTaVoObjectDescriptor* base,
                              int version, unsigned int arguments, int flags);
  explicit ZULTaVoConstraintDescriptor(ZULStreamableInit init) : ZULTaVoObjectDescriptor(init) {}

  const char* CastableID() const override { return "ZULTaVoConstraintDescriptor"; }
  void Write(ZULopstream& out) const override;
  void Read(ZULipstream& in) override;
  Kind GetKind() const override { return Kind::kConstraint; }
  /// The announced arguments: where an operand repeats, the fewest that it takes.
  unsigned int GetNumberOfArguments() const override { return mCount; }
  bool TakesNumberOfArguments(unsigned int count) const {
    return count == mCount || (mCount > 1 && count > mCount && (mFlags & kRepeatsOperand) != 0);
  }
  std::size_t GetArgumentsSize() const override { return mCount * sizeof(void*); }
  void PrintOn(std::ostream& out) const override;

  /// `priority`: a constraint starts with the least priority of its arguments; lower runs sooner.
  /// More arguments than announced are ignored.
  void AddArgument(const ZULString& name, const ZULTaVoObjectDescriptor* type,
                   unsigned short priority);

  /// Argument `position` as the constraint numbers it: 0 the result, then the operands, of which
  /// the last may repeat.
  const Argument& GetArgument(unsigned int position) const {
    if (position == 0) return mArguments[mCount - 1];
    return mArguments[position < mCount ? position - 1 : mCount - 2];
  }
  unsigned short GetPriority() const;
  void SetFlags(int flags) { mFlags = flags; }
  int GetFlags() const { return mFlags; }
  /// What the constraint says mathematically. A rule is a promise: see ZULTaVoRule. It is no part
  /// of the stream form.
  void SetRule(ZULTaVoRule rule) { mRule = rule; }
  ZULTaVoRule GetRule() const { return mRule; }

 private:
  std::array<Argument, kMaxArguments> mArguments;
  unsigned int mAnnounced = 0;
  unsigned int mCount = 0;
  int mFlags = 0;
  ZULTaVoRule mRule = ZULTaVoRule::kNone;
};

#endif
