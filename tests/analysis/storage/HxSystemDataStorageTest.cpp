// The sample record: element size and flat order, reals and text, the silent refusal of
// writes that do not fit, the text cache, copies and comparison, the XML form, and no
// allocation per sample once warm.

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#define HX_ALLOCATION_COUNTER_NO_OPERATORS
#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/storage/HxManipulatorDataStorage.h"
#include "analysis/storage/HxSystemDataStorage.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "bench/HxAllocationCounter.h"
#include "framework/HxNumberText.h"
#include "framework/HxPrint.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlWriter.h"
#include "simulation/HxScriptedSimulation.h"

namespace {

using namespace HxSimAnalysis;
using ValueVector = HxManipulatorDataStorage::ValueVector;
using QuantityVector = HxManipulatorDataStorage::QuantityVector;
using ElementVector = HxManipulatorDataStorage::ElementVector;

ValueVector values(std::initializer_list<double> list) {
  ValueVector result;
  for (double v : list) result.pushBack(v);
  return result;
}

QuantityVector quantities(std::initializer_list<ValueVector> list) {
  QuantityVector result;
  for (const ValueVector& v : list) result.pushBack(v);
  return result;
}

// Two manipulators: the first with two manipulator-level quantities, two links and one end
// effector; the second with one end effector only. Values are numbered in flat order.
HxSystemDataStorage shapedRecord() {
  HxManipulatorDataStorage first;
  first.setManipulatorLevelData(quantities({values({1, 2, 3}), values({4})}));
  ElementVector links;
  links.pushBack(quantities({values({5}), values({6, 7})}));
  links.pushBack(quantities({values({8})}));
  first.setLinkLevelData(links);
  ElementVector endEffectors;
  endEffectors.pushBack(quantities({values({9, 10})}));
  first.setEndEffectorData(endEffectors);

  HxManipulatorDataStorage second;
  ElementVector secondEndEffectors;
  secondEndEffectors.pushBack(quantities({values({}), values({11.5, 12})}));
  second.setEndEffectorData(secondEndEffectors);

  HxSystemDataStorage::ManipulatorDataVector manipulators;
  manipulators.pushBack(first);
  manipulators.pushBack(second);
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

std::vector<std::string> texts(const HxSystemDataStorage& record) {
  std::vector<std::string> out;
  record.getStringElements(out);
  return out;
}

TEST(HxSystemDataStorage, FreshAndEmptyRecords) {
  HxSystemDataStorage record;
  EXPECT_EQ(record.type(), 1u);
  EXPECT_EQ(record.elementSize(), 0u);
  EXPECT_EQ(record.elementSize(true), 4294967294u);  // wraps: callers compute the size first
  EXPECT_TRUE(texts(record).empty());
  EXPECT_TRUE(reals(record, true).empty());

  record.computeElementSize();
  record.setTime(0.5);
  record.setPathPointIndex(12);
  EXPECT_EQ(record.elementSize(), 2u);
  EXPECT_EQ(record.elementSize(true), 0u);
  EXPECT_EQ(texts(record), (std::vector<std::string>{"0.5", "12"}));
  EXPECT_EQ(reals(record, false), (std::vector<double>{0.5, 12.0}));
  EXPECT_EQ(HxSystemDataStorage::classToken(), HxGeneralStorageToken);
  EXPECT_EQ(record.token(), HxGeneralStorageToken);
}

TEST(HxSystemDataStorage, FlatOrderOfRealsAndTexts) {
  HxSystemDataStorage record = shapedRecord();
  EXPECT_EQ(record.elementSize(), 14u);
  EXPECT_EQ(record.elementSize(true), 12u);
  record.setTime(2.0);
  record.setPathPointIndex(7);

  EXPECT_EQ(reals(record, false), (std::vector<double>{2, 7, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11.5, 12}));
  EXPECT_EQ(reals(record, true), (std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11.5, 12}));
  const std::vector<std::string> text = texts(record);
  ASSERT_EQ(text.size(), 14u);
  EXPECT_EQ(text[0], HxDOUBLE2STRING(2.0));
  EXPECT_EQ(text[1], "7");
  EXPECT_EQ(text[12], "11.5");
  EXPECT_EQ(text[13], HxDOUBLE2STRING(12.0));

  // A stale (smaller) element size bounds the output instead of overrunning it.
  HxSystemDataStorage::ManipulatorDataVector more = record.manipulatorDataVector();
  more.pushBack(more[0]);
  record.setManipulatorDataVector(more);
  EXPECT_EQ(texts(record).size(), 14u);
  EXPECT_EQ(reals(record, false).size(), 14u);
  record.computeElementSize();
  EXPECT_EQ(texts(record).size(), 24u);
}

TEST(HxSystemDataStorage, WritesThatDoNotFitAreRefusedSilently) {
  HxSystemDataStorage record = shapedRecord();
  const HxSystemDataStorage before = record;
  Hx::ScopedPrintCapture messages;

  // Scalar writes: every index checked.
  EXPECT_FALSE(record.setSpecificManipulatorLevelData(2, 0, 0, 99.0));  // manipulator
  EXPECT_FALSE(record.setSpecificManipulatorLevelData(0, 2, 0, 99.0));  // quantity
  EXPECT_FALSE(record.setSpecificManipulatorLevelData(0, 0, 3, 99.0));  // offset
  EXPECT_FALSE(record.setSpecificLinkLevelData(0, 2, 0, 0, 99.0));      // link
  EXPECT_FALSE(record.setSpecificLinkLevelData(0, 0, 2, 0, 99.0));
  EXPECT_FALSE(record.setSpecificLinkLevelData(0, 0, 0, 1, 99.0));
  EXPECT_FALSE(record.setSpecificLinkLevelData(5, 0, 0, 0, 99.0));
  EXPECT_FALSE(record.setSpecificEndEffectorData(0, 1, 0, 0, 99.0));   // end effector
  EXPECT_FALSE(record.setSpecificEndEffectorData(1, 0, 0, 0, 99.0));   // empty quantity
  EXPECT_FALSE(record.setSpecificEndEffectorData(1, 0, 1, 2, 99.0));
  EXPECT_FALSE(record.setSpecificEndEffectorData(9, 0, 1, 0, 99.0));

  // Vector writes: the whole run or nothing; never grown; an empty run is refused.
  EXPECT_FALSE(record.setSpecificManipulatorLevelData(0, 0, 1, values({91, 92, 93})));  // overruns by one
  EXPECT_FALSE(record.setSpecificManipulatorLevelData(0, 0, 0, values({91, 92, 93, 94})));
  EXPECT_FALSE(record.setSpecificManipulatorLevelData(0, 0, 0, values({})));
  EXPECT_FALSE(record.setSpecificManipulatorLevelData(0, 0, 4294967295u, values({91})));
  EXPECT_FALSE(record.setSpecificLinkLevelData(0, 0, 1, 1, values({91, 92})));
  EXPECT_FALSE(record.setSpecificLinkLevelData(0, 3, 0, 0, values({91})));
  EXPECT_FALSE(record.setSpecificEndEffectorData(1, 0, 1, 1, values({91, 92})));
  EXPECT_FALSE(record.setSpecificEndEffectorData(2, 0, 1, 0, values({91})));
  EXPECT_EQ(record, before);
  EXPECT_TRUE(messages.records().empty()) << messages.text();

  // Runs that fit are stored in place.
  EXPECT_TRUE(record.setSpecificManipulatorLevelData(0, 0, 1, values({92, 93})));
  EXPECT_TRUE(record.setSpecificManipulatorLevelData(0, 1, 0, 94.0));
  EXPECT_TRUE(record.setSpecificLinkLevelData(0, 0, 1, 0, values({96, 97})));
  EXPECT_TRUE(record.setSpecificLinkLevelData(0, 1, 0, 0, 98.0));
  EXPECT_TRUE(record.setSpecificEndEffectorData(0, 0, 0, 1, 100.0));
  EXPECT_TRUE(record.setSpecificEndEffectorData(1, 0, 1, 0, values({111, 112})));
  EXPECT_EQ(reals(record, true), (std::vector<double>{1, 92, 93, 94, 5, 96, 97, 98, 9, 100, 111, 112}));
  EXPECT_EQ(record.elementSize(), 14u);
}

TEST(HxSystemDataStorage, TextFollowsEveryChange) {
  HxSystemDataStorage record = shapedRecord();
  std::vector<std::string> text;
  record.getStringElements(text);
  EXPECT_EQ(text[0], "0");
  EXPECT_EQ(text[2], "1");

  record.setTime(0.125);
  record.setPathPointIndex(3);
  record.setSpecificManipulatorLevelData(0, 0, 0, -1.5);
  record.setSpecificLinkLevelData(0, 1, 0, 0, 0.25);
  record.setSpecificEndEffectorData(1, 0, 1, 1, values({1e-20}));
  record.getStringElements(text);
  EXPECT_EQ(text[0], "0.125");
  EXPECT_EQ(text[1], "3");
  EXPECT_EQ(text[2], "-1.5");
  EXPECT_EQ(text[9], "0.25");
  EXPECT_EQ(text[13], HxDOUBLE2STRING(1e-20));

  // Several readers of one sample get the same text; a copy and an assignment their own.
  std::vector<std::string> again;
  record.getStringElements(again);
  EXPECT_EQ(again, text);
  HxSystemDataStorage copy(record);
  copy.setTime(9.0);
  EXPECT_EQ(texts(copy)[0], "9");
  EXPECT_EQ(texts(record)[0], "0.125");
  HxSystemDataStorage assigned;
  EXPECT_TRUE(texts(assigned).empty());
  assigned = copy;
  EXPECT_EQ(texts(assigned), texts(copy));

  // A caller's longer list is cut to the element size.
  std::vector<std::string> longer(30, "x");
  record.getStringElements(longer);
  EXPECT_EQ(longer, text);
}

TEST(HxSystemDataStorage, EqualityCopiesAndXml) {
  HxSystemDataStorage record = shapedRecord();
  record.setTime(1.25);
  record.setPathPointIndex(2);

  HxSystemDataStorage copy(record);
  EXPECT_EQ(copy, record);
  EXPECT_EQ(copy.elementSize(), 14u);
  HxSystemDataStorage other;
  EXPECT_NE(other, record);
  other = record;
  EXPECT_EQ(other, record);
  other.setPathPointIndex(3);
  EXPECT_NE(other, record);
  other = record;
  other.computeElementSize();
  EXPECT_EQ(other, record);
  HxSystemDataStorage::ManipulatorDataVector same = record.manipulatorDataVector();
  HxSystemDataStorage resized;
  resized.setManipulatorDataVector(same);
  resized.setTime(1.25);
  resized.setPathPointIndex(2);
  EXPECT_NE(resized, record);  // element size 0 against 14
  resized.computeElementSize();
  EXPECT_EQ(resized, record);

  std::unique_ptr<HxXmlObject> clone(record.clone());
  EXPECT_TRUE(record.equality(clone.get()));
  EXPECT_FALSE(record.equality(&record.manipulatorDataVector()[0]));
  EXPECT_FALSE(record.equality(nullptr));
  std::unique_ptr<HxXmlObject> fresh(record.newObject());
  EXPECT_TRUE(HxSystemDataStorage::nullObject().equality(fresh.get()));

  Hx::ScopedPrintCapture messages;
  std::ostringstream out;
  {
    HxXmlWriter writer("storage", out);
    writer.writeObject(record);
  }
  const std::string text = out.str();
  EXPECT_NE(text.find("<sm:generalStorage"), std::string::npos) << text;
  EXPECT_LT(text.find("sm:manipulatorDataVector"), text.find("<sm:time>1.25</sm:time>")) << text;
  EXPECT_LT(text.find("sm:time"), text.find("<sm:pathPointIndex>2</sm:pathPointIndex>")) << text;
  EXPECT_LT(text.find("sm:manipulatorLevelData"), text.find("sm:linkLevelData"));
  EXPECT_LT(text.find("sm:linkLevelData"), text.find("sm:endEffectorData"));

  HxXmlReader reader;
  ASSERT_TRUE(reader.openMemory(text, "storage.xml"));
  HxSystemDataStorage read;
  ASSERT_TRUE(reader.readObject(read));
  EXPECT_TRUE(messages.records().empty()) << messages.text();
  // Reading does not compute the element size.
  EXPECT_EQ(read.elementSize(), 0u);
  read.computeElementSize();
  EXPECT_EQ(read, record);
  EXPECT_EQ(texts(read), texts(record));

  // One manipulator's storage on its own.
  std::ostringstream single;
  {
    HxXmlWriter writer("manipulator", single);
    writer.writeObject(record.manipulatorDataVector()[0]);
  }
  EXPECT_NE(single.str().find("<sm:manipulatorDataStorage"), std::string::npos);
  HxXmlReader singleReader;
  ASSERT_TRUE(singleReader.openMemory(single.str(), "manipulator.xml"));
  HxManipulatorDataStorage manipulator;
  ASSERT_TRUE(singleReader.readObject(manipulator));
  EXPECT_EQ(manipulator, record.manipulatorDataVector()[0]);
  EXPECT_NE(manipulator, record.manipulatorDataVector()[1]);
  EXPECT_EQ(manipulator.numValues(), 10u);
}

TEST(HxSystemDataStorage, StoreAndTextOfASampleDoNotAllocateOnceWarm) {
  HxScriptedSimulation simulation(2, 7, 1);
  simulation.setDynamicsEnabled(true);
  HxSystemDataCapture capture;
  for (unsigned int m = 0; m < 2; ++m) {
    capture.addManipulatorDataCaptureType(m, HxBasePositionDataCaptureTypeToken);
    capture.addLinkDataCaptureType(m, HxJointPositionDataCaptureTypeToken, simulation.manipulators()[m]);
    capture.addLinkDataCaptureType(m, HxExternalForceDataCaptureTypeToken, simulation.manipulators()[m]);
    capture.addEndEffectorDataCaptureType(m, HxEndEffectorPlacementDataCaptureTypeToken, 1u);
  }
  HxXmlVectorType<HxXmlBasicType<bool>> flags;
  flags.pushBack(true);
  flags.pushBack(false);
  flags.pushBack(true);
  capture.setDisableFlags(1, HxBasePositionDataCaptureTypeToken, flags);
  ASSERT_TRUE(capture.captureData(simulation));

  HxSystemDataStorage record;
  capture.allocateStorage(record);
  std::vector<std::vector<std::string>> writers(5);

  // Every number form, so that the longest texts have been seen before counting.
  const double times[] = {0.0, -2.2250738585072014e-308, 123456.789, 1e300, 0.1};
  auto sample = [&](int k) {
    record.setTime(times[k % 5]);
    record.setPathPointIndex(4000000000u - k);
    capture.storeData(record);
    for (auto& text : writers) record.getStringElements(text);
  };
  sample(0);

  HxAllocationCounter counter;
  for (int k = 1; k < 20; ++k) sample(k);
  EXPECT_EQ(counter.allocations(), 0u);
  EXPECT_EQ(writers[4].size(), record.elementSize());

  // The labels too, once the caller's list is warm.
  std::vector<std::string> labels;
  capture.getStringElements(labels);
  counter.restart();
  capture.getStringElements(labels);
  EXPECT_EQ(counter.allocations(), 0u);
  EXPECT_EQ(labels.size(), capture.elementSize() + 2u);
  EXPECT_EQ(writers[4][0], "0.1");
}

}  // namespace
