#include "framework/HxXmlObject.h"

#include <fstream>
#include <memory>

#include "framework/HxXmlObjectVisitor.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlSchema.h"
#include "framework/HxXmlWriter.h"

HxXmlObject::~HxXmlObject() = default;

void HxXmlObject::accept(HxXmlObjectVisitor* visitor) const {
  if (visitor) visitor->visitObject(this);
}

void HxXmlObject::xmlInit() { xmlInitialized_ = true; }

HxBoolean HxXmlObject::read(HxXmlReader& reader) {
  const int kind = reader.nodeKind();
  if (kind != HxXmlReader::StartElement && kind != HxXmlReader::EmptyElement) return false;
  specified_ = true;
  return true;
}

HxBoolean HxXmlObject::readAttribute(HxXmlReader&) { return false; }

HxBoolean HxXmlObject::write(HxXmlWriter& writer) const { return writer.good(); }

void HxXmlObject::writeSchema(HxXmlSchema& schema) const { schema.anyContent(); }

HxBoolean HxXmlObject::createSchema(const std::string& fileName, const HxToken& rootToken) const {
  std::ofstream file(fileName, std::ios::out | std::ios::trunc | std::ios::binary);
  if (!file) return false;
  HxXmlSchema schema(file);
  if (!schema.writeDocument(*this, rootToken)) return false;
  file.close();
  return !file.fail();
}

HxBoolean HxXmlObject::xmlInitialized() const { return xmlInitialized_; }

void HxXmlObject::setXmlInitialized(HxBoolean value) { xmlInitialized_ = value; }

HxBoolean HxXmlObject::specified() const { return specified_; }

void HxXmlObject::setSpecified(HxBoolean value) { specified_ = value; }

HxBoolean HxXmlObject::isBasicType() const { return false; }

HxBoolean HxXmlObject::equalsDefault() const {
  const std::unique_ptr<HxXmlObject> defaultObject(newObject());
  return defaultObject && equality(defaultObject.get());
}
