// Hx::Print: messages reach the sink whole, at the end of the full expression, with their type
// and the reporting function's signature; captures nest and restore.
#include "framework/HxPrint.h"

#include <gtest/gtest.h>

#include <string>

namespace {

void reportBadIndex(unsigned int index) {
  Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__) << "bad index (" << index << ")\n";
}

// A message reaches the innermost capture (or its handler) once its stream object is gone, with
// type, context and text; leaving a capture restores the previous sink, finally the default
// "[type] context: text" on standard error (a line end added where missing); setSink hands back
// the sink it replaces.
TEST(HxPrint, SinksReceiveWholeMessagesWithTypeAndContext) {
  testing::internal::CaptureStderr();
  {
    Hx::ScopedPrintCapture outer;
    {
      Hx::ScopedPrintCapture inner;
      {
        auto message = Hx::Print::instance().ostream(Hx::Print::Warning, "context");
        message << "pieces " << 1 << ' ' << 2.5;
        EXPECT_TRUE(inner.records().empty());  // not yet delivered
      }
      reportBadIndex(1234567);
      std::string seen;
      for (const auto& record : inner.records()) seen += std::to_string(record.type) + " " + record.context + ": ";
      EXPECT_EQ(seen, "3 context: 4 void {anonymous}::reportBadIndex(unsigned int): ");
      EXPECT_EQ(inner.text(), "pieces 1 2.5bad index (1234567)\n");
      inner.clear();
      EXPECT_TRUE(inner.records().empty());
    }
    {
      std::string routed;
      Hx::ScopedPrintCapture handler([&routed](Hx::Print::PrintType type, const std::string&, const std::string& text) {
        routed += std::to_string(type) + " " + text;
      });
      reportBadIndex(5);
      EXPECT_EQ(routed, "4 bad index (5)\n");
      EXPECT_TRUE(handler.records().empty());
    }
    reportBadIndex(2);
    EXPECT_EQ(outer.text(), "bad index (2)\n");
  }
  reportBadIndex(3);
  Hx::Print::instance().ostream(Hx::Print::Warning, "f()") << "no line end";
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "[Error] void {anonymous}::reportBadIndex(unsigned int): bad index (3)\n[Warning] f(): no line end\n");

  int calls = 0;
  const Hx::Print::Sink previous = Hx::Print::instance().setSink(
      [&calls](Hx::Print::PrintType, const std::string&, const std::string&) { ++calls; });
  reportBadIndex(4);
  const Hx::Print::Sink mine = Hx::Print::instance().setSink(previous);
  ASSERT_TRUE(static_cast<bool>(mine));
  mine(Hx::Print::Info, "", "");
  EXPECT_EQ(calls, 2);
}

}  // namespace
