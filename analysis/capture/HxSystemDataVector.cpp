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

HxSystemDataVector::HxSystemDataVector(const HxSystemDataVector& other) : HxSystemDataVectorBase(other) {}

HxSystemDataVector& HxSystemDataVector::operator=(const HxSystemDataVector& other) {
  HxSystemDataVectorBase::operator=(other);
  return *this;
}

HxSystemDataVector::~HxSystemDataVector() = default;

void HxSystemDataVector::registerComponents() {}

void HxSystemDataVector::registerComponentCreators() {
  registerComponentCreator(HxSystemDataCapture::classToken(), &HxSystemDataCapture::creator);
  registerComponentCreator(HxSystemDataStorage::classToken(), &HxSystemDataStorage::creator);
}

HxBoolean HxSystemDataVector::write(HxXmlWriter& writer) const { return HxSystemDataVectorBase::write(writer); }

HxBoolean HxSystemDataVector::read(HxXmlReader& reader) { return HxSystemDataVectorBase::read(reader); }

void HxSystemDataVector::accept(HxXmlObjectVisitor* visitor) const {
  visitor->visit(static_cast<const HxSystemDataVectorBase*>(this));
}

HxXmlObject* HxSystemDataVector::clone() const { return new HxSystemDataVector(*this); }

HxXmlObject* HxSystemDataVector::newObject() const { return new HxSystemDataVector(); }

HxBoolean HxSystemDataVector::equality(const HxXmlObject* other) const {
  const auto* vector = dynamic_cast<const HxSystemDataVector*>(other);
  return vector != nullptr && *this == *vector;
}

const HxToken& HxSystemDataVector::token() const { return classToken(); }

const HxToken& HxSystemDataVector::classToken() { return HxSimAnalysis::HxSystemDataVectorToken; }

HxXmlObject* HxSystemDataVector::creator() { return new HxSystemDataVector(); }

HxSystemDataVector HxSystemDataVector::nullObject() { return HxSystemDataVector(); }

bool HxSystemDataVector::operator==(const HxSystemDataVector& other) const {
  return HxSystemDataVectorBase::operator==(other);
}
