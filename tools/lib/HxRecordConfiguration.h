#pragma once
// Reading hxrecord's configuration documents: a capture configuration, a writer list.

#include <string>
#include <vector>

#include "framework/HxTypes.h"
#include "framework/HxXmlObject.h"

/// Reads one configuration document (a capture configuration, a writer list) into `root`. A
/// writer list may name the HDF5 writer ("hdf5OutputWriter", made by libhxSimulationHdf5's
/// object factory) beside the five writers the library's writer list knows.
/// `text` null reads the file `name`; otherwise `text` is read and `name` names it in messages.
/// The root element must be `rootToken`.
///
/// The document is first checked against the form of `root` (hxValidateConfiguration), more
/// strictly than the library reads it: an unknown element or attribute, an element given twice,
/// a quantity listed twice or at another level, a "count" that differs from what the element
/// holds, a value that is not of its type and a tolerance that is not a finite number >= 0 are
/// errors. Only a document without such faults is read by the library, and anything the library
/// prints while reading it (its warnings included) is an error too.
///
/// Every problem becomes one message "file:line: text" in `errors` (at most 20 of each kind,
/// then one line saying how many more there were), and the result is false. Nothing is added to
/// `warnings`.
HxBoolean hxReadConfiguration(const std::string& name, const std::string* text, const HxToken& rootToken,
                              HxXmlObject& root, std::vector<std::string>& errors, std::vector<std::string>& warnings);
