// Hx::Print: messages reach the sink whole, at the end of the full expression, with their type
// and the reporting function's signature; captures nest and restore.
#include "framework/HxPrint.h"

#include <gtest/gtest.h>

#include <string>

namespace {

void reportBadIndex(unsigned int index) {
  Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__) << "bad index (" << index << ")\n";
}

// A message reaches the innermost capture once its stream object is gone, with type, context and
// text; leaving a capture restores the previous sink, finally the default "[type] context: text"
// on standard error (a line end added where missing). (A capture with a handler is how hxrecord
// reads configurations: its failure table goes through one.)
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
    reportBadIndex(2);
    EXPECT_EQ(outer.text(), "bad index (2)\n");
  }
  reportBadIndex(3);
  Hx::Print::instance().ostream(Hx::Print::Warning, "f()") << "no line end";
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "[Error] void {anonymous}::reportBadIndex(unsigned int): bad index (3)\n[Warning] f(): no line end\n");
}

}  // namespace
