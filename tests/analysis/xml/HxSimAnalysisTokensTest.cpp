// Module tokens (their text, their prefix when written) and the XML Schema of the containers
// under module names: xmllint accepts what they write and rejects what breaks their form.
#include <unistd.h>
#include "analysis/xml/HxSimAnalysisTokens.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "tests/analysis/xml/HxXmlTestTypes.h"

namespace {

using namespace HxXmlTest;
using Doubles = HxXmlVectorType<HxXmlBasicType<double>>;

const std::string kNamespace = "http://www.hxtoolkit.org/namespace/sm#";

// A token's text is the namespace URI immediately followed by its local name (the misspelt
// constant included); tokens rebuilt from a local name compare equal; the namespace itself
// differs from the tokens; module tokens are written with the registered "sm" prefix and its
// declaration, and read back to the same full text.
TEST(HxSimAnalysisTokens, FullTextIsNamespaceFollowedByLocalName) {
  EXPECT_EQ(HxSimAnalysis::ns.token(), kNamespace);
  EXPECT_EQ(HxSimAnalysis::HxTimeToken.token(), "http://www.hxtoolkit.org/namespace/sm#time");
  EXPECT_EQ(HxSimAnalysis::HxTimeToken.namespaceUri(), kNamespace);
  EXPECT_EQ(HxSimAnalysis::HxTimeToken.localName(), "time");
  EXPECT_EQ(HxSimAnalysis::HxScrollingCruveToken.token(), kNamespace + "scrollingCurve");
  HxToken rebuilt(HxSimAnalysis::ns);
  rebuilt += std::string("time");
  EXPECT_TRUE(rebuilt == HxSimAnalysis::HxTimeToken);
  EXPECT_FALSE(HxSimAnalysis::HxTimeToken == HxSimAnalysis::HxTitleToken ||
               HxSimAnalysis::ns == HxSimAnalysis::HxTimeToken);

  const std::string text = writeToString(HxXmlBasicType<double>(2.5), HxSimAnalysis::HxTimeToken);
  EXPECT_EQ(text, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- test -->\n<sm:time xmlns:sm=\"" + kNamespace +
                      "\">2.5</sm:time>\n");
  HxXmlReader reader;
  ASSERT_TRUE(reader.openMemory(text, "tokens.xml") && reader.next() == HxXmlReader::StartElement);
  EXPECT_TRUE(reader.name() == HxSimAnalysis::HxTimeToken);
}

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
  const std::string schemaPath = testing::TempDir() + std::to_string(::getpid()) + "_hx_container_schema.xsd";
  const std::string instancePath = testing::TempDir() + std::to_string(::getpid()) + "_hx_container_instance.xml";

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
