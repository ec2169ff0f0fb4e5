// The XML Schema of the containers under module names. (The module tokens' texts and prefix are
// pinned by the golden XML file and the round trip of examples/config.)
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "analysis/xml/HxSimAnalysisTokens.h"
#include "tests/analysis/xml/HxXmlTestTypes.h"
#include "tests/support/HxScopedTempDir.h"

namespace {

using namespace HxXmlTest;
using Doubles = HxXmlVectorType<HxXmlBasicType<double>>;

inline constexpr char kDocument[] = "http://www.hxtoolkit.org/namespace/sm#systemDataVector";

// One member of each container form, under module (namespaced) names.
class Document : public HxXmlCompoundType {
  HX_XML_SERIALISABLE(Document);

 public:
  Document() = default;
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
HX_XML_SERIALISABLE_DEFINITIONS(Document, nameToken<kDocument>())

// What the containers write validates against their schema; a stray child does not.
TEST(HxXmlContainerSchema, WrittenContainersValidate) {
  if (std::system("command -v xmllint >/dev/null 2>&1") != 0) GTEST_SKIP() << "xmllint is not installed";
  const HxScopedTempDir dir("container-schema");
  const std::string schemaPath = dir.file("containers.xsd");
  Document document;
  document.labels.pushBack(std::string("a b"));
  document.points.pushBack(Point(1, 2, "p"));
  document.shapes.pushBack(Circle("c", 1));
  document.shapes.pushBack(Square("s", 2));
  document.shapes.setAddLibraries({"libHxShapes"});
  document.nested.pushBack(Doubles(2, 1.5));
  document.pair.set(std::string("name"), Doubles(1, 2.0));
  ASSERT_TRUE(document.createSchema(schemaPath, document.token()));
  std::string instance = writeToString(document, document.token());
  for (const bool valid : {true, false}) {
    const std::string command =
        "xmllint --noout --schema '" + schemaPath + "' '" + dir.write("i.xml", instance) + "' >/dev/null 2>&1";
    EXPECT_EQ(std::system(command.c_str()) == 0, valid) << instance;
    instance.replace(instance.find("<element>"), 0, "<bogus/>");
  }
}

}  // namespace
