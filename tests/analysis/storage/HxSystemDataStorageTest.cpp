// The sample record: element size, the silent refusal of writes that do not fit, the text
// caches, and comparison.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/storage/HxSystemDataStorage.h"
#include "framework/HxNumberText.h"
#include "framework/HxPrint.h"

namespace {

using ValueVector = HxManipulatorDataStorage::ValueVector;
using Quantities = std::vector<std::vector<double>>;
using Texts = std::vector<std::string>;

ValueVector values(const std::vector<double>& list) {
  ValueVector result;
  for (double v : list) result.pushBack(v);
  return result;
}

HxManipulatorDataStorage::QuantityVector quantities(const Quantities& list) {
  HxManipulatorDataStorage::QuantityVector result;
  for (const std::vector<double>& v : list) result.pushBack(values(v));
  return result;
}

HxManipulatorDataStorage manipulator(const Quantities& level, const std::vector<Quantities>& links,
                                     const std::vector<Quantities>& endEffectors) {
  HxManipulatorDataStorage result;
  result.setManipulatorLevelData(quantities(level));
  HxManipulatorDataStorage::ElementVector linkData, endEffectorData;
  for (const Quantities& link : links) linkData.pushBack(quantities(link));
  for (const Quantities& endEffector : endEffectors) endEffectorData.pushBack(quantities(endEffector));
  result.setLinkLevelData(linkData);
  result.setEndEffectorData(endEffectorData);
  return result;
}

// Two manipulators: the first with two manipulator-level quantities, two links and one end
// effector; the second with one end effector only, whose first quantity is empty. The values
// are numbered in flat order.
HxSystemDataStorage shapedRecord() {
  HxSystemDataStorage::ManipulatorDataVector manipulators;
  manipulators.pushBack(manipulator({{1, 2, 3}, {4}}, {{{5}, {6, 7}}, {{8}}}, {{{9, 10}}}));
  manipulators.pushBack(manipulator({}, {}, {{{}, {11.5, 12}}}));
  HxSystemDataStorage record;
  record.setManipulatorDataVector(manipulators);
  record.computeElementSize();
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
TEST(HxSystemDataStorage, ElementSizeBoundsTheOutput) {
  HxSystemDataStorage record;
  EXPECT_EQ(record.elementSize(true), 4294967294u);
  EXPECT_TRUE(texts(record).empty() && reals(record, true).empty());
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
}

// Every index is checked; a run is stored whole or not at all, never grown, and an empty run
// is refused. Nothing is reported.
TEST(HxSystemDataStorage, WritesThatDoNotFitAreRefusedSilently) {
  HxSystemDataStorage record = shapedRecord();
  const HxSystemDataStorage before = record;
  Hx::ScopedPrintCapture messages;
  // Out-of-range indices at every level, runs that overrun by one or more, an empty run.
  const bool stored[] = {
      record.setSpecificManipulatorLevelData(2, 0, 0, 99.0),
      record.setSpecificManipulatorLevelData(0, 2, 0, 99.0),
      record.setSpecificManipulatorLevelData(0, 0, 3, 99.0),
      record.setSpecificLinkLevelData(0, 2, 0, 0, 99.0),
      record.setSpecificLinkLevelData(0, 0, 2, 0, 99.0),
      record.setSpecificLinkLevelData(0, 0, 0, 1, 99.0),
      record.setSpecificLinkLevelData(5, 0, 0, 0, 99.0),
      record.setSpecificEndEffectorData(0, 1, 0, 0, 99.0),
      record.setSpecificEndEffectorData(1, 0, 0, 0, 99.0),
      record.setSpecificEndEffectorData(1, 0, 1, 2, 99.0),
      record.setSpecificEndEffectorData(9, 0, 1, 0, 99.0),
      record.setSpecificManipulatorLevelData(0, 0, 1, values({91, 92, 93})),
      record.setSpecificManipulatorLevelData(0, 0, 0, values({91, 92, 93, 94})),
      record.setSpecificManipulatorLevelData(0, 0, 0, values({})),
      record.setSpecificManipulatorLevelData(0, 0, 4294967295u, values({91})),
      record.setSpecificLinkLevelData(0, 0, 1, 1, values({91, 92})),
      record.setSpecificLinkLevelData(0, 3, 0, 0, values({91})),
      record.setSpecificEndEffectorData(1, 0, 1, 1, values({91, 92})),
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
    const HxElementValues& values = *record.elementValues();
    EXPECT_EQ(std::vector<double>(values.values, values.values + values.count), reals(record, false));
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

// Equality covers time, index and the element size, which copies carry.
TEST(HxSystemDataStorage, EqualityCoversIndexAndElementSize) {
  const HxSystemDataStorage record = shapedRecord();
  HxSystemDataStorage other(record);
  EXPECT_EQ(other, record);
  other.setPathPointIndex(3);
  EXPECT_NE(other, record);
  HxSystemDataStorage uncomputed;
  uncomputed.setManipulatorDataVector(record.manipulatorDataVector());
  EXPECT_NE(uncomputed, record);
  uncomputed.computeElementSize();
  EXPECT_EQ(uncomputed, record);
}

// The layout probe numbers its elements in flat order (what lets the XML writer find each one),
// and shares the record's layout description, which a reshaped record does not.
TEST(HxSystemDataStorage, LayoutProbeNumbersItsElements) {
  const HxSystemDataStorage record = shapedRecord();
  const std::unique_ptr<HxBaseSystemDataComponent> probe(record.newLayoutProbe());
  Texts expected;
  for (HxU32 i = 0; i < record.elementSize(); ++i) expected.push_back(HxDOUBLE2STRING(i));
  EXPECT_EQ(texts(dynamic_cast<const HxSystemDataStorage&>(*probe)), expected);
  std::vector<HxU32> layout, probeLayout;
  record.describeLayout(layout);
  probe->elementSource()->describeLayout(probeLayout);
  EXPECT_EQ(probeLayout, layout);
  HxSystemDataStorage::ManipulatorDataVector manipulators = record.manipulatorDataVector();
  manipulators[0].setManipulatorLevelData(quantities({{1, 2}, {3, 4}}));  // as many values
  HxSystemDataStorage reshaped(record);
  reshaped.setManipulatorDataVector(manipulators);
  reshaped.computeElementSize();
  reshaped.describeLayout(probeLayout);
  EXPECT_NE(probeLayout, layout);
}

}  // namespace
