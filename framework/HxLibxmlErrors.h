#pragma once
/// \file
/// Where libxml2's messages go while HxXmlReader reads, and how they are worded. Internal to
/// framework/.

#include <libxml/xmlerror.h>

#include <string>

/// While it lives, libxml2's structured errors (also those that no parser reports, of the
/// input's encoding, say) go to `handler` with `context`, and its generic messages, which repeat
/// them, are dropped: nothing reaches standard error. The previous handlers come back at the end.
class HxLibxmlErrorRoute {
 public:
  HxLibxmlErrorRoute(void* context, xmlStructuredErrorFunc handler);
  ~HxLibxmlErrorRoute();
  HxLibxmlErrorRoute(const HxLibxmlErrorRoute&) = delete;
  HxLibxmlErrorRoute& operator=(const HxLibxmlErrorRoute&) = delete;

 private:
  xmlStructuredErrorFunc structured_;
  void* structuredContext_;
  xmlGenericErrorFunc generic_;
  void* genericContext_;
};

/// A libxml2 message on one line, without the libxml2 function name that some begin with
/// ("xmlParseCharRef: invalid xmlChar value 0"); "malformed document" for none.
std::string hxLibxmlMessage(const char* text);
