#include "framework/HxXmlCompoundType.h"

#include "framework/HxPrint.h"
#include "framework/HxXmlObjectVisitor.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlSchema.h"
#include "framework/HxXmlWriter.h"

HxXmlCompoundType::HxXmlCompoundType() = default;

HxXmlCompoundType::HxXmlCompoundType(const HxXmlCompoundType& other) : HxXmlObject(other) {}

HxXmlCompoundType::HxXmlCompoundType(HxXmlCompoundType&& other) noexcept : HxXmlObject(other) {}

HxXmlCompoundType& HxXmlCompoundType::operator=(const HxXmlCompoundType& other) {
  HxXmlObject::operator=(other);
  return *this;
}

HxXmlCompoundType::~HxXmlCompoundType() = default;

void HxXmlCompoundType::ensureRegistered() const {
  if (!components_) createComponentMap();
}

void HxXmlCompoundType::createComponentMap() const {
  // The maps exist before registerComponents runs, so that registering adds to them.
  components_.reset(newComponentMap());
  attributes_.reset(newComponentMap());
  registering_ = true;
  const_cast<HxXmlCompoundType*>(this)->registerComponents();
  registering_ = false;
}

void HxXmlCompoundType::createAttributeComponentMap() { ensureRegistered(); }

void HxXmlCompoundType::createSpecialDescriptorMap() {
  if (!specials_) specials_.reset(newSpecialDescriptorMap());
}

HxXmlCompoundType::ComponentMap* HxXmlCompoundType::newComponentMap() const { return new ComponentMap(); }

HxXmlCompoundType::SpecialDescriptorMap* HxXmlCompoundType::newSpecialDescriptorMap() {
  return new SpecialDescriptorMap();
}

void HxXmlCompoundType::registerComponents() {}

void HxXmlCompoundType::registerComponent(const HxToken& token, HxXmlObject* object) {
  addComponent(false, token, object, false);
}

void HxXmlCompoundType::registerComponentReadOnly(const HxToken& token, HxXmlObject* object) {
  addComponent(false, token, object, true);
}

void HxXmlCompoundType::registerAttributeComponent(const HxToken& token, HxXmlObject* object) {
  addComponent(true, token, object, false);
}

void HxXmlCompoundType::registerAttributeComponentReadOnly(const HxToken& token, HxXmlObject* object) {
  addComponent(true, token, object, true);
}

void HxXmlCompoundType::addComponent(bool attribute, const HxToken& token, HxXmlObject* object, bool readOnly) {
  ensureRegistered();
  if (object) (attribute ? attributes_ : components_)->push_back(HxXmlComponent{token, object, readOnly});
}

bool HxXmlCompoundType::componentsEqual(const HxXmlCompoundType& other) const {
  ensureRegistered();
  other.ensureRegistered();
  const auto pairwiseEqual = [](const ComponentMap& left, const ComponentMap& right) {
    if (left.size() != right.size()) return false;
    for (std::size_t i = 0; i < left.size(); ++i) {
      if (!left[i].object->equality(right[i].object)) return false;
    }
    return true;
  };
  return pairwiseEqual(*attributes_, *other.attributes_) && pairwiseEqual(*components_, *other.components_);
}

const HxXmlCompoundType::ComponentMap& HxXmlCompoundType::componentMap() const {
  ensureRegistered();
  return *components_;
}

const HxXmlCompoundType::ComponentMap& HxXmlCompoundType::attributeComponentMap() {
  ensureRegistered();
  return *attributes_;
}

HxXmlCompoundType::SpecialDescriptorMap& HxXmlCompoundType::specialDescriptorMap() {
  createSpecialDescriptorMap();
  return *specials_;
}

HxBoolean HxXmlCompoundType::hasChildren() const { return !componentMap().empty(); }

HxBoolean HxXmlCompoundType::hasAttributes() const {
  ensureRegistered();
  return !attributes_->empty();
}

const HxXmlComponent* HxXmlCompoundType::findComponent(const ComponentMap& map, const HxToken& token) const {
  for (const HxXmlComponent& component : map) {
    if (component.token == token) return &component;
  }
  return nullptr;
}

HxBoolean HxXmlCompoundType::isReadOnlyComponent(HxToken token) const {
  const HxXmlComponent* component = findComponent(componentMap(), token);
  return component && component->readOnly;
}

HxBoolean HxXmlCompoundType::isReadOnlyAttribute(HxToken token) const {
  ensureRegistered();
  const HxXmlComponent* component = findComponent(*attributes_, token);
  return component && component->readOnly;
}

void HxXmlCompoundType::accept(HxXmlObjectVisitor* visitor) const {
  if (visitor) visitor->visitCompound(this);
}

void HxXmlCompoundType::xmlInit() {
  HxXmlObject::xmlInit();
  ensureRegistered();
}

HxBoolean HxXmlCompoundType::read(HxXmlReader& reader) {
  if (!HxXmlObject::read(reader)) return false;
  ensureRegistered();
  const HxBoolean attributesRead = readAttributes(reader);
  const HxBoolean elementsRead = readElements(reader);
  return attributesRead && elementsRead;
}

HxBoolean HxXmlCompoundType::readAttributes(HxXmlReader& reader) {
  HxBoolean result = true;
  const int count = reader.attributeCount();
  for (int i = 0; i < count; ++i) {
    reader.setCurrentAttribute(i);
    if (!readAttributeFromToken(reader.attributeName(i), reader)) result = false;
  }
  return result;
}

HxBoolean HxXmlCompoundType::readElements(HxXmlReader& reader) {
  return reader.readChildren([&](const HxToken& token) { return readValueFromToken(token, reader); });
}

HxBoolean HxXmlCompoundType::readValueFromToken(const HxToken& token, HxXmlReader& reader) {
  const HxXmlComponent* component = findComponent(componentMap(), token);
  if (component) {
    if (component->readOnly) return reader.skipElement();
    component->object->xmlInit();
    return reader.readChild(*component->object);
  }
  if (specials_ && specials_->count(token) != 0) return readValueFromSpecialToken(token, reader);
  Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
      << "HxXmlCompoundType Error: element \"" << token.token() << "\" not registered.\n\tFile: " << reader.fileName()
      << "\n\tLine: " << reader.lineNumber() << "\n";
  reader.skipElement();
  return false;
}

HxBoolean HxXmlCompoundType::readValueFromSpecialToken(const HxToken&, HxXmlReader& reader) {
  return reader.skipElement();
}

HxBoolean HxXmlCompoundType::readAttributeFromToken(const HxToken& token, HxXmlReader& reader) {
  ensureRegistered();
  const HxXmlComponent* component = findComponent(*attributes_, token);
  if (component) {
    if (component->readOnly) return true;
    return component->object->readAttribute(reader);
  }
  Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
      << "HxXmlCompoundType Error: attribute \"" << token.token() << "\" not registered.\n\tFile: " << reader.fileName()
      << "\n\tLine: " << reader.lineNumber() << "\n";
  return false;
}

HxBoolean HxXmlCompoundType::write(HxXmlWriter& writer) const {
  HxBoolean result = HxXmlObject::write(writer);
  if (!writeAttributes(writer)) result = false;
  if (!writeElements(writer)) result = false;
  return result && writer.good();
}

HxBoolean HxXmlCompoundType::writeAttributes(HxXmlWriter& writer) const {
  ensureRegistered();
  HxBoolean result = true;
  for (const HxXmlComponent& component : *attributes_) {
    writer.addAttribute(component.token);
    if (!component.object->write(writer)) result = false;
  }
  return result;
}

HxBoolean HxXmlCompoundType::writeElements(HxXmlWriter& writer) const {
  HxBoolean result = true;
  for (const HxXmlComponent& component : componentMap()) {
    writer.startElement(component.token);
    if (!component.object->write(writer)) result = false;
    writer.endElement();
  }
  return result;
}

void HxXmlCompoundType::writeSchema(HxXmlSchema& schema) const {
  schema.beginComplexType();
  writeSchemaElements(schema);
  writeSchemaAttributes(schema);
  schema.endComplexType();
}

void HxXmlCompoundType::writeSchemaElements(HxXmlSchema& schema) const {
  const ComponentMap& components = componentMap();
  if (components.empty()) return;
  schema.beginChoice(true);
  for (const HxXmlComponent& component : components) schema.element(component.token, *component.object);
  schema.endChoice();
}

void HxXmlCompoundType::writeSchemaAttributes(HxXmlSchema& schema) const {
  ensureRegistered();
  for (const HxXmlComponent& component : *attributes_) schema.attribute(component.token, *component.object);
}
