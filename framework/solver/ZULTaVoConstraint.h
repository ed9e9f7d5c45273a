#ifndef ZULTAV_SOLVER_ZULTAVO_CONSTRAINT_H
#define ZULTAV_SOLVER_ZULTAVO_CONSTRAINT_H

#include "framework/solver/ZULTaVoObject.h"

/// A relation between values, which narrows them when it filters. Constraints derive from this
/// class and override Filter; they keep no state between calls.
class ZULTAV_TYPES_API ZULTaVoConstraint : public ZULTaVoObject {
 public:
  static constexpr unsigned short kDefaultPriority = 50;

  explicit ZULTaVoConstraint(const void* = nullptr) {}
  explicit ZULTaVoConstraint(ZULStreamableInit) {}
  ~ZULTaVoConstraint() override;

  /// The priority.
  void Write(ZULopstream& out) const override;
  void Read(ZULipstream& in) override;
  int IsDerivedFrom(const char* id) const override;
  /// A passive constraint takes part again; answers 1 if it was passive.
  int ActivateByArgument(unsigned int argument, int event, ZULTaVoNetwork* network) override;
  void PrintOn(std::ostream& out) const override;
  /// A constraint has no text form to read: sets the fail state.
  void InputValue(std::istream& in) override;

  /// Stops taking part for the rest of the present propagation run.
  void Passivate() { mPassive = true; }
  bool IsPassive() const { return mPassive; }
  void Reactivate() { mPassive = false; }

  /// Lower priorities run sooner. Answers 1 when the priority changed.
  int ChangePriority(ZULTaVoNetwork* network, unsigned short priority);
  unsigned short GetPriority() const { return mPriority; }

  static const char* const sIdent;

 private:
  unsigned short mPriority = kDefaultPriority;
  bool mPassive = false;
};

#endif
