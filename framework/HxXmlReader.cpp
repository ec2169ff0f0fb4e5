#include "framework/HxXmlReader.h"

#include <libxml/globals.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>
#include <libxml/xmlreader.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string_view>
#include <vector>

#include "framework/HxLibxmlErrors.h"
#include "framework/HxPrint.h"
#include "framework/HxXmlAttributeScan.h"
#include "framework/HxXmlObject.h"

HxXmlObjectFactory::~HxXmlObjectFactory() = default;

namespace {

// Parser options: no network, CDATA as plain text, line numbers beyond 65535. Entity
// substitution (NOENT), DTD loading (DTDLOAD, DTDATTR) and lifting the size and depth limits
// (HUGE) are deliberately absent.
constexpr int kParseOptions = XML_PARSE_NONET | XML_PARSE_NOCDATA | XML_PARSE_BIG_LINES;

void initialiseLibxml() {
  static std::once_flag once;
  std::call_once(once, [] { xmlInitParser(); });
}

std::string_view view(const xmlChar* text) {
  return text ? std::string_view(reinterpret_cast<const char*>(text)) : std::string_view();
}

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

}  // namespace

struct HxXmlReader::Impl {
  struct Attribute {
    HxToken name;
    std::string value;
  };

  xmlTextReaderPtr reader = nullptr;
  std::string fileName;
  std::string memory;         // the document text for openMemory; libxml2 reads it in place
  std::FILE* file = nullptr;  // the file of openFile, closed by libxml2 through closeFile
  HxXmlAttributeScan attributeScan;

  int kind = EndOfDocument;
  int depth = 0;
  int line = 0;
  bool started = false;
  HxToken name;
  std::string text;
  std::vector<Attribute> attributes;  // entries are reused between elements
  int attributeCount = 0;
  int currentAttribute = -1;

  bool dataMode = false;
  std::size_t scan = 0;  // position of the data-mode scanner in `text`
  std::string scalar;

  bool error = false;
  std::string errorMessage;
  const HxXmlObjectFactory* factory = nullptr;

  ~Impl() { close(); }

  void close() {
    if (reader) xmlFreeTextReader(reader);
    reader = nullptr;
    memory.clear();
    file = nullptr;
    attributeScan = HxXmlAttributeScan();
    kind = EndOfDocument;
    depth = 0;
    line = 0;
    started = false;
    attributeCount = 0;
    currentAttribute = -1;
    dataMode = false;
    error = false;
    errorMessage.clear();
  }

  // Records the first error as "file:line: text" and reports it once.
  void fail(int errorLine, std::string_view message) {
    kind = Error;
    dataMode = false;
    if (error) return;
    error = true;
    while (!message.empty() && (message.back() == '\n' || message.back() == '\r')) message.remove_suffix(1);
    errorMessage = fileName;
    errorMessage += ':';
    errorMessage += std::to_string(errorLine);
    errorMessage += ": ";
    errorMessage.append(message.data(), message.size());
    Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__) << errorMessage << "\n";
  }

  static void onError(void* context, xmlErrorPtr problem) {
    Impl* self = static_cast<Impl*>(context);
    if (!problem || problem->level < XML_ERR_ERROR) return;  // warnings are not failures
    // libxml2 says "Extra content at the end of the document" of a document without element.
    if (self->attributeScan.noElement()) {
      self->fail(self->parserLine(),
                 self->attributeScan.blank() ? "the document is empty" : "the document holds no element");
      return;
    }
    // Errors without a parser (of the input's encoding, say) carry no line.
    self->fail(problem->line > 0 ? problem->line : self->parserLine(), hxLibxmlMessage(problem->message));
  }

  // Scans bytes on their way to libxml2; false, with the error recorded, when an element has
  // too many attributes.
  bool scanBytes(const char* data, std::size_t size) {
    if (attributeScan.feed(data, size, maxAttributesPerElement)) return true;
    fail(attributeScan.tagLine(),
         "an element has more than " + std::to_string(maxAttributesPerElement) + " attributes");
    return false;
  }

  static int readFromFile(void* context, char* buffer, int length) {
    Impl* self = static_cast<Impl*>(context);
    const std::size_t count = std::fread(buffer, 1, static_cast<std::size_t>(length), self->file);
    if (count == 0) {
      if (std::ferror(self->file)) return -1;
      self->attributeScan.finish();
      return 0;
    }
    return self->scanBytes(buffer, count) ? static_cast<int>(count) : -1;
  }

  static int closeFile(void* context) {
    Impl* self = static_cast<Impl*>(context);
    std::FILE* file = self->file;
    self->file = nullptr;
    return file && std::fclose(file) == 0 ? 0 : -1;
  }

  bool attach(xmlTextReaderPtr created) {
    reader = created;
    if (!reader) return false;
    xmlTextReaderSetStructuredErrorHandler(reader, &Impl::onError, this);
    return true;
  }

  int parserLine() const { return reader ? xmlTextReaderGetParserLineNumber(reader) : 0; }

  void collectAttributes() {
    attributeCount = 0;
    currentAttribute = -1;
    if (xmlTextReaderHasAttributes(reader) != 1) return;
    while (xmlTextReaderMoveToNextAttribute(reader) == 1) {
      if (xmlTextReaderIsNamespaceDecl(reader) == 1) continue;
      if (attributes.size() <= static_cast<std::size_t>(attributeCount)) attributes.emplace_back();
      Attribute& attribute = attributes[static_cast<std::size_t>(attributeCount)];
      const std::string_view uri = view(xmlTextReaderConstNamespaceUri(reader));
      const std::string_view local = view(xmlTextReaderConstLocalName(reader));
      const std::string_view value = view(xmlTextReaderConstValue(reader));
      attribute.name.assign(uri);
      attribute.name.append(local);
      attribute.value.assign(value.data(), value.size());
      ++attributeCount;
    }
    xmlTextReaderMoveToElement(reader);
  }

  void takeName() {
    const std::string_view uri = view(xmlTextReaderConstNamespaceUri(reader));
    const std::string_view local = view(xmlTextReaderConstLocalName(reader));
    name.assign(uri);
    name.append(local);
  }

  int nodeLine() {
    xmlNodePtr node = xmlTextReaderCurrentNode(reader);
    const long nodeLineNumber = node ? xmlGetLineNo(node) : -1;
    return nodeLineNumber > 0 ? static_cast<int>(nodeLineNumber) : parserLine();
  }

  // Moves to the next node of interest. Comments and processing instructions are always
  // skipped; whitespace-only text only when `keepWhitespace` is false.
  int advance(bool keepWhitespace) {
    if (!reader || kind == Error) return kind;
    if (started && kind == EndOfDocument) return kind;
    started = true;
    for (;;) {
      int status;
      {
        const HxLibxmlErrorRoute route(this, &Impl::onError);
        status = xmlTextReaderRead(reader);
      }
      if (error) return kind = Error;
      if (status < 0) {
        fail(parserLine(), "malformed document");
        return kind;
      }
      if (status == 0) {
        attributeCount = 0;
        return kind = EndOfDocument;
      }
      switch (xmlTextReaderNodeType(reader)) {
        case XML_READER_TYPE_ELEMENT:
          kind = xmlTextReaderIsEmptyElement(reader) == 1 ? EmptyElement : StartElement;
          depth = xmlTextReaderDepth(reader);
          line = nodeLine();
          takeName();
          collectAttributes();
          return kind;
        case XML_READER_TYPE_END_ELEMENT:
          kind = EndElement;
          depth = xmlTextReaderDepth(reader);
          line = nodeLine();
          takeName();
          attributeCount = 0;
          return kind;
        case XML_READER_TYPE_WHITESPACE:
        case XML_READER_TYPE_SIGNIFICANT_WHITESPACE:
          if (!keepWhitespace) break;
          [[fallthrough]];
        case XML_READER_TYPE_TEXT:
        case XML_READER_TYPE_CDATA: {
          const std::string_view value = view(xmlTextReaderConstValue(reader));
          text.assign(value.data(), value.size());
          scan = 0;
          kind = Text;
          depth = xmlTextReaderDepth(reader);
          line = nodeLine();
          return kind;
        }
        case XML_READER_TYPE_DOCUMENT_TYPE:
          fail(parserLine(), "document type declarations are not accepted");
          return kind;
        case XML_READER_TYPE_ENTITY_REFERENCE:
        case XML_READER_TYPE_ENTITY:
        case XML_READER_TYPE_END_ENTITY:
          fail(parserLine(), "entity references are not accepted");
          return kind;
        case XML_READER_TYPE_NOTATION:
          fail(parserLine(), "notations are not accepted");
          return kind;
        default:
          break;  // comments, processing instructions
      }
    }
  }

  // Moves until the reader is on the end of the element that started at `elementDepth`.
  bool skipToEndOf(int elementDepth) {
    dataMode = false;
    if ((kind == EndElement || kind == EmptyElement) && depth == elementDepth) return true;
    const bool onStart = kind == StartElement && depth == elementDepth;
    const bool inside =
        (kind == StartElement || kind == EndElement || kind == EmptyElement || kind == Text) && depth > elementDepth;
    if (!onStart && !inside) return false;
    for (;;) {
      advance(false);
      if (kind == Error || kind == EndOfDocument) return false;
      if (depth < elementDepth) return false;
      if (kind == EndElement && depth == elementDepth) return true;
    }
  }

  // Scans the next scalar of `text` from `scan`; false when only blanks are left.
  bool scanScalar() {
    const std::size_t size = text.size();
    std::size_t i = scan;
    while (i < size && isBlank(text[i])) ++i;
    if (i == size) {
      scan = size;
      return false;
    }
    if (text[i] == '"') {
      // Quoted: may hold blanks; \" and \\ are escapes, any other backslash stays as it is.
      scalar.clear();
      ++i;
      while (i < size && text[i] != '"') {
        if (text[i] == '\\' && i + 1 < size && (text[i + 1] == '"' || text[i + 1] == '\\')) ++i;
        scalar += text[i];
        ++i;
      }
      scan = i < size ? i + 1 : size;
      return true;
    }
    const std::size_t first = i;
    while (i < size && !isBlank(text[i])) ++i;
    scalar.assign(text, first, i - first);
    scan = i;
    return true;
  }
};

HxXmlReader::HxXmlReader() : impl_(new Impl) { initialiseLibxml(); }

HxXmlReader::~HxXmlReader() = default;

HxBoolean HxXmlReader::openFile(const std::string& path) {
  impl_->close();
  impl_->fileName = path;
  // The file is opened here rather than by libxml2 so that a missing file is our message; its
  // bytes are scanned for attributes on their way to libxml2.
  impl_->file = std::fopen(path.c_str(), "rb");
  if (!impl_->file) {
    const int code = errno;
    impl_->fail(0, std::string("cannot open file: ") + std::strerror(code));
    return false;
  }
  const HxLibxmlErrorRoute route(impl_.get(), &Impl::onError);
  if (!impl_->attach(
          xmlReaderForIO(&Impl::readFromFile, &Impl::closeFile, impl_.get(), path.c_str(), nullptr, kParseOptions))) {
    impl_->fail(0, "cannot create an XML reader");
    return false;
  }
  return true;
}

HxBoolean HxXmlReader::openMemory(const std::string& text, const std::string& name) {
  impl_->close();
  impl_->fileName = name;
  impl_->memory = text;
  if (impl_->memory.size() > static_cast<std::size_t>(INT32_MAX)) {
    impl_->fail(0, "document too large");
    return false;
  }
  if (!impl_->scanBytes(impl_->memory.data(), impl_->memory.size())) return false;
  impl_->attributeScan.finish();
  const HxLibxmlErrorRoute route(impl_.get(), &Impl::onError);
  if (!impl_->attach(xmlReaderForMemory(impl_->memory.data(), static_cast<int>(impl_->memory.size()), nullptr, nullptr,
                                        kParseOptions))) {
    impl_->fail(0, "cannot create an XML reader");
    return false;
  }
  return true;
}

int HxXmlReader::next() {
  impl_->dataMode = false;
  return impl_->advance(false);
}

int HxXmlReader::nodeKind() const { return impl_->kind; }

int HxXmlReader::depth() const { return impl_->depth; }

const HxToken& HxXmlReader::name() const { return impl_->name; }

const std::string& HxXmlReader::text() const { return impl_->text; }

int HxXmlReader::attributeCount() const { return impl_->attributeCount; }

const HxToken& HxXmlReader::attributeName(int index) const {
  static const HxToken empty;
  if (index < 0 || index >= impl_->attributeCount) return empty;
  return impl_->attributes[static_cast<std::size_t>(index)].name;
}

const char* HxXmlReader::attributeValue(int index) const {
  if (index < 0 || index >= impl_->attributeCount) return "";
  return impl_->attributes[static_cast<std::size_t>(index)].value.c_str();
}

void HxXmlReader::setCurrentAttribute(int index) { impl_->currentAttribute = index; }

const char* HxXmlReader::currentAttributeValue() const { return attributeValue(impl_->currentAttribute); }

void HxXmlReader::setDataMode(int on) { impl_->dataMode = on != 0; }

int HxXmlReader::dataMode() const { return impl_->dataMode ? 1 : 0; }

HxBoolean HxXmlReader::nextScalar() {
  Impl& d = *impl_;
  if (!d.dataMode) return false;
  for (;;) {
    if (d.kind == Text) {
      if (d.scanScalar()) return true;
      // This text is used up: the data may go on in a further text node (after a comment).
      const int textDepth = d.depth;
      d.advance(false);
      if (d.kind == Text) continue;
      d.dataMode = false;
      if (d.kind == StartElement || d.kind == EmptyElement) d.skipToEndOf(textDepth - 1);
      return false;
    }
    if (d.kind == StartElement) {
      // Data mode switched on at the start of the holding element: step into its content.
      d.advance(false);
      continue;
    }
    d.dataMode = false;
    return false;
  }
}

const std::string& HxXmlReader::scalar() const { return impl_->scalar; }

HxBoolean HxXmlReader::readText(std::string& out) {
  Impl& d = *impl_;
  d.dataMode = false;
  if (d.kind == EmptyElement) {
    out.clear();
    return true;
  }
  if (d.kind != StartElement) return false;
  const int elementDepth = d.depth;
  out.clear();
  for (;;) {
    d.advance(true);
    if (d.kind == Text) {
      out += d.text;
    } else if (d.kind == EndElement && d.depth == elementDepth) {
      return true;
    } else if (d.kind == StartElement || d.kind == EmptyElement) {
      d.skipToEndOf(elementDepth);
      return false;
    } else {
      return false;
    }
  }
}

HxBoolean HxXmlReader::skipElement() {
  if (impl_->kind == EmptyElement) return true;
  if (impl_->kind != StartElement) return false;
  return impl_->skipToEndOf(impl_->depth);
}

HxBoolean HxXmlReader::readChild(HxXmlObject& child) {
  const int kind = impl_->kind;
  if (kind != StartElement && kind != EmptyElement) return false;
  const int childDepth = impl_->depth;
  const HxBoolean result = child.read(*this);
  if (impl_->error) return false;
  if (!impl_->skipToEndOf(childDepth)) return false;
  return result;
}

HxBoolean HxXmlReader::skipToEndOf(int elementDepth) { return impl_->skipToEndOf(elementDepth); }

HxBoolean HxXmlReader::readObject(HxXmlObject& root) {
  Impl& d = *impl_;
  if (!d.reader) {
    if (!d.error) d.fail(0, "no document is open");
    return false;
  }
  // Find the root element.
  while (d.kind != StartElement && d.kind != EmptyElement) {
    if (d.started && (d.kind == Error || d.kind == EndOfDocument)) break;
    next();
  }
  if (d.kind != StartElement && d.kind != EmptyElement) {
    if (!d.error) d.fail(d.parserLine(), "the document holds no element");
    return false;
  }
  const int rootDepth = d.depth;
  root.xmlInit();
  const HxBoolean result = root.read(*this);
  if (d.error) return false;
  if (!d.skipToEndOf(rootDepth)) {
    if (!d.error) d.fail(d.line, "the root element was read past its end");
    return false;
  }
  // The rest of the document must be well-formed too.
  while (next() != EndOfDocument) {
    if (d.kind == Error) return false;
  }
  return result;
}

const char* HxXmlReader::fileName() const { return impl_->fileName.c_str(); }

int HxXmlReader::lineNumber() const { return impl_->line; }

HxBoolean HxXmlReader::hasError() const { return impl_->error; }

const std::string& HxXmlReader::errorMessage() const { return impl_->errorMessage; }

const HxXmlObjectFactory* HxXmlReader::objectFactory() const { return impl_->factory; }

void HxXmlReader::setObjectFactory(const HxXmlObjectFactory* factory) { impl_->factory = factory; }
