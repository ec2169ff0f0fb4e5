#pragma once
// Checking hxrecord's configuration documents more strictly than the library reads them.

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "framework/HxToken.h"
#include "framework/HxXmlObject.h"
#include "tools/lib/HxRecordMessages.h"

class HxXmlReader;

/// The name of a token as a user writes it: the local name of a module token, any other
/// token's whole text.
std::string hxDisplayToken(const HxToken& token);

/// Checks the element that `reader` is on (the start of a document's root element) against the
/// form of `root`, which it does not change, and adds one message per fault to `messages`:
/// an element or attribute that is not known at its place (with the known names and the
/// closest one); an element given twice where one is read, and a quantity listed twice in one
/// list; a quantity of another level than its list's; a vector whose "count" differs from the
/// elements it holds; a value that does not read as its type, and a tolerance that is not a
/// finite number >= 0; text between elements. Leaves the reader on the root element's end, or
/// on the error when the document is malformed (`reader.hasError()`).
///
/// A writer list may also hold the elements `factoryTokens` names, which the reader's object
/// factory makes (as the library reads them) and which are checked against the objects it makes.
void hxValidateConfiguration(HxXmlReader& reader, HxXmlObject& root, HxRecordMessages& messages,
                             const std::vector<HxToken>& factoryTokens = {});
