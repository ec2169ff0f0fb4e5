#pragma once
/// \file
/// HxXmlObjectVisitor: walks a tree of serialisable objects.

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

  /// Visits a homogeneous vector and, when allowed, its elements; defined in
  /// analysis/xml/HxXmlVectorType.h.
  template <class T>
  void visit(const HxXmlVectorType<T>* vector);
  /// Visits a polymorphic vector and, when allowed, its elements; defined in
  /// analysis/xml/HxXmlVariableVectorType.h.
  template <class T>
  void visit(const HxXmlVariableVectorType<T>* vector);
  /// Visits a pair and, when allowed, its two members; defined in analysis/xml/HxXmlPairType.h.
  template <class A, class B>
  void visit(const HxXmlPairType<A, B>* pair);

  /// The object being visited; null before the first visit.
  const HxXmlObject* currentObject() const { return current_; }
  /// Sets the object being visited (for the container forms).
  void setCurrentObject(const HxXmlObject* object) { current_ = object; }
  /// Description of the current object, writable for the container forms.
  std::vector<std::string>& descriptions() { return descriptions_; }
  /// Description of the current object: its type name, then the token under which it sits (with
  /// the element count for containers).
  const std::vector<std::string>& descriptions() const { return descriptions_; }
  /// Token under which the current object sits; empty until a walk or `setCurrentToken` sets it.
  const HxToken& currentToken() const { return currentToken_; }
  /// Sets the token under which the next object visited sits.
  void setCurrentToken(const HxToken& token) { currentToken_ = token; }

  /// Nesting level of the object being visited (0 for the object `accept` was first called on).
  int depth() const { return depth_; }
  /// Depth limit of `canDescend`: descending is allowed while `depth()` is below it; 1000
  /// unless set.
  int maxDepth() const { return maxDepth_; }
  /// Sets the level limit of `canDescend`.
  void setMaxDepth(int depth) { maxDepth_ = depth; }

  /// Bookkeeping for container forms: call before a descent.
  void beginDescent() { ++depth_; }
  /// Bookkeeping for container forms: call after the descent.
  void endDescent() { --depth_; }

 private:
  // Makes `object` the current object and describes it: `typeName`, then the current token.
  void describe(const HxXmlObject* object, const char* typeName);
  // As `describe`, for a container of `count` elements: the token is followed by " (count)".
  void describeContainer(const HxXmlObject* container, const char* typeName, HxU32 count);

  const HxXmlObject* current_ = nullptr;
  std::vector<std::string> descriptions_;
  HxToken currentToken_;
  int depth_ = 0;
  int maxDepth_ = 1000;
};
