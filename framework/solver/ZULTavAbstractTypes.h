#ifndef ZULTAV_SOLVER_ZULTAV_ABSTRACT_TYPES_H
#define ZULTAV_SOLVER_ZULTAV_ABSTRACT_TYPES_H

#include "framework/solver/FrameworkConstraints.h"
#include "framework/solver/LocalCopy.h"
#include "framework/solver/SingleValue.h"
#include "framework/solver/ZULTaVoAny.h"
#include "framework/solver/ZULTaVoBoolean.h"
#include "framework/solver/ZULTaVoConstant.h"
#include "framework/solver/ZULTaVoConstraint.h"
#include "framework/solver/ZULTaVoConstraintDescriptor.h"
#include "framework/solver/ZULTaVoFrame.h"
#include "framework/solver/ZULTaVoInteger.h"
#include "framework/solver/ZULTaVoModule.h"
#include "framework/solver/ZULTaVoModuleManager.h"
#include "framework/solver/ZULTaVoNetwork.h"
#include "framework/solver/ZULTaVoNumber.h"
#include "framework/solver/ZULTaVoObject.h"
#include "framework/solver/ZULTaVoObjectDescriptor.h"
#include "framework/solver/ZULTaVoObjectEnvironment.h"
#include "framework/solver/ZULTaVoOperatorDescriptor.h"
#include "framework/solver/ZULTaVoReal.h"
#include "framework/solver/ZULTaVoRule.h"
#include "framework/solver/ZULTaVoScalar.h"

#endif
