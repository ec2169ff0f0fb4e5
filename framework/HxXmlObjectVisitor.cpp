#include "framework/HxXmlObjectVisitor.h"

#include <typeinfo>

#include "framework/HxNumberText.h"
#include "framework/HxXmlCompoundType.h"
#include "framework/HxXmlObject.h"

HxXmlObjectVisitor::HxXmlObjectVisitor() = default;

HxXmlObjectVisitor::~HxXmlObjectVisitor() = default;

HxBoolean HxXmlObjectVisitor::enter(const HxXmlObject*) { return true; }

void HxXmlObjectVisitor::exit(const HxXmlObject*) {}

HxBoolean HxXmlObjectVisitor::canDescend() const { return depth_ < maxDepth_; }

void HxXmlObjectVisitor::describe(const HxXmlObject* object, const char* typeName) {
  setCurrentObject(object);
  descriptions_.clear();
  descriptions_.emplace_back(typeName);
  descriptions_.push_back(currentToken_.token());
}

void HxXmlObjectVisitor::describeContainer(const HxXmlObject* container, const char* typeName, HxU32 count) {
  describe(container, typeName);
  descriptions_.back() += " (" + HxINT2STRING(count, 10) + ")";
}

void HxXmlObjectVisitor::visitObject(const HxXmlObject* object) {
  if (!object) return;
  describe(object, typeid(*object).name());
  enter(object);
  exit(object);
}

void HxXmlObjectVisitor::visitCompound(const HxXmlCompoundType* object) {
  if (!object) return;
  describe(object, typeid(*object).name());
  // Attributes first, then child elements, each under its own token.
  if (enter(object) && canDescend()) {
    auto* compound = const_cast<HxXmlCompoundType*>(object);
    for (const auto* components : {&compound->attributeComponentMap(), &object->componentMap()}) {
      for (const HxXmlComponent& component : *components) {
        setCurrentToken(component.token);
        beginDescent();
        component.object->accept(this);
        endDescent();
      }
    }
  }
  exit(object);
}
