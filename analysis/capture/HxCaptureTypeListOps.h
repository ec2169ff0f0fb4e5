#pragma once
/// \file
/// Operations on a list of data capture types shared by the manipulator, link and end-effector
/// captures. Internal to analysis/capture.

#include "analysis/types/HxDataCaptureLevel.h"
#include "analysis/types/HxDataCaptureTypeVector.h"
#include "analysis/xml/HxXmlVectorType.h"
#include "framework/HxToken.h"
#include "framework/HxTypes.h"
#include "framework/HxXmlBasicType.h"

/// Operations on a list of data capture types, shared by the three capture levels.
namespace HxCaptureTypeListOps {

/// The type with that token (first match), or null.
const HxDataCaptureType* find(const HxDataCaptureTypeVector& types, const HxToken& token);

/// Adds a type by token to a list that holds types of `level` (an `HxDataCaptureLevel` code): true and nothing changed
/// when the token is already there; false for an unknown token or a type of another level.
HxBoolean addByToken(HxDataCaptureTypeVector& types, const HxToken& token, unsigned int level);

/// Whether `token` names a type of `level` (a type is created to ask and deleted again).
HxBoolean isTokenOfLevel(const HxToken& token, unsigned int level);

/// Removes the first type with that token; false when absent.
HxBoolean removeByToken(HxDataCaptureTypeVector& types, const HxToken& token);

/// Replaces the disable flags of the type with that token; false when absent.
HxBoolean setDisableFlags(HxDataCaptureTypeVector& types, const HxToken& token,
                          const HxXmlVectorType<HxXmlBasicType<bool>>& flags);

/// Fills `available` with one copy of every type of `level` that the type vector can create by
/// token, in the order of its creator map.
void collectAvailable(HxDataCaptureTypeVector& available, unsigned int level);

}  // namespace HxCaptureTypeListOps
