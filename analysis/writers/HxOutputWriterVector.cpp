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
HX_XML_SERIALISABLE_DEFINITIONS(HxOutputWriterVector, HxSimAnalysis::HxOutputWriterVectorToken)
void HxOutputWriterVector::registerComponentCreators() {
  registerComponentCreatorsOf<HxMathematicaOutputWriter, HxMatlabOutputWriter, HxMrdOutputWriter, HxTextOutputWriter,
                              HxXmlOutputWriter>();
}

HxBoolean HxOutputWriterVector::isWriterIncluded(const HxToken& token) const {
  for (const HxBaseOutputWriter* writer : vectorContainer()) {
    if (writer != nullptr && writer->token() == token) return true;
  }
  return false;
}
