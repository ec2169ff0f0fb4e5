#pragma once
/// \file
/// HxBaseSystemDataComponent: common base of capture configurations and sample records.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "framework/HxTypes.h"
#include "framework/HxXmlCompoundType.h"
#include "framework/HxXmlSerialisable.h"

/// Bytes past its end that a padded HxElementText block may be read (see `HxElementText::padded`).
constexpr std::size_t HxElementTextPadding = 32;

/// A component's string elements as one block of text, for writers that copy them as they stand.
/// Element i occupies `chars[offsets[i]]` up to, not including, `chars[offsets[i + 1] - 1]`, and
/// is followed by one ',': the block `chars[0 .. offsets[count] - 1)` is therefore the elements
/// joined by commas. `offsets` has `count + 1` entries and `offsets[0]` is 0.
struct HxElementText {
  /// The block: every element followed by one ','; not terminated.
  const char* chars = nullptr;
  /// Start of each element in `chars`, then the block size: `count + 1` entries.
  const HxU32* offsets = nullptr;
  /// Number of elements.
  std::size_t count = 0;
  /// The block may be read HxElementTextPadding bytes past its end (what lies there is
  /// unspecified), so that a writer may copy any short element as a fixed number of bytes.
  bool padded = false;

  /// Element `i` (below `count`).
  std::string_view element(std::size_t i) const {
    return std::string_view(chars + offsets[i], offsets[i + 1] - offsets[i] - 1);
  }
  /// Size of the block, the separator after the last element included.
  std::size_t blockSize() const { return offsets[count]; }
};

/// A component's elements as the reals whose texts its string elements are: element i of the
/// string elements is the toolkit's text of `values[i]`.
struct HxElementValues {
  /// The reals, `count` of them.
  const double* values = nullptr;
  /// Number of reals.
  std::size_t count = 0;
};

class HxBaseSystemDataComponent;

/// Offered, beside HxBaseSystemDataComponent, by components that keep their elements as one
/// block of text and as reals (the sample record). Kept apart from the component's own virtual
/// operations so that those keep their order.
///
/// A writer that serialises the component whole can learn from a layout probe where each
/// element lands in what it writes, and reuse that for every later component that describes
/// the same layout, without knowing the component's class or layout itself.
class HxElementSource {
 public:
  virtual ~HxElementSource() = default;
  /// The string elements as one block of text, valid until the component next changes; null
  /// when it has none.
  virtual const HxElementText* elementText() const = 0;
  /// The elements as reals, valid until the component next changes; null when they are not
  /// numbers.
  virtual const HxElementValues* elementValues() const = 0;
  /// Fills `layout` with numbers that tell what the component writes around its elements when
  /// serialised (its nested sizes): components with equal descriptions write the same bytes
  /// but for their elements' texts. Left empty (the default) when the component cannot tell.
  /// Does not allocate once `layout` has room.
  virtual void describeLayout(std::vector<HxU32>& layout) const { layout.clear(); }
  /// A number that stays the same only while `describeLayout` would describe the same layout,
  /// and differs between components, so that a writer may skip describing it again; 0 (the
  /// default) when the component cannot tell.
  virtual std::uint64_t layoutStamp() const { return 0; }
  /// A new component of the same class and layout whose string elements all differ: element i
  /// is the text of the number i. Owned by the caller; null (the default) when the component
  /// offers none.
  virtual HxBaseSystemDataComponent* newLayoutProbe() const { return nullptr; }
};

/// Component kinds of `HxBaseSystemDataComponent::type()`.
namespace HxSystemDataComponentKind {
/// A capture configuration (`HxSystemDataCapture`): its string elements are the column labels.
constexpr unsigned int Capture = 0;
/// A sample record (`HxSystemDataStorage`): its string elements are the values.
constexpr unsigned int Record = 1;
}  // namespace HxSystemDataComponentKind

/// Abstract base of the system data components: a capture configuration
/// (`HxSystemDataCapture`, kind 0) and a sample record (`HxSystemDataStorage`, kind 1). Both
/// describe one sample element by element, so that output writers can treat them alike: the
/// string elements of a configuration are the column labels, those of a record the values.
class HxBaseSystemDataComponent : public HxXmlCompoundType {
  HX_XML_MEMBERWISE_COPY(HxBaseSystemDataComponent);
  HxBaseSystemDataComponent();

  /// Component kind (`HxSystemDataComponentKind`): 0 for a capture configuration, 1 for a sample
  /// record.
  virtual unsigned int type() const = 0;
  /// Fills `elements` with the component's string elements (labels or values).
  virtual void getStringElements(std::vector<std::string>& elements) const = 0;
  /// The string elements as one block of text when the component is also an HxElementSource,
  /// valid until the component next changes; null otherwise, and writers then use
  /// `getStringElements`. Does not allocate.
  const HxElementText* elementText() const;
  /// The elements as reals when the component is also an HxElementSource; null otherwise.
  /// Does not allocate.
  const HxElementValues* elementValues() const;
  /// The component as an HxElementSource, or null when it is none.
  const HxElementSource* elementSource() const;

  /// The compound type's write.
  HxBoolean write(HxXmlWriter& writer) const override;
  /// The compound type's read.
  HxBoolean read(HxXmlReader& reader) override;
  /// The compound type's xmlInit.
  void xmlInit() override;

  /// The compound type's comparison.
  bool operator==(const HxBaseSystemDataComponent& other) const { return HxXmlCompoundType::operator==(other); }

 private:
  // The component as an HxElementSource, looked up once (the writers ask for every sample, and
  // a cross-cast costs a walk of the class hierarchy); a copy looks up its own.
  struct SourceLookup {
    bool done = false;
    const HxElementSource* source = nullptr;
  };
  mutable HxScratch<SourceLookup> sourceLookup_;
};
