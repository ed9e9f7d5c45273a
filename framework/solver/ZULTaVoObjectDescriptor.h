#ifndef ZULTAV_SOLVER_ZULTAVO_OBJECT_DESCRIPTOR_H
#define ZULTAV_SOLVER_ZULTAVO_OBJECT_DESCRIPTOR_H

#include <cstddef>
#include <iosfwd>

#include "framework/base/ZW4BASE.h"
#include "framework/solver/Export.h"
#include "framework/solver/ZULTaVoBase.h"

/// What a module registers: a value type (this class), a constraint, an operator or a relation.
/// Names are unique within a kind for types, constraints and relations, whose names are their
/// signatures; operators are told apart by their types too.
class ZULTAV_TYPES_API ZULTaVoObjectDescriptor : public ZULStreamable, public ZULTaVoBase {
 public:
  enum class Kind { kType, kConstraint, kOperator, kRelation };

  /// Literals of models; a sum of these. Integers and reals take those of integers, reals those of
  /// reals, booleans those of truth values.
  enum Literals { kIntegers = 1, kReals = 2, kTruths = 4 };

  /// `base` is the descriptor of the type that this one specialises, or null.
  ZULTaVoObjectDescriptor(const ZULString& name, const ZULTaVoObjectDescriptor* base, int version);
  explicit ZULTaVoObjectDescriptor(ZULStreamableInit) {}
  ~ZULTaVoObjectDescriptor() override;
  using ZULTaVoBase::operator new;
  using ZULTaVoBase::operator delete;

  const char* CastableID() const override { return "ZULTaVoObjectDescriptor"; }
  void Write(ZULopstream& out) const override;
  void Read(ZULipstream& in) override;

  virtual Kind GetKind() const { return Kind::kType; }
  /// Builds an object in GetObjectSize() bytes at `place`, aligned for any type: with the type's
  /// initial value, or a copy of `from`, an object of the same class. Answers `place`, or null
  /// when `place` is null or the type is abstract.
  virtual void* InitObject(void* place) const;
  virtual void* InitObject(void* place, const void* from) const;
  virtual std::size_t GetObjectSize() const { return 0; }
  /// Ends the life of an object made by InitObject; its memory stays with the caller.
  virtual void DestroyObject(void* object) const;
  /// 1 when `other` is this descriptor or derives from it, so that an object of `other` fits here.
  virtual int IsMatched(const ZULTaVoObjectDescriptor* other) const;
  virtual unsigned int GetNumberOfArguments() const { return 0; }
  /// Bytes that the argument table of one object takes.
  virtual std::size_t GetArgumentsSize() const { return 0; }
  virtual void PrintOn(std::ostream& out) const;

  const char* GetName() const { return mName.Str(); }
  const ZULTaVoObjectDescriptor* GetBase() const { return mBase; }

  /// What models may call the type beside its name, and which literals are values of it: a sum of
  /// Literals, else those of the type that it specialises. No part of the stream form.
  void SetShortName(const ZULString& name) { mShortName = name; }
  const char* GetShortName() const { return mShortName.Str(); }
  void SetLiterals(int literals) { mLiterals = literals; }
  int GetLiterals() const { return mLiterals; }

 private:
  friend class ZULTaVoModule;

  ZULString mName, mShortName;
  const ZULTaVoObjectDescriptor* mBase = nullptr;
  int mVersion = 1;
  int mLiterals = 0;
  mutable bool mOwned = false;  // by a module
};

#endif
