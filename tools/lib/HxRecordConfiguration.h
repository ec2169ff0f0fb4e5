#pragma once
// Reading hxrecord's configuration documents: a capture configuration, a writer list.

#include <string>
#include <vector>

#include "framework/HxTypes.h"
#include "framework/HxXmlObject.h"

/// Reads one configuration document (a capture configuration, a writer list) into `root`.
/// `text` null reads the file `name`; otherwise `text` is read and `name` names it in messages.
/// The root element must be `rootToken`. Every problem becomes one message naming the file and
/// line ("file:line: text") in `errors`, and the result is false; the library's warnings about
/// a document that reads go to `warnings` without failing.
HxBoolean hxReadConfiguration(const std::string& name, const std::string* text, const HxToken& rootToken,
                              HxXmlObject& root, std::vector<std::string>& errors, std::vector<std::string>& warnings);
