#pragma once
// HxXmlObjectVisitor: walks a tree of serialisable objects.

#include <string>
#include <vector>

#include "framework/HxToken.h"
#include "framework/HxTypes.h"

class HxXmlObject;
class HxXmlCompoundType;
template <class T>
class HxXmlVectorType;
template <class T>
class HxXmlVariableVectorType;
template <class A, class B>
class HxXmlPairType;

/// Walks a tree of serialisable objects, to describe, list or display it.
///
/// For each object it visits, the visitor sets the current object, clears its description list
/// and fills it (type name, the token under which the object sits, and for containers the
/// element count), then asks the entry hook `enter` whether to descend; if so, and if the depth
/// gate `canDescend` agrees, it visits the children, each under its own token; finally it calls
/// the exit hook `exit`. Subclasses override the hooks to collect what they need.
///
/// The three container forms of `visit` are defined with the containers themselves.
class HxXmlObjectVisitor {
 public:
  HxXmlObjectVisitor();
  virtual ~HxXmlObjectVisitor();

  /// Entry hook: called with the description filled; returns whether to descend.
  virtual HxBoolean enter(const HxXmlObject* object);
  /// Exit hook: called after the object's children (if any) were visited.
  virtual void exit(const HxXmlObject* object);
  /// Second gate, consulted with the entry hook: the base allows descending up to
  /// `maxDepth()` levels.
  virtual HxBoolean canDescend() const;

  /// Visits a leaf object (scalars and any object without children).
  virtual void visitObject(const HxXmlObject* object);
  /// Visits a compound and, when allowed, its registered components in order.
  virtual void visitCompound(const HxXmlCompoundType* object);

  template <class T>
  void visit(const HxXmlVectorType<T>* vector);
  template <class T>
  void visit(const HxXmlVariableVectorType<T>* vector);
  template <class A, class B>
  void visit(const HxXmlPairType<A, B>* pair);

  const HxXmlObject* currentObject() const { return current_; }
  void setCurrentObject(const HxXmlObject* object) { current_ = object; }
  std::vector<std::string>& descriptions() { return descriptions_; }
  const std::vector<std::string>& descriptions() const { return descriptions_; }
  const HxToken& currentToken() const { return currentToken_; }
  void setCurrentToken(const HxToken& token) { currentToken_ = token; }

  /// Nesting level of the object being visited (0 for the object `accept` was first called on).
  int depth() const { return depth_; }
  int maxDepth() const { return maxDepth_; }
  void setMaxDepth(int depth) { maxDepth_ = depth; }

  /// Bookkeeping for container forms: call around a descent.
  void beginDescent() { ++depth_; }
  void endDescent() { --depth_; }

 private:
  const HxXmlObject* current_ = nullptr;
  std::vector<std::string> descriptions_;
  HxToken currentToken_;
  int depth_ = 0;
  int maxDepth_ = 1000;
};
