#pragma once
// Row buffers shared by the text-based writers (internal to analysis/writers).

#include <cstddef>
#include <string>
#include <vector>

#include "framework/HxNumberText.h"

namespace HxWriterRow {

/// Longest text of one sample value: a real (HxDOUBLE2STRING) or the path-point index.
constexpr std::size_t kValueTextCapacity = HxDoubleTextCapacity;

/// Clears `row` and makes room for the fields plus `extraPerField` characters of decoration
/// each. The first sample reserves room for the longest values a sample can hold, so later
/// samples never grow the buffer (no allocation per sample once recording runs).
inline void prepare(std::string& row, const std::vector<std::string>& fields, std::size_t extraPerField) {
  row.clear();
  std::size_t needed = 2;
  for (const std::string& field : fields) needed += field.size() + extraPerField;
  if (row.capacity() < needed) {
    const std::size_t longestSample = fields.size() * (kValueTextCapacity + extraPerField) + 2;
    row.reserve(needed > longestSample ? needed : longestSample);
  }
}

}  // namespace HxWriterRow
