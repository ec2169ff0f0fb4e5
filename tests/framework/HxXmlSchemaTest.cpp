// The schema is a real XML Schema: xmllint accepts instances the writer produces and rejects
// instances that break it.
#include "framework/HxXmlSchema.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "framework/HxXmlWriter.h"
#include "tests/framework/HxFrameworkTestTypes.h"

namespace {

using HxFrameworkTest::filledSample;
using HxFrameworkTest::Sample;

// A compound holding a compound that holds compounds, with a member of a foreign namespace.
class Outer : public HxXmlCompoundType {
 public:
  Sample first;
  Sample second;
  HxXmlBasicType<double> foreign;
  HxXmlBasicType<bool> flag;

  HxXmlObject* clone() const override { return new Outer(*this); }
  HxXmlObject* newObject() const override { return new Outer(); }
  const HxToken& token() const override {
    static const HxToken token = HxFrameworkTest::testToken("outer");
    return token;
  }
  HxBoolean equality(const HxXmlObject* other) const override { return dynamic_cast<const Outer*>(other); }
  void registerComponents() override {
    registerAttributeComponent(HxToken("flag"), &flag);
    registerComponent(HxFrameworkTest::testToken("first"), &first);
    registerComponent(HxFrameworkTest::testToken("second"), &second);
    registerComponent(HxToken("http://example.org/other#foreign"), &foreign);
  }
};

class HxXmlSchemaFiles : public testing::Test {
 protected:
  void SetUp() override {
    if (std::system("command -v xmllint >/dev/null 2>&1") != 0) GTEST_SKIP() << "xmllint is not installed";
    schemaPath_ = testing::TempDir() + "hx_schema_test.xsd";
    instancePath_ = testing::TempDir() + "hx_schema_instance.xml";
  }
  void TearDown() override {
    std::remove(schemaPath_.c_str());
    std::remove(instancePath_.c_str());
  }
  bool validates(const std::string& instance) {
    {
      std::ofstream file(instancePath_, std::ios::binary);
      file << instance;
    }
    const std::string command =
        "xmllint --noout --schema '" + schemaPath_ + "' '" + instancePath_ + "' >/dev/null 2>&1";
    return std::system(command.c_str()) == 0;
  }
  std::string schemaPath_;
  std::string instancePath_;
};

TEST_F(HxXmlSchemaFiles, WriterOutputValidatesAgainstTheSchema) {
  Outer outer;
  outer.first = filledSample();
  outer.second.time = -1.0 / 0.0;
  outer.second.inner.gain = 0.0 / 0.0;
  outer.second.mode = 5u;  // no name: written as decimal
  outer.foreign = 2.0;
  ASSERT_TRUE(outer.createSchema(schemaPath_, outer.token()));

  std::ostringstream stream;
  {
    HxXmlWriter writer("schema test", stream);
    writer.writeObject(outer);
  }
  const std::string instance = stream.str();
  EXPECT_TRUE(validates(instance)) << instance;

  // Breaking the instance breaks validation: the schema says something.
  std::string badNumber = instance;
  badNumber.replace(badNumber.find("<ns1:time>0.1</ns1:time>"), 24, "<ns1:time>fast</ns1:time>");
  EXPECT_FALSE(validates(badNumber));
  std::string badEnum = instance;
  badEnum.replace(badEnum.find("stopped"), 7, "flying!");
  EXPECT_FALSE(validates(badEnum));
  std::string unknownChild = instance;
  unknownChild.replace(unknownChild.find("<ns1:count>"), 11, "<ns1:bogus/><ns1:count>");
  EXPECT_FALSE(validates(unknownChild));
  std::string unknownAttribute = instance;
  unknownAttribute.replace(unknownAttribute.find(" id=\"42\""), 8, " nope=\"42\"");
  EXPECT_FALSE(validates(unknownAttribute));
}

TEST(HxXmlSchema, DocumentShape) {
  std::ostringstream stream;
  HxXmlSchema schema(stream);
  ASSERT_TRUE(schema.writeDocument(HxXmlBasicType<unsigned int>(), HxToken("urn:x#count")));
  EXPECT_EQ(stream.str(),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<xs:schema xmlns:xs=\"http://www.w3.org/2001/XMLSchema\" targetNamespace=\"urn:x#\" "
            "elementFormDefault=\"unqualified\" attributeFormDefault=\"unqualified\">\n"
            "  <xs:element name=\"count\">\n"
            "    <xs:simpleType>\n"
            "      <xs:restriction base=\"xs:unsignedInt\"/>\n"
            "    </xs:simpleType>\n"
            "  </xs:element>\n"
            "</xs:schema>\n");
}

}  // namespace
