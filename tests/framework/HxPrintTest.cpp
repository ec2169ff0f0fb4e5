// Hx::Print: messages reach the sink whole, at the end of the full expression, with their type
// and the reporting function's signature; captures nest and restore.
#include "framework/HxPrint.h"

#include <gtest/gtest.h>

#include <string>

namespace {

void reportBadIndex(unsigned int index) {
  Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__) << "bad index (" << index << ")\n";
}

// A message is delivered once its stream object is gone, with type, context and text.
TEST(HxPrint, CaptureReceivesTypeContextAndTextAtTheEndOfTheExpression) {
  Hx::ScopedPrintCapture capture;
  {
    auto message = Hx::Print::instance().ostream(Hx::Print::Warning, "context");
    message << "pieces " << 1 << ' ' << 2.5;
    EXPECT_TRUE(capture.records().empty());  // not yet delivered
  }
  reportBadIndex(1234567);
  ASSERT_EQ(capture.records().size(), 2u);
  EXPECT_EQ(capture.records()[0].type, Hx::Print::Warning);
  EXPECT_EQ(capture.records()[0].context, "context");
  EXPECT_EQ(capture.records()[1].type, Hx::Print::Error);
  EXPECT_EQ(capture.records()[1].context, "void {anonymous}::reportBadIndex(unsigned int)");
  EXPECT_EQ(capture.text(), "pieces 1 2.5bad index (1234567)\n");
  capture.clear();
  EXPECT_TRUE(capture.records().empty());
}

// The innermost capture receives; leaving it restores the previous sink, finally the default
// "[type] context: text" on standard error; setSink hands back the sink it replaces.
TEST(HxPrint, CapturesNestAndTheDefaultSinkWritesToStandardError) {
  testing::internal::CaptureStderr();
  {
    Hx::ScopedPrintCapture outer;
    {
      Hx::ScopedPrintCapture inner;
      reportBadIndex(1);
      EXPECT_EQ(inner.records().size(), 1u);
    }
    reportBadIndex(2);
    ASSERT_EQ(outer.records().size(), 1u);
    EXPECT_EQ(outer.records()[0].text, "bad index (2)\n");
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

  testing::internal::CaptureStderr();
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
