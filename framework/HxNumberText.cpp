#include "framework/HxNumberText.h"

#include <charconv>
#include <cmath>
#include <system_error>

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v'; }

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

}  // namespace

std::string HxINT2STRING(unsigned int value, unsigned int radix) {
  std::string out;
  HxINT2STRING(value, radix, out);
  return out;
}

void HxINT2STRING(unsigned int value, unsigned int radix, std::string& out) {
  if (radix < 2 || radix > 36) radix = 10;
  char buffer[40];
  const std::to_chars_result result = std::to_chars(buffer, buffer + sizeof buffer, value, static_cast<int>(radix));
  out.assign(buffer, result.ptr);
}

void HxDOUBLE2STRING(double value, std::string& out) {
  char buffer[HxDoubleTextCapacity];
  out.assign(buffer, HxDOUBLE2STRING(value, buffer));
}

std::string HxDOUBLE2STRING(double value) {
  char buffer[HxDoubleTextCapacity];
  return std::string(buffer, HxDOUBLE2STRING(value, buffer));
}

bool HxSTRING2DOUBLE(std::string_view text, double& value) {
  text = trimmed(text);
  // from_chars takes no leading '+'; accept one in front of a digit, a point or "inf".
  if (text.size() > 1 && text.front() == '+' && text[1] != '-' && text[1] != '+') text.remove_prefix(1);
  if (text.empty()) return false;
  double parsed = 0.0;
  const std::from_chars_result result = std::from_chars(text.data(), text.data() + text.size(), parsed);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return false;
  value = parsed;
  return true;
}

bool HxSTRING2UINT(std::string_view text, unsigned int& value) {
  text = trimmed(text);
  if (text.empty() || text.front() < '0' || text.front() > '9') return false;
  unsigned int parsed = 0;
  const std::from_chars_result result = std::from_chars(text.data(), text.data() + text.size(), parsed, 10);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return false;
  value = parsed;
  return true;
}
