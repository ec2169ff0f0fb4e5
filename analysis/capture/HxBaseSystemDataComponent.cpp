#include "analysis/capture/HxBaseSystemDataComponent.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

HxBaseSystemDataComponent::HxBaseSystemDataComponent() = default;

HxBaseSystemDataComponent::HxBaseSystemDataComponent(const HxBaseSystemDataComponent& other)
    : HxXmlCompoundType(other) {}

HxBaseSystemDataComponent& HxBaseSystemDataComponent::operator=(const HxBaseSystemDataComponent& other) {
  HxXmlCompoundType::operator=(other);
  return *this;
}

HxBaseSystemDataComponent::~HxBaseSystemDataComponent() = default;

const HxElementText* HxBaseSystemDataComponent::elementText() const {
  const auto* source = dynamic_cast<const HxElementSource*>(this);
  return source != nullptr ? source->elementText() : nullptr;
}

const HxElementValues* HxBaseSystemDataComponent::elementValues() const {
  const auto* source = dynamic_cast<const HxElementSource*>(this);
  return source != nullptr ? source->elementValues() : nullptr;
}

HxBoolean HxBaseSystemDataComponent::write(HxXmlWriter& writer) const { return HxXmlCompoundType::write(writer); }

HxBoolean HxBaseSystemDataComponent::read(HxXmlReader& reader) { return HxXmlCompoundType::read(reader); }

void HxBaseSystemDataComponent::xmlInit() { HxXmlCompoundType::xmlInit(); }
