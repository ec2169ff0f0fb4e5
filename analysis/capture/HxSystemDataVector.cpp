#include "analysis/capture/HxSystemDataVector.h"

#include <string>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxXmlObjectVisitor.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

using HxSystemDataVectorBase = HxXmlVariableVectorType<HxBaseSystemDataComponent>;

HxSystemDataVector::HxSystemDataVector() = default;

void HxSystemDataVector::registerComponents() {}

void HxSystemDataVector::registerComponentCreators() {
  registerComponentCreatorsOf<HxSystemDataCapture, HxSystemDataStorage>();
}

HxBoolean HxSystemDataVector::write(HxXmlWriter& writer) const { return HxSystemDataVectorBase::write(writer); }

HxBoolean HxSystemDataVector::read(HxXmlReader& reader) { return HxSystemDataVectorBase::read(reader); }

void HxSystemDataVector::accept(HxXmlObjectVisitor* visitor) const {
  visitor->visit(static_cast<const HxSystemDataVectorBase*>(this));
}

HX_XML_SERIALISABLE_DEFINITIONS(HxSystemDataVector, HxSimAnalysis::HxSystemDataVectorToken)

bool HxSystemDataVector::operator==(const HxSystemDataVector& other) const {
  return HxSystemDataVectorBase::operator==(other);
}
