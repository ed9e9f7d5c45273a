#ifndef ZULTAV_SOLVER_ZULTAVO_OBJECT_H
#define ZULTAV_SOLVER_ZULTAVO_OBJECT_H

#include <iosfwd>
#include <type_traits>

#include "framework/base/ZW4BASE.h"
#include "framework/solver/Export.h"
#include "framework/solver/ZULTaVoBase.h"

class ZULTaVoNetwork;
class ZULTaVoObjectDescriptor;
class ZULTaVoObjectEnvironment;

/// What Filter answers.
enum ZULTaVoFilterStatus {
  kFilterConsistent = 0,
  kFilterContradiction = 1,
  kFilterBadArguments = 4
};

/// Root of everything that a network holds: values and constraints.
///
/// The order of virtual functions here and in the classes below is a binary contract with
/// modules: never reorder, insert or remove one.
class ZULTAV_TYPES_API ZULTaVoObject : public ZULStreamable, public ZULTaVoBase {
 public:
  ZULTaVoObject() = default;
  explicit ZULTaVoObject(ZULStreamableInit) {}
  ~ZULTaVoObject() override;
  using ZULTaVoBase::operator new;
  using ZULTaVoBase::operator delete;

  /// 1 when `id` is the very pointer of this class's or a base class's identity, else 0.
  virtual int IsDerivedFrom(const char* id) const { return id == sIdent; }
  virtual const ZULTaVoObjectDescriptor* GetDescriptor() const = 0;
  /// Called when the object joins a network. Answers 1 when that changed something.
  virtual int Activate(ZULTaVoNetwork* network);
  /// Called when argument `argument` was changed from outside a propagation run.
  virtual int ActivateByArgument(unsigned int argument, int event, ZULTaVoNetwork* network);
  /// Narrows the arguments; a ZULTaVoFilterStatus. Values have nothing to filter.
  virtual int Filter(const ZULTaVoObjectEnvironment& environment, int event);
  virtual void PrintOn(std::ostream& out) const = 0;
  /// Reads the printed form; sets the stream's fail state on bad text.
  virtual void InputValue(std::istream& in) = 0;

  static const char* const sIdent;
};

/// Prints through PrintOn.
ZULTAV_TYPES_API std::ostream& operator<<(std::ostream& out, const ZULTaVoObject& object);

/// `object` as a T when it is one by its own word (IsDerivedFrom), else null.
template <class T, class From>
auto ZULTaVoCast(From* object) {
  using Result = std::conditional_t<std::is_const_v<From>, const T, T>;
  return object != nullptr && object->IsDerivedFrom(T::sIdent) ? static_cast<Result*>(object)
                                                               : nullptr;
}

#endif
