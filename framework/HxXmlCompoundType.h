#pragma once
// HxXmlCompoundType: a serialisable object whose children are registered under tokens.

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "framework/HxXmlObject.h"

/// One registered member of a compound: its token, the member and whether it is read-only
/// (written but not read back).
struct HxXmlComponent {
  HxToken token;
  HxXmlObject* object;
  bool readOnly;
};

/// A serialisable object whose members are registered under tokens.
///
/// Derived classes override `registerComponents` and call `registerComponent` (child element),
/// `registerComponentReadOnly` (written, skipped when read) or `registerAttributeComponent`
/// (attribute) with pointers to their own members. Registration is made lazily on first use,
/// so a copy registers its own members and never keeps the source's. Children are written in
/// registration order and read back by token in any order.
///
/// An unknown child element is refused: it is reported (type 4, naming the element, file and
/// line), skipped, and makes `read` return false after the remaining children have been read.
class HxXmlCompoundType : public HxXmlObject {
 public:
  using ComponentMap = std::vector<HxXmlComponent>;
  /// Tokens handled by `readValueFromSpecialToken`, with a description of each.
  using SpecialDescriptorMap = std::map<HxToken, std::string>;

  HxXmlCompoundType();
  /// Copies the base only: registrations are the copy's own, made on first use.
  HxXmlCompoundType(const HxXmlCompoundType& other);
  /// Assigns the base only; the target keeps its own registrations.
  HxXmlCompoundType& operator=(const HxXmlCompoundType& other);
  ~HxXmlCompoundType() override;

  void accept(HxXmlObjectVisitor* visitor) const override;
  void xmlInit() override;
  /// Reads attributes, then child elements by token.
  HxBoolean read(HxXmlReader& reader) override;
  /// Writes attributes, then child elements in registration order.
  HxBoolean write(HxXmlWriter& writer) const override;
  /// A complex type with the registered attributes and a repeated choice of the children.
  void writeSchema(HxXmlSchema& schema) const override;

  virtual HxBoolean readAttributes(HxXmlReader& reader);
  virtual HxBoolean readElements(HxXmlReader& reader);
  virtual HxBoolean writeAttributes(HxXmlWriter& writer) const;
  virtual HxBoolean writeElements(HxXmlWriter& writer) const;
  virtual void writeSchemaAttributes(HxXmlSchema& schema) const;
  virtual void writeSchemaElements(HxXmlSchema& schema) const;
  /// Registers the members; the base registers nothing.
  virtual void registerComponents();
  virtual void registerComponent(const HxToken& token, HxXmlObject* object);
  virtual void registerComponentReadOnly(const HxToken& token, HxXmlObject* object);
  virtual const ComponentMap& componentMap() const;
  virtual void registerAttributeComponent(const HxToken& token, HxXmlObject* object);
  virtual void registerAttributeComponentReadOnly(const HxToken& token, HxXmlObject* object);
  virtual const ComponentMap& attributeComponentMap();
  virtual SpecialDescriptorMap& specialDescriptorMap();
  virtual HxBoolean hasChildren() const;
  virtual HxBoolean hasAttributes() const;
  /// Reads the child element named `token` (the reader is on its start). Unknown tokens are
  /// reported and skipped; the result is then false.
  virtual HxBoolean readValueFromToken(const HxToken& token, HxXmlReader& reader);
  /// Reads a child named by a special token; the base skips it and returns true.
  virtual HxBoolean readValueFromSpecialToken(const HxToken& token, HxXmlReader& reader);
  /// Reads the attribute named `token` (selected as the reader's current attribute). Unknown
  /// attributes are reported; the result is then false.
  virtual HxBoolean readAttributeFromToken(const HxToken& token, HxXmlReader& reader);
  virtual ComponentMap* newComponentMap() const;
  virtual SpecialDescriptorMap* newSpecialDescriptorMap();
  virtual void createComponentMap() const;
  virtual void createAttributeComponentMap();
  virtual void createSpecialDescriptorMap();
  virtual HxBoolean isReadOnlyComponent(HxToken token) const;
  virtual HxBoolean isReadOnlyAttribute(HxToken token) const;

  /// Base comparison (registrations are not value): always true.
  bool operator==(const HxXmlCompoundType&) const { return true; }

 private:
  void ensureRegistered() const;
  const HxXmlComponent* findComponent(const ComponentMap& map, const HxToken& token) const;

  mutable std::unique_ptr<ComponentMap> components_;
  mutable std::unique_ptr<ComponentMap> attributes_;
  std::unique_ptr<SpecialDescriptorMap> specials_;
  mutable bool registering_ = false;
};
