#include "framework/HxXmlSchema.h"

#include "framework/HxXmlObject.h"

namespace {
constexpr const char* kDoubleType = "xs:double";
}  // namespace

HxXmlSchema::HxXmlSchema(std::ostream& stream) : stream_(stream) {}

void HxXmlSchema::indent() {
  for (int i = 0; i < level_; ++i) stream_ << "  ";
}

void HxXmlSchema::line(const std::string& text) {
  indent();
  stream_ << text << '\n';
}

void HxXmlSchema::writeAttributeValue(std::string_view text) {
  for (const char c : text) {
    switch (c) {
      case '&':
        stream_ << "&amp;";
        break;
      case '<':
        stream_ << "&lt;";
        break;
      case '>':
        stream_ << "&gt;";
        break;
      case '"':
        stream_ << "&quot;";
        break;
      default:
        stream_ << c;
        break;
    }
  }
}

void HxXmlSchema::writeOccurs(int minOccurs, int maxOccurs) {
  // std::to_string: no digit grouping, whatever the stream's locale.
  stream_ << " minOccurs=\"" << std::to_string(minOccurs < 0 ? 0 : minOccurs) << "\" maxOccurs=\""
          << (maxOccurs < 0 ? std::string("unbounded") : std::to_string(maxOccurs)) << '"';
}

HxBoolean HxXmlSchema::writeDocument(const HxXmlObject& root, const HxToken& rootToken) {
  targetNamespace_.assign(rootToken.namespaceUri());
  level_ = 0;
  foreignAttributes_.clear();
  wildcards_.clear();
  line("<?xml version=\"1.0\" encoding=\"UTF-8\"?>");
  stream_ << "<xs:schema xmlns:xs=\"http://www.w3.org/2001/XMLSchema\"";
  if (!targetNamespace_.empty()) {
    stream_ << " targetNamespace=\"";
    writeAttributeValue(targetNamespace_);
    stream_ << '"';
  }
  stream_ << " elementFormDefault=\"unqualified\" attributeFormDefault=\"unqualified\">\n";
  ++level_;
  indent();
  stream_ << "<xs:element name=\"";
  writeAttributeValue(rootToken.localName());
  stream_ << "\">\n";
  ++level_;
  root.writeSchema(*this);
  --level_;
  line("</xs:element>");
  --level_;
  line("</xs:schema>");
  stream_.flush();
  return stream_.good();
}

void HxXmlSchema::beginComplexType(bool mixed) {
  line(mixed ? "<xs:complexType mixed=\"true\">" : "<xs:complexType>");
  ++level_;
  foreignAttributes_.push_back(0);
}

void HxXmlSchema::endComplexType() {
  if (!foreignAttributes_.empty()) {
    if (foreignAttributes_.back()) line("<xs:anyAttribute namespace=\"##other\" processContents=\"skip\"/>");
    foreignAttributes_.pop_back();
  }
  --level_;
  line("</xs:complexType>");
}

void HxXmlSchema::beginChoice(bool repeated) {
  beginGroup(repeated ? "<xs:choice minOccurs=\"0\" maxOccurs=\"unbounded\">" : "<xs:choice>");
}

void HxXmlSchema::endChoice() { endGroup("</xs:choice>"); }

void HxXmlSchema::beginSequence() { beginGroup("<xs:sequence>"); }

void HxXmlSchema::endSequence() { endGroup("</xs:sequence>"); }

void HxXmlSchema::beginGroup(const std::string& openingTag) {
  line(openingTag);
  ++level_;
  wildcards_.emplace_back();
}

void HxXmlSchema::endGroup(const std::string& closingTag) {
  if (!wildcards_.empty()) wildcards_.pop_back();
  --level_;
  line(closingTag);
}

bool HxXmlSchema::openElementDeclaration(const HxToken& token, int minOccurs, int maxOccurs, bool selfClosing,
                                         const std::string& typeAttribute) {
  const std::string_view uri = token.namespaceUri();
  if (!uri.empty() && uri != targetNamespace_) {
    // Elements of another namespace are admitted by one wildcard per group.
    if (!wildcards_.empty()) {
      for (const std::string& admitted : wildcards_.back()) {
        if (admitted == uri) return false;
      }
      wildcards_.back().emplace_back(uri);
    }
    indent();
    stream_ << "<xs:any namespace=\"";
    writeAttributeValue(uri);
    stream_ << "\" processContents=\"skip\"";
    writeOccurs(minOccurs, -1);
    stream_ << "/>\n";
    return false;
  }
  indent();
  stream_ << "<xs:element name=\"";
  writeAttributeValue(token.localName());
  stream_ << '"';
  if (!targetNamespace_.empty()) stream_ << (uri.empty() ? " form=\"unqualified\"" : " form=\"qualified\"");
  if (!typeAttribute.empty()) stream_ << " type=\"" << typeAttribute << '"';
  writeOccurs(minOccurs, maxOccurs);
  stream_ << (selfClosing ? "/>\n" : ">\n");
  return true;
}

void HxXmlSchema::element(const HxToken& token, const HxXmlObject& content, int minOccurs, int maxOccurs) {
  if (!openElementDeclaration(token, minOccurs, maxOccurs, false, std::string())) return;
  ++level_;
  content.writeSchema(*this);
  --level_;
  line("</xs:element>");
}

void HxXmlSchema::simpleElement(const HxToken& token, const std::string& xsdType, int minOccurs, int maxOccurs) {
  // xs:double has no "inf"/"nan" spelling of its own, so doubles get an inline type.
  if (xsdType != kDoubleType) {
    openElementDeclaration(token, minOccurs, maxOccurs, true, xsdType);
    return;
  }
  if (!openElementDeclaration(token, minOccurs, maxOccurs, false, std::string())) return;
  ++level_;
  simpleContent(xsdType);
  --level_;
  line("</xs:element>");
}

bool HxXmlSchema::openAttributeDeclaration(const HxToken& token) {
  const std::string_view uri = token.namespaceUri();
  if (!uri.empty() && uri != targetNamespace_) {
    if (!foreignAttributes_.empty()) foreignAttributes_.back() = 1;
    return false;
  }
  indent();
  stream_ << "<xs:attribute name=\"";
  writeAttributeValue(token.localName());
  stream_ << '"';
  if (!uri.empty()) stream_ << " form=\"qualified\"";
  return true;
}

void HxXmlSchema::attribute(const HxToken& token, const std::string& xsdType) {
  if (!openAttributeDeclaration(token)) return;
  if (xsdType != kDoubleType) {
    stream_ << " type=\"" << xsdType << "\"/>\n";
    return;
  }
  stream_ << ">\n";
  ++level_;
  simpleContent(xsdType);
  --level_;
  line("</xs:attribute>");
}

void HxXmlSchema::attribute(const HxToken& token, const HxXmlObject& content) {
  if (!content.isBasicType()) {
    attribute(token, std::string("xs:string"));
    return;
  }
  if (!openAttributeDeclaration(token)) return;
  stream_ << ">\n";
  ++level_;
  content.writeSchema(*this);
  --level_;
  line("</xs:attribute>");
}

void HxXmlSchema::simpleContent(const std::string& xsdType) {
  if (xsdType != kDoubleType) {
    line("<xs:simpleType>");
    ++level_;
    line("<xs:restriction base=\"" + xsdType + "\"/>");
    --level_;
    line("</xs:simpleType>");
    return;
  }
  // Doubles: the XSD lexical forms plus the "inf", "-inf" and "nan" that the writer uses.
  static const std::string kSpecialValues[] = {"inf", "-inf", "nan"};
  line("<xs:simpleType>");
  ++level_;
  unionWithNames("xs:double", kSpecialValues, 3);
  --level_;
  line("</xs:simpleType>");
}

void HxXmlSchema::unionWithNames(const std::string& memberType, const std::string* names, int count) {
  line("<xs:union memberTypes=\"" + memberType + "\">");
  ++level_;
  line("<xs:simpleType>");
  ++level_;
  line("<xs:restriction base=\"xs:token\">");
  ++level_;
  for (int i = 0; i < count; ++i) {
    indent();
    stream_ << "<xs:enumeration value=\"";
    writeAttributeValue(names[i]);
    stream_ << "\"/>\n";
  }
  --level_;
  line("</xs:restriction>");
  --level_;
  line("</xs:simpleType>");
  --level_;
  line("</xs:union>");
}

void HxXmlSchema::enumerationContent(const std::string* names, int count) {
  // A name, or the decimal value that the reader also accepts.
  line("<xs:simpleType>");
  ++level_;
  if (count <= 0 || !names) {
    line("<xs:restriction base=\"xs:unsignedInt\"/>");
  } else {
    unionWithNames("xs:unsignedInt", names, count);
  }
  --level_;
  line("</xs:simpleType>");
}

void HxXmlSchema::anyContent() {
  line("<xs:complexType mixed=\"true\">");
  ++level_;
  line("<xs:sequence>");
  ++level_;
  line("<xs:any processContents=\"skip\" minOccurs=\"0\" maxOccurs=\"unbounded\"/>");
  --level_;
  line("</xs:sequence>");
  line("<xs:anyAttribute processContents=\"skip\"/>");
  --level_;
  line("</xs:complexType>");
}
