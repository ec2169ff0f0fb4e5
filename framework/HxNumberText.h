#pragma once
/// \file
/// Number-to-text conversions of the toolkit, independent of the locale.

#include <charconv>
#include <cmath>
#include <string>
#include <string_view>

/// Longest text HxDOUBLE2STRING can produce, with room to spare ("-2.2250738585072014e-308").
constexpr int HxDoubleTextCapacity = 32;

/// Decimal (or other radix, 2 to 36) text of an unsigned value; an unsupported radix falls
/// back to 10.
std::string HxINT2STRING(unsigned int value, unsigned int radix);
/// As above, assigned into `out` (keeps its capacity: no allocation once it is large enough).
void HxINT2STRING(unsigned int value, unsigned int radix, std::string& out);

/// The shortest text that reads back (with strtod or HxSTRING2DOUBLE) to exactly the same
/// double. Infinities are written "inf" and "-inf", NaN "nan"; strtod reads all three back.
std::string HxDOUBLE2STRING(double value);
/// As above, assigned into `out` (no allocation once `out` has capacity for the text).
void HxDOUBLE2STRING(double value, std::string& out);
/// As above, into a caller's buffer of at least HxDoubleTextCapacity chars; returns the end of
/// the text (not terminated). Inline: a recorder formats every value of every sample with it.
inline char* HxDOUBLE2STRING(double value, char* buffer) {
  // NaN gets one spelling whatever its sign and payload.
  if (std::isnan(value)) {
    buffer[0] = 'n';
    buffer[1] = 'a';
    buffer[2] = 'n';
    return buffer + 3;
  }
  // Shortest round-trip form; "inf" and "-inf" come out of to_chars as they are.
  return std::to_chars(buffer, buffer + HxDoubleTextCapacity, value).ptr;
}

/// Parses a whole text (surrounding blanks allowed) as a double: decimal or exponent form,
/// "inf", "-inf", "nan". Returns false, leaving `value` alone, for anything else.
bool HxSTRING2DOUBLE(std::string_view text, double& value);
/// Parses a whole text (surrounding blanks allowed) as an unsigned 32-bit decimal value.
/// Returns false for a sign, other characters or overflow.
bool HxSTRING2UINT(std::string_view text, unsigned int& value);
