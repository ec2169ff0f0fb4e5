#pragma once
/// \file
/// The parts that HxXmlVectorType and HxXmlVariableVectorType share in writing: the "count"
/// attribute, and opening and closing the writer of their streaming interface.

#include <ios>
#include <ostream>
#include <string>

#include "framework/HxToken.h"
#include "framework/HxTypes.h"
#include "framework/HxXmlBasicType.h"
#include "framework/HxXmlTokens.h"
#include "framework/HxXmlWriter.h"

/// Writing helpers of the serialisable vectors.
namespace HxXmlVectorStream {

/// Adds the "count" attribute with the value `count` to the element being written.
inline void writeCount(HxXmlWriter& writer, HxU32 count) {
  writer.addAttribute(HxXml::HxCountToken);
  HxXmlBasicType<HxU32>(count).write(writer);
}

/// Starts streaming into `stream`: creates a writer named `name` on the heap, stored in
/// `writer`, and starts the element `token` with it. Returns false, creating nothing, when the
/// stream has failed.
inline bool open(std::ostream& stream, HxXmlWriter*& writer, const std::string& name, const HxToken& token) {
  if ((stream.rdstate() & (std::ios::badbit | std::ios::failbit)) != 0) return false;
  writer = new HxXmlWriter(name, stream);
  writer->startElement(token);
  return true;
}

/// Ends the `openElements` elements still open, deletes the writer and nulls the caller's
/// pointer. False for a null writer.
inline bool close(HxXmlWriter*& writer, int openElements) {
  if (writer == nullptr) return false;
  for (int i = 0; i < openElements; ++i) writer->endElement();
  delete writer;
  writer = nullptr;
  return true;
}

}  // namespace HxXmlVectorStream
