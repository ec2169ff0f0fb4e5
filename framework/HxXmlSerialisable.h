#pragma once
/// \file
/// The members that every concrete serialisable class has, written once: HX_XML_SERIALISABLE in
/// the class, HX_XML_SERIALISABLE_DEFINITIONS beside its other definitions, and HxScratch for
/// members that are working space rather than value.
///
///     class HxShelf : public HxXmlCompoundType {
///       HX_XML_SERIALISABLE(HxShelf);
///
///      public:
///       HxShelf();
///       void registerComponents() override;
///       bool operator==(const HxShelf& other) const;
///       ...
///     };
///
///     HX_XML_SERIALISABLE_DEFINITIONS(HxShelf, HxShelfToken)    // in HxShelf.cpp

#include "framework/HxToken.h"
#include "framework/HxTypes.h"
#include "framework/HxXmlObject.h"

/// Declares, inside `ClassName`, the serialisable-object hooks (`clone`, `newObject`,
/// `equality`, `token`, the static `classToken` and `creator`) and `operator!=`. Used alone by
/// a class that declares its own copy constructor, assignment and destructor. Leaves the class
/// in its public section. `ClassName` provides `operator==` and a default constructor.
#define HX_XML_SERIALISABLE_HOOKS(ClassName)                                                    \
 public:                                                                                        \
  /** Negation of `operator==`. */                                                              \
  bool operator!=(const ClassName& other) const { return !(*this == other); }                   \
  /** A new heap copy, owned by the caller. */                                                  \
  HxXmlObject* clone() const override;                                                          \
  /** A new default object, owned by the caller. */                                             \
  HxXmlObject* newObject() const override;                                                      \
  /** False for null or for an object of another class, else `operator==`. */                   \
  HxBoolean equality(const HxXmlObject* other) const override;                                  \
  /** The class token. */                                                                       \
  const HxToken& token() const override;                                                        \
  /** The element name of the class in XML files. */                                            \
  static const HxToken& classToken();                                                           \
  /** A new default object, owned by the caller: the creator registered for the class token. */ \
  static HxXmlObject* creator()

/// Declares, inside `ClassName`, copy, assignment and destruction member by member (members of
/// type HxScratch are not copied; a compound's registrations stay each object's own).
#define HX_XML_MEMBERWISE_COPY(ClassName)                 \
 public:                                                  \
  /** Copies every member but the HxScratch ones. */      \
  ClassName(const ClassName& other) = default;            \
  /** Assigns every member but the HxScratch ones. */     \
  ClassName& operator=(const ClassName& other) = default; \
  ~ClassName() override = default

/// The members of a concrete serialisable class: HX_XML_SERIALISABLE_HOOKS, a static
/// `nullObject` returning a default object, and HX_XML_MEMBERWISE_COPY.
#define HX_XML_SERIALISABLE(ClassName)                  \
  HX_XML_SERIALISABLE_HOOKS(ClassName);                 \
  /** A default object. */                              \
  static ClassName nullObject() { return ClassName(); } \
  HX_XML_MEMBERWISE_COPY(ClassName)

/// Defines the hooks declared by HX_XML_SERIALISABLE(_HOOKS), each definition preceded by
/// `Prefix`, given in parentheses: `()`, `(inline)` for a class held in a header, or a template
/// head such as `(template <class T>)`. `ClassToken` is an expression naming a token that lives
/// as long as the program, and the class is the rest of the arguments (so that it may hold
/// commas). `equality` is a dynamic cast of the argument to the class, false on null or on
/// another class, else `operator==`; `newObject` is `creator`.
#define HX_XML_SERIALISABLE_DEFINITIONS_WITH(Prefix, ClassToken, ...)                                     \
  HX_XML_UNPARENTHESISE Prefix HxXmlObject* __VA_ARGS__::clone() const { return new __VA_ARGS__(*this); } \
  HX_XML_UNPARENTHESISE Prefix HxXmlObject* __VA_ARGS__::newObject() const { return creator(); }          \
  HX_XML_UNPARENTHESISE Prefix HxBoolean __VA_ARGS__::equality(const HxXmlObject* other) const {          \
    const auto* same = dynamic_cast<const __VA_ARGS__*>(other);                                           \
    return same != nullptr && *this == *same;                                                             \
  }                                                                                                       \
  HX_XML_UNPARENTHESISE Prefix const HxToken& __VA_ARGS__::token() const { return classToken(); }         \
  HX_XML_UNPARENTHESISE Prefix const HxToken& __VA_ARGS__::classToken() { return ClassToken; }            \
  HX_XML_UNPARENTHESISE Prefix HxXmlObject* __VA_ARGS__::creator() { return new __VA_ARGS__(); }

/// Its arguments, without the parentheses around them.
#define HX_XML_UNPARENTHESISE(...) __VA_ARGS__

/// Defines the hooks of `ClassName` in its source file.
#define HX_XML_SERIALISABLE_DEFINITIONS(ClassName, ClassToken) \
  HX_XML_SERIALISABLE_DEFINITIONS_WITH((), ClassToken, ClassName)

/// A member that is working space, not value: a copy starts with a default `T` and assignment
/// leaves the target's as it is, so that the owner's member-by-member copy and assignment copy
/// only its value. Otherwise it is the `T` it derives from.
template <class T>
class HxScratch : public T {
 public:
  HxScratch() = default;
  /// A default `T`: the source's content is not copied.
  HxScratch(const HxScratch&) : T() {}
  /// Keeps this object's content.
  HxScratch& operator=(const HxScratch&) { return *this; }
  using T::operator=;
};
