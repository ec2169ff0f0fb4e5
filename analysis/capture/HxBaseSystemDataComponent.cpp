#include "analysis/capture/HxBaseSystemDataComponent.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

HxBaseSystemDataComponent::HxBaseSystemDataComponent() = default;

const HxElementText* HxBaseSystemDataComponent::elementText() const {
  const HxElementSource* source = elementSource();
  return source != nullptr ? source->elementText() : nullptr;
}

const HxElementValues* HxBaseSystemDataComponent::elementValues() const {
  const HxElementSource* source = elementSource();
  return source != nullptr ? source->elementValues() : nullptr;
}

const HxElementSource* HxBaseSystemDataComponent::elementSource() const {
  // The object's class does not change once it is made, nor does the answer.
  if (!sourceLookup_.done) {
    sourceLookup_.source = dynamic_cast<const HxElementSource*>(this);
    sourceLookup_.done = true;
  }
  return sourceLookup_.source;
}

HxBoolean HxBaseSystemDataComponent::write(HxXmlWriter& writer) const { return HxXmlCompoundType::write(writer); }

HxBoolean HxBaseSystemDataComponent::read(HxXmlReader& reader) { return HxXmlCompoundType::read(reader); }

void HxBaseSystemDataComponent::xmlInit() { HxXmlCompoundType::xmlInit(); }
