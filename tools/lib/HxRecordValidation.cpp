// Checking hxrecord's configuration documents more strictly than the library reads them.

#include "tools/lib/HxRecordValidation.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <utility>

#include "analysis/capture/HxEndEffectorDataCapture.h"
#include "analysis/capture/HxLinkDataCapture.h"
#include "analysis/capture/HxManipulatorDataCapture.h"
#include "analysis/types/HxDataCaptureTypeVector.h"
#include "analysis/writers/HxOutputWriterVector.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "analysis/xml/HxXmlVectorType.h"
#include "framework/HxNumberText.h"
#include "framework/HxXmlBaseVariableCompoundType.h"
#include "framework/HxXmlBasicType.h"
#include "framework/HxXmlCompoundType.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlTokens.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string::npos) return std::string();
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

// The quantities that a capture of one level may list.
struct Level {
  const char* per;  // "per link"
  HxKnownNames names;
  std::vector<HxToken> tokens;
};

Level levelOf(const char* per, const HxDataCaptureTypeVector& available) {
  Level level{per, {"quantity", "quantities", {}}, {}};
  for (HxU32 i = 0; i < available.size(); ++i) {
    level.tokens.push_back(available[i].token());
    level.names.known.push_back(hxDisplayToken(available[i].token()));
  }
  return level;
}

// The three levels: manipulator, link, end effector.
const Level* quantityLevels() {
  static const Level levels[] = {levelOf("per manipulator", HxManipulatorDataCapture::allAvailableDataCaptureTypes()),
                                 levelOf("per link", HxLinkDataCapture::allAvailableDataCaptureTypes()),
                                 levelOf("per end effector", HxEndEffectorDataCapture::allAvailableDataCaptureTypes())};
  return levels;
}

// The level of the quantities that `owner`'s lists hold; null for other objects.
const Level* quantityLevel(const HxXmlObject& owner) {
  if (dynamic_cast<const HxManipulatorDataCapture*>(&owner)) return &quantityLevels()[0];
  if (dynamic_cast<const HxLinkDataCapture*>(&owner)) return &quantityLevels()[1];
  if (dynamic_cast<const HxEndEffectorDataCapture*>(&owner)) return &quantityLevels()[2];
  return nullptr;
}

template <class T>
bool entryIf(const HxXmlObject& vector, std::unique_ptr<HxXmlObject>& entry) {
  if (!dynamic_cast<const HxXmlVectorType<T>*>(&vector)) return false;
  entry = std::make_unique<T>();
  return true;
}

// A default element of the homogeneous vector `vector`; null for a vector of another type.
std::unique_ptr<HxXmlObject> entryOf(const HxXmlObject& vector) {
  std::unique_ptr<HxXmlObject> entry;
  entryIf<HxManipulatorDataCapture>(vector, entry) || entryIf<HxLinkDataCapture>(vector, entry) ||
      entryIf<HxEndEffectorDataCapture>(vector, entry) || entryIf<HxXmlBasicType<bool>>(vector, entry) ||
      entryIf<HxXmlBasicType<std::string>>(vector, entry) || entryIf<HxXmlBasicType<double>>(vector, entry) ||
      entryIf<HxXmlBasicType<unsigned int>>(vector, entry);
  return entry;
}

template <class T>
bool isScalarOf(const HxXmlObject& scalar) {
  return dynamic_cast<const HxXmlBasicType<T>*>(&scalar) != nullptr;
}

template <class T>
bool readsAs(const std::string& text) {
  HxXmlBasicType<T> value;
  return value.fromText(text);
}

// What the values of `scalar` are, for messages.
const char* valueDescription(const HxXmlObject& scalar) {
  if (isScalarOf<double>(scalar)) return "a real number";
  if (isScalarOf<unsigned int>(scalar)) return "a whole number from 0 to 4294967295";
  if (isScalarOf<bool>(scalar)) return "true, false, 1 or 0";
  return "text";
}

// Whether `text` reads as a value of `scalar`, as the library reads it (any text is a text).
bool readsAsValue(const HxXmlObject& scalar, const std::string& text) {
  if (isScalarOf<double>(scalar)) return readsAs<double>(text);
  if (isScalarOf<unsigned int>(scalar)) return readsAs<unsigned int>(text);
  if (isScalarOf<bool>(scalar)) return readsAs<bool>(text);
  return true;
}

bool isTolerance(const HxToken& token) {
  return token == HxSimAnalysis::HxTranslationToleranceToken || token == HxSimAnalysis::HxOrientationToleranceToken;
}

// The "count" attribute of a vector: its digits without leading zeros, as long as they are.
struct Count {
  bool given = false;
  bool valid = true;
  std::string value;
};

// Walks a document along the form of the objects it configures.
class Validator {
 public:
  Validator(HxXmlReader& reader, HxRecordMessages& messages, const std::vector<HxToken>& factoryTokens)
      : reader_(reader), messages_(messages), factoryTokens_(factoryTokens) {}

  // Checks the element the reader is on against `form`; `level` is the level of the quantities
  // a list at this place holds (null elsewhere). Leaves the reader on the element's end.
  void element(HxXmlObject& form, const Level* level) {
    if (form.isBasicType()) {
      scalar(form);
    } else if (auto* choice = dynamic_cast<HxXmlBaseVariableCompoundType*>(&form)) {
      polymorphicVector(*choice, level);
    } else if (auto* compound = dynamic_cast<HxXmlCompoundType*>(&form)) {
      compoundElement(*compound);
    } else if (form.token() == HxXml::HxVectorTypeToken) {
      vector(form);
    } else {
      reader_.skipElement();
    }
  }

 private:
  using Kind = HxRecordMessages::Kind;

  template <class MakeText>
  void add(Kind kind, int line, MakeText makeText) {
    messages_.add(kind, line, makeText);
  }

  // Reports each attribute of the current element other than those of `known` and, when
  // `counted`, "count"; returns the count.
  Count attributes(const HxKnownNames& known, bool counted, const std::string& where) {
    Count count;
    const int line = reader_.lineNumber();
    for (int i = 0; i < reader_.attributeCount(); ++i) {
      const HxToken& name = reader_.attributeName(i);
      const std::string shown = hxDisplayToken(name);
      if (counted && name == HxXml::HxCountToken) {
        const std::string value = reader_.attributeValue(i);
        count.given = true;
        count.valid = !value.empty() && value.find_first_not_of("0123456789") == std::string::npos;
        if (count.valid) {
          const std::size_t digits = std::min(value.find_first_not_of('0'), value.size() - 1);
          count.value = value.substr(digits);
        } else {
          add(Kind::Value, line,
              [&] { return "'count' is " + hxQuotedExcerpt(value) + ": expected a whole number >= 0"; });
        }
      } else if (std::find(known.known.begin(), known.known.end(), shown) == known.known.end()) {
        add(Kind::UnknownName, line, [&] {
          HxKnownNames names = known;
          names.elements = false;
          if (counted) names.known.push_back(HxXml::HxCountToken.token());
          return hxUnknownNameMessage(shown, names, where);
        });
      }
    }
    return count;
  }

  void checkCount(const Count& count, std::size_t held, int line) {
    if (!count.valid) return;
    if (!count.given && held > 0) {
      add(Kind::Count, line, [&] { return "'count' is missing but the element holds " + std::to_string(held); });
    } else if (count.given && count.value != std::to_string(held)) {
      add(Kind::Count, line,
          [&] { return "'count' says " + hxExcerpt(count.value) + " but the element holds " + std::to_string(held); });
    }
  }

  // Calls `child()` with the reader on each child element's start and goes on after that
  // child's end; reports text between the children.
  template <class Child>
  void children(const std::string& where, Child child) {
    if (reader_.nodeKind() == HxXmlReader::EmptyElement) return;
    for (;;) {
      const int kind = reader_.next();
      if (kind == HxXmlReader::StartElement || kind == HxXmlReader::EmptyElement) {
        const int childDepth = reader_.depth();
        child();
        if (!reader_.skipToEndOf(childDepth)) return;
      } else if (kind == HxXmlReader::Text) {
        // The reader places text at its end; the message names the line where it begins.
        const std::string& text = reader_.text();
        const std::size_t first = text.find_first_not_of(" \t\r\n");
        if (first == std::string::npos) continue;  // blanks (of a CDATA section)
        const auto lineBreaks = std::count(text.begin() + static_cast<std::ptrdiff_t>(first), text.end(), '\n');
        add(Kind::Text, std::max(1, reader_.lineNumber() - static_cast<int>(lineBreaks)),
            [&] { return "unexpected text " + hxQuotedExcerpt(trimmed(text)) + " in " + hxQuotedExcerpt(where); });
      } else {
        return;  // this element's end, or the document broke
      }
    }
  }

  void compoundElement(HxXmlCompoundType& form) {
    const std::string where = hxDisplayToken(form.token());
    HxKnownNames attributeNames{"attribute", "attributes", {}};
    for (const HxXmlComponent& component : form.attributeComponentMap()) {
      attributeNames.known.push_back(hxDisplayToken(component.token));
    }
    attributes(attributeNames, false, where);
    const HxXmlCompoundType::ComponentMap& components = form.componentMap();
    std::vector<int> firstLine(components.size(), 0);
    children(where, [&] {
      const int line = reader_.lineNumber();
      const auto found = std::find_if(components.begin(), components.end(), [&](const HxXmlComponent& component) {
        return component.token == reader_.name();
      });
      if (found == components.end()) {
        add(Kind::UnknownName, line, [&] {
          HxKnownNames names{"element", "elements", {}};
          for (const HxXmlComponent& component : components) names.known.push_back(hxDisplayToken(component.token));
          return hxUnknownNameMessage(hxDisplayToken(reader_.name()), names, where);
        });
        return;
      }
      int& first = firstLine[static_cast<std::size_t>(found - components.begin())];
      if (first != 0) {
        add(Kind::Repeated, line, [&] {
          return hxQuotedExcerpt(hxDisplayToken(found->token)) + " is given twice in " + hxQuotedExcerpt(where) +
                 " (first on line " + std::to_string(first) + ")";
        });
        return;
      }
      first = line;
      if (!found->readOnly) element(*found->object, quantityLevel(form));
    });
  }

  void polymorphicVector(HxXmlBaseVariableCompoundType& form, const Level* level) {
    const std::string where = hxDisplayToken(reader_.name());
    const int line = reader_.lineNumber();
    const bool quantities = dynamic_cast<const HxDataCaptureTypeVector*>(&form) != nullptr;
    const bool writers = dynamic_cast<const HxOutputWriterVector*>(&form) != nullptr;
    HxKnownNames names{"element", "elements", {}};
    if (quantities) names = HxKnownNames{"quantity", "quantities", {}};
    if (writers) names = HxKnownNames{"writer", "writers", {}};
    for (const auto& entry : form.creatorMap()) names.known.push_back(hxDisplayToken(entry.first));
    // Writers of other libraries, made by the reader's object factory.
    const HxXmlObjectFactory* factory = writers ? reader_.objectFactory() : nullptr;
    if (factory != nullptr) {
      for (const HxToken& token : factoryTokens_) names.known.push_back(hxDisplayToken(token));
    }
    if (level) {
      names.known = level->names.known;
      for (const Level* other = quantityLevels(); other != quantityLevels() + 3; ++other) {
        if (other == level) continue;
        for (const std::string& name : other->names.known) {
          names.elsewhere.emplace_back(name, std::string("captured ") + other->per);
        }
      }
    }

    const Count count = attributes(HxKnownNames{"attribute", "attributes", {}}, true, where);
    std::size_t held = 0;
    std::vector<std::pair<HxToken, int>> seen;
    children(where, [&] {
      const HxToken token = reader_.name();
      const int childLine = reader_.lineNumber();
      if (token == HxXml::HxAddLibrariesToken) return;
      ++held;
      const auto creator = form.creatorMap().find(token);
      std::unique_ptr<HxXmlObject> prototype;
      if (creator != form.creatorMap().end() && creator->second) {
        prototype.reset(creator->second());
      } else if (factory != nullptr &&
                 std::find(factoryTokens_.begin(), factoryTokens_.end(), token) != factoryTokens_.end()) {
        prototype.reset(factory->newObjectFromToken(token));
      }
      const bool known = prototype != nullptr;
      if (known && level && std::find(level->tokens.begin(), level->tokens.end(), token) == level->tokens.end()) {
        add(Kind::UnknownName, childLine, [&] {
          return "quantity " + hxQuotedExcerpt(hxDisplayToken(token)) + " is not captured " + level->per +
                 "; quantities " + level->per + ": " + hxCommaList(level->names.known);
        });
        return;
      }
      if (!known) {
        add(Kind::UnknownName, childLine, [&] {
          // Three quantities exist but are deliberately not read from configuration files.
          const bool inCodeOnly =
              quantities && (token == HxSimAnalysis::HxControlInputDataCaptureTypeToken ||
                             token == HxSimAnalysis::HxControlOutputJointPositionDataCaptureTypeToken ||
                             token == HxSimAnalysis::HxControlOutputActualJointVelocityDataCaptureTypeToken);
          if (!inCodeOnly) return hxUnknownNameMessage(hxDisplayToken(token), names, "");
          return "quantity " + hxQuotedExcerpt(hxDisplayToken(token)) +
                 " cannot be read from a configuration file. Known " + "quantities: " + hxCommaList(names.known);
        });
        return;
      }
      if (quantities) {
        const auto before =
            std::find_if(seen.begin(), seen.end(), [&](const auto& entry) { return entry.first == token; });
        if (before != seen.end()) {
          add(Kind::Repeated, childLine, [&] {
            return "quantity " + hxQuotedExcerpt(hxDisplayToken(token)) +
                   " is listed twice in one list (first on line " + std::to_string(before->second) + ")";
          });
          return;
        }
        seen.emplace_back(token, childLine);
      }
      element(*prototype, nullptr);
    });
    checkCount(count, held, line);
  }

  void vector(HxXmlObject& form) {
    const std::unique_ptr<HxXmlObject> entry = entryOf(form);
    if (!entry) {
      reader_.skipElement();
      return;
    }
    const std::string where = hxDisplayToken(reader_.name());
    const int line = reader_.lineNumber();
    const Count count = attributes(HxKnownNames{"attribute", "attributes", {}}, true, where);
    const bool scalars = entry->isBasicType();
    std::size_t held = 0;
    children(where, [&] {
      if (scalars && reader_.name() == HxXml::HxGroupToken) {
        held += group(*entry, where);
      } else if (reader_.name() == HxXml::HxElementToken) {
        ++held;
        element(*entry, nullptr);
      } else {
        ++held;  // the library reads it as an element all the same
        add(Kind::UnknownName, reader_.lineNumber(), [&] {
          return "unknown element " + hxQuotedExcerpt(hxDisplayToken(reader_.name())) + " in " +
                 hxQuotedExcerpt(where) + (scalars ? ": expected 'group'" : ": expected 'element'");
        });
      }
    });
    checkCount(count, held, line);
  }

  // The values of a group of scalars, each checked as `entry` reads; returns their number.
  std::size_t group(const HxXmlObject& entry, const std::string& where) {
    const int line = reader_.lineNumber();
    attributes(HxKnownNames{"attribute", "attributes", {}}, false, "group");
    if (reader_.nodeKind() == HxXmlReader::EmptyElement || reader_.next() != HxXmlReader::Text) {
      if (!reader_.hasError())
        add(Kind::Value, line, [&] { return "'group' in " + hxQuotedExcerpt(where) + " holds no values"; });
      return 0;
    }
    reader_.setDataMode(1);
    std::size_t values = 0;
    while (reader_.nextScalar()) {
      ++values;
      if (!readsAsValue(entry, reader_.scalar())) {
        add(Kind::Value, reader_.lineNumber(), [&] {
          return hxQuotedExcerpt(where) + " holds " + hxQuotedExcerpt(reader_.scalar()) + ": expected " +
                 valueDescription(entry);
        });
      }
    }
    return values;
  }

  void scalar(const HxXmlObject& form) {
    const HxToken token = reader_.name();
    const std::string name = hxDisplayToken(token);
    const int line = reader_.lineNumber();
    attributes(HxKnownNames{"attribute", "attributes", {}}, false, name);
    std::string text;
    if (!reader_.readText(text)) {
      if (!reader_.hasError()) {
        add(Kind::Value, line,
            [&] { return hxQuotedExcerpt(name) + " holds elements: expected " + std::string(valueDescription(form)); });
      }
      return;
    }
    if (!readsAsValue(form, text)) {
      add(Kind::Value, line, [&] {
        return hxQuotedExcerpt(name) + " is " + hxQuotedExcerpt(trimmed(text)) + ": expected " + valueDescription(form);
      });
      return;
    }
    double value = 0.0;
    if (isTolerance(token) && HxSTRING2DOUBLE(text, value) && !(std::isfinite(value) && value >= 0.0)) {
      add(Kind::Value, line, [&] {
        return hxQuotedExcerpt(name) + " is " + hxQuotedExcerpt(trimmed(text)) + ": expected a finite number >= 0";
      });
    }
  }

  HxXmlReader& reader_;
  HxRecordMessages& messages_;
  const std::vector<HxToken>& factoryTokens_;
};

}  // namespace

std::string hxDisplayToken(const HxToken& token) {
  const std::string& text = token.token();
  const std::string& ns = HxSimAnalysis::ns.token();
  if (text.size() > ns.size() && text.compare(0, ns.size(), ns) == 0) return text.substr(ns.size());
  return text;
}

void hxValidateConfiguration(HxXmlReader& reader, HxXmlObject& root, HxRecordMessages& messages,
                             const std::vector<HxToken>& factoryTokens) {
  Validator(reader, messages, factoryTokens).element(root, nullptr);
}
