#pragma once
/// \file
/// Definitions shared by every concrete data capture type; included only by the source files
/// of analysis/types/.

#include <string>

#include "analysis/types/HxDataCaptureType.h"

/// Defines the members declared by HX_DATA_CAPTURE_TYPE_MEMBERS for `ClassName`: its token
/// (`TokenConstant`), its description, its level code and its column labels (the variadic
/// list, in column order; their number is the class's `m_theDataSize`). Copying copies every
/// member, working state included.
#define HX_DATA_CAPTURE_TYPE_DEFINITIONS(ClassName, TokenConstant, Description, Level, ...)          \
  namespace {                                                                                    \
  const char* const ClassName##Labels[] = {__VA_ARGS__};                                         \
  }                                                                                              \
  const std::string ClassName::m_theDescription(Description);                                    \
  const HxU32 ClassName::m_theDataSize = static_cast<HxU32>(sizeof(ClassName##Labels) / sizeof(ClassName##Labels[0])); \
  ClassName::ClassName() { initializeColumns(m_theDataSize, ClassName##Labels); }              \
  ClassName::ClassName(const ClassName& other) = default;                                        \
  ClassName& ClassName::operator=(const ClassName& other) = default;                             \
  ClassName::~ClassName() = default;                                                             \
  const HxToken& ClassName::classToken() { return TokenConstant; }                               \
  HxXmlObject* ClassName::creator() { return new ClassName(); }                                  \
  HxXmlObject* ClassName::clone() const { return new ClassName(*this); }                         \
  HxXmlObject* ClassName::newObject() const { return new ClassName(); }                          \
  HxBoolean ClassName::equality(const HxXmlObject* other) const {                                \
    const ClassName* same = dynamic_cast<const ClassName*>(other);                               \
    return same != nullptr && *this == *same;                                                    \
  }                                                                                              \
  const HxToken& ClassName::token() const { return classToken(); }                               \
  const std::string& ClassName::description() const { return m_theDescription; }               \
  HxU32 ClassName::dataSize() const { return m_theDataSize; }                                    \
  HxU32 ClassName::type() const { return Level; }

/// Level codes of `HxDataCaptureType::type()`.
namespace HxDataCaptureLevel {
/// Captured once per manipulator.
constexpr HxU32 Manipulator = 0;
/// Captured per link (joint) of a manipulator.
constexpr HxU32 Link = 1;
/// Captured per end effector of a manipulator.
constexpr HxU32 EndEffector = 2;
}  // namespace HxDataCaptureLevel
