#pragma once
/// \file
/// HxXmlCompoundType: a serialisable object whose children are registered under tokens.

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "framework/HxXmlObject.h"

/// One registered member of a compound: its token, the member and whether it is read-only
/// (written but not read back).
struct HxXmlComponent {
  /// Element or attribute name.
  HxToken token;
  /// The member, owned by the compound that registered it.
  HxXmlObject* object;
  /// Written, but skipped when read.
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
  /// Registered members in registration order.
  using ComponentMap = std::vector<HxXmlComponent>;
  /// Tokens handled by `readValueFromSpecialToken`, with a description of each.
  using SpecialDescriptorMap = std::map<HxToken, std::string>;

  HxXmlCompoundType();
  /// Copies the base only: registrations are the copy's own, made on first use.
  HxXmlCompoundType(const HxXmlCompoundType& other);
  /// As the copy: the base only, never the source's registrations (they point into the source).
  HxXmlCompoundType(HxXmlCompoundType&& other) noexcept;
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

  /// Reads every attribute of the current element through `readAttributeFromToken`. Returns false
  /// when one of them is unknown or fails to read; the others are still read.
  virtual HxBoolean readAttributes(HxXmlReader& reader);
  /// Reads the child elements up to the current element's end through `readValueFromToken`.
  /// Returns false when a child is unknown or fails to read (the others are still read), or when
  /// the document ends or breaks before the element's end.
  virtual HxBoolean readElements(HxXmlReader& reader);
  /// Writes the registered attributes in registration order. Returns false when one of them fails.
  virtual HxBoolean writeAttributes(HxXmlWriter& writer) const;
  /// Writes one child element per registered member, in registration order. Returns false when one
  /// of them fails.
  virtual HxBoolean writeElements(HxXmlWriter& writer) const;
  /// Declares the registered attributes in a schema.
  virtual void writeSchemaAttributes(HxXmlSchema& schema) const;
  /// Declares the registered children as a repeated choice; nothing when there are none.
  virtual void writeSchemaElements(HxXmlSchema& schema) const;
  /// Registers the members; the base registers nothing.
  virtual void registerComponents();
  /// Registers `object` as the child element `token`; a null `object` is ignored.
  virtual void registerComponent(const HxToken& token, HxXmlObject* object);
  /// Registers `object` as the child element `token`, written but skipped when read; a null
  /// `object` is ignored.
  virtual void registerComponentReadOnly(const HxToken& token, HxXmlObject* object);
  /// The registered child elements, registering them first if needed.
  virtual const ComponentMap& componentMap() const;
  /// Registers `object` as the attribute `token`; a null `object` is ignored.
  virtual void registerAttributeComponent(const HxToken& token, HxXmlObject* object);
  /// Registers `object` as the attribute `token`, written but ignored when read; a null `object`
  /// is ignored.
  virtual void registerAttributeComponentReadOnly(const HxToken& token, HxXmlObject* object);
  /// The registered attributes, registering them first if needed.
  virtual const ComponentMap& attributeComponentMap();
  /// The special tokens, an empty map created on first use; derived classes add to it.
  virtual SpecialDescriptorMap& specialDescriptorMap();
  /// Whether at least one child element is registered.
  virtual HxBoolean hasChildren() const;
  /// Whether at least one attribute is registered.
  virtual HxBoolean hasAttributes() const;
  /// Reads the child element named `token` (the reader is on its start). Unknown tokens are
  /// reported and skipped; the result is then false.
  virtual HxBoolean readValueFromToken(const HxToken& token, HxXmlReader& reader);
  /// Reads a child named by a special token; the base skips it and returns true.
  virtual HxBoolean readValueFromSpecialToken(const HxToken& token, HxXmlReader& reader);
  /// Reads the attribute named `token` (selected as the reader's current attribute). Unknown
  /// attributes are reported; the result is then false.
  virtual HxBoolean readAttributeFromToken(const HxToken& token, HxXmlReader& reader);
  /// Factory of the (empty) component maps; the caller owns the result.
  virtual ComponentMap* newComponentMap() const;
  /// Factory of the (empty) special-token map; the caller owns the result.
  virtual SpecialDescriptorMap* newSpecialDescriptorMap();
  /// Replaces both component maps by new ones filled by `registerComponents`.
  virtual void createComponentMap() const;
  /// Makes sure the members are registered (attributes and children are registered together).
  virtual void createAttributeComponentMap();
  /// Creates the special-token map when it does not exist yet.
  virtual void createSpecialDescriptorMap();
  /// Whether `token` is a child element registered read-only; false when it is not registered.
  virtual HxBoolean isReadOnlyComponent(HxToken token) const;
  /// Whether `token` is an attribute registered read-only; false when it is not registered.
  virtual HxBoolean isReadOnlyAttribute(HxToken token) const;

  /// Base comparison (registrations are not value): always true.
  bool operator==(const HxXmlCompoundType&) const { return true; }
  /// Whether the registered members of this object and of `other`, an object of the same class,
  /// are pairwise equal by `equality`: attributes first, then child elements, each in
  /// registration order, false at the first difference. Registers the members of both first.
  bool componentsEqual(const HxXmlCompoundType& other) const;

 private:
  void ensureRegistered() const;
  void addComponent(bool attribute, const HxToken& token, HxXmlObject* object, bool readOnly);
  const HxXmlComponent* findComponent(const ComponentMap& map, const HxToken& token) const;

  mutable std::unique_ptr<ComponentMap> components_;
  mutable std::unique_ptr<ComponentMap> attributes_;
  std::unique_ptr<SpecialDescriptorMap> specials_;
  mutable bool registering_ = false;
};
