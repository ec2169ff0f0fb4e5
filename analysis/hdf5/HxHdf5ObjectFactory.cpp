#include "analysis/hdf5/HxHdf5ObjectFactory.h"

#include "analysis/hdf5/HxHdf5OutputWriter.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

HxXmlObject* HxHdf5ObjectFactory::newObjectFromToken(const HxToken& token) const {
  if (token == HxHdf5OutputWriter::classToken()) return HxHdf5OutputWriter::creator();
  return nullptr;
}

const std::vector<HxToken>& HxHdf5ObjectFactory::tokens() const {
  static const std::vector<HxToken> made{HxHdf5OutputWriter::classToken()};
  return made;
}
