#include "framework/HxXmlObjectVisitor.h"

#include <typeinfo>

#include "framework/HxXmlCompoundType.h"
#include "framework/HxXmlObject.h"

HxXmlObjectVisitor::HxXmlObjectVisitor() = default;

HxXmlObjectVisitor::~HxXmlObjectVisitor() = default;

HxBoolean HxXmlObjectVisitor::enter(const HxXmlObject*) { return true; }

void HxXmlObjectVisitor::exit(const HxXmlObject*) {}

HxBoolean HxXmlObjectVisitor::canDescend() const { return depth_ < maxDepth_; }

void HxXmlObjectVisitor::visitObject(const HxXmlObject* object) {
  if (!object) return;
  setCurrentObject(object);
  descriptions_.clear();
  descriptions_.emplace_back(typeid(*object).name());
  descriptions_.push_back(currentToken_.token());
  enter(object);
  exit(object);
}

void HxXmlObjectVisitor::visitCompound(const HxXmlCompoundType* object) {
  if (!object) return;
  setCurrentObject(object);
  descriptions_.clear();
  descriptions_.emplace_back(typeid(*object).name());
  descriptions_.push_back(currentToken_.token());
  // Attributes first, then child elements, each under its own token.
  if (enter(object) && canDescend()) {
    auto* compound = const_cast<HxXmlCompoundType*>(object);
    for (const HxXmlComponent& component : compound->attributeComponentMap()) {
      setCurrentToken(component.token);
      beginDescent();
      component.object->accept(this);
      endDescent();
    }
    for (const HxXmlComponent& component : object->componentMap()) {
      setCurrentToken(component.token);
      beginDescent();
      component.object->accept(this);
      endDescent();
    }
  }
  exit(object);
}
