// The schema is a real XML Schema: xmllint accepts instances the writer produces and rejects
// instances that break it.
#include "framework/HxXmlSchema.h"

#include <gtest/gtest.h>

#include "tests/framework/HxFrameworkTestTypes.h"

namespace {

using namespace HxFrameworkTest;

// The writer's output (special doubles, an enum value without a name, a nested compound, a
// member of a foreign namespace) validates; a bad number, enum name, child or attribute does not.
TEST(HxXmlSchema, WriterOutputValidatesAgainstTheSchema) {
  if (!xmllintAvailable()) GTEST_SKIP() << "xmllint is not installed";
  const std::string schemaPath = testing::TempDir() + "hx_schema_test.xsd";
  Sample sample = filledSample();
  sample.time = -1.0 / 0.0;
  sample.inner.gain = 0.0 / 0.0;
  sample.mode = 5u;  // no name: written as decimal
  ASSERT_TRUE(sample.createSchema(schemaPath, sample.token()));
  const std::string instance = written(sample);
  const std::string validate = "--schema '" + schemaPath + "'";
  EXPECT_TRUE(xmllintAccepts(instance, validate)) << instance;

  const struct {
    std::string from, to;
  } breaks[] = {{">4294967295<", ">fast<"},
                {"millimetre", "inch"},
                {"<ns1:count>", "<ns1:bogus/><ns1:count>"},
                {" id=\"42\"", " nope=\"42\""}};
  for (const auto& change : breaks) {
    SCOPED_TRACE(change.to);
    std::string broken = instance;
    ASSERT_NE(broken.find(change.from), std::string::npos);
    broken.replace(broken.find(change.from), change.from.size(), change.to);
    EXPECT_FALSE(xmllintAccepts(broken, validate));
  }
  std::remove(schemaPath.c_str());
}

// The exact document for a scalar root: target namespace, qualification, simple type.
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
