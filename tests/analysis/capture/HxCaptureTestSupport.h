#pragma once
// Helpers shared by the capture tests: flag vectors and XML round trips through memory.

#include <initializer_list>

#include "analysis/types/HxDataCaptureType.h"
#include "tests/framework/HxFrameworkTestTypes.h"

namespace HxCaptureTest {

inline HxDataCaptureType::FlagVector flags(std::initializer_list<bool> values) {
  HxDataCaptureType::FlagVector result;
  for (bool value : values) result.pushBack(value);
  return result;
}

using HxFrameworkTest::readFromString;
using HxFrameworkTest::writeToString;

}  // namespace HxCaptureTest
