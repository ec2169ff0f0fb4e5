#include "framework/HxXmlTokens.h"

namespace HxXml {
const HxToken HxCountToken("count");
const HxToken HxGroupToken("group");
const HxToken HxElementToken("element");
const HxToken HxFirstToken("first");
const HxToken HxSecondToken("second");
const HxToken HxVectorTypeToken("vectorType");
const HxToken HxPairTypeToken("pairType");
const HxToken HxDefaultToken("default");
const HxToken HxAddLibrariesToken("addLibraries");
const HxToken HxBasicTypeToken("basicType");
const HxToken HxEnumTypeToken("enumType");
}  // namespace HxXml
