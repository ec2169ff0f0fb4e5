#include "analysis/xml/HxSimAnalysisTokens.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "framework/HxXmlBasicType.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlWriter.h"

namespace {

const std::string kNamespace = "http://www.hxtoolkit.org/namespace/sm#";

// A token's text is the namespace URI immediately followed by its local name (the misspelt
// constant included); tokens rebuilt from a local name compare equal; the namespace itself
// differs from the tokens.
TEST(HxSimAnalysisTokens, FullTextIsNamespaceFollowedByLocalName) {
  EXPECT_EQ(HxSimAnalysis::ns.token(), kNamespace);
  EXPECT_EQ(HxSimAnalysis::HxTimeToken.token(), "http://www.hxtoolkit.org/namespace/sm#time");
  EXPECT_EQ(HxSimAnalysis::HxTimeToken.namespaceUri(), kNamespace);
  EXPECT_EQ(HxSimAnalysis::HxTimeToken.localName(), "time");
  EXPECT_EQ(HxSimAnalysis::HxScrollingCruveToken.token(), kNamespace + "scrollingCurve");
  HxToken rebuilt(HxSimAnalysis::ns);
  rebuilt += std::string("time");
  EXPECT_TRUE(rebuilt == HxSimAnalysis::HxTimeToken);
  EXPECT_FALSE(HxSimAnalysis::HxTimeToken == HxSimAnalysis::HxTitleToken);
  EXPECT_FALSE(HxSimAnalysis::ns == HxSimAnalysis::HxTimeToken);
}

// Module tokens are written with the registered "sm" prefix and its declaration, and read back
// to the same full text.
TEST(HxSimAnalysisTokens, WrittenWithPrefixAndReadBack) {
  std::ostringstream out;
  {
    HxXmlWriter writer("tokens", out);
    writer.writeObject(HxXmlBasicType<double>(2.5), HxSimAnalysis::HxTimeToken);
  }
  const std::string text = out.str();
  EXPECT_NE(text.find("<sm:time"), std::string::npos) << text;
  EXPECT_NE(text.find("xmlns:sm=\"" + kNamespace + "\""), std::string::npos) << text;

  HxXmlReader reader;
  ASSERT_TRUE(reader.openMemory(text, "tokens.xml"));
  ASSERT_EQ(reader.next(), HxXmlReader::StartElement);
  EXPECT_TRUE(reader.name() == HxSimAnalysis::HxTimeToken);
}

}  // namespace
