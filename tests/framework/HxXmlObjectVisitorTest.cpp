// The visitor walks compounds in registration order (attributes first), fills the description
// list, and obeys the entry hook and the depth gate.
#include "framework/HxXmlObjectVisitor.h"

#include <gtest/gtest.h>

#include "tests/framework/HxFrameworkTestTypes.h"

namespace {

using HxFrameworkTest::Sample;

class Recorder : public HxXmlObjectVisitor {
 public:
  std::vector<std::string> entered;  // "depth:local name"
  std::vector<std::string> exited;
  bool descendIntoInner = true;

  HxBoolean enter(const HxXmlObject* object) override {
    const std::string& token = descriptions().at(1);
    entered.push_back(std::to_string(depth()) + ":" + token.substr(token.rfind('#') + 1));
    EXPECT_EQ(currentObject(), object);
    return descendIntoInner || object->token() != HxFrameworkTest::Inner::classToken();
  }
  void exit(const HxXmlObject* object) override { exited.push_back(object->token().token()); }
};

// Every member is entered under its own token at its depth; exit comes after the children.
TEST(HxXmlObjectVisitor, WalksCompoundsInRegistrationOrder) {
  Recorder recorder;
  recorder.setCurrentToken(Sample::classToken());
  Sample().accept(&recorder);
  EXPECT_EQ(recorder.entered, (std::vector<std::string>{"0:sample", "1:id", "1:scale", "1:unit", "1:name", "1:time",
                                                        "1:count", "1:enabled", "1:mode", "1:inner", "2:gain",
                                                        "2:label", "1:version", "1:foreign"}));
  EXPECT_EQ(recorder.exited.size(), recorder.entered.size());
  EXPECT_EQ(recorder.exited.back(), Sample::classToken().token());
  EXPECT_EQ(recorder.depth(), 0);
  // The description list of the last object: its type name and its token.
  ASSERT_EQ(recorder.descriptions().size(), 2u);
  EXPECT_NE(recorder.descriptions()[0].find("HxXmlBasicType"), std::string::npos);
}

// A false entry hook or the depth gate keeps the visitor out of the children.
TEST(HxXmlObjectVisitor, EntryHookAndDepthGateStopTheDescent) {
  Recorder noInner;
  noInner.descendIntoInner = false;
  Sample().accept(&noInner);
  EXPECT_EQ(noInner.entered.size(), 12u);  // gain and label not visited

  Recorder shallow;
  shallow.setMaxDepth(0);
  Sample().accept(&shallow);
  EXPECT_EQ(shallow.entered, (std::vector<std::string>{"0:"}));
}

}  // namespace
