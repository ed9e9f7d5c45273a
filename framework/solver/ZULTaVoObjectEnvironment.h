#ifndef ZULTAV_SOLVER_ZULTAVO_OBJECT_ENVIRONMENT_H
#define ZULTAV_SOLVER_ZULTAVO_OBJECT_ENVIRONMENT_H

#include "framework/solver/Export.h"

class ZULTaVoNetwork;
class ZULTaVoObject;

/// What a constraint sees while it filters: its arguments and its network. Argument 0 is the
/// result, 1, 2, … are the operands.
class ZULTAV_TYPES_API ZULTaVoObjectEnvironment {
 public:
  /// @param constants  bit i is set when argument i, one of the first 32, is a constant; the
  ///                   network is asked about those after them
  /// @param checked    the arguments are known to match the constraint's descriptor
  ZULTaVoObjectEnvironment(ZULTaVoNetwork* network, ZULTaVoObject* const* arguments,
                           unsigned int count, unsigned int constants = 0, bool checked = false)
      : mNetwork(network),
        mArguments(arguments),
        mCount(count),
        mConstants(constants),
        mChecked(checked) {}

  /// The argument, or null when there is none at this position.
  ZULTaVoObject* GetArgument(unsigned int position) const {
    return position < mCount ? mArguments[position] : nullptr;
  }
  unsigned int GetNumberOfArguments() const { return mCount; }
  /// 1 when the object is an argument that no constraint may narrow by itself, else 0.
  int IsArgumentConstant(const ZULTaVoObject* object) const;
  ZULTaVoNetwork* GetNetwork() const { return mNetwork; }
  bool AreArgumentsChecked() const { return mChecked; }

 private:
  ZULTaVoNetwork* mNetwork;
  ZULTaVoObject* const* mArguments;
  unsigned int mCount;
  unsigned int mConstants;
  bool mChecked;
};

#endif
