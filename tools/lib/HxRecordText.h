#pragma once
// How hxrecord writes seconds and library messages into its own messages.

#include <string>

/// Seconds as short text: "0.01", "8", "1.5e-05" (six significant digits).
std::string hxSecondsText(double seconds);

/// A library message on one line: its line breaks, tabs and runs of blanks become single blanks,
/// with none at either end.
std::string hxOneLine(const std::string& text);
