#pragma once
/// \file
/// HxHdf5ObjectFactory: makes this library's objects for a reader of configuration files.

#include <vector>

#include "framework/HxToken.h"
#include "framework/HxXmlReader.h"

/// The object factory of libhxSimulationHdf5: makes an HxHdf5OutputWriter for the element name
/// "hdf5OutputWriter", so that a writer list read with it may name the HDF5 writer beside the
/// five writers the writer list itself knows.
///
///     HxHdf5ObjectFactory factory;
///     HxXmlReader reader;
///     reader.setObjectFactory(&factory);     // must outlive the reading
///     reader.openFile("writers.xml");
///     reader.readObject(writers);            // an HxOutputWriterVector
class HxHdf5ObjectFactory : public HxXmlObjectFactory {
 public:
  /// A new HxHdf5OutputWriter for its token, owned by the caller; null for any other token.
  HxXmlObject* newObjectFromToken(const HxToken& token) const override;
  /// The element names it makes objects for.
  const std::vector<HxToken>& tokens() const;
};
