#pragma once
/// \file
/// Shared tokens of the XML object framework (namespace HxXml). They carry no namespace.

#include "framework/HxToken.h"

/// Tokens of the XML object framework itself, without a namespace.
namespace HxXml {
extern const HxToken HxCountToken;         ///< "count": size attribute of a vector
extern const HxToken HxGroupToken;         ///< "group": run of scalar values read in data mode
extern const HxToken HxElementToken;       ///< "element": wrapper of one compound vector element
extern const HxToken HxFirstToken;         ///< "first": first member of a pair
extern const HxToken HxSecondToken;        ///< "second": second member of a pair
extern const HxToken HxVectorTypeToken;    ///< "vectorType": class token of every homogeneous vector
extern const HxToken HxPairTypeToken;      ///< "pairType": class token of every pair
extern const HxToken HxDefaultToken;       ///< "default": root element of a stream written without a name
extern const HxToken HxAddLibrariesToken;  ///< "addLibraries": library list of a polymorphic vector
extern const HxToken HxBasicTypeToken;     ///< "basicType": class token of the scalar wrappers
extern const HxToken HxEnumTypeToken;      ///< "enumType": class token of the enumerated scalars
}  // namespace HxXml
