// The sample record: element size and flat order, reals and text, the silent refusal of writes
// that do not fit, the text caches, copies and comparison, and the XML form.

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/storage/HxSystemDataStorage.h"
#include "framework/HxNumberText.h"
#include "framework/HxPrint.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlWriter.h"

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

std::string xmlText(const HxXmlObject& object) {
  std::ostringstream out;
  HxXmlWriter("test", out).writeObject(object);  // the writer ends the document when it goes
  return out.str();
}

// Reads what `object` writes into a default object of its class.
template <class T>
T roundTrip(const T& object) {
  T read;
  HxXmlReader reader;
  EXPECT_TRUE(reader.openMemory(xmlText(object), "test.xml") && reader.readObject(read)) << xmlText(object);
  return read;
}

// A record with no manipulators has time and index only; before its size is computed it is
// empty and the size without time and index wraps. A shaped record's values come in flat order.
TEST(HxSystemDataStorage, ElementSizeAndFlatOrder) {
  HxSystemDataStorage record;
  EXPECT_EQ(record.type(), 1u);
  EXPECT_EQ(record.elementSize(true), 4294967294u);
  EXPECT_TRUE(texts(record).empty());
  EXPECT_TRUE(reals(record, true).empty());
  record.computeElementSize();
  record.setTime(0.5);
  record.setPathPointIndex(12);
  EXPECT_EQ(record.elementSize(true), 0u);
  EXPECT_EQ(texts(record), (Texts{"0.5", "12"}));
  EXPECT_EQ(reals(record, false), (std::vector<double>{0.5, 12.0}));

  // Reals share the flat order of the texts (pinned below); a stale (smaller) element size
  // bounds the output instead of overrunning it.
  record = shapedRecord();
  EXPECT_EQ(record.elementSize(true), 12u);
  EXPECT_EQ(reals(record, true), (std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11.5, 12}));
  HxSystemDataStorage::ManipulatorDataVector more = record.manipulatorDataVector();
  more.pushBack(more[0]);
  record.setManipulatorDataVector(more);
  EXPECT_EQ(texts(record).size(), 14u);
  EXPECT_EQ(reals(record, false).size(), 14u);
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
      record.setSpecificManipulatorLevelData(2, 0, 0, 99.0), record.setSpecificManipulatorLevelData(0, 2, 0, 99.0),
      record.setSpecificManipulatorLevelData(0, 0, 3, 99.0), record.setSpecificLinkLevelData(0, 2, 0, 0, 99.0),
      record.setSpecificLinkLevelData(0, 0, 2, 0, 99.0), record.setSpecificLinkLevelData(0, 0, 0, 1, 99.0),
      record.setSpecificLinkLevelData(5, 0, 0, 0, 99.0), record.setSpecificEndEffectorData(0, 1, 0, 0, 99.0),
      record.setSpecificEndEffectorData(1, 0, 0, 0, 99.0), record.setSpecificEndEffectorData(1, 0, 1, 2, 99.0),
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

// Equality covers time, index, values and the element size, which copies carry. Both record
// classes read back equal from their XML (the values before time and index); reading does not
// compute the element size.
TEST(HxSystemDataStorage, EqualityCopiesAndXml) {
  HxSystemDataStorage record = shapedRecord();
  record.setTime(1.25);
  record.setPathPointIndex(2);
  HxSystemDataStorage other(record);
  EXPECT_EQ(other, record);
  other.setPathPointIndex(3);
  EXPECT_NE(other, record);
  other = record;
  EXPECT_EQ(other, record);

  Hx::ScopedPrintCapture messages;
  const HxManipulatorDataStorage& first = record.manipulatorDataVector()[0];
  EXPECT_EQ(roundTrip(first), first);
  HxSystemDataStorage read = roundTrip(record);
  EXPECT_TRUE(messages.records().empty()) << messages.text();
  EXPECT_EQ(read.elementSize(), 0u);
  EXPECT_NE(read, record);
  read.computeElementSize();
  EXPECT_EQ(read, record);
  const std::string text = xmlText(record);
  std::size_t at = 0;
  for (const std::string element : {"<sm:generalStorage", "<sm:manipulatorDataVector", "<sm:manipulatorLevelData",
                                    "<sm:linkLevelData", "<sm:endEffectorData", "<sm:time>1.25</sm:time>",
                                    "<sm:pathPointIndex>2</sm:pathPointIndex>"}) {
    at = text.find(element, at);
    EXPECT_NE(at, std::string::npos) << element << " is missing or out of order in\n" << text;
  }
}

}  // namespace
