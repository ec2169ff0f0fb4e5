// The containers describe themselves in a real XML Schema: xmllint accepts what they write and
// rejects what breaks their form.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "analysis/xml/HxSimAnalysisTokens.h"
#include "tests/analysis/xml/HxXmlTestTypes.h"

namespace {

using namespace HxXmlTest;
using Doubles = HxXmlVectorType<HxXmlBasicType<double>>;

inline constexpr char kDocument[] = "http://www.hxtoolkit.org/namespace/sm#systemDataVector";

// One member of each container form, under module (namespaced) names.
class Document : public Serialisable<Document, HxXmlCompoundType, kDocument> {
 public:
  void registerComponents() override {
    registerComponent(HxSimAnalysis::HxDataLabelsToken, &labels);
    registerComponent(HxSimAnalysis::HxDisableFlagsToken, &points);
    registerComponent(HxSimAnalysis::HxDataCaptureTypeVectorToken, &shapes);
    registerComponent(HxSimAnalysis::HxManipulatorDataVectorToken, &nested);
    registerComponent(HxSimAnalysis::HxLeftSystemDataCaptureToken, &pair);
  }
  HxXmlVectorType<HxXmlBasicType<std::string>> labels;
  HxXmlVectorType<Point> points;
  ShapeVector shapes;
  HxXmlVectorType<Doubles> nested;
  HxXmlPairType<HxXmlBasicType<std::string>, Doubles> pair;
};

bool validates(const std::string& schemaPath, const std::string& instancePath, const std::string& instance) {
  std::ofstream(instancePath, std::ios::binary) << instance;
  const std::string command = "xmllint --noout --schema '" + schemaPath + "' '" + instancePath + "' >/dev/null 2>&1";
  return std::system(command.c_str()) == 0;
}

std::string replaced(std::string text, const std::string& what, const std::string& by) {
  const std::size_t at = text.find(what);
  return at == std::string::npos ? std::string() : text.replace(at, what.size(), by);
}

// What the containers write validates against their schema; a stray child, a negative count or
// a third pair member does not.
TEST(HxXmlContainerSchema, WrittenContainersValidate) {
  if (std::system("command -v xmllint >/dev/null 2>&1") != 0) GTEST_SKIP() << "xmllint is not installed";
  const std::string schemaPath = testing::TempDir() + "hx_container_schema.xsd";
  const std::string instancePath = testing::TempDir() + "hx_container_instance.xml";

  Document document;
  document.labels.pushBack(std::string("a b"));
  document.points.pushBack(Point(1, 2, "p"));
  document.shapes.pushBack(Circle("c", 1));
  document.shapes.pushBack(Square("s", 2));
  document.shapes.setAddLibraries({"libHxShapes"});
  document.nested.pushBack(Doubles(2, 1.5));
  document.pair.set(std::string("name"), Doubles(1, 2.0));
  ASSERT_TRUE(document.createSchema(schemaPath, document.token()));

  const std::string instance = writeToString(document, document.token());
  EXPECT_TRUE(validates(schemaPath, instancePath, instance)) << instance;
  for (const std::string& broken : {replaced(instance, "<element>", "<bogus/><element>"),
                                    replaced(instance, "count=\"1\"", "count=\"-1\""),
                                    replaced(instance, "</second>", "</second><third/>")}) {
    ASSERT_FALSE(broken.empty());
    EXPECT_FALSE(validates(schemaPath, instancePath, broken)) << broken;
  }
  std::remove(schemaPath.c_str());
  std::remove(instancePath.c_str());
}

}  // namespace
