#pragma once
/// \file
/// Scalar types shared by every layer of the toolkit.

#include <cstdint>

/// Unsigned 32-bit integer used for sizes, indices and counts.
using HxU32 = std::uint32_t;

/// Boolean result type of the toolkit's operations.
using HxBoolean = bool;
