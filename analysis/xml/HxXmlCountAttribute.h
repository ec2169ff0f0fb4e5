#pragma once
/// \file
/// The "count" attribute of the serialisable vectors: parsing and the reservation it asks for.

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <vector>

/// Helpers shared by HxXmlVectorType and HxXmlVariableVectorType for the count attribute.
///
/// A count attribute is a hint from the file: the vectors reserve room for that many elements
/// before reading them, and the homogeneous vector compares it with the number actually read.
/// Because the value comes from a file, it is never trusted with memory:
/// - a count below 0 or above `maxReservableCount` (the largest count the toolkit's vectors
///   accept, as on its 32-bit platforms) cannot be reserved; the caller reports it and reads on
///   without reserving;
/// - a count that can be reserved reserves at most `maxReservedBytes` ahead; a vector that
///   really holds more elements grows while it reads them;
/// - a reservation the standard vector refuses (length error or lack of memory) is caught and
///   treated like a count that cannot be reserved. No exception leaves a read.
namespace HxXmlCountAttribute {

/// Largest count for which room is reserved (2^30 - 1).
constexpr long maxReservableCount = 1073741823L;
/// Largest number of bytes reserved ahead of reading from one count attribute.
constexpr std::size_t maxReservedBytes = std::size_t(16) << 20;

/// The value of a count attribute: a decimal integer as the standard string-to-long conversion
/// reads it (leading blanks and a sign allowed, reading stops at the first other character,
/// 0 when there is no number, saturated at the range of long). A null text gives 0.
inline long parse(const char* text) {
  if (text == nullptr) {
    return 0;
  }
  return std::strtol(text, nullptr, 10);
}

/// Reserves room in `slots` for `count` elements as described above. Returns false, reserving
/// nothing, when the count cannot be reserved; true otherwise (also when the vector already had
/// the room).
template <class Element>
bool reserve(std::vector<Element>& slots, long count) {
  if (count < 0 || count > maxReservableCount) {
    return false;
  }
  const std::size_t ceiling = std::max<std::size_t>(1, maxReservedBytes / sizeof(Element));
  const std::size_t wanted = std::min(static_cast<std::size_t>(count), ceiling);
  if (wanted <= slots.capacity()) {
    return true;
  }
  try {
    slots.reserve(wanted);
  } catch (const std::length_error&) {
    return false;
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

}  // namespace HxXmlCountAttribute
