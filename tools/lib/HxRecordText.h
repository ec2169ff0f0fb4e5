#pragma once
// How hxrecord writes seconds and library messages into its own messages.

#include <string>
#include <vector>

#include "framework/HxTypes.h"

/// Seconds as short text: "0.01", "8", "1.5e-05" (six significant digits).
std::string hxSecondsText(double seconds);

/// A library message on one line: its line breaks, tabs and runs of blanks become single blanks,
/// with none at either end.
std::string hxOneLine(const std::string& text);

/// `text` in single quotes for a message, with its control characters shown as \n, \t or \xHH,
/// so that it cannot break the message's line.
std::string hxQuotedForMessage(const std::string& text);

/// "a", "a and b", "a, b and c".
std::string hxJoinedList(const std::vector<std::string>& items);

/// The whole text of a file; empty when it cannot be read.
std::string hxReadTextFile(const std::string& path);

/// The line (from 1) of `document`, an XML text, where `text` first appears as element content
/// (as it stands, with XML's escapes, or as a double-quoted data scalar); 0 when it does not.
HxU32 hxLineOfXmlText(const std::string& document, const std::string& text);
