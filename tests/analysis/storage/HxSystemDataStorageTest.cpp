// The sample record: element size, the silent refusal of writes that do not fit, the text
// caches, and comparison.

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/storage/HxSystemDataStorage.h"
#include "framework/HxNumberText.h"
#include "framework/HxPrint.h"
#include "tests/analysis/xml/HxXmlTestTypes.h"

namespace {

using Texts = std::vector<std::string>;

const auto values = &HxXmlTest::xmlVector<double>;

// Two manipulators: the first with two manipulator-level quantities, two links and one end
// effector; the second with one end effector only, whose first quantity is empty. The values
// are numbered in flat order. (Read from the XML form that the recorder's golden XML pins.)
HxSystemDataStorage shapedRecord() {
  HxSystemDataStorage record;
  EXPECT_TRUE(
      HxFrameworkTest::readFromString(record, R"(<sm:generalStorage xmlns:sm="http://www.hxtoolkit.org/namespace/sm#">
<sm:manipulatorDataVector count="2"><element><sm:manipulatorLevelData count="2"><element count="3"><group>1 2 3</group>
</element><element count="1"><group>4</group></element></sm:manipulatorLevelData><sm:linkLevelData count="2"><element
count="2"><element count="1"><group>5</group></element><element count="2"><group>6 7</group></element></element><element
count="1"><element count="1"><group>8</group></element></element></sm:linkLevelData><sm:endEffectorData count="1"><element
count="1"><element count="2"><group>9 10</group></element></element></sm:endEffectorData></element><element>
<sm:endEffectorData count="1"><element count="2"><element count="0"/><element count="2"><group>11.5 12</group></element>
</element></sm:endEffectorData></element></sm:manipulatorDataVector></sm:generalStorage>)"));
  return record;
}

std::vector<double> reals(const HxSystemDataStorage& record, bool excludeTimeAndIndex) {
  std::vector<double> out;
  record.getRealElements(out, excludeTimeAndIndex);
  return out;
}

Texts texts(const HxSystemDataStorage& record) {
  Texts out;
  record.getStringElements(out);
  return out;
}

// A record with no manipulators has time and index only; before its size is computed it is
// empty and the size without time and index wraps. A stale (smaller) element size bounds the
// output instead of overrunning it. (The flat order itself is pinned by the recorder's golden files.)
TEST(HxSystemDataStorage, ElementSizeBoundsTheOutputAndTakesPartInEquality) {
  HxSystemDataStorage record;
  EXPECT_TRUE(record.elementSize(true) == 4294967294u && texts(record).empty() && reals(record, true).empty());
  record.computeElementSize();
  record.setPathPointIndex(12);
  EXPECT_EQ(texts(record), (Texts{"0", "12"}));

  record = shapedRecord();
  EXPECT_EQ(reals(record, true), (std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11.5, 12}));
  HxSystemDataStorage::ManipulatorDataVector more = record.manipulatorDataVector();
  more.pushBack(more[0]);
  record.setManipulatorDataVector(more);
  EXPECT_TRUE(texts(record).size() == 14u && reals(record, false).size() == 14u);
  record.computeElementSize();
  EXPECT_EQ(texts(record).size(), 24u);

  // Equality covers time, index and the element size, which copies carry.
  const HxSystemDataStorage shaped = shapedRecord();
  HxSystemDataStorage other(shaped), uncomputed;
  EXPECT_EQ(other, shaped);
  other.setPathPointIndex(3);
  uncomputed.setManipulatorDataVector(shaped.manipulatorDataVector());
  EXPECT_TRUE(other != shaped && uncomputed != shaped);
  uncomputed.computeElementSize();
  EXPECT_EQ(uncomputed, shaped);
}

// Every index is checked; a run is stored whole or not at all, never grown, and an empty run
// is refused. Nothing is reported. (The quantity and offset checks are shared by the levels:
// they are tried at the manipulator level, the link and end-effector indices at their own.)
TEST(HxSystemDataStorage, WritesThatDoNotFitAreRefusedSilently) {
  HxSystemDataStorage record = shapedRecord();
  const HxSystemDataStorage before = record;
  Hx::ScopedPrintCapture messages;
  // Out-of-range indices at every level, a run that overruns, an empty run, an offset that wraps.
  const bool stored[] = {
      record.setSpecificManipulatorLevelData(2, 0, 0, 99.0),
      record.setSpecificManipulatorLevelData(0, 2, 0, 99.0),
      record.setSpecificManipulatorLevelData(0, 0, 3, 99.0),
      record.setSpecificLinkLevelData(0, 2, 0, 0, 99.0),
      record.setSpecificLinkLevelData(5, 0, 0, 0, 99.0),
      record.setSpecificEndEffectorData(0, 1, 0, 0, 99.0),
      record.setSpecificEndEffectorData(9, 0, 1, 0, 99.0),
      record.setSpecificManipulatorLevelData(0, 0, 1, values({91, 92, 93})),
      record.setSpecificManipulatorLevelData(0, 0, 0, values({})),
      record.setSpecificManipulatorLevelData(0, 0, 4294967295u, values({91})),
      record.setSpecificLinkLevelData(0, 3, 0, 0, values({91})),
      record.setSpecificEndEffectorData(1, 1, 0, 0, values({91})),
      record.setSpecificEndEffectorData(2, 0, 1, 0, values({91})),
  };
  for (std::size_t i = 0; i < std::size(stored); ++i) EXPECT_FALSE(stored[i]) << "write " << i;
  EXPECT_EQ(record, before);
  EXPECT_TRUE(messages.records().empty()) << messages.text();
  EXPECT_TRUE(record.setSpecificManipulatorLevelData(0, 0, 1, values({92, 93})));
  EXPECT_TRUE(record.setSpecificEndEffectorData(1, 0, 1, 0, values({111, 112})));
  EXPECT_EQ(reals(record, true), (std::vector<double>{1, 92, 93, 4, 5, 6, 7, 8, 9, 10, 111, 112}));
}

// Each kind of change reaches the text and the cached reals behind it, however often they were
// read before (that the text block and reals agree with the strings is pinned with the writers'
// fast path); a caller's longer list is cut to the element size.
TEST(HxSystemDataStorage, TextFollowsEveryChange) {
  HxSystemDataStorage record = shapedRecord();
  Texts expected = {"0", "0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11.5", "12"};
  auto change = [&](std::size_t element, const std::string& text, const std::function<void()>& apply) {
    apply();
    expected[element] = text;
    SCOPED_TRACE(text);
    Texts read(30, "x");
    record.getStringElements(read);
    EXPECT_EQ(read, expected);
    const HxElementValues& cached = *record.elementValues();
    EXPECT_EQ(std::vector<double>(cached.values, cached.values + cached.count), reals(record, false));
  };
  change(0, "0", [] {});
  change(0, "0.125", [&] { record.setTime(0.125); });
  change(1, "3", [&] { record.setPathPointIndex(3); });
  change(2, "-1.5", [&] { record.setSpecificManipulatorLevelData(0, 0, 0, -1.5); });
  change(5, "0.5", [&] { record.setSpecificManipulatorLevelData(0, 1, 0, values({0.5})); });
  change(6, "6.5", [&] { record.setSpecificLinkLevelData(0, 0, 0, 0, 6.5); });
  change(9, "0.25", [&] { record.setSpecificLinkLevelData(0, 1, 0, 0, values({0.25})); });
  change(10, "-9", [&] { record.setSpecificEndEffectorData(0, 0, 0, 0, -9.0); });
  change(13, HxDOUBLE2STRING(1e-20), [&] { record.setSpecificEndEffectorData(1, 0, 1, 1, values({1e-20})); });
  change(4, "2.5", [&] {
    HxSystemDataStorage::ManipulatorDataVector data = record.manipulatorDataVector();
    data[0].setSpecificManipulatorLevelData(0, 2, 2.5);
    record.setManipulatorDataVector(data);
  });
  change(0, "7", [&] {
    HxSystemDataStorage copy(record);
    copy.setTime(7.0);
    EXPECT_EQ(texts(copy)[0], "7");
    record = copy;
  });
}

}  // namespace
