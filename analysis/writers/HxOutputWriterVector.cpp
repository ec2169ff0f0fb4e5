#include "analysis/writers/HxOutputWriterVector.h"

#include "analysis/writers/HxMathematicaOutputWriter.h"
#include "analysis/writers/HxMatlabOutputWriter.h"
#include "analysis/writers/HxMrdOutputWriter.h"
#include "analysis/writers/HxTextOutputWriter.h"
#include "analysis/writers/HxXmlOutputWriter.h"
#include "analysis/xml/HxSimAnalysisTokens.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

HxOutputWriterVector::HxOutputWriterVector() = default;
HxOutputWriterVector::HxOutputWriterVector(const HxOutputWriterVector& other)
    : HxXmlVariableVectorType<HxBaseOutputWriter>(other) {}
HxOutputWriterVector& HxOutputWriterVector::operator=(const HxOutputWriterVector& other) {
  HxXmlVariableVectorType<HxBaseOutputWriter>::operator=(other);
  return *this;
}
HxOutputWriterVector::~HxOutputWriterVector() = default;

HxXmlObject* HxOutputWriterVector::clone() const { return new HxOutputWriterVector(*this); }
HxXmlObject* HxOutputWriterVector::newObject() const { return new HxOutputWriterVector(); }
HxBoolean HxOutputWriterVector::equality(const HxXmlObject* other) const {
  const auto* vector = dynamic_cast<const HxOutputWriterVector*>(other);
  return vector != nullptr && *this == *vector;
}
const HxToken& HxOutputWriterVector::token() const { return classToken(); }
const HxToken& HxOutputWriterVector::classToken() { return HxSimAnalysis::HxOutputWriterVectorToken; }
HxOutputWriterVector HxOutputWriterVector::nullObject() { return HxOutputWriterVector(); }

void HxOutputWriterVector::registerComponentCreators() {
  registerComponentCreator(HxMathematicaOutputWriter::classToken(), &HxMathematicaOutputWriter::creator);
  registerComponentCreator(HxMatlabOutputWriter::classToken(), &HxMatlabOutputWriter::creator);
  registerComponentCreator(HxMrdOutputWriter::classToken(), &HxMrdOutputWriter::creator);
  registerComponentCreator(HxTextOutputWriter::classToken(), &HxTextOutputWriter::creator);
  registerComponentCreator(HxXmlOutputWriter::classToken(), &HxXmlOutputWriter::creator);
}

HxBoolean HxOutputWriterVector::isWriterIncluded(const HxToken& token) const {
  for (const HxBaseOutputWriter* writer : vectorContainer()) {
    if (writer != nullptr && writer->token() == token) return true;
  }
  return false;
}
