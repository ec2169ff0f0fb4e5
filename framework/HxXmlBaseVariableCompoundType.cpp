#include "framework/HxXmlBaseVariableCompoundType.h"

#include <charconv>
#include <memory>
#include <mutex>
#include <set>
#include <utility>

#include "framework/HxPrint.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlSchema.h"
#include "framework/HxXmlTokens.h"
#include "framework/HxXmlWriter.h"

namespace {

struct LibraryRegistry {
  std::mutex mutex;
  std::set<std::string> names;
};

LibraryRegistry& libraryRegistry() {
  static LibraryRegistry registry;
  return registry;
}

// Schema of the library list: a count attribute and one group element of quoted names.
class LibraryListSchema : public HxXmlObject {
 public:
  HxXmlObject* clone() const override { return new LibraryListSchema(*this); }
  HxXmlObject* newObject() const override { return new LibraryListSchema(); }
  const HxToken& token() const override { return HxXml::HxAddLibrariesToken; }
  HxBoolean equality(const HxXmlObject* other) const override {
    return dynamic_cast<const LibraryListSchema*>(other) != nullptr;
  }
  void writeSchema(HxXmlSchema& schema) const override {
    schema.beginComplexType();
    schema.beginSequence();
    schema.simpleElement(HxXml::HxGroupToken, "xs:string", 0, 1);
    schema.endSequence();
    schema.attribute(HxXml::HxCountToken, std::string("xs:unsignedInt"));
    schema.endComplexType();
  }
};

}  // namespace

HxXmlBaseVariableCompoundType::HxXmlBaseVariableCompoundType() = default;

HxXmlBaseVariableCompoundType::HxXmlBaseVariableCompoundType(const HxXmlBaseVariableCompoundType& other)
    : HxXmlObject(other), libraries_(other.libraries_), classCreators_(other.classCreators_) {}

HxXmlBaseVariableCompoundType::HxXmlBaseVariableCompoundType(HxXmlBaseVariableCompoundType&& other) noexcept
    : HxXmlObject(other), libraries_(std::move(other.libraries_)), classCreators_(other.classCreators_) {}

HxXmlBaseVariableCompoundType& HxXmlBaseVariableCompoundType::operator=(const HxXmlBaseVariableCompoundType& other) {
  if (this != &other) {
    HxXmlObject::operator=(other);
    libraries_ = other.libraries_;
  }
  return *this;
}

HxXmlBaseVariableCompoundType::~HxXmlBaseVariableCompoundType() = default;

void HxXmlBaseVariableCompoundType::ensureCreators() const {
  if (creatorsReady_) return;
  creatorsReady_ = true;
  auto* self = const_cast<HxXmlBaseVariableCompoundType*>(this);
  // An object of a class that shares its creators, with none registered by hand, uses the
  // class's table; the first such object makes it from its own registrations.
  if (classCreators_ != nullptr && creators_.empty() && typeid(*this) == classCreators_->type) {
    auto* table = const_cast<ClassCreators*>(classCreators_);
    bool registered = false;
    std::call_once(table->made, [&] {
      self->registerComponentCreators();
      table->creators = creators_;
      registered = true;
    });
    creatorsAreClass_ = !registered;
    return;
  }
  self->registerComponentCreators();
}

void HxXmlBaseVariableCompoundType::ownCreators() const {
  if (!creatorsAreClass_) return;
  creatorsAreClass_ = false;
  creators_ = classCreators_->creators;
}

void HxXmlBaseVariableCompoundType::xmlInit() {
  HxXmlObject::xmlInit();
  ensureCreators();
}

HxBoolean HxXmlBaseVariableCompoundType::read(HxXmlReader& reader) {
  if (!HxXmlObject::read(reader)) return false;
  return reader.readChildren([&](const HxToken& token) { return readValueFromToken(token, reader); });
}

HxBoolean HxXmlBaseVariableCompoundType::write(HxXmlWriter& writer) const {
  const HxBoolean result = HxXmlObject::write(writer);
  if (libraries_.empty()) return result;
  writer.startElement(HxXml::HxAddLibrariesToken);
  writer.addAttribute(HxXml::HxCountToken);
  char count[16];
  const std::to_chars_result end = std::to_chars(count, count + sizeof count, libraries_.size());
  writer.writeScalar(std::string_view(count, static_cast<size_t>(end.ptr - count)));
  writer.startElement(HxXml::HxGroupToken);
  writer.setDataMode(true);
  for (const std::string& library : libraries_) writer.writeScalar(library, true);
  writer.endElement();
  writer.endElement();
  return result && writer.good();
}

void HxXmlBaseVariableCompoundType::writeSchema(HxXmlSchema& schema) const {
  schema.beginComplexType();
  schema.beginChoice(true);
  for (const auto& entry : creatorMap()) {
    const std::unique_ptr<HxXmlObject> element(entry.second ? entry.second() : nullptr);
    if (element) schema.element(entry.first, *element);
  }
  schema.element(HxXml::HxAddLibrariesToken, LibraryListSchema());
  schema.endChoice();
  schema.attribute(HxXml::HxCountToken, std::string("xs:unsignedInt"));
  schema.endComplexType();
}

void HxXmlBaseVariableCompoundType::registerComponentCreator(const HxToken& token, Creator creator) {
  ownCreators();
  creators_[token] = creator;
}

HxXmlObject* HxXmlBaseVariableCompoundType::newObjectFromToken(const HxToken& token) const {
  ensureCreators();
  const CreatorMap& creators = creatorsAreClass_ ? classCreators_->creators : creators_;
  const auto found = creators.find(token);
  if (found == creators.end() || !found->second) return nullptr;
  return found->second();
}

const std::vector<std::string>& HxXmlBaseVariableCompoundType::addLibraries() const { return libraries_; }

void HxXmlBaseVariableCompoundType::setAddLibraries(const std::vector<std::string>& libraries) {
  libraries_ = libraries;
}

const HxXmlBaseVariableCompoundType::CreatorMap& HxXmlBaseVariableCompoundType::creatorMap() const {
  ensureCreators();
  ownCreators();
  return creators_;
}

HxBoolean HxXmlBaseVariableCompoundType::processLibraries() {
  HxBoolean result = true;
  for (const std::string& library : libraries_) {
    if (isLibraryRegistered(library)) continue;
    Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
        << "HxXmlBaseVariableCompoundType Error: library \"" << library << "\" is not available.\n";
    result = false;
  }
  return result;
}

void HxXmlBaseVariableCompoundType::registerLibrary(const std::string& name) {
  LibraryRegistry& registry = libraryRegistry();
  std::lock_guard<std::mutex> lock(registry.mutex);
  registry.names.insert(name);
}

bool HxXmlBaseVariableCompoundType::isLibraryRegistered(const std::string& name) {
  LibraryRegistry& registry = libraryRegistry();
  std::lock_guard<std::mutex> lock(registry.mutex);
  return registry.names.count(name) != 0;
}

HxBoolean HxXmlBaseVariableCompoundType::readLibraryList(HxXmlReader& reader) {
  const int kind = reader.nodeKind();
  if (kind != HxXmlReader::StartElement && kind != HxXmlReader::EmptyElement) return false;
  libraries_.clear();
  if (kind == HxXmlReader::EmptyElement) return true;
  const int depth = reader.depth();
  HxBoolean result = true;
  for (;;) {
    const int next = reader.next();
    if (next == HxXmlReader::StartElement && reader.name() == HxXml::HxGroupToken) {
      const int groupDepth = reader.depth();
      if (reader.next() == HxXmlReader::Text) {
        reader.setDataMode(1);
        while (reader.nextScalar()) libraries_.push_back(reader.scalar());
      }
      if (!reader.skipToEndOf(groupDepth)) return false;
    } else if (next == HxXmlReader::StartElement || next == HxXmlReader::EmptyElement) {
      // Anything but the group (an empty group included) holds no names.
      if (!(reader.name() == HxXml::HxGroupToken)) {
        Hx::Print::instance().ostream(Hx::Print::Error, __PRETTY_FUNCTION__)
            << "HxXmlBaseVariableCompoundType Error: element \"" << reader.name().token()
            << "\" not expected in a library list.\n\tFile: " << reader.fileName()
            << "\n\tLine: " << reader.lineNumber() << "\n";
        result = false;
      }
      if (!reader.skipElement()) return false;
    } else if (next == HxXmlReader::EndElement && reader.depth() == depth) {
      return result;
    } else if (next != HxXmlReader::Text) {
      return false;
    }
  }
}
