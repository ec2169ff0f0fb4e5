#pragma once
/// \file
/// All captured quantities: the data capture type base, its vector and the 21 concrete types.

#include "analysis/types/HxCartesianDataCaptureTypes.h"
#include "analysis/types/HxDataCaptureType.h"
#include "analysis/types/HxDataCaptureTypeVector.h"
#include "analysis/types/HxForcePowerDataCaptureTypes.h"
#include "analysis/types/HxJointDataCaptureTypes.h"
#include "analysis/types/HxReachTargetDataCaptureType.h"
