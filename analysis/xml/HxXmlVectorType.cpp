// The vectors of scalars (and of vectors of doubles) that the whole toolkit uses, compiled once.

#include "analysis/xml/HxXmlVectorType.h"

#include <string>

static const std::string kVersion = "3.0.0";

template class HxXmlVectorType<HxXmlBasicType<std::string>>;
template class HxXmlVectorType<HxXmlBasicType<double>>;
template class HxXmlVectorType<HxXmlBasicType<unsigned int>>;
template class HxXmlVectorType<HxXmlBasicType<bool>>;
template class HxXmlVectorType<HxXmlVectorType<HxXmlBasicType<double>>>;
