#pragma once
/// \file
/// HxXmlBaseVariableCompoundType: base of the polymorphic (owning, creator-based) vectors.

#include <map>
#include <mutex>
#include <string>
#include <typeinfo>
#include <vector>

#include "framework/HxXmlObject.h"

/// Base of the polymorphic vectors: a map from element token to creator function, and a list
/// of libraries that a configuration says it needs.
///
/// Libraries: the toolkit's modules are linked into the program, not loaded at run time, so
/// `processLibraries` loads no code. A module announces itself with `registerLibrary(name)`
/// (for example at load time); `processLibraries` checks every listed library against those
/// names, reports each one that is not present (type 4) and returns false if any is missing.
/// Loading code named by a configuration file is deliberately not supported.
///
/// The library list is written as an "addLibraries" element in the same form as a vector of
/// strings (a "count" attribute and one "group" element of quoted names).
class HxXmlBaseVariableCompoundType : public HxXmlObject {
 public:
  /// Function that returns a new default object of one element class, owned by the caller.
  using Creator = HxXmlObject* (*)();
  /// Creator of each element class, by element token.
  using CreatorMap = std::map<HxToken, Creator>;

  HxXmlBaseVariableCompoundType();
  /// Copies the library list; the creator map is the copy's own, built on first use (a class
  /// that shares its creators, see `shareCreatorsOfClass`, stays shared).
  HxXmlBaseVariableCompoundType(const HxXmlBaseVariableCompoundType& other);
  /// Takes the library list over, as the copy does the creators.
  HxXmlBaseVariableCompoundType(HxXmlBaseVariableCompoundType&& other) noexcept;
  /// Assigns the library list; the target keeps its own creator map.
  HxXmlBaseVariableCompoundType& operator=(const HxXmlBaseVariableCompoundType& other);
  ~HxXmlBaseVariableCompoundType() override;

  void xmlInit() override;
  /// Reads every child element through `readValueFromToken`, keeping the reader in step after
  /// each. Returns false when the base read or any child's `readValueFromToken` fails.
  HxBoolean read(HxXmlReader& reader) override;
  /// Writes the library list when it is not empty.
  HxBoolean write(HxXmlWriter& writer) const override;
  /// A complex type admitting every registered element (and the library list) in any order.
  void writeSchema(HxXmlSchema& schema) const override;

  /// Registers the concrete vector's creators (called on first use of the creator map).
  virtual void registerComponentCreators() = 0;
  /// Registers `creator` for the element `token`, replacing an earlier one.
  virtual void registerComponentCreator(const HxToken& token, Creator creator);
  /// Registers the `creator` of each class of `Types` under its `classToken()`, in this order.
  template <class... Types>
  void registerComponentCreatorsOf() {
    (registerComponentCreator(Types::classToken(), &Types::creator), ...);
  }
  /// A new object from the registered creator, owned by the caller, or null.
  virtual HxXmlObject* newObjectFromToken(const HxToken& token) const;
  /// The libraries the configuration says it needs, in file order.
  virtual const std::vector<std::string>& addLibraries() const;
  /// Replaces the library list.
  virtual void setAddLibraries(const std::vector<std::string>& libraries);
  /// The registered creators, registering them first if needed.
  virtual const CreatorMap& creatorMap() const;
  /// Reads the child element named `token`; the reader is on its start.
  virtual HxBoolean readValueFromToken(const HxToken& token, HxXmlReader& reader) = 0;
  /// Checks the listed libraries against the registered ones (see class comment).
  virtual HxBoolean processLibraries();

  /// Announces a linked-in library by name.
  static void registerLibrary(const std::string& name);
  /// Whether `registerLibrary(name)` has run in this program. Thread-safe, like `registerLibrary`.
  static bool isLibraryRegistered(const std::string& name);

  /// Equal when the library lists are equal.
  bool operator==(const HxXmlBaseVariableCompoundType& other) const { return libraries_ == other.libraries_; }

 protected:
  /// Reads the library list from the "addLibraries" element the reader is on.
  HxBoolean readLibraryList(HxXmlReader& reader);

  /// For a class whose `registerComponentCreators` registers the same creators for every
  /// object: the objects of exactly `Class` (not of a class derived from it) then make objects
  /// by token from one table of creators made once for the class (by the first object that
  /// needs it), instead of each registering its creators into a map of its own. An object
  /// takes a map of its own, a copy of that table, as soon as its map is asked for
  /// (`creatorMap`) or changed (`registerComponentCreator`), so that what it is asked and what
  /// it makes are as they would be without the table. Called by the constructors of `Class`.
  template <class Class>
  void shareCreatorsOfClass() {
    static ClassCreators table(typeid(Class));
    classCreators_ = &table;
  }

 private:
  // The creators every object of one class registers, made once.
  struct ClassCreators {
    explicit ClassCreators(const std::type_info& of) : type(of) {}
    const std::type_info& type;
    std::once_flag made;
    CreatorMap creators;
  };

  void ensureCreators() const;
  // The object's creators are the class's table: gives it its own copy of the table.
  void ownCreators() const;
  std::vector<std::string> libraries_;
  mutable CreatorMap creators_;
  mutable bool creatorsReady_ = false;
  // The class's table, when the class shares its creators; and whether this object's creators
  // are that table (its own map is then empty and unused).
  const ClassCreators* classCreators_ = nullptr;
  mutable bool creatorsAreClass_ = false;
};
