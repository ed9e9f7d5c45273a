#pragma once

/// Umbrella header of the base library: strings, text output, object streams.
#include "framework/base/Export.h"
#include "framework/base/Fnv1a.h"
#include "framework/base/ZULStreamable.h"
#include "framework/base/ZULStreamableClass.h"
#include "framework/base/ZULString.h"
#include "framework/base/ZULipstream.h"
#include "framework/base/ZULopstream.h"
#include "framework/base/ZULostrstream.h"
