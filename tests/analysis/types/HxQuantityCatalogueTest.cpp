// The quantity catalogue: one entry per type, found by token or local name; what it says a type
// needs agrees with what the type does; every column has a unit and a frame of the vocabulary.

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/types/HxQuantityCatalogue.h"
#include "tests/analysis/types/HxTypesTestSupport.h"

namespace {

using namespace HxTypesTest;

// Sorted by local name; the full token and the local name find an entry, nothing else does; a
// file can name 18 of the 21.
TEST(HxQuantityCatalogue, OneEntryPerTypeFoundByTokenOrName) {
  const std::vector<HxQuantityInfo>& catalogue = hxQuantityCatalogue();
  ASSERT_EQ(catalogue.size(), allTypes().size());
  EXPECT_TRUE(std::is_sorted(catalogue.begin(), catalogue.end(), [](auto& a, auto& b) { return a.name < b.name; }));
  for (const TypeRow& row : allTypes()) {
    const HxQuantityInfo* info = hxFindQuantity(row.classToken());
    EXPECT_TRUE(info && info->name == row.name + "DataCaptureType" && hxFindQuantity(info->name) == info) << row.name;
  }
  EXPECT_TRUE(hxFindQuantity("jointPosition") == nullptr && hxFindQuantity("") == nullptr);
  EXPECT_EQ(std::count_if(catalogue.begin(), catalogue.end(), [](auto& q) { return q.readableFromFile; }), 18);
}

class HxQuantityCatalogueEntry : public ::testing::TestWithParam<TypeRow> {};

// On a simulation that holds everything, a type that needs the dynamics records zeros without
// them, one that needs the power data without it, and no other does. Every column has a unit of
// the vocabulary (joint quantities: of a revolute and of a prismatic joint, none of an unknown
// one) and a frame; a column past the last has neither.
TEST_P(HxQuantityCatalogueEntry, NeedsAgreeWithTheTypeAndEveryColumnHasAUnit) {
  const HxQuantityInfo& info = *hxFindQuantity(GetParam().classToken());
  const std::unique_ptr<HxScriptedSimulation> sim = populatedSimulation();
  auto recordsZeros = [&](bool dynamics, bool power) {
    sim->setDynamicsEnabled(dynamics);
    sim->setPowerDataAvailable(power);
    const std::unique_ptr<HxXmlObject> object(GetParam().create());  // fresh: velocities keep history
    const auto& type = dynamic_cast<const HxDataCaptureType&>(*object);
    type.captureData(*sim, 1, type.type() == 2 ? 1 : 3);
    return values(type) == std::vector<double>(type.dataSize());
  };
  EXPECT_TRUE(!recordsZeros(true, true) && recordsZeros(false, true) == info.needsDynamics &&
              recordsZeros(true, false) == info.needsPowerData);
  const std::set<std::string> units{"1", "m", "rad", "m/s", "rad/s", "m/s^2", "rad/s^2", "N", "N m", "W"};
  const std::set<std::string> frames{"world", "joint", ""};
  const HxU32 size = static_cast<HxU32>(GetParam().labels.size());
  for (HxU32 c = 0; c < size; ++c) {
    const bool joint = info.frame(c) == "joint";
    EXPECT_TRUE(units.count(info.unit(c, HxJointKind::Revolute)) && units.count(info.unit(c, HxJointKind::Prismatic)) &&
                info.unit(c, HxJointKind::Unknown).empty() == joint && frames.count(info.frame(c)))
        << c;
  }
  EXPECT_TRUE(info.unit(size, HxJointKind::Revolute).empty() && info.frame(size).empty());
}

INSTANTIATE_TEST_SUITE_P(AllTypes, HxQuantityCatalogueEntry, ::testing::ValuesIn(allTypes()),
                         [](const ::testing::TestParamInfo<TypeRow>& row) { return row.param.name; });

}  // namespace
